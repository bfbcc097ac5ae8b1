/* Structures of the modem's Persistent Device Configuration service, and the service object that describes them.
 *
 * A configuration is known by its id, at most 124 bytes that mean nothing to anybody but the modem. Every request is only
 * acknowledged by its response; what came of it is told by an indication with the request's message id.
 *
 * Lengths in what the modem says are foreign: they are kept as they were sent and may be above the room behind them. */
#ifndef PDC_V01_H
#define PDC_V01_H

#include "qmi_idl.h"

#ifdef __cplusplus
extern "C" {
#endif

constexpr uint32_t PDC_SERVICE_ID = 36;
constexpr uint32_t PDC_VERSION = 1;
constexpr uint32_t PDC_MINOR_VERSION = 16;
constexpr uint32_t PDC_LONGEST = 32920;  // bytes of TLVs of the longest message, the load request

constexpr uint32_t PDC_CONFIG_ID_MAX = 124;    // bytes
constexpr uint32_t PDC_CONFIG_LIST_MAX = 25;   // configurations in one indication
constexpr uint32_t PDC_CONFIG_DESC_MAX = 255;  // bytes
constexpr uint32_t PDC_FRAME_MAX = 32768;      // bytes, of a configuration and of a report
constexpr uint32_t PDC_LAST_FRAME = 0xFFFFFFFF;

enum : uint32_t {
    PDC_GET_SELECTED_CONFIG_V01 = 34,
    PDC_SET_SELECTED_CONFIG_V01 = 35,
    PDC_LIST_CONFIGS_V01 = 36,
    PDC_DELETE_CONFIG_V01 = 37,
    PDC_LOAD_CONFIG_V01 = 38,
    PDC_ACTIVATE_CONFIG_V01 = 39,
    PDC_GET_CONFIG_INFO_V01 = 40,
    PDC_GET_DEFAULT_CONFIG_INFO_V01 = 42,
    PDC_DEACTIVATE_CONFIG_V01 = 43,
    PDC_VALIDATE_CONFIG_V01 = 44,
    PDC_SET_FEATURE_V01 = 46,
};

/* What a configuration is for. Other numbers may stand here too. */
enum pdc_config_type_enum_v01 : uint32_t {
    PDC_CONFIG_TYPE_MODEM_PLATFORM_V01 = 0,
    PDC_CONFIG_TYPE_MODEM_SW_V01 = 1,
};

/* How a configuration comes into force: 0 as it was selected, 1 applied once more. */
enum pdc_activation_type_enum_v01 : uint32_t {
    PDC_ACTIVATION_REGULAR_V01 = 0,
    PDC_ACTIVATION_REFRESH_V01 = 1,
};

struct pdc_config_info_v01 {  // inside messages: which configuration
    pdc_config_type_enum_v01 config_type;
    uint32_t                 config_id_len;
    uint8_t                  config_id[PDC_CONFIG_ID_MAX];
};

// ---- Requests ----

struct pdc_get_selected_config_req_v01 {
    pdc_config_type_enum_v01 config_type;
    uint8_t                  ind_token_valid;
    uint32_t                 ind_token;
    uint8_t                  subscription_id_valid;
    uint32_t                 subscription_id;
    uint8_t                  slot_id_valid;
    uint32_t                 slot_id;
};

struct pdc_set_selected_config_req_v01 {
    pdc_config_info_v01 new_config_info;
    uint8_t             ind_token_valid;
    uint32_t            ind_token;
    uint8_t             subscription_id_valid;
    uint32_t            subscription_id;
    uint8_t             slot_id_valid;
    uint32_t            slot_id;
};

struct pdc_list_configs_req_v01 {
    uint8_t                  ind_token_valid;
    uint32_t                 ind_token;
    uint8_t                  config_type_valid;
    pdc_config_type_enum_v01 config_type;
    uint8_t                  follow_up_valid;
    uint8_t                  follow_up;  // 1: what comes behind the chunk that was told last
};

struct pdc_delete_config_req_v01 {
    pdc_config_type_enum_v01 config_type;
    uint8_t                  ind_token_valid;
    uint32_t                 ind_token;
    uint8_t                  config_id_valid;
    uint32_t                 config_id_len;
    uint8_t                  config_id[PDC_CONFIG_ID_MAX];
};

struct pdc_config_frame_v01 {  // a piece of a configuration on its way into the modem
    pdc_config_type_enum_v01 config_type;
    uint32_t                 config_id_len;
    uint8_t                  config_id[PDC_CONFIG_ID_MAX];
    uint32_t                 total_size;  // bytes of the whole configuration
    uint32_t                 config_frame_len;
    uint8_t                  config_frame[PDC_FRAME_MAX];
};

struct pdc_load_config_req_v01 {
    pdc_config_frame_v01 frame;
    uint8_t              ind_token_valid;
    uint32_t             ind_token;
    uint8_t              word_11_valid;
    uint32_t             word_11;  // TLV 0x11, which nothing here sets
};

struct pdc_activate_config_req_v01 {
    pdc_config_type_enum_v01     config_type;
    uint8_t                      ind_token_valid;
    uint32_t                     ind_token;
    uint8_t                      activation_type_valid;
    pdc_activation_type_enum_v01 activation_type;
    uint8_t                      subscription_id_valid;
    uint32_t                     subscription_id;
    uint8_t                      slot_id_valid;
    uint32_t                     slot_id;
};

struct pdc_config_info_req_v01 {  // configuration information, and validate
    pdc_config_info_v01 config_info;
    uint8_t             ind_token_valid;
    uint32_t            ind_token;
};

struct pdc_config_type_req_v01 {  // default information, and set feature
    pdc_config_type_enum_v01 config_type;
    uint8_t                  ind_token_valid;
    uint32_t                 ind_token;
};

struct pdc_deactivate_config_req_v01 {
    pdc_config_type_enum_v01 config_type;
    uint8_t                  ind_token_valid;
    uint32_t                 ind_token;
    uint8_t                  subscription_id_valid;
    uint32_t                 subscription_id;
};

// ---- The response of every message ----

struct pdc_resp_v01 {
    qmi_response_type resp;
};

// ---- Indications ----

struct pdc_result_ind_v01 {  // select, delete, activate, deactivate, set feature
    uint16_t error;          // a QMI error, 0 for success
    uint8_t  ind_token_valid;
    uint32_t ind_token;
};

struct pdc_get_selected_config_ind_v01 {
    uint16_t error;
    uint8_t  ind_token_valid;
    uint32_t ind_token;
    uint8_t  active_id_valid;
    uint32_t active_id_len;
    uint8_t  active_id[PDC_CONFIG_ID_MAX];
    uint8_t  pending_id_valid;
    uint32_t pending_id_len;
    uint8_t  pending_id[PDC_CONFIG_ID_MAX];
};

struct pdc_list_configs_ind_v01 {
    uint16_t            error;
    uint8_t             ind_token_valid;
    uint32_t            ind_token;
    uint8_t             config_list_valid;
    uint32_t            config_list_len;
    pdc_config_info_v01 config_list[PDC_CONFIG_LIST_MAX];
    uint8_t             more_available_valid;
    uint8_t             more_available;
};

struct pdc_load_config_ind_v01 {
    uint16_t error;
    uint8_t  ind_token_valid;
    uint32_t ind_token;
    uint8_t  received_valid;
    uint32_t received;  // bytes so far
    uint8_t  remaining_valid;
    uint32_t remaining;  // bytes still wanted
    uint8_t  frame_data_reset_valid;
    uint8_t  frame_data_reset;
};

struct pdc_get_config_info_ind_v01 {
    uint16_t error;
    uint8_t  ind_token_valid;
    uint32_t ind_token;
    uint8_t  total_size_valid;
    uint32_t total_size;
    uint8_t  config_desc_valid;
    uint32_t config_desc_len;
    uint8_t  config_desc[PDC_CONFIG_DESC_MAX];
    uint8_t  config_version_valid;
    uint32_t config_version;
    uint8_t  second_version_valid;
    uint32_t second_version;
};

struct pdc_get_default_config_info_ind_v01 {
    uint16_t error;
    uint8_t  ind_token_valid;
    uint32_t ind_token;
    uint8_t  config_version_valid;
    uint32_t config_version;
    uint8_t  total_size_valid;
    uint32_t total_size;
    uint8_t  config_desc_valid;
    uint32_t config_desc_len;
    uint8_t  config_desc[PDC_CONFIG_DESC_MAX];
};

struct pdc_validate_config_ind_v01 {
    uint16_t error;
    uint8_t  ind_token_valid;
    uint32_t ind_token;
    uint8_t  frame_index_valid;
    uint32_t frame_index;  // PDC_LAST_FRAME in the last one
    uint8_t  result_frame_valid;
    uint32_t result_frame_len;
    uint8_t  result_frame[PDC_FRAME_MAX];
};

/* The service object of the service.
 *   version, minor_version, library_version  of the service and of the tables' form: 1, 16, 6
 * Result: the object, which lives as long as the process; null for any other versions. Threads: any. */
qmi_idl_service_object_type pdc_get_service_object_internal_v01(int32_t version, int32_t minor_version,
                                                                int32_t library_version);

#ifdef __cplusplus
}
#endif
#endif
