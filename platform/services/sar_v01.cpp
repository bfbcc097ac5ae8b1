/* Message tables of the service sar. */
#include "services/sar_v01.h"

// clang-format off
static constexpr idl_field set_state_req_fields[] = {
    IDL_WORD    (0x01, sar_rf_set_state_req_msg_v01, state),
    IDL_RESERVED(      sar_rf_set_state_req_msg_v01, reserved),
};
static constexpr idl_field set_state_resp_fields[] = {
    IDL_RESULT(sar_rf_set_state_resp_msg_v01, resp),
};
static constexpr idl_field get_state_resp_fields[] = {
    IDL_RESULT  (      sar_rf_get_state_resp_msg_v01, resp),
    IDL_OPT_WORD(0x10, sar_rf_get_state_resp_msg_v01, state),
    IDL_RESERVED(      sar_rf_get_state_resp_msg_v01, reserved),
};

static constexpr idl_message sar_messages[] = {
    idl_make<sar_rf_set_state_req_msg_v01> (SAR_RF_SET_STATE_REQ_V01, REQUEST,  set_state_req_fields,   7, 32),
    idl_make<sar_rf_set_state_resp_msg_v01>(SAR_RF_SET_STATE_REQ_V01, RESPONSE, set_state_resp_fields,  7,  8),
    idl_empty                              (SAR_RF_GET_STATE_REQ_V01, REQUEST),
    idl_make<sar_rf_get_state_resp_msg_v01>(SAR_RF_GET_STATE_REQ_V01, RESPONSE, get_state_resp_fields, 14, 40),
};
// clang-format on
IDL_PROVE(sar_messages);

static constexpr qmi_idl_service_object sar_service = idl_service(17, 1, 15, sar_messages, 14);
IDL_PROVE_SERVICE(sar_service);

qmi_idl_service_object_type sar_get_service_object_internal_v01(int32_t version, int32_t minor_version,
                                                                int32_t library_version)
{
    return version == 1 && minor_version == 15 && library_version == static_cast<int32_t>(IDL_LIBRARY_VERSION)
               ? &sar_service
               : nullptr;
}
