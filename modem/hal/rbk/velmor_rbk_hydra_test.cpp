/* Group 7: statistics parsed from a diag packet, and the report of the statistics engine's own debug record. Both print
 * straight to standard output, whatever the masks say; what goes wrong on the way is logged. */
#include "velmor_rbk_groups.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "modem_stats_unpk.h"
#include "velmor_extend_cmn.h"
#include "velmor_utils_cmn.h"

// ---- Sub-command 0: the parser on a packet of the program's own ----

#define SAMPLE_LEN 48  // bytes; zeros stand behind it for the reads that run over its end

static const uint8_t sample[SAMPLE_LEN + MODEM_STATS_UNPK_SLACK] = {
    0x01, 0x00, 0x03, 0x00, 0x01, 0x49, 0x27, 0x03, 0xc7, 0xb4, 0xfc, 0x60, 0x17, 0x01, 0x4f, 0x06,  //
    0x6e, 0x8b, 0x06, 0x00, 0xe8, 0xeb, 0x05, 0x00, 0x14, 0x00, 0x14, 0x00, 0xc7, 0xb4, 0xfc, 0x60,  //
    0x07, 0x00, 0x00, 0x00, 0xcc, 0x01, 0x02, 0x0b, 0x00, 0x02, 0x0a, 0x8a, 0x76, 0x00, 0x01, 0x00,
};

static int velmor_test_modem_stats_parsing_process(int argc, char *argv[])
{
    if (argc <= 3) {
        LOG(1, "note: Too few parameters, Pls refer to the following cmd:");
        return 0;
    }
    const int32_t print = atoi(argv[3]);
    LOG(2, "length = %d, print_flag = %d", SAMPLE_LEN, print);
    g_unpk_print_flag = print;
    velmor_test_modem_stats_parsing_process_do(SAMPLE_LEN, sample);
    return 1;
}

// ---- Sub-command 1: the debug record ----

/* A field of the record: the first version that has it, and its bytes. */
struct debug_field {
    const char *name;
    uint8_t     size;
    uint8_t     version;
};

// clang-format off
static constexpr debug_field main_fields[] = {
    {"g_modem_stats_feature_enable_status", 1, 0},
    {"g_unpk_version_not_support_num",      8, 0},
    {"g_modem_stats_cmd_ok_count",          8, 0},
    {"g_modem_stats_cmd_fail_count",        8, 0},
    {"hydra_system_heapi_mem_max_num",      8, 2},
    {"hydra_system_heapi_mem_cur_num",      8, 2},
    {"modem_statsi_cmd_q_count",            4, 2},
    {"modem_statsi_cmd_free_q_count",       4, 2},
    {"g_hydra_log_mask",                    4, 4},
    {"g_hydra_log_stats_mask",              4, 4},
};

static constexpr debug_field diag_fields[] = {
    {"init_state",                  1, 0},
    {"listener_event_num",          4, 0},
    {"listener_event_state",        1, 0},
    {"listener_event_call_num",     4, 0},
    {"listener_event_parse_num",    4, 0},
    {"listener_log_num",            4, 0},
    {"listener_log_state",          1, 0},
    {"listener_log_call_num",       8, 0},
    {"listener_log_parse_num",      8, 0},
    {"poll_update_call_num",        4, 0},
    {"poll_update_parse_num",       4, 0},
    {"listener_event_callback_num", 8, 1},
    {"listener_log_callback_num",   8, 1},
    {"lte_cell_id_invalid_num",     4, 1},
    {"nr5g_cell_id_invalid_num",    4, 1},
    {"event_duration_ms_max",       4, 2},
    {"log_duration_ms_max",         4, 2},
    {"do_duration_ms_max",          4, 2},
    {"debug_call_num",              4, 2},
    {"debug_parse_num",             4, 2},
    {"cust_event_call_num",         4, 3},
    {"cust_event_parse_num",        4, 3},
};

static constexpr debug_field cm_fields[] = {
    {"init_state",                     1, 0},
    {"listener_state",                 1, 0},
    {"listener_call_event_call_num",   4, 0},
    {"listener_call_event_parse_num",  4, 0},
    {"listener_subs_event_call_num",   4, 0},
    {"listener_subs_event_parse_num",  4, 0},
    {"listener_ss_event_call_num",     4, 0},
    {"listener_ss_event_parse_num",    4, 0},
    {"listener_stats_event_call_num",  4, 0},
    {"listener_stats_event_parse_num", 4, 0},
    {"poll_update_rf_call_num",        4, 0},
    {"poll_update_rf_parse_num",       4, 0},
    {"poll_update_lte_call_num",       4, 0},
    {"poll_update_lte_parse_num",      4, 0},
    {"poll_update_nr5g_call_num",      4, 0},
    {"poll_update_nr5g_parse_num",     4, 0},
};

static constexpr debug_field uim_fields[] = {
    {"init_state",               1, 0},
    {"listener_state",           1, 0},
    {"listener_event_call_num",  4, 0},
    {"listener_event_parse_num", 4, 0},
};
// clang-format on

/* Bytes of the fields that a version has. */
template <size_t N>
static constexpr uint32_t size_of(const debug_field (&fields)[N], uint32_t version)
{
    uint32_t size = 0;
    for (const debug_field &field : fields)
        if (field.version <= version) size += field.size;
    return size;
}

/* The longest record stays inside the response, so that its fields need no bound of their own. */
static_assert(1 + size_of(main_fields, 255) + size_of(diag_fields, 255) + size_of(cm_fields, 255) +
                  size_of(uim_fields, 255) <=
              sizeof(common_rsp::payload));

/* Prints a field's line. Result: its value. */
static uint64_t print_field(const uint8_t *data, uint32_t size, const char *name)
{
    uint64_t value = 0;
    memcpy(&value, data, size);
    STATS_PRINT("UNPK[size:%d], %s = %lu", size, name, value);
    return value;
}

/* Prints the fields of a section that the version has. Result: bytes read. */
template <size_t N>
static int32_t print_section(const uint8_t *data, const debug_field (&fields)[N], uint32_t version)
{
    if (data == nullptr) {
        STATS_PRINT("ptr is null");
        return 0;
    }
    int32_t read = 0;
    for (const debug_field &field : fields) {
        if (field.version > version) continue;
        print_field(data + read, field.size, field.name);
        read += field.size;
    }
    return read;
}

static int32_t velmor_modem_stats_main_info_unpk(const uint8_t *data, uint32_t version)
{
    return print_section(data, main_fields, version);
}

static int32_t velmor_modem_stats_diag_info_unpk(const uint8_t *data, uint32_t version)
{
    return print_section(data, diag_fields, version);
}

static int32_t velmor_modem_stats_cm_info_unpk(const uint8_t *data, uint32_t version)
{
    return print_section(data, cm_fields, version);
}

static int32_t velmor_modem_stats_uim_info_unpk(const uint8_t *data, uint32_t version)
{
    return print_section(data, uim_fields, version);
}

/* The whole record, section by section. */
static void print_debug_info(const uint8_t *data)
{
    static const struct {
        const char *word;
        int32_t (*unpk)(const uint8_t *data, uint32_t version);
    } sections[] = {
        {"main", velmor_modem_stats_main_info_unpk},
        {"diag", velmor_modem_stats_diag_info_unpk},
        {"cm", velmor_modem_stats_cm_info_unpk},
        {"uim", velmor_modem_stats_uim_info_unpk},
    };

    const uint32_t version = static_cast<uint32_t>(print_field(data, 1, "version"));
    int32_t        cnt = 1;
    for (const auto &section : sections) {
        STATS_PRINT("-------- stats %s info start --------", section.word);
        cnt += section.unpk(data + cnt, version);
        STATS_PRINT("-------- stats %s info end, cnt(%d) --------", section.word, cnt);
    }
}

// ---- The check: how the engine does, in one word ----

static void print_banner(const char *word_line)
{
    STATS_PRINT("===========================================");
    STATS_PRINT("%s", word_line);
    STATS_PRINT("===========================================");
}

/* The number that the modem gave counts, and what lies past its answer reads as 0. */
static void print_log_ids(const common_rsp *rsp, uint32_t log_num)
{
    for (uint32_t i = 0; i < log_num; ++i) {
        const uint32_t at = sizeof(uint16_t) * (1 + i);
        uint16_t       log_id = 0;
        if (at + sizeof(log_id) <= sizeof(rsp->payload)) memcpy(&log_id, rsp->payload + at, sizeof(log_id));
        STATS_PRINT("log_id[%d]: 0x%04X", i, log_id);
    }
}

/* Reads and prints the field at `pointer`, and moves on to the next one. */
#define MODEM_STATS_DATA_UNPK_EX2(pointer, variable, size, name)                 \
    do {                                                                         \
        if ((pointer) == nullptr) {                                              \
            STATS_PRINT("%s: MODEM_STATS_DATA_UNPK_EX2, ptr is NULL", __func__); \
        } else {                                                                 \
            (variable) = print_field(pointer, size, name);                       \
            (pointer) += (size);                                                 \
        }                                                                        \
    } while (0)

static void velmor_modem_stats_support_status_check(const uint8_t *data)
{
    if (data == nullptr) {
        STATS_PRINT("velmor_modem_stats_support_status_check, ptr is null");
        return;
    }
    struct {
        uint64_t version;
        uint64_t feature_enable_status;
        uint64_t version_not_support_num;
        uint64_t cmd_ok_count;
        uint64_t cmd_fail_count;
    } head = {};
    MODEM_STATS_DATA_UNPK_EX2(data, head.version, 1, "version");
    MODEM_STATS_DATA_UNPK_EX2(data, head.feature_enable_status, 1, "modem_stats_feature_enable_status");
    MODEM_STATS_DATA_UNPK_EX2(data, head.version_not_support_num, 8, "version_not_support_num");
    MODEM_STATS_DATA_UNPK_EX2(data, head.cmd_ok_count, 8, "modem_stats_cmd_ok_count");
    MODEM_STATS_DATA_UNPK_EX2(data, head.cmd_fail_count, 8, "modem_stats_cmd_fail_count");
    if (head.feature_enable_status == 0) {
        print_banner("================ CLOSED ===================");
        return;
    }
    if (head.version_not_support_num == 0) {
        print_banner("================ SUCCES ===================");
        return;
    }

    common_rsp    rsp_not_support;
    const int32_t result = velmor_common_qmi_req(COMMON_CMD_STATS_LACKED, 0, nullptr, &rsp_not_support);
    if (result != 0) {
        LOG(1, "velmor_common_qmi_req fail, result = %d, rsp_not_support.result = %d", result, rsp_not_support.result);
        return;
    }
    if (rsp_not_support.result != 0) {
        LOG(1, "qmi response fail, result = %d, rsp_not_support.result = %d", result, rsp_not_support.result);
        return;
    }
    const uint8_t *list = rsp_not_support.payload;
    uint64_t       log_num = 0;
    MODEM_STATS_DATA_UNPK_EX2(list, log_num, 2, "log_num");
    print_banner("================= FAIL ====================");
    STATS_PRINT("Diag logs to be upgraded[num:%d]:", static_cast<int32_t>(log_num));
    print_log_ids(&rsp_not_support, static_cast<uint32_t>(log_num));
}

static void velmor_test_modem_stats_get_debug_info_do(int32_t type)
{
    LOG(2, "Get the debug info of modem_stats, mask = 0x%x", type);
    common_rsp    rsp;
    const int32_t result = velmor_common_qmi_req(COMMON_CMD_DEBUG_INFO, 0, nullptr, &rsp);
    if (result != 0) {
        LOG(1, "velmor_common_qmi_req fail, REQUEST_ID_COMMON, result = %d, rsp.result = %d", result, rsp.result);
        return;
    }
    if (rsp.result != 0) {
        LOG(1, "qmi response fail, result = %d, rsp.result = %d", result, rsp.result);
        return;
    }
    if (type == 0) {
        velmor_modem_stats_support_status_check(rsp.payload);
    } else {
        print_debug_info(rsp.payload);
    }
}

/* A report that fails counts as run: its message tells. */
static int velmor_test_modem_stats_get_debug_info(int argc, char *argv[])
{
    if (argc < 4) {
        LOG(1, "note: Too few parameters, Pls refer to the following cmd:");
        return 0;
    }
    velmor_test_modem_stats_get_debug_info_do(atoi(argv[3]));
    return 1;
}

// ---- The group ----

// Named after the other statistics group on purpose, as that one's is after this.
void velmor_test_qmi_modem_stats_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_STATS) return;
    // clang-format off
    LOG(8, "%d: velmor modem stats test", RBK_GROUP_STATS);
    LOG(8, "   rbk %d 0 print                 /* modem stats diag-parsed test */", RBK_GROUP_STATS);
    LOG(8, "                                    print: 0 - print-off for temp info, 1 - print-on for temp info ");
    LOG(8, "   rbk %d 1 type                  /* get the debug info of modem stats */", RBK_GROUP_STATS);
    LOG(8, "                                    type: 0 - check, 1 - debuginfo ");
    // clang-format on
}

/* Unlike in the other groups, an operation's result of 0 is its failure. */
int velmor_test_modem_stats_do(int argc, char *argv[])
{
    bool help_wanted = true;
    if (argc < 3) {
        LOG(1, "note: Too few parameters, Pls refer to the following cmd:");
    } else if (atoi(argv[1]) != RBK_GROUP_STATS) {
        LOG(1, "note: the first parameters should be %d, Pls refer to the following cmd:", RBK_GROUP_STATS);
    } else {
        const int type = atoi(argv[2]);
        switch (type) {
        case 0:
            help_wanted = (velmor_test_modem_stats_parsing_process(argc, argv) & 0xFF) == 0;
            if (help_wanted) LOG(1, "velmor_test_modem_stats_parsing_process FAIL");
            break;
        case 1:
            help_wanted = velmor_test_modem_stats_get_debug_info(argc, argv) == 0;
            if (help_wanted) LOG(1, "velmor_test_modem_stats_get_debug_info FAIL");
            break;
        default: LOG(1, "invalid type = %d", type); break;
        }
    }
    if (help_wanted) show_help(RBK_GROUP_STATS);
    return 0;
}
