/* The published service uim (11): cards, their power, the EID, logical channels and APDUs. */
#ifndef UIM_V01_H
#define UIM_V01_H

#include "qmi_idl.h"

#ifdef __cplusplus
extern "C" {
#endif

#define QMI_UIM_GET_CARD_STATUS_REQ_V01      0x002F
#define QMI_UIM_POWER_DOWN_REQ_V01           0x0030
#define QMI_UIM_POWER_UP_REQ_V01             0x0031
#define QMI_UIM_SEND_APDU_REQ_V01            0x003B
#define QMI_UIM_LOGICAL_CHANNEL_REQ_V01      0x003F
#define QMI_UIM_OPEN_LOGICAL_CHANNEL_REQ_V01 0x0042
#define QMI_UIM_GET_EID_REQ_V01              0x0065
#define QMI_UIM_SET_SIM_TYPE_REQ_V01         0x007A

#define QMI_UIM_CARDS_MAX_V01           5
#define QMI_UIM_APPS_MAX_V01            8
#define QMI_UIM_AID_MAX_V01             32
#define QMI_UIM_APDU_MAX_V01            1024
#define QMI_UIM_SELECT_RESPONSE_MAX_V01 255
#define QMI_UIM_CHANNEL_DATA_MAX_V01    1024
#define QMI_UIM_EID_LEN_V01             16
#define QMI_UIM_SIM_TYPES_MAX_V01       5

/* Enumerations: a word in memory, a byte on the wire. */
typedef uint32_t uim_slot_enum_v01;        // 1: the first slot
typedef uint32_t uim_card_state_enum_v01;  // 0 absent, 1 present, 2 error
typedef uint32_t uim_card_error_enum_v01;  // why a card is in state 2
typedef uint32_t uim_pin_state_enum_v01;
typedef uint32_t uim_app_type_enum_v01;
typedef uint32_t uim_app_state_enum_v01;
typedef uint32_t uim_perso_state_enum_v01;
typedef uint32_t uim_perso_feature_enum_v01;
typedef uint32_t uim_card_mode_enum_v01;
typedef uint32_t uim_file_control_enum_v01;  // which file control information a select asks for

struct uim_pin_info_type_v01 {
    uim_pin_state_enum_v01 pin_state;
    uint8_t                pin_retries;
    uint8_t                puk_retries;
};

struct uim_app_info_type_v01 {
    uim_app_type_enum_v01      app_type;
    uim_app_state_enum_v01     app_state;
    uim_perso_state_enum_v01   perso_state;
    uim_perso_feature_enum_v01 perso_feature;
    uint8_t                    perso_retries;
    uint8_t                    perso_unblock_retries;
    uint32_t                   aid_len;
    uint8_t                    aid[QMI_UIM_AID_MAX_V01];
    uint8_t                    univ_pin;  // 1: the universal PIN stands in the place of PIN 1
    uim_pin_info_type_v01      pin1;
    uim_pin_info_type_v01      pin2;
};

struct uim_card_info_type_v01 {
    uim_card_state_enum_v01 card_state;
    uim_pin_info_type_v01   upin;
    uim_card_error_enum_v01 error_code;
    uint32_t                app_info_len;
    uim_app_info_type_v01   app_info[QMI_UIM_APPS_MAX_V01];
};

/* Indices: slot in the high byte, application in the low byte, 0xFFFF for none. */
struct uim_card_status_type_v01 {
    uint16_t               index_gw_pri;
    uint16_t               index_1x_pri;
    uint16_t               index_gw_sec;
    uint16_t               index_1x_sec;
    uint32_t               card_info_len;  // as sent, also when there are more than have room
    uim_card_info_type_v01 card_info[QMI_UIM_CARDS_MAX_V01];
};

struct uim_card_result_type_v01 {
    uint8_t sw1;
    uint8_t sw2;
};

/* The answer to requests that have nothing but a result. */
struct uim_result_resp_msg_v01 {
    qmi_response_type resp;
};

struct uim_get_card_status_req_msg_v01 {
    uint8_t extended_card_status_valid;
    uint8_t extended_card_status;  // 1: the answer has the extended status
};

struct uim_get_card_status_resp_msg_v01 {
    qmi_response_type        resp;
    uint8_t                  card_status_valid;
    uim_card_status_type_v01 card_status;
    uint8_t                  extended_card_status_valid;
    uim_card_status_type_v01 extended_card_status;
    uint8_t                  reserved[4296];  // optional fields that aren't read
};

struct uim_power_down_req_msg_v01 {
    uim_slot_enum_v01 slot;
};

struct uim_power_up_req_msg_v01 {
    uim_slot_enum_v01      slot;
    uint8_t                ignore_hotswap_switch_valid;
    uint8_t                ignore_hotswap_switch;  // 1: power whatever the switch of the tray says
    uint8_t                card_mode_valid;
    uim_card_mode_enum_v01 card_mode;
};

struct uim_send_apdu_req_msg_v01 {
    uim_slot_enum_v01 slot;
    uint32_t          apdu_len;
    uint8_t           apdu[QMI_UIM_APDU_MAX_V01];
    uint8_t           channel_id_valid;
    uint8_t           channel_id;
    uint8_t           procedure_bytes_valid;
    uint8_t           procedure_bytes;
    uint8_t           reserved[20];
};

struct uim_send_apdu_resp_msg_v01 {
    qmi_response_type resp;
    uint8_t           apdu_valid;
    uint32_t          apdu_len;  // as sent, also when it is longer than the room
    uint8_t           apdu[QMI_UIM_APDU_MAX_V01];
    uint8_t           reserved[12];
};

/* Opens with an AID, closes with a channel. */
struct uim_logical_channel_req_msg_v01 {
    uim_slot_enum_v01         slot;
    uint8_t                   aid_valid;
    uint32_t                  aid_len;
    uint8_t                   aid[QMI_UIM_AID_MAX_V01];
    uint8_t                   channel_id_valid;
    uint8_t                   channel_id;
    uint8_t                   file_control_information_valid;
    uim_file_control_enum_v01 file_control_information;
    uint8_t                   terminate_application_valid;
    uint8_t                   terminate_application;
};

struct uim_open_logical_channel_req_msg_v01 {
    uim_slot_enum_v01         slot;
    uint8_t                   aid_valid;
    uint32_t                  aid_len;
    uint8_t                   aid[QMI_UIM_AID_MAX_V01];
    uint8_t                   file_control_information_valid;
    uim_file_control_enum_v01 file_control_information;
};

/* Of both channel messages. */
struct uim_channel_resp_msg_v01 {
    qmi_response_type        resp;
    uint8_t                  channel_id_valid;
    uint8_t                  channel_id;
    uint8_t                  card_result_valid;
    uim_card_result_type_v01 card_result;
    uint8_t                  select_response_valid;
    uint32_t                 select_response_len;
    uint8_t                  select_response[QMI_UIM_SELECT_RESPONSE_MAX_V01];
    uint8_t                  channel_data_valid;
    uint32_t                 channel_data_len;
    uint8_t                  channel_data[QMI_UIM_CHANNEL_DATA_MAX_V01];
};

struct uim_get_eid_req_msg_v01 {
    uim_slot_enum_v01 slot;
};

struct uim_get_eid_resp_msg_v01 {
    qmi_response_type resp;
    uint8_t           eid_valid;
    uint32_t          eid_len;
    uint8_t           eid[QMI_UIM_EID_LEN_V01];
};

struct uim_set_sim_type_req_msg_v01 {
    uint32_t sim_type_len;
    uint32_t sim_type[QMI_UIM_SIM_TYPES_MAX_V01];  // a type for each slot, in order
};

/* The service object for exactly these versions (1, 103, 6), null for any others. Threads: any. */
qmi_idl_service_object_type uim_get_service_object_internal_v01(int32_t version, int32_t minor_version,
                                                                int32_t library_version);

#ifdef __cplusplus
}
#endif
#endif
