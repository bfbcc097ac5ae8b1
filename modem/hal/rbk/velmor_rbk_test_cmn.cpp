/* Groups 5 and 6: cards, sensors and raw diag commands; raw data to the extended service. Numbers as people type them. */
#include "velmor_rbk_test_cmn.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "velmor_diag_send.h"
#include "velmor_extend_api.h"
#include "velmor_extend_cmn.h"
#include "velmor_extend_sar_nas.h"
#include "velmor_rbk_groups.h"
#include "velmor_utils_cmn.h"

#define HEX_DIGITS_MAX    48   // hex digits of one word, leading zeros included
#define QMI_ID_COUNT      6    // request ids of the extended service that may be sent by hand
#define SEND_DATA_LEN_MAX 500  // bytes of one request; words behind them aren't read
#define SEND_DATA_SIZE    512  // of its buffers, bytes
#define CARD_WORDS_MAX    4    // of a card command

/* Words: rbk 5 0 <mode> <type> <time_out> <byte> ... */
#define ARG_DIAG_MODE    3
#define ARG_DIAG_TYPE    4
#define ARG_DIAG_TIMEOUT 5
#define ARG_DIAG_DATA    6

#define JUDGE_DSI_PROP     "debug.modem.sar.judge_dsi"
#define DEVICE_STATES_MAX  100  // indices that are asked for; the table ends earlier
#define DEVICE_STATE_UNSET (-255)

// ---- Text to number ----

static int32_t hex_digit(char character)
{
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    return 0;
}

int32_t velmor_hex_string_to_int(const char *text)
{
    if (text == nullptr) {
        LOG(1, "\ninput is null\n\n");
        return 0;
    }
    const size_t digit_count = strlen(text);
    if (digit_count > HEX_DIGITS_MAX) {
        LOG(1, "hex digits(%zu) are out of range(%d)", digit_count, HEX_DIGITS_MAX);
        return 0;
    }
    // Each product is cut to 31 bits before it is added, and the sum wraps: "80000000" is 0x7FFFFFFF, "FFFFFFFF" is
    // 0x8FFFFFFE. People's scripts count on what came out so far, so both stay.
    uint32_t sum = 0;
    for (size_t i = 0; i < digit_count; i++) {
        const double product = ldexp(hex_digit(text[i]), 4 * (int)(digit_count - 1 - i));
        sum += product < INT32_MAX ? (uint32_t)product : (uint32_t)INT32_MAX;
    }
    return (int32_t)sum;
}

int32_t velmor_string_to_int(const char *text)
{
    if (text == nullptr) {
        LOG(1, "\ninput is null\n\n");
        return 0;
    }
    if (text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) return velmor_hex_string_to_int(text + 2);
    return atoi(text);
}

// ---- Help ----

void velmor_test_cmn_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_CMN) return;
    // clang-format off
    LOG(8, "%d: cmn option cmd: ", RBK_GROUP_CMN);
    LOG(8, "   rbk %d %d mode type time_out cmd_cnt", RBK_GROUP_CMN, 0);
    LOG(8, "                                 /* diag cmd */");
    LOG(8, "                                    mode: 0 - callback, 1 - dci; ");
    LOG(8, "                                    type: 0 - with result, 1 - without result; ");
    LOG(8, "                                    time_out: unit:ms */");
    LOG(8, "                                    cmd_cnt: diag cmd bytes */");
    LOG(8, "   rbk %d %d                       /* card status query: 0 - absent, 1 - present", RBK_GROUP_CMN, 1);
    LOG(8, "   rbk %d %d sub                   /* card status get, sub: 0 or 1; ret: 0 - absent, 1 - present */", RBK_GROUP_CMN, 2);
    LOG(8, "   rbk %d %d sub mode set_val      /* card status set, sub: 0 or 1; mode: 0 - general, 1 - sim; set_val: 0 - low, 1 - high */", RBK_GROUP_CMN, 3);
    LOG(8, "   rbk %d %d                       /* card type query: 0 - err, 1 - single sim, 2 - mult sim */", RBK_GROUP_CMN, 4);
    LOG(8, "   rbk %d %d                       /* get sar dsi */", RBK_GROUP_CMN, 5);
    LOG(8, "   rbk %d %d dsi                   /* set sar dsi, dsi - the value to be set */", RBK_GROUP_CMN, 7);
    LOG(8, "   rbk %d %d                       /* get device state */", RBK_GROUP_CMN, 8);
    LOG(8, "   rbk %d %d opt option_list       /* card slot hotswap test */", RBK_GROUP_CMN, 6);
    LOG(8, "                                    opt: 0 - stop hotswap test, 1 - start hotswap test ");
    LOG(8, "                                    option_list(when opt is 1 for blew inputs): ");
    LOG(8, "                                      seconds_after_push : the seconds of waiting after push the card slot ");
    LOG(8, "                                      seconds_after_pull : the seconds of waiting after pull the card slot ");
    LOG(8, "   rbk %d %d esim_on debug_on     /* set esim state */", RBK_GROUP_CMN, 10);
    LOG(8, "                                    esim_on  : 1 - switch to eSIM,2 - switch to PSIM2 ");
    LOG(8, "                                    debug_on : 0 - disable log print,1 - enable log print ");
    // clang-format on
}

void velmor_test_qmi_send_data_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_SEND_DATA) return;
    // clang-format off
    LOG(8, "%d: velmor qmi send_data", RBK_GROUP_SEND_DATA);
    LOG(8, "   rbk %d qmi_id qmi_data         /* qmi_id: Any binary data you will send */", RBK_GROUP_SEND_DATA);
    LOG(8, "                                    qmi_data: Any binary data you will send ");
    // clang-format on
}

// ---- Group 5: raw diag commands ----

/* Hands the request to the send that the two words choose; any word but 0 is DCI, and without result. */
static int32_t send_diag(const char *name, const uint8_t *request, uint32_t len, int work_mode, int io_type,
                         int wait_time_ms, uint8_t *reply, int32_t *reply_len)
{
    const uint32_t timeout_ms = static_cast<uint32_t>(wait_time_ms);
    if (work_mode == 0 && io_type == 0) {
        LOG_FROM(name, __LINE__, 2, "callback mode with result");
        return velmor_diag_cmd_send_with_result_by_callback_mode(request, len, timeout_ms, reply, reply_len);
    }
    if (work_mode == 0) {
        /* Not waited for: the process may end before the worker has done anything. Meant so. */
        LOG_FROM(name, __LINE__, 2, "callback mode without result");
        return velmor_diag_cmd_send_without_result_by_callback_mode(request, len);
    }
    if (io_type == 0) {
        LOG_FROM(name, __LINE__, 2, "dci mode with result");
        return velmor_diag_cmd_send_with_result_by_dci_mode(request, len, timeout_ms, reply, reply_len);
    }
    LOG_FROM(name, __LINE__, 2, "dci mode without result");
    const int32_t result = velmor_diag_cmd_send_without_result_by_dci_mode(request, len);
    usleep(timeout_ms * 1000);
    return result;
}

static int32_t velmor_cmn_diag_cmd_send(int argc, char *argv[])
{
    uint8_t request[DIAG_CMD_LEN_MAX] = {};
    uint8_t reply[DIAG_RSP_LEN_MAX] = {};
    int32_t reply_len = sizeof(reply);
    if (argc <= ARG_DIAG_DATA) {
        LOG(1, "note: Too few inputs, Pls refer to the following cmd:");
        return 0;
    }
    const int work_mode = atoi(argv[ARG_DIAG_MODE]);
    const int io_type = atoi(argv[ARG_DIAG_TYPE]);
    const int wait_time_ms = atoi(argv[ARG_DIAG_TIMEOUT]);
    LOG(2, "work_mode: %d, io_type: %d, wait_time_ms: %d", work_mode, io_type, wait_time_ms);

    /* Words behind the buffer are counted: such a request is refused by its length, and none is cut. */
    const int count = argc - ARG_DIAG_DATA;
    printf("diag cmd:\n");
    for (int i = 0; i < count && i < DIAG_CMD_LEN_MAX; ++i) {
        request[i] = static_cast<uint8_t>(velmor_string_to_int(argv[ARG_DIAG_DATA + i]));
        printf("0x%02X ", request[i]);
    }
    printf("\n");

    const int32_t result =
        send_diag(__func__, request, static_cast<uint32_t>(count), work_mode, io_type, wait_time_ms, reply, &reply_len);
    if (result != 0) {
        LOG(1, "velmor_diag_cmd_send fail");
    } else if (io_type != 0) {
        printf("done without rsp data\n");
    } else {
        printf("rsp data len(%d)\nrsp data:", reply_len);
        for (int32_t i = 0; i < reply_len; ++i) printf(" 0x%02X", reply[i]);
        printf("\n");
    }
    return result;
}

// ---- Group 5: cards ----

/* Each card command is one numbered common request, and the modem does the work. */
enum {
    CARD_STATUS_QUERY = 39,
    CARD_STATUS_GET = 55,
    CARD_TYPE_QUERY = 56,
    CARD_STATUS_SET = 57,
    CARD_HOTSWAP = 80,
};

/* The answer is shown from its type on: four bytes of type, four of length, and what the length says. The length is the
 * modem's word; what is shown stays within the record. */
static void show_common_answer(const common_typed_rsp *rsp)
{
    const uint32_t     len = rsp->l + 8;
    const uint8_t     *bytes = reinterpret_cast<const uint8_t *>(&rsp->t);
    constexpr uint32_t room = sizeof(common_typed_rsp) - offsetof(common_typed_rsp, t);
    printf("data len(%d)\ndata:", len);
    for (uint32_t i = 0; i < len && i < room; ++i) printf(" %02X", bytes[i]);
    printf("\n");
}

/* A value that is too long, or null, is dropped without a word. A refusal by the modem is only logged. */
static int32_t velmor_cmn_cmd_send(uint32_t t, uint32_t l, const uint8_t *v)
{
    constexpr uint32_t longest = 491;  // bytes

    LOG(2, "velmor_cmn_cmd_send, t: %d, l: %d", t, l);
    common_typed_req req = {};
    common_typed_rsp rsp = {};
    uint32_t         rsp_len = sizeof(rsp);
    req.cmd = COMMON_CMD_TYPED;
    req.t = t;
    req.l = l > longest || v == nullptr ? 0 : l;
    if (req.l > 0) memcpy(req.v, v, req.l);
    const int32_t result = velmor_extend_qmi_send_sync(REQUEST_ID_COMMON, &req, sizeof(req), &rsp, &rsp_len);
    LOG(2, "result = %d, rsp.result = %d", result, rsp.result);
    if (result != 0)
        LOG(1, "velmor_extend_qmi_send_sync fail");
    else if (rsp.result != 0)
        LOG(1, "rsp.result fail");
    else
        show_common_answer(&rsp);
    return result;
}

/* Sends `cnt` words of the command line as 32-bit numbers, each as it is or as true or false. Reports under the name of
 * the operation that gives its line. */
static int32_t card_command(const char *name, int line, uint32_t t, int cnt, int argc, char *argv[], bool as_flags)
{
    if (argc != cnt + 3) {
        LOG_FROM(name, line, 1, "note: need %d inputs, Pls refer to the following cmd:", cnt + 3);
        return VELMOR_ERR_BAD_ARGUMENT;
    }
    int32_t words[CARD_WORDS_MAX] = {};
    printf("param(cnt: %d):", cnt);
    for (int i = 0; i < cnt; ++i) {
        const int word = atoi(argv[3 + i]);
        words[i] = as_flags ? word != 0 : word;
        printf(" %d", words[i]);
    }
    printf("\n");
    return velmor_cmn_cmd_send(t, static_cast<uint32_t>(cnt) * sizeof(words[0]),
                               cnt == 0 ? nullptr : reinterpret_cast<const uint8_t *>(words));
}

static int32_t velmor_cmn_card_status_cmd(uint32_t t, int cnt, int argc, char *argv[])
{
    return card_command(__func__, __LINE__, t, cnt, argc, argv, true);
}

static int32_t velmor_cmn_card_status_cmd_ex(uint32_t t, int cnt, int argc, char *argv[])
{
    return card_command(__func__, __LINE__, t, cnt, argc, argv, false);
}

static int32_t velmor_cmn_card_status_query(int argc, char *argv[])
{
    LOG(2, "velmor_cmn_card_status_query");
    return velmor_cmn_card_status_cmd(CARD_STATUS_QUERY, 0, argc, argv);
}

static int32_t velmor_cmn_card_status_get(int argc, char *argv[])
{
    LOG(2, "velmor_cmn_card_status_get");
    return velmor_cmn_card_status_cmd(CARD_STATUS_GET, 1, argc, argv);
}

static int32_t velmor_cmn_card_status_set(int argc, char *argv[])
{
    LOG(2, "velmor_cmn_card_status_set");
    return velmor_cmn_card_status_cmd(CARD_STATUS_SET, 3, argc, argv);
}

static int32_t velmor_cmn_card_type_query(int argc, char *argv[])
{
    LOG(2, "velmor_cmn_card_type_query");
    return velmor_cmn_card_status_cmd(CARD_TYPE_QUERY, 0, argc, argv);
}

/* The test runs on the modem; here it is started and stopped. The fourth word of a start goes on as it is. */
static int32_t velmor_cmn_card_hotswap_test(int argc, char *argv[])
{
    LOG(2, "velmor_cmn_card_hotswap_test");
    if (argc <= 3) {
        LOG(1, "note: need %d inputs at least, Pls refer to the following cmd:", 4);
        return VELMOR_ERR_BAD_ARGUMENT;
    }
    const int32_t opt = atoi(argv[3]);
    LOG(2, "opt: %d", opt);
    if (opt != 0) return velmor_cmn_card_status_cmd_ex(CARD_HOTSWAP, 4, argc, argv);
    return velmor_cmn_cmd_send(CARD_HOTSWAP, sizeof(opt), reinterpret_cast<const uint8_t *>(&opt));
}

// ---- Group 5: SAR and device states ----

/* Traces would spoil these answers on the shell. */
static int32_t velmor_cmn_test_get_sar_dsi(int, char **)
{
    velmor_hal_remove_shell_print_mask(4);
    int32_t judge_dsi = 0;
    velmor_get_property_value_from_int(JUDGE_DSI_PROP, &judge_dsi, -1);
    const int32_t modem_dsi = velmor_get_sar_dsi();
    LOG(8, "JUDGE SAR DSI: %d", judge_dsi);
    LOG(8, "Modem SAR DSI: %d", modem_dsi);
    return 0;
}

static int32_t velmor_cmn_test_set_sar_dsi(int argc, char *argv[])
{
    if (argc < 4) {
        LOG(8, "note: Too few parameters, Pls refer to the following cmd:");
        return VELMOR_ERR_BAD_ARGUMENT;
    }
    const int32_t dsi = atoi(argv[3]);
    const int32_t result = velmor_set_sar_dsi(static_cast<uint32_t>(dsi));
    LOG(8, "SAR DSI(to be set): %d, the setting result: %d", dsi, result);
    return result;
}

static int32_t velmor_cmn_test_get_device_state(int, char **)
{
    velmor_hal_remove_shell_print_mask(4);
    for (uint32_t index = 0; index < DEVICE_STATES_MAX; ++index) {
        const char *name = velmor_get_device_state_prop_name(index);
        if (name == nullptr) continue;
        int32_t state = 0;
        velmor_get_property_value_from_int(name, &state, DEVICE_STATE_UNSET);
        if (state != DEVICE_STATE_UNSET) LOG(8, "%s: %d", velmor_get_device_type_string_ex(index), state);
    }
    return 0;
}

// ---- Group 5: the entry ----

int velmor_test_cmn_do(int argc, char *argv[])
{
    static int32_t (*const operations[])(int argc, char *argv[]) = {
        // by the sub-command's number; there is no 9
        velmor_cmn_diag_cmd_send,     velmor_cmn_card_status_query, velmor_cmn_card_status_get,
        velmor_cmn_card_status_set,   velmor_cmn_card_type_query,   velmor_cmn_test_get_sar_dsi,
        velmor_cmn_card_hotswap_test, velmor_cmn_test_set_sar_dsi,  velmor_cmn_test_get_device_state,
    };

    constexpr int operation_count = sizeof(operations) / sizeof(operations[0]);

    bool      help_wanted = true;
    const int sub_command = argc < 3 ? -1 : atoi(argv[2]);
    if (argc < 3) {
        LOG(1, "note: Too few parameters, Pls refer to the following cmd:");
    } else if (atoi(argv[1]) != RBK_GROUP_CMN) {
        LOG(1, "note: the first parameters should be %d, Pls refer to the following cmd:", RBK_GROUP_CMN);
    } else if (sub_command < 0 || sub_command >= operation_count || operations[sub_command] == nullptr) {
        LOG(1, "note: the second parameters is invalid, Pls refer to the following cmd:");
    } else {
        const int32_t result = operations[sub_command](argc, argv);
        if (result != 0) LOG(1, "note: Error happen! error_code(%d)", result);
        help_wanted = result != 0;
    }
    if (help_wanted) show_help(RBK_GROUP_CMN);
    return 0;
}

// ---- Group 6: raw data to the extended service ----

int velmor_test_qmi_send_data_do(int argc, char *argv[])
{
    bool      help_wanted = true;
    const int qmi_id = argc < 4 ? 0 : atoi(argv[2]);
    if (argc < 4) {
        LOG(1, "note: Too few parameters, Pls refer to the following cmd:");
    } else if (atoi(argv[1]) != RBK_GROUP_SEND_DATA) {
        LOG(1, "note: the first parameters should be %d, Pls refer to the following cmd:", RBK_GROUP_SEND_DATA);
    } else if (qmi_id < 0 || qmi_id >= QMI_ID_COUNT) {
        LOG(1, "note: the second parameters(qmi_id) should be >= %d && < %d", 0, QMI_ID_COUNT);
    } else {
        uint8_t request[SEND_DATA_SIZE] = {};
        uint8_t response[SEND_DATA_SIZE] = {};
        int32_t len = 0;
        LOG(2, "velmor_qmi req data(qmi_id: %d, len: %d[max: %d]):", qmi_id, argc - 3, SEND_DATA_LEN_MAX);
        for (int i = 3; i < argc && len < SEND_DATA_LEN_MAX; ++i) {
            request[len] = static_cast<uint8_t>(velmor_string_to_int(argv[i]));
            LOG(2, "0x%02X ", request[len]);
            ++len;
        }

        uint32_t      rsp_len = 0;  // meant: what the modem answers isn't shown, only that it did
        const int32_t result =
            velmor_extend_qmi_send_sync(static_cast<uint32_t>(qmi_id), request, len, response, &rsp_len);
        LOG(2, "qmi_id = %d, result = %d", qmi_id, result);
        if (result != 0) {
            LOG(1, "velmor_extend_qmi_send_sync fail");
        } else {
            LOG(2, "velmor_qmi rsp data(qmi_id: %d, len: %d[max: %d]):", qmi_id, rsp_len, SEND_DATA_LEN_MAX);
            for (uint32_t i = 0; i < rsp_len; ++i) LOG(2, " %02X", response[i]);
            LOG(2, "");
            help_wanted = false;
        }
    }
    if (help_wanted) show_help(RBK_GROUP_SEND_DATA);
    return 0;
}
