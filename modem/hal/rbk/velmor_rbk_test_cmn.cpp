/* Groups 5 and 6: cards, sensors and raw diag commands; raw data to the extended service. Numbers as people type them. */
#include "velmor_rbk_test_cmn.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "cutils/properties.h"
#include "velmor_diag_send.h"
#include "velmor_extend_api.h"
#include "velmor_extend_cmn.h"
#include "velmor_extend_nvefs.h"
#include "velmor_extend_sar_nas.h"
#include "velmor_extend_uim.h"
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

/* rbk 5 10 <esim_on> <debug_on> */
#define ARG_ESIM_ON    3
#define ARG_ESIM_DEBUG 4

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
        const double product = ldexp(hex_digit(text[i]), 4 * static_cast<int>(digit_count - 1 - i));
        sum += static_cast<uint32_t>(product < INT32_MAX ? product : INT32_MAX);
    }
    return static_cast<int32_t>(sum);
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
        LOG_FROM(name, 2, "callback mode with result");
        return velmor_diag_cmd_send_with_result_by_callback_mode(request, len, timeout_ms, reply, reply_len);
    }
    if (work_mode == 0) {
        /* Not waited for: the process may end before the worker has done anything. Meant so. */
        LOG_FROM(name, 2, "callback mode without result");
        return velmor_diag_cmd_send_without_result_by_callback_mode(request, len);
    }
    if (io_type == 0) {
        LOG_FROM(name, 2, "dci mode with result");
        return velmor_diag_cmd_send_with_result_by_dci_mode(request, len, timeout_ms, reply, reply_len);
    }
    LOG_FROM(name, 2, "dci mode without result");
    const int32_t result = velmor_diag_cmd_send_without_result_by_dci_mode(request, len);
    usleep(timeout_ms * 1000);  // 32 bits: wraps above 71 minutes, and a negative word is about that long
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
 * modem's word, up to four thousand million, and the sum may wrap; what is shown stays within the record. */
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
static int32_t card_command(const char *name, uint32_t t, int cnt, int argc, char *argv[], bool as_flags)
{
    if (argc != cnt + 3) {
        LOG_FROM(name, 1, "note: need %d inputs, Pls refer to the following cmd:", cnt + 3);
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
    return card_command(__func__, t, cnt, argc, argv, true);
}

static int32_t velmor_cmn_card_status_cmd_ex(uint32_t t, int cnt, int argc, char *argv[])
{
    return card_command(__func__, t, cnt, argc, argv, false);
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

// ---- Group 5: eSIM ----

/* The second slot of a phone is shared between a physical card and an eSIM; all flows are about it. Each answers with one
 * line on standard output, whatever the masks say. A flow's result is 0 when it has given its answer, and any other
 * number lets the common end say "value=FAILED". */
static const char ESIM_TEST[] = "velmor_cmn_esim_test";

constexpr uint8_t    ESIM_SLOT = 2;
constexpr uint32_t   ESIM_SUB = 1;
constexpr int        ESIM_EID_POLLS = 30;         // after a switch
constexpr int        ESIM_EID_READS = 2;          // on request
constexpr useconds_t ESIM_EID_WAIT_US = 100'000;  // before each
constexpr uint32_t   ESIM_SIM_TYPES = 2;          // a type for each slot
constexpr uint32_t   ESIM_HW_NV_ID = 6853;
constexpr uint32_t   ESIM_HW_NV_SIZE = 124;
constexpr uint32_t   ESIM_HW_NV_WORD = 16;  // offset, bytes
constexpr uint8_t    ESIM_NO_CHANNEL = 255;

#define ESIM_PRODUCT_PROP "ro.product.name"
#define ESIM_TYPE_PRODUCT "zirconia"  // products with this in their name switch by SIM type, all others by power
static const char ESIM_EID_PATH[] = "/nv/item_files/modem/uim/uimdrv/esim_eid";

static bool IS_EID_SAVE;  // the EID is known to stand in EFS

/* One direction of the switch, in both ways of doing it. */
struct esim_switch {
    uicc_power_param power_down;
    uicc_power_param power_up;
    uint32_t         sim_types[ESIM_SIM_TYPES];
    const char      *sim_type_goal;  // as the trace of the SIM-type way calls it
};
static constexpr esim_switch SWITCH_TO_ESIM = {{0, ESIM_SLOT, 0, 0}, {1, ESIM_SLOT, 1, 1}, {1, 3}, "esim"};
static constexpr esim_switch SWITCH_TO_PSIM = {{0, ESIM_SLOT, 0, 1}, {1, ESIM_SLOT, 0, 0}, {1, 1}, "uim2"};

/* STORE DATA with the function eUICCMemoryReset; the channel comes from the open. Its accepted answers stand in hex with
 * the length before them: profiles deleted, and nothing to delete. */
static constexpr uim_apdu_param ESIM_RESET = {
    ESIM_SLOT,
    ESIM_NO_CHANNEL,
    13,
    {0x80, 0xE2, 0x91, 0x00, 0x07, 0xBF, 0x34, 0x04, 0x82, 0x02, 0x05, 0xE0, 0x00},
};
static const char ESIM_RESET_DELETED[] = "08bf34038001009000";
static const char ESIM_RESET_NOTHING[] = "08bf34038001019000";

bool velmor_esim_sku_match()
{
    uint8_t  hw[ESIM_HW_NV_SIZE] = {};
    uint32_t len = sizeof(hw);
    if (velmor_extend_nv_read_item(ESIM_HW_NV_ID, 0, hw, &len) != 0) {
        LOG(4, "read nv6853 failed");
        return false;
    }
    uint32_t esim = 0;
    memcpy(&esim, hw + ESIM_HW_NV_WORD, sizeof(esim));
    if (esim != 1 && esim != 2) {
        LOG(4, "hw does not support esim");
        return false;
    }
    LOG(4, "hw support esim");
    return true;
}

bool is_eid_valid(const char *eid_text)
{
    LOG(4, "check whether eid valid");
    int32_t r = 0;
    for (uint32_t i = 0; i < 2 * UIM_EID_LEN; ++i) r = (r * 10 + static_cast<uint8_t>(eid_text[i]) - '0') % 97;
    if (r != 1) {
        LOG(4, "eid validate failed, result = %d", r);
        return false;
    }
    LOG(4, "eid validate pass");
    return true;
}

void save_eid_to_efs(const uint8_t *eid)
{
    if (IS_EID_SAVE) {
        LOG(4, "EID already saved, skip");
        return;
    }
    uint8_t  stored[UIM_EID_LEN] = {};
    uint32_t len = sizeof(stored);
    int32_t  result = velmor_efs_read(ESIM_SUB, ESIM_EID_PATH, sizeof(ESIM_EID_PATH) - 1, stored, &len);
    if (result == 0) {
        /* Whatever it holds: an EID that stands in EFS is never replaced. */
        LOG(4, "EID already exists, set IS_EID_SAVE TRUE");
        IS_EID_SAVE = true;
        return;
    }
    LOG(4, "efs read failed and try save it. error_code : %d", result);
    result = velmor_efs_write(ESIM_SUB, ESIM_EID_PATH, sizeof(ESIM_EID_PATH) - 1, eid, UIM_EID_LEN);
    LOG(4, "save eid efs result = %d", result);
    if (result == 0) {
        LOG(4, "save eid successfully, set IS_EID_SAVE TRUE");
        IS_EID_SAVE = true;
    }
}

void map_sim_state(const uint8_t *states)
{
    static const char *const words[] = {"ABSENT", "PRESENT", "ERROR"};

    LOG(4, "map_sim_state ...");
    for (uint32_t i = 0; i < UIM_STATE_SLOTS; ++i) {
        const char *word = states[i] < sizeof(words) / sizeof(words[0]) ? words[states[i]] : "UNKNOWN";
        printf("%s%s", i > 0 ? "," : "", word);
    }
    printf("\n");
}

/* Asks for the EID until it is there, at most `polls` times. What the request answers isn't looked at: an EID begins with
 * a byte other than 0. True, with its digits in `text`, when it came. */
static bool esim_poll_eid(int polls, uint8_t *eid, char *text)
{
    for (int loop = 0; loop < polls; ++loop) {
        usleep(ESIM_EID_WAIT_US);
        LOG_FROM(ESIM_TEST, 4, "try get eid loop = %d", loop);
        velmor_uim_request_eid(&ESIM_SLOT, eid);
        if (eid[0] == 0) continue;
        velmor_byte_to_hex(eid, UIM_EID_LEN, text);
        return true;
    }
    return false;
}

static int32_t esim_switch_by_sim_type(const esim_switch *to)
{
    auto *param = static_cast<sim_type_param *>(qcril_malloc_adv(sizeof(sim_type_param) + sizeof(to->sim_types)));
    if (param == nullptr) return -1;
    param->count = ESIM_SIM_TYPES;
    LOG_FROM(ESIM_TEST, 4, "card counts = %d", param->count);
    int32_t res = -1;
    if (param->count != sizeof(to->sim_types) / sizeof(to->sim_types[0])) {
        LOG_FROM(ESIM_TEST, 4, "data length error = %d", param->count);
    } else {
        memcpy(param->types, to->sim_types, sizeof(to->sim_types));
        res = velmor_setSimType(param);
        LOG_FROM(ESIM_TEST, 4, "switch to %s res = %d", to->sim_type_goal, res);
    }
    qcril_free_adv(param, ESIM_TEST, __LINE__);
    return res;
}

/* A slot whose power-up fails stays down, and nothing is taken back. */
static int32_t esim_switch_by_power(const esim_switch *to)
{
    int32_t res = velmor_esim_request_uicc_power_ex(&to->power_down);
    LOG_FROM(ESIM_TEST, 4, "POWER_DOWN_UIM2 res = %d", res);
    if (res != 0) return res;
    res = velmor_esim_request_uicc_power_ex(&to->power_up);
    LOG_FROM(ESIM_TEST, 4, "POWER_UP_UIM2 res = %d", res);
    return res;
}

static int32_t esim_to_esim(bool by_sim_type)
{
    uint8_t eid[UIM_EID_LEN] = {};
    char    text[2 * UIM_EID_LEN + 1] = {};
    if (!velmor_esim_sku_match()) return -1;
    LOG_FROM(ESIM_TEST, 4, "switch to eSIM");
    const int32_t res = by_sim_type ? esim_switch_by_sim_type(&SWITCH_TO_ESIM) : esim_switch_by_power(&SWITCH_TO_ESIM);
    if (res != 0) return res;

    if (!esim_poll_eid(ESIM_EID_POLLS, eid, text)) {
        LOG_FROM(ESIM_TEST, 4, "get eid timeout");
        printf("value=FAILED\n");
    } else if (is_eid_valid(text)) {
        save_eid_to_efs(eid);
        printf("eID=%s\n", text);
    } else {
        printf("value=FAILED - %s\n", text);
    }
    return 0;
}

static int32_t esim_to_physical(bool by_sim_type)
{
    LOG_FROM(ESIM_TEST, 4, "switch to SIM2");
    const int32_t res = by_sim_type ? esim_switch_by_sim_type(&SWITCH_TO_PSIM) : esim_switch_by_power(&SWITCH_TO_PSIM);
    if (res != 0) return res;
    LOG_FROM(ESIM_TEST, 4, "SIM2 Power Up successfully");
    printf("value=SUCCEED\n");
    return 0;
}

static int32_t esim_read_eid(bool)
{
    uint8_t eid[UIM_EID_LEN] = {};
    char    text[2 * UIM_EID_LEN + 1] = {};
    LOG_FROM(ESIM_TEST, 4, "velmor get eid");
    if (!esim_poll_eid(ESIM_EID_READS, eid, text)) return -1;
    printf("eID=%s\n", text);
    return 0;
}

static int32_t esim_card_states(bool)
{
    uint8_t states[UIM_STATE_SLOTS] = {};
    LOG_FROM(ESIM_TEST, 4, "try get simcard status");
    const int32_t res = velmor_uim_get_card_status(states);
    if (res != 0) return res;
    LOG_FROM(ESIM_TEST, 4, "card_status, [%d, %d]", states[0], states[1]);
    map_sim_state(states);
    return 0;
}

/* Whether the eUICC's answer is one of the two that stand for success: the length byte and eight bytes are compared. */
static bool esim_reset_accepted(const uim_apdu_result *result)
{
    char text[sizeof(ESIM_RESET_DELETED)] = {};
    velmor_byte_to_hex(reinterpret_cast<const uint8_t *>(result), (sizeof(text) - 1) / 2, text);
    LOG_FROM(ESIM_TEST, 4, "apdu=%s", text);
    if (strcmp(text, ESIM_RESET_DELETED) == 0) {
        LOG_FROM(ESIM_TEST, 4, "velmor_uim_send_apdu, delete profile successfully.");
        return true;
    }
    if (strcmp(text, ESIM_RESET_NOTHING) == 0) {
        LOG_FROM(ESIM_TEST, 4, "velmor_uim_send_apdu, nothing to delete.");
        return true;
    }
    LOG_FROM(ESIM_TEST, 4, "velmor_uim_send_apdu, apdu rsp check failed.");
    return false;
}

/* After a failure the channel stays open; after a good reset a close that fails changes nothing. Both are meant. */
static int32_t esim_reset(bool)
{
    LOG_FROM(ESIM_TEST, 4, "Start eUICC Reset");
    uim_apdu_param    command = ESIM_RESET;
    uim_channel_param channel = {ESIM_SLOT, 1};
    int32_t           res = velmor_uim_open_channel(&channel, &command.channel_id);
    LOG_FROM(ESIM_TEST, 4, "velmor_uim_open_channel res = %d, channel_id = %d", res, command.channel_id);
    if (res != 0) return res;

    uim_apdu_result result = {};
    res = velmor_uim_send_apdu(&command, &result);
    LOG_FROM(ESIM_TEST, 4, "velmor_uim_send_apdu res = %d", res);
    if (res != 0) return res;
    if (!esim_reset_accepted(&result)) return -1;

    channel.value = command.channel_id;
    res = velmor_uim_close_channel(&channel);
    LOG_FROM(ESIM_TEST, 4, "velmor_uim_close_channel res = %d", res);
    printf("value=SUCCEED\n");
    return 0;
}

int32_t velmor_cmn_esim_test(int argc, char *argv[])
{
    static int32_t (*const flows[])(bool by_sim_type) = {
        // by esim_on, from 1 on
        esim_to_esim, esim_to_physical, esim_read_eid, esim_card_states, esim_reset,
    };

    constexpr int flow_count = sizeof(flows) / sizeof(flows[0]);

    if (argc <= ARG_ESIM_DEBUG) {
        LOG(1, "invalid input");
        return -1;
    }
    const int esim_on = atoi(argv[ARG_ESIM_ON]);
    const int debug_on = atoi(argv[ARG_ESIM_DEBUG]);
    char      product[VELMOR_PROPERTY_SIZE] = {};
    property_get(ESIM_PRODUCT_PROP, product, "");
    if (debug_on == 0) {
        g_extend_log_on.store(0, std::memory_order_relaxed);
        velmor_hal_close_print();
    }

    int32_t res = -1;
    if (esim_on < 1 || esim_on > flow_count)
        LOG(4, "invalid input skip");
    else
        res = flows[esim_on - 1](strstr(product, ESIM_TYPE_PRODUCT) != nullptr);
    if (res != 0) printf("value=FAILED\n");
    return 0;
}

// ---- Group 5: the entry ----

int velmor_test_cmn_do(int argc, char *argv[])
{
    static int32_t (*const operations[])(int argc, char *argv[]) = {
        // by the sub-command's number; there is no 9
        velmor_cmn_diag_cmd_send,
        velmor_cmn_card_status_query,
        velmor_cmn_card_status_get,
        velmor_cmn_card_status_set,
        velmor_cmn_card_type_query,
        velmor_cmn_test_get_sar_dsi,
        velmor_cmn_card_hotswap_test,
        velmor_cmn_test_set_sar_dsi,
        velmor_cmn_test_get_device_state,
        nullptr,
        velmor_cmn_esim_test,
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
