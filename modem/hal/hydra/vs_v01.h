/* Structures of the modem's statistics service `vs`, and the service object that describes them.
 *
 * The system sends the messages 3 and 0x0207 and hands on the indications. The fields of all others bear the names of
 * their place: word_1 is TLV 1. */
#ifndef VS_V01_H
#define VS_V01_H

#include "qmi_idl.h"

constexpr uint32_t VS_SERVICE_ID = 228;
constexpr uint32_t VS_VERSION = 1;
constexpr uint32_t VS_MINOR_VERSION = 2;
constexpr uint32_t VS_LONGEST = 10672;  // bytes of TLVs of the longest message, the indication 0x0203

constexpr uint32_t VS_MSG_BYTES = 0x0000;
constexpr uint32_t VS_MSG_SET_FEATURE_STATUS = 0x0003;
constexpr uint32_t VS_MSG_GET_STATS_PARAMETER = 0x0207;

constexpr uint32_t VS_IND_2 = 0x0004;
constexpr uint32_t VS_IND_STATS = 0x0203;
constexpr uint32_t VS_IND_BYTES = 0x0204;
constexpr uint32_t VS_IND_BYTE = 0x0601;

constexpr uint32_t VS_VALUE_MAX = 700;  // bytes of one parameter's value
constexpr uint32_t VS_PARAMETERS_MAX = 10;
constexpr uint32_t VS_MORE_PARAMETERS_MAX = 5;  // of the indication's second table
constexpr uint32_t VS_IND_BYTES_MAX = 100;

/* One value of the statistics, in requests, responses and indications. */
struct vs_stats_parameter {
    uint16_t sub;          // subscription that the value belongs to; 0 in a request
    uint16_t second_word;  // 0 in a request; nobody reads it in an answer
    uint32_t id;           // statistics parameter
    uint32_t value_len;    // bytes; foreign in an answer, may be above the room
    uint8_t  value[VS_VALUE_MAX];
};

struct vs_set_feature_status_req {  // request 3
    uint32_t feature;
    uint8_t  status;
    uint8_t  value_valid;
    uint8_t  value;
};

struct vs_get_stats_parameter_req {  // request 0x0207
    uint16_t           sub;
    uint16_t           slot;
    uint32_t           parameters_len;
    vs_stats_parameter parameters[VS_PARAMETERS_MAX];
};

struct vs_get_stats_parameter_rsp {  // response 0x0207
    qmi_response_type  resp;
    uint8_t            parameters_valid;
    uint32_t           parameters_len;  // foreign, may be above 10
    vs_stats_parameter parameters[VS_PARAMETERS_MAX];
};

struct vs_result_rsp {  // every response without TLVs of its own
    qmi_response_type resp;
};

struct vs_bytes_512_req {  // request 0x0000
    uint32_t bytes_1_len;
    uint8_t  bytes_1[512];
};

struct vs_bytes_512_rsp {  // response 0x0000
    qmi_response_type resp;
    uint32_t          bytes_3_len;  // foreign, may be above 512
    uint8_t           bytes_3[512];
};

struct vs_optional_bytes_req {  // request 0x0001
    uint8_t byte_10_valid;
    uint8_t byte_10;
    uint8_t byte_11_valid;
    uint8_t byte_11;
};

struct vs_word_req {  // requests 0x0002, 0x0109, 0x010B
    uint32_t word_1;
};

struct vs_two_bytes_rsp {  // response 0x0002
    qmi_response_type resp;
    uint8_t           byte_3;
    uint8_t           byte_4;
};

struct vs_bytes_256_rsp {  // responses 0x0100, 0x0103, 0x0106, 0x0109
    qmi_response_type resp;
    uint32_t          bytes_3_len;
    uint8_t           bytes_3[256];
};

struct vs_word_byte_half_req {  // requests 0x0100, 0x0102
    uint32_t word_1;
    uint8_t  byte_2;
    uint16_t half_3;
};

struct vs_word_byte_half_bytes_req {  // request 0x0101
    uint32_t word_1;
    uint8_t  byte_2;
    uint16_t half_3;
    uint32_t bytes_4_len;
    uint8_t  bytes_4[256];
};

struct vs_word_half_req {  // requests 0x0103, 0x0105
    uint32_t word_1;
    uint16_t half_2;
};

struct vs_word_half_bytes_req {  // request 0x0104
    uint32_t word_1;
    uint16_t half_2;
    uint32_t bytes_3_len;
    uint8_t  bytes_3[256];
};

struct vs_text_half_byte_req {  // requests 0x0106, 0x0108
    char     text_1[101];
    uint16_t half_2;
    uint8_t  byte_3;
};

struct vs_text_half_byte_bytes_req {  // request 0x0107
    char     text_1[101];
    uint16_t half_2;
    uint8_t  byte_3;
    uint32_t bytes_4_len;
    uint8_t  bytes_4[256];
};

struct vs_word_bytes_req {  // request 0x010A
    uint32_t word_1;
    uint32_t bytes_2_len;
    uint8_t  bytes_2[256];
};

struct vs_byte_word_half_req {  // request 0x010C
    uint8_t  byte_1;
    uint32_t word_2;
    uint16_t half_3;
};

struct vs_byte_optional_word_req {  // request 0x0200
    uint8_t  byte_1;
    uint8_t  word_10_valid;
    uint32_t word_10;
};

struct vs_optional_word_rsp {  // response 0x0200
    qmi_response_type resp;
    uint8_t           word_10_valid;
    uint32_t          word_10;
};

struct vs_condition {  // element of request 0x0201
    uint32_t word;
    uint32_t words_len;
    uint32_t words[5];
    uint8_t  byte;
    uint64_t longs[2];
    uint8_t  last_byte;
};

struct vs_conditions_req {  // request 0x0201
    uint32_t     word_1;
    uint32_t     table_2_len;
    vs_condition table_2[100];
    uint8_t      half_10_valid;
    uint16_t     half_10;
    uint8_t      half_11_valid;
    uint16_t     half_11;
};

struct vs_words_req {  // request 0x0202
    uint32_t word_1;
    uint32_t words_2_len;
    uint32_t words_2[100];
    uint8_t  half_10_valid;
    uint16_t half_10;
    uint8_t  half_11_valid;
    uint16_t half_11;
};

struct vs_halves_words_req {  // request 0x0208
    uint16_t half_1;
    uint16_t half_2;
    uint32_t words_3_len;
    uint32_t words_3[10];
};

struct vs_ind_2 {  // indication 0x0004
    uint32_t word_1;
    uint8_t  byte_2;
    uint8_t  byte_3;
};

struct vs_ind_stats {  // indication 0x0203
    uint32_t           word_1;
    uint32_t           table_2_len;  // the counts are foreign, may be above the room
    vs_stats_parameter table_2[VS_PARAMETERS_MAX];
    uint8_t            table_10_valid;
    uint32_t           table_10_len;
    vs_stats_parameter table_10[VS_MORE_PARAMETERS_MAX];
    uint8_t            word_11_valid;
    uint32_t           word_11;
};

struct vs_ind_bytes {  // indication 0x0204
    uint32_t word_1;
    uint32_t bytes_2_len;  // foreign, may be above 100
    uint8_t  bytes_2[VS_IND_BYTES_MAX];
    uint16_t half_3;
    uint16_t half_4;
};

struct vs_ind_byte {  // indication 0x0601
    uint8_t byte_1;
};

/* The service object of `vs`.
 *   version, minor_version, library_version  of the service and of the tables' form: 1, 2, 6
 * Result: the object, which lives as long as the process; null for any other versions. Threads: any. */
qmi_idl_service_object_type vs_get_service_object_internal_v01(int32_t version, int32_t minor_version,
                                                               int32_t library_version);

#endif
