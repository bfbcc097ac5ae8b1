/* Structures of the modem's extended service, and the service object that describes them.
 *
 * The names of the fields that the system neither sets nor reads are those of their place: word_1 is TLV 1. */
#ifndef VELMOR_EXTEND_V01_H
#define VELMOR_EXTEND_V01_H

#include "qmi_idl.h"

constexpr uint32_t EXTEND_SERVICE_ID = 0xFFE4;
constexpr uint32_t EXTEND_VERSION = 1;
constexpr uint32_t EXTEND_MINOR_VERSION = 1;
constexpr uint32_t EXTEND_LONGEST = 1553;  // bytes of TLVs of the longest message, the request 10

constexpr uint32_t EXTEND_DATA_MAX = 550;  // bytes of an envelope's data

constexpr uint32_t EXTEND_MSG_ENVELOPE = 2;  // the only message that the system sends

struct extend_envelope {             // messages 2 and 3, in every direction
    uint32_t qmi_id;                 // request: what is asked; response: 0, or the service's error
    uint32_t data_len;               // bytes of data that mean something; foreign in a response
    uint8_t  data_valid;             // 1 when TLV 0x10 is there
    uint8_t  data[EXTEND_DATA_MAX];  // always whole on the wire, zero behind data_len
};

struct extend_envelope_ex {  // request 4
    uint32_t qmi_id;
    uint32_t data_len;
    uint8_t  data_valid;
    uint8_t  data[EXTEND_DATA_MAX];
    uint8_t  byte_11_valid;
    uint8_t  byte_11;
};

struct stat_value {
    uint64_t value;
    uint32_t words[4];
};

struct stat_record {
    uint64_t value;
    uint32_t words[12];
};

struct stat_group {
    uint32_t   values_len;  // values that mean something; foreign, may be above 5
    stat_value values[5];
};

struct extend_words_2 {  // responses 4, 10 and 12, indication 7
    uint32_t word_1;
    uint32_t word_2;
};

struct extend_records_ind {  // indication 5
    uint32_t    word_1;
    uint32_t    word_2;
    stat_record table[20];
};

struct extend_groups_ind {  // indication 6
    uint32_t   word_1;
    uint32_t   word_2;
    stat_group table[10];
};

struct extend_value_ind {  // indication 8
    uint32_t   word_1;
    stat_value value;
};

struct extend_longs_ind {  // indication 9
    uint32_t word_1;
    uint32_t word_2;
    uint64_t table[50];
};

struct extend_values_req {  // request 10
    uint32_t   word_1;
    uint32_t   word_2;
    stat_value table[64];
};

struct extend_words_5 {  // indication 11
    uint32_t word_1;
    uint32_t word_2;
    uint32_t word_3;
    uint32_t word_4;
    uint32_t word_5;
};

struct extend_byte_req {  // request 12
    uint32_t word_1;
    uint32_t word_2;
    uint8_t  byte_3;
};

struct extend_event_ind {  // indication 13
    uint32_t word_1;
    uint32_t word_2;
    uint64_t long_3;
    uint32_t word_4;
};

/* The service object of the extended service.
 *   version, minor_version, library_version  of the service and of the tables' form: 1, 1, 6
 * Result: the object, which lives as long as the process; null for any other versions. Threads: any. */
qmi_idl_service_object_type velmor_extend_get_service_object_internal_v01(int32_t version, int32_t minor_version,
                                                                          int32_t library_version);

#endif
