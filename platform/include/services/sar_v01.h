/* The published service sar (17): which transmit power table the modem works by. */
#ifndef SAR_V01_H
#define SAR_V01_H

#include "qmi_idl.h"

#ifdef __cplusplus
extern "C" {
#endif

#define SAR_RF_SET_STATE_REQ_V01 0x0001
#define SAR_RF_GET_STATE_REQ_V01 0x0002

struct sar_rf_set_state_req_msg_v01 {
    uint32_t state;         // DSI: 1 to 20, 0 for none
    uint8_t  reserved[28];  // optional fields that aren't used
};

struct sar_rf_set_state_resp_msg_v01 {
    qmi_response_type resp;
};

struct sar_rf_get_state_resp_msg_v01 {
    qmi_response_type resp;
    uint8_t           state_valid;
    uint32_t          state;
    uint8_t           reserved[24];
};

/* The service object for exactly these versions (1, 15, 6), null for any others. Threads: any. */
qmi_idl_service_object_type sar_get_service_object_internal_v01(int32_t version, int32_t minor_version,
                                                                int32_t library_version);

#ifdef __cplusplus
}
#endif
#endif
