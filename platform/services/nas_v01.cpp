/* Message tables of the service nas. */
#include "services/nas_v01.h"

// clang-format off
static constexpr idl_field network_info_fields[] = {
    IDL_HALF(IN_RECORD, nas_3gpp_network_info_type_v01, mobile_country_code),
    IDL_HALF(IN_RECORD, nas_3gpp_network_info_type_v01, mobile_network_code),
    IDL_BYTE(IN_RECORD, nas_3gpp_network_info_type_v01, network_status),
    IDL_TEXT(IN_RECORD, nas_3gpp_network_info_type_v01, network_description),
};
static constexpr idl_record network_info_form = idl_record_of<nas_3gpp_network_info_type_v01>(network_info_fields);

static constexpr idl_field rat_fields[] = {
    IDL_HALF(IN_RECORD, nas_network_radio_access_technology_type_v01, mcc),
    IDL_HALF(IN_RECORD, nas_network_radio_access_technology_type_v01, mnc),
    IDL_BYTE(IN_RECORD, nas_network_radio_access_technology_type_v01, rat),
};
static constexpr idl_record rat_form = idl_record_of<nas_network_radio_access_technology_type_v01>(rat_fields);

static constexpr idl_field pcs_digit_fields[] = {
    IDL_HALF(IN_RECORD, nas_mnc_pcs_digit_include_status_type_v01, mcc),
    IDL_HALF(IN_RECORD, nas_mnc_pcs_digit_include_status_type_v01, mnc),
    IDL_BYTE(IN_RECORD, nas_mnc_pcs_digit_include_status_type_v01, mnc_includes_pcs_digit),
};
static constexpr idl_record pcs_digit_form = idl_record_of<nas_mnc_pcs_digit_include_status_type_v01>(pcs_digit_fields);

static constexpr idl_field scan_req_fields[] = {
    IDL_OPT_BYTE(0x10, nas_perform_network_scan_req_msg_v01, network_type),
    IDL_RESERVED(      nas_perform_network_scan_req_msg_v01, reserved),
};
static constexpr idl_field scan_resp_fields[] = {
    IDL_RESULT                (      nas_perform_network_scan_resp_msg_v01, resp),
    IDL_OPT_WIDE_COUNTED_TABLE(0x10, nas_perform_network_scan_resp_msg_v01, nas_3gpp_network_info, network_info_form),
    IDL_OPT_WIDE_COUNTED_TABLE(0x11, nas_perform_network_scan_resp_msg_v01, nas_network_radio_access_technology, rat_form),
    IDL_OPT_WIDE_COUNTED_TABLE(0x12, nas_perform_network_scan_resp_msg_v01, mnc_includes_pcs_digit, pcs_digit_form),
    IDL_OPT_WORD              (0x13, nas_perform_network_scan_resp_msg_v01, scan_result),
    IDL_RESERVED              (      nas_perform_network_scan_resp_msg_v01, reserved),
};
static constexpr idl_field incremental_req_fields[] = {
    IDL_OPT_BYTE(0x10, nas_perform_incremental_network_scan_req_msg_v01, network_type),
    IDL_RESERVED(      nas_perform_incremental_network_scan_req_msg_v01, reserved),
};
static constexpr idl_field incremental_resp_fields[] = {
    IDL_RESULT(nas_perform_incremental_network_scan_resp_msg_v01, resp),
};

static constexpr idl_message nas_messages[] = {
    idl_make<nas_perform_network_scan_req_msg_v01>(
        QMI_NAS_PERFORM_NETWORK_SCAN_REQ_MSG_V01,             REQUEST,  scan_req_fields,              4,   272),
    idl_make<nas_perform_network_scan_resp_msg_v01>(
        QMI_NAS_PERFORM_NETWORK_SCAN_REQ_MSG_V01,             RESPONSE, scan_resp_fields,         10869, 18040),
    idl_make<nas_perform_incremental_network_scan_req_msg_v01>(
        QMI_NAS_PERFORM_INCREMENTAL_NETWORK_SCAN_REQ_MSG_V01, REQUEST,  incremental_req_fields,       4,   568),
    idl_make<nas_perform_incremental_network_scan_resp_msg_v01>(
        QMI_NAS_PERFORM_INCREMENTAL_NETWORK_SCAN_REQ_MSG_V01, RESPONSE, incremental_resp_fields,      7,     8),
};
// clang-format on
IDL_PROVE(nas_messages);

static constexpr qmi_idl_service_object nas_service = idl_service(3, 1, 388, nas_messages, 10869);
IDL_PROVE_SERVICE(nas_service);

qmi_idl_service_object_type nas_get_service_object_internal_v01(int32_t version, int32_t minor_version,
                                                                int32_t library_version)
{
    return version == 1 && minor_version == 388 && library_version == static_cast<int32_t>(IDL_LIBRARY_VERSION)
               ? &nas_service
               : nullptr;
}
