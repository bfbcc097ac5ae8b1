/* Message tables of the PDC service. The figures beside the rows are the service's own: the longest form of each message
 * in bytes of TLVs, and the bytes of its structure. */
#include "services/pdc_v01.h"

// clang-format off

// ---- Records ----

static constexpr idl_field config_info_fields[] = {
    IDL_WORD         (IN_RECORD, pdc_config_info_v01, config_type),
    IDL_COUNTED_ARRAY(IN_RECORD, pdc_config_info_v01, config_id),
};
static constexpr idl_record config_info_form = idl_record_of<pdc_config_info_v01>(config_info_fields);

static constexpr idl_field config_frame_fields[] = {
    IDL_WORD         (IN_RECORD, pdc_config_frame_v01, config_type),
    IDL_COUNTED_ARRAY(IN_RECORD, pdc_config_frame_v01, config_id),
    IDL_WORD         (IN_RECORD, pdc_config_frame_v01, total_size),
    IDL_COUNTED_ARRAY(IN_RECORD, pdc_config_frame_v01, config_frame),
};
static constexpr idl_record config_frame_form = idl_record_of<pdc_config_frame_v01>(config_frame_fields);

// ---- Requests ----

static constexpr idl_field get_selected_req[] = {
    IDL_WORD    (0x01, pdc_get_selected_config_req_v01, config_type),
    IDL_OPT_WORD(0x10, pdc_get_selected_config_req_v01, ind_token),
    IDL_OPT_WORD(0x11, pdc_get_selected_config_req_v01, subscription_id),
    IDL_OPT_WORD(0x12, pdc_get_selected_config_req_v01, slot_id),
};
static constexpr idl_field set_selected_req[] = {
    IDL_RECORD  (0x01, pdc_set_selected_config_req_v01, new_config_info, config_info_form),
    IDL_OPT_WORD(0x10, pdc_set_selected_config_req_v01, ind_token),
    IDL_OPT_WORD(0x11, pdc_set_selected_config_req_v01, subscription_id),
    IDL_OPT_WORD(0x12, pdc_set_selected_config_req_v01, slot_id),
};
static constexpr idl_field list_req[] = {
    IDL_OPT_WORD(0x10, pdc_list_configs_req_v01, ind_token),
    IDL_OPT_WORD(0x11, pdc_list_configs_req_v01, config_type),
    IDL_OPT_BYTE(0x12, pdc_list_configs_req_v01, follow_up),
};
static constexpr idl_field delete_req[] = {
    IDL_WORD             (0x01, pdc_delete_config_req_v01, config_type),
    IDL_OPT_WORD         (0x10, pdc_delete_config_req_v01, ind_token),
    IDL_OPT_COUNTED_ARRAY(0x11, pdc_delete_config_req_v01, config_id),
};
static constexpr idl_field load_req[] = {
    IDL_RECORD  (0x01, pdc_load_config_req_v01, frame, config_frame_form),
    IDL_OPT_WORD(0x10, pdc_load_config_req_v01, ind_token),
    IDL_OPT_WORD(0x11, pdc_load_config_req_v01, word_11),
};
static constexpr idl_field activate_req[] = {
    IDL_WORD    (0x01, pdc_activate_config_req_v01, config_type),
    IDL_OPT_WORD(0x10, pdc_activate_config_req_v01, ind_token),
    IDL_OPT_WORD(0x11, pdc_activate_config_req_v01, activation_type),
    IDL_OPT_WORD(0x12, pdc_activate_config_req_v01, subscription_id),
    IDL_OPT_WORD(0x13, pdc_activate_config_req_v01, slot_id),
};
static constexpr idl_field config_info_req[] = {
    IDL_RECORD  (0x01, pdc_config_info_req_v01, config_info, config_info_form),
    IDL_OPT_WORD(0x10, pdc_config_info_req_v01, ind_token),
};
static constexpr idl_field config_type_req[] = {
    IDL_WORD    (0x01, pdc_config_type_req_v01, config_type),
    IDL_OPT_WORD(0x10, pdc_config_type_req_v01, ind_token),
};
static constexpr idl_field deactivate_req[] = {
    IDL_WORD    (0x01, pdc_deactivate_config_req_v01, config_type),
    IDL_OPT_WORD(0x10, pdc_deactivate_config_req_v01, ind_token),
    IDL_OPT_WORD(0x11, pdc_deactivate_config_req_v01, subscription_id),
};

// ---- The response ----

static constexpr idl_field resp_fields[] = {IDL_RESULT(pdc_resp_v01, resp)};

// ---- Indications ----

static constexpr idl_field result_ind[] = {
    IDL_HALF    (0x01, pdc_result_ind_v01, error),
    IDL_OPT_WORD(0x10, pdc_result_ind_v01, ind_token),
};
static constexpr idl_field get_selected_ind[] = {
    IDL_HALF             (0x01, pdc_get_selected_config_ind_v01, error),
    IDL_OPT_WORD         (0x10, pdc_get_selected_config_ind_v01, ind_token),
    IDL_OPT_COUNTED_ARRAY(0x11, pdc_get_selected_config_ind_v01, active_id),
    IDL_OPT_COUNTED_ARRAY(0x12, pdc_get_selected_config_ind_v01, pending_id),
};
static constexpr idl_field list_ind[] = {
    IDL_HALF             (0x01, pdc_list_configs_ind_v01, error),
    IDL_OPT_WORD         (0x10, pdc_list_configs_ind_v01, ind_token),
    IDL_OPT_COUNTED_TABLE(0x11, pdc_list_configs_ind_v01, config_list, config_info_form),
    IDL_OPT_BYTE         (0x12, pdc_list_configs_ind_v01, more_available),
};
static constexpr idl_field load_ind[] = {
    IDL_HALF    (0x01, pdc_load_config_ind_v01, error),
    IDL_OPT_WORD(0x10, pdc_load_config_ind_v01, ind_token),
    IDL_OPT_WORD(0x11, pdc_load_config_ind_v01, received),
    IDL_OPT_WORD(0x12, pdc_load_config_ind_v01, remaining),
    IDL_OPT_BYTE(0x13, pdc_load_config_ind_v01, frame_data_reset),
};
static constexpr idl_field config_info_ind[] = {
    IDL_HALF             (0x01, pdc_get_config_info_ind_v01, error),
    IDL_OPT_WORD         (0x10, pdc_get_config_info_ind_v01, ind_token),
    IDL_OPT_WORD         (0x11, pdc_get_config_info_ind_v01, total_size),
    IDL_OPT_COUNTED_ARRAY(0x12, pdc_get_config_info_ind_v01, config_desc),
    IDL_OPT_WORD         (0x13, pdc_get_config_info_ind_v01, config_version),
    IDL_OPT_WORD         (0x16, pdc_get_config_info_ind_v01, second_version),
};
static constexpr idl_field default_info_ind[] = {
    IDL_HALF             (0x01, pdc_get_default_config_info_ind_v01, error),
    IDL_OPT_WORD         (0x10, pdc_get_default_config_info_ind_v01, ind_token),
    IDL_OPT_WORD         (0x11, pdc_get_default_config_info_ind_v01, config_version),
    IDL_OPT_WORD         (0x12, pdc_get_default_config_info_ind_v01, total_size),
    IDL_OPT_COUNTED_ARRAY(0x13, pdc_get_default_config_info_ind_v01, config_desc),
};
static constexpr idl_field validate_ind[] = {
    IDL_HALF             (0x01, pdc_validate_config_ind_v01, error),
    IDL_OPT_WORD         (0x10, pdc_validate_config_ind_v01, ind_token),
    IDL_OPT_WORD         (0x11, pdc_validate_config_ind_v01, frame_index),
    IDL_OPT_COUNTED_ARRAY(0x12, pdc_validate_config_ind_v01, result_frame),
};

// ---- Messages ----

static constexpr idl_message acknowledged(uint16_t id)
{
    return idl_make<pdc_resp_v01>(id, RESPONSE, resp_fields, 7, 8);
}

/* Nothing here sends the messages without fields or reads what they tell: the modem may say them all the same. */
static constexpr idl_message pdc_messages[] = {
    idl_make<pdc_get_selected_config_req_v01>(34, REQUEST, get_selected_req,    28,    28),
    idl_make<pdc_set_selected_config_req_v01>(35, REQUEST, set_selected_req,   153,   156),
    idl_make<pdc_list_configs_req_v01>       (36, REQUEST, list_req,            18,    20),
    idl_make<pdc_delete_config_req_v01>      (37, REQUEST, delete_req,         142,   144),
    idl_make<pdc_load_config_req_v01>        (38, REQUEST, load_req,         32920, 32924),
    idl_make<pdc_activate_config_req_v01>    (39, REQUEST, activate_req,        35,    36),
    idl_make<pdc_config_info_req_v01>        (40, REQUEST, config_info_req,    139,   140),
    idl_make<pdc_config_type_req_v01>        (42, REQUEST, config_type_req,     14,    12),
    idl_make<pdc_deactivate_config_req_v01>  (43, REQUEST, deactivate_req,      21,    20),
    idl_make<pdc_config_info_req_v01>        (44, REQUEST, config_info_req,    139,   140),
    idl_make<pdc_config_type_req_v01>        (46, REQUEST, config_type_req,     14,    12),
    idl_empty( 0, REQUEST), idl_empty(32, REQUEST), idl_empty(33, REQUEST), idl_empty(41, REQUEST),
    idl_empty(45, REQUEST), idl_empty(47, REQUEST), idl_empty(48, REQUEST), idl_empty(49, REQUEST),
    idl_empty(50, REQUEST),

    acknowledged(34), acknowledged(35), acknowledged(36), acknowledged(37), acknowledged(38),
    acknowledged(39), acknowledged(40), acknowledged(42), acknowledged(43), acknowledged(44),
    acknowledged(46), acknowledged( 0), acknowledged(32), acknowledged(33), acknowledged(41),
    acknowledged(45), acknowledged(47), acknowledged(48), acknowledged(49), acknowledged(50),

    idl_make<pdc_get_selected_config_ind_v01>    (34, INDICATION, get_selected_ind,   268,   272),
    idl_make<pdc_result_ind_v01>                 (35, INDICATION, result_ind,          12,     8),
    idl_make<pdc_list_configs_ind_v01>           (36, INDICATION, list_ind,          3245,  3320),
    idl_make<pdc_result_ind_v01>                 (37, INDICATION, result_ind,          12,     8),
    idl_make<pdc_load_config_ind_v01>            (38, INDICATION, load_ind,            30,    28),
    idl_make<pdc_result_ind_v01>                 (39, INDICATION, result_ind,          12,     8),
    idl_make<pdc_get_config_info_ind_v01>        (40, INDICATION, config_info_ind,    292,   292),
    idl_make<pdc_get_default_config_info_ind_v01>(42, INDICATION, default_info_ind,   285,   288),
    idl_make<pdc_result_ind_v01>                 (43, INDICATION, result_ind,          12,     8),
    idl_make<pdc_validate_config_ind_v01>        (44, INDICATION, validate_ind,     32792, 32792),
    idl_make<pdc_result_ind_v01>                 (46, INDICATION, result_ind,          12,     8),
    idl_empty(33, INDICATION), idl_empty(41, INDICATION), idl_empty(45, INDICATION), idl_empty(47, INDICATION),
    idl_empty(48, INDICATION), idl_empty(49, INDICATION), idl_empty(50, INDICATION),
};
// clang-format on
IDL_PROVE(pdc_messages);

static constexpr uint32_t count_of(qmi_idl_type_of_message kind)
{
    uint32_t count = 0;
    for (const idl_message& message : pdc_messages)
        if (message.kind == kind) ++count;
    return count;
}
static_assert(count_of(REQUEST) == 20 && count_of(RESPONSE) == 20 && count_of(INDICATION) == 18);

static constexpr qmi_idl_service_object pdc_service =
    idl_service(PDC_SERVICE_ID, PDC_VERSION, PDC_MINOR_VERSION, pdc_messages, PDC_LONGEST);
IDL_PROVE_SERVICE(pdc_service);

qmi_idl_service_object_type pdc_get_service_object_internal_v01(int32_t version, int32_t minor_version,
                                                                int32_t library_version)
{
    if (version != static_cast<int32_t>(PDC_VERSION) || minor_version != static_cast<int32_t>(PDC_MINOR_VERSION) ||
        library_version != static_cast<int32_t>(IDL_LIBRARY_VERSION))
        return nullptr;
    return &pdc_service;
}
