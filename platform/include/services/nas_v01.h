/* The published service nas (3): network scans. */
#ifndef NAS_V01_H
#define NAS_V01_H

#include "qmi_idl.h"

#ifdef __cplusplus
extern "C" {
#endif

#define QMI_NAS_PERFORM_NETWORK_SCAN_REQ_MSG_V01             0x0021
#define QMI_NAS_PERFORM_INCREMENTAL_NETWORK_SCAN_REQ_MSG_V01 0x0085

#define NAS_3GPP_NETWORK_INFO_LIST_MAX_V01 40
#define NAS_NETWORK_DESC_MAX_V01           255

/* How far a scan reaches. */
typedef uint32_t nas_scan_scope_enum_v01;

struct nas_3gpp_network_info_type_v01 {
    uint16_t mobile_country_code;
    uint16_t mobile_network_code;
    uint8_t  network_status;  // bits of use, home or roaming, forbidden, preferred
    char     network_description[NAS_NETWORK_DESC_MAX_V01 + 1];
};

struct nas_network_radio_access_technology_type_v01 {
    uint16_t mcc;
    uint16_t mnc;
    uint8_t  rat;
};

struct nas_mnc_pcs_digit_include_status_type_v01 {
    uint16_t mcc;
    uint16_t mnc;
    uint8_t  mnc_includes_pcs_digit;  // 1: the network code has three digits
};

struct nas_perform_network_scan_req_msg_v01 {
    uint8_t network_type_valid;
    uint8_t network_type;   // mask of the kinds of network to look for
    uint8_t reserved[270];  // optional fields that aren't used
};

struct nas_perform_network_scan_resp_msg_v01 {
    qmi_response_type              resp;
    uint8_t                        nas_3gpp_network_info_valid;
    uint32_t                       nas_3gpp_network_info_len;
    nas_3gpp_network_info_type_v01 nas_3gpp_network_info[NAS_3GPP_NETWORK_INFO_LIST_MAX_V01];
    uint8_t                        nas_network_radio_access_technology_valid;
    uint32_t                       nas_network_radio_access_technology_len;
    nas_network_radio_access_technology_type_v01
                                              nas_network_radio_access_technology[NAS_3GPP_NETWORK_INFO_LIST_MAX_V01];
    uint8_t                                   mnc_includes_pcs_digit_valid;
    uint32_t                                  mnc_includes_pcs_digit_len;
    nas_mnc_pcs_digit_include_status_type_v01 mnc_includes_pcs_digit[NAS_3GPP_NETWORK_INFO_LIST_MAX_V01];
    uint8_t                                   scan_result_valid;
    uint32_t                                  scan_result;  // 0: done, else why not
    uint8_t                                   reserved[7040];
};

struct nas_perform_incremental_network_scan_req_msg_v01 {
    uint8_t network_type_valid;
    uint8_t network_type;
    uint8_t reserved[566];
};

struct nas_perform_incremental_network_scan_resp_msg_v01 {
    qmi_response_type resp;
};

/* The service object for exactly these versions (1, 388, 6), null for any others. Threads: any. */
qmi_idl_service_object_type nas_get_service_object_internal_v01(int32_t version, int32_t minor_version,
                                                                int32_t library_version);

#ifdef __cplusplus
}
#endif
#endif
