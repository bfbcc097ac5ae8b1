/* Message tables of the service uim. */
#include "services/uim_v01.h"

// clang-format off
static constexpr idl_field pin_fields[] = {
    IDL_ENUM8(IN_RECORD, uim_pin_info_type_v01, pin_state),
    IDL_BYTE (IN_RECORD, uim_pin_info_type_v01, pin_retries),
    IDL_BYTE (IN_RECORD, uim_pin_info_type_v01, puk_retries),
};
static constexpr idl_record pin_form = idl_record_of<uim_pin_info_type_v01>(pin_fields);

static constexpr idl_field app_fields[] = {
    IDL_ENUM8        (IN_RECORD, uim_app_info_type_v01, app_type),
    IDL_ENUM8        (IN_RECORD, uim_app_info_type_v01, app_state),
    IDL_ENUM8        (IN_RECORD, uim_app_info_type_v01, perso_state),
    IDL_ENUM8        (IN_RECORD, uim_app_info_type_v01, perso_feature),
    IDL_BYTE         (IN_RECORD, uim_app_info_type_v01, perso_retries),
    IDL_BYTE         (IN_RECORD, uim_app_info_type_v01, perso_unblock_retries),
    IDL_COUNTED_ARRAY(IN_RECORD, uim_app_info_type_v01, aid),
    IDL_BYTE         (IN_RECORD, uim_app_info_type_v01, univ_pin),
    IDL_RECORD       (IN_RECORD, uim_app_info_type_v01, pin1, pin_form),
    IDL_RECORD       (IN_RECORD, uim_app_info_type_v01, pin2, pin_form),
};
static constexpr idl_record app_form = idl_record_of<uim_app_info_type_v01>(app_fields);

static constexpr idl_field card_fields[] = {
    IDL_ENUM8        (IN_RECORD, uim_card_info_type_v01, card_state),
    IDL_RECORD       (IN_RECORD, uim_card_info_type_v01, upin, pin_form),
    IDL_ENUM8        (IN_RECORD, uim_card_info_type_v01, error_code),
    IDL_COUNTED_TABLE(IN_RECORD, uim_card_info_type_v01, app_info, app_form),
};
static constexpr idl_record card_form = idl_record_of<uim_card_info_type_v01>(card_fields);

static constexpr idl_field status_fields[] = {
    IDL_HALF         (IN_RECORD, uim_card_status_type_v01, index_gw_pri),
    IDL_HALF         (IN_RECORD, uim_card_status_type_v01, index_1x_pri),
    IDL_HALF         (IN_RECORD, uim_card_status_type_v01, index_gw_sec),
    IDL_HALF         (IN_RECORD, uim_card_status_type_v01, index_1x_sec),
    IDL_COUNTED_TABLE(IN_RECORD, uim_card_status_type_v01, card_info, card_form),
};
static constexpr idl_record status_form = idl_record_of<uim_card_status_type_v01>(status_fields);

static constexpr idl_field card_result_fields[] = {
    IDL_BYTE(IN_RECORD, uim_card_result_type_v01, sw1),
    IDL_BYTE(IN_RECORD, uim_card_result_type_v01, sw2),
};
static constexpr idl_record card_result_form = idl_record_of<uim_card_result_type_v01>(card_result_fields);

static constexpr idl_field result_resp_fields[] = {
    IDL_RESULT(uim_result_resp_msg_v01, resp),
};
static constexpr idl_field card_status_req_fields[] = {
    IDL_OPT_BYTE(0x10, uim_get_card_status_req_msg_v01, extended_card_status),
};
static constexpr idl_field card_status_resp_fields[] = {
    IDL_RESULT    (      uim_get_card_status_resp_msg_v01, resp),
    IDL_OPT_RECORD(0x10, uim_get_card_status_resp_msg_v01, card_status, status_form),
    IDL_OPT_RECORD(0x15, uim_get_card_status_resp_msg_v01, extended_card_status, status_form),
    IDL_RESERVED  (      uim_get_card_status_resp_msg_v01, reserved),
};
static constexpr idl_field power_down_req_fields[] = {
    IDL_ENUM8(0x01, uim_power_down_req_msg_v01, slot),
};
static constexpr idl_field power_up_req_fields[] = {
    IDL_ENUM8    (0x01, uim_power_up_req_msg_v01, slot),
    IDL_OPT_BYTE (0x10, uim_power_up_req_msg_v01, ignore_hotswap_switch),
    IDL_OPT_ENUM8(0x11, uim_power_up_req_msg_v01, card_mode),
};
static constexpr idl_field apdu_req_fields[] = {
    IDL_ENUM8        (0x01, uim_send_apdu_req_msg_v01, slot),
    IDL_COUNTED_ARRAY(0x02, uim_send_apdu_req_msg_v01, apdu),
    IDL_OPT_BYTE     (0x10, uim_send_apdu_req_msg_v01, channel_id),
    IDL_OPT_BYTE     (0x11, uim_send_apdu_req_msg_v01, procedure_bytes),
    IDL_RESERVED     (      uim_send_apdu_req_msg_v01, reserved),
};
static constexpr idl_field apdu_resp_fields[] = {
    IDL_RESULT           (      uim_send_apdu_resp_msg_v01, resp),
    IDL_OPT_COUNTED_ARRAY(0x10, uim_send_apdu_resp_msg_v01, apdu),
    IDL_RESERVED         (      uim_send_apdu_resp_msg_v01, reserved),
};
static constexpr idl_field channel_req_fields[] = {
    IDL_ENUM8            (0x01, uim_logical_channel_req_msg_v01, slot),
    IDL_OPT_COUNTED_ARRAY(0x10, uim_logical_channel_req_msg_v01, aid),
    IDL_OPT_BYTE         (0x11, uim_logical_channel_req_msg_v01, channel_id),
    IDL_OPT_ENUM8        (0x12, uim_logical_channel_req_msg_v01, file_control_information),
    IDL_OPT_BYTE         (0x13, uim_logical_channel_req_msg_v01, terminate_application),
};
static constexpr idl_field open_req_fields[] = {
    IDL_ENUM8            (0x01, uim_open_logical_channel_req_msg_v01, slot),
    IDL_OPT_COUNTED_ARRAY(0x10, uim_open_logical_channel_req_msg_v01, aid),
    IDL_OPT_ENUM8        (0x11, uim_open_logical_channel_req_msg_v01, file_control_information),
};
static constexpr idl_field channel_resp_fields[] = {
    IDL_RESULT           (      uim_channel_resp_msg_v01, resp),
    IDL_OPT_BYTE         (0x10, uim_channel_resp_msg_v01, channel_id),
    IDL_OPT_RECORD       (0x11, uim_channel_resp_msg_v01, card_result, card_result_form),
    IDL_OPT_COUNTED_ARRAY(0x12, uim_channel_resp_msg_v01, select_response),
    IDL_OPT_COUNTED_ARRAY(0x13, uim_channel_resp_msg_v01, channel_data),
};
static constexpr idl_field eid_req_fields[] = {
    IDL_ENUM8(0x01, uim_get_eid_req_msg_v01, slot),
};
static constexpr idl_field eid_resp_fields[] = {
    IDL_RESULT           (      uim_get_eid_resp_msg_v01, resp),
    IDL_OPT_COUNTED_ARRAY(0x10, uim_get_eid_resp_msg_v01, eid),
};
static constexpr idl_field sim_type_req_fields[] = {
    IDL_COUNTED_ARRAY(0x01, uim_set_sim_type_req_msg_v01, sim_type),
};

static constexpr idl_message uim_messages[] = {
    idl_make<uim_get_card_status_req_msg_v01> (QMI_UIM_GET_CARD_STATUS_REQ_V01, REQUEST,  card_status_req_fields,     4,     2),
    idl_make<uim_get_card_status_resp_msg_v01>(QMI_UIM_GET_CARD_STATUS_REQ_V01, RESPONSE, card_status_resp_fields, 3771, 10616),
    idl_make<uim_power_down_req_msg_v01>      (QMI_UIM_POWER_DOWN_REQ_V01,      REQUEST,  power_down_req_fields,      4,     4),
    idl_make<uim_result_resp_msg_v01>         (QMI_UIM_POWER_DOWN_REQ_V01,      RESPONSE, result_resp_fields,         7,     8),
    idl_make<uim_power_up_req_msg_v01>        (QMI_UIM_POWER_UP_REQ_V01,        REQUEST,  power_up_req_fields,       12,    12),
    idl_make<uim_result_resp_msg_v01>         (QMI_UIM_POWER_UP_REQ_V01,        RESPONSE, result_resp_fields,         7,     8),
    idl_make<uim_send_apdu_req_msg_v01>       (QMI_UIM_SEND_APDU_REQ_V01,       REQUEST,  apdu_req_fields,         1041,  1056),
    idl_make<uim_send_apdu_resp_msg_v01>      (QMI_UIM_SEND_APDU_REQ_V01,       RESPONSE, apdu_resp_fields,        1036,  1052),
    idl_make<uim_logical_channel_req_msg_v01> (QMI_UIM_LOGICAL_CHANNEL_REQ_V01, REQUEST,  channel_req_fields,        52,    56),
    idl_make<uim_channel_resp_msg_v01>        (QMI_UIM_LOGICAL_CHANNEL_REQ_V01, RESPONSE, channel_resp_fields,     1304,  1304),
    idl_make<uim_open_logical_channel_req_msg_v01>(
                                          QMI_UIM_OPEN_LOGICAL_CHANNEL_REQ_V01, REQUEST,  open_req_fields,           44,    52),
    idl_make<uim_channel_resp_msg_v01>   (QMI_UIM_OPEN_LOGICAL_CHANNEL_REQ_V01, RESPONSE, channel_resp_fields,     1304,  1304),
    idl_make<uim_get_eid_req_msg_v01>         (QMI_UIM_GET_EID_REQ_V01,         REQUEST,  eid_req_fields,             4,     4),
    idl_make<uim_get_eid_resp_msg_v01>        (QMI_UIM_GET_EID_REQ_V01,         RESPONSE, eid_resp_fields,           27,    32),
    idl_make<uim_set_sim_type_req_msg_v01>    (QMI_UIM_SET_SIM_TYPE_REQ_V01,    REQUEST,  sim_type_req_fields,       24,    24),
    idl_make<uim_result_resp_msg_v01>         (QMI_UIM_SET_SIM_TYPE_REQ_V01,    RESPONSE, result_resp_fields,         7,     8),
};
// clang-format on
IDL_PROVE(uim_messages);

static constexpr qmi_idl_service_object uim_service = idl_service(11, 1, 103, uim_messages, 3771);
IDL_PROVE_SERVICE(uim_service);

qmi_idl_service_object_type uim_get_service_object_internal_v01(int32_t version, int32_t minor_version,
                                                                int32_t library_version)
{
    return version == 1 && minor_version == 103 && library_version == static_cast<int32_t>(IDL_LIBRARY_VERSION)
               ? &uim_service
               : nullptr;
}
