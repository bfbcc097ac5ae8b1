/* Groups 5 and 6: cards, sensors and raw diag commands; raw data to the extended service. Numbers as people type them. */
#include "velmor_rbk_test_cmn.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "velmor_extend_api.h"
#include "velmor_rbk_groups.h"
#include "velmor_utils_cmn.h"

#define HEX_DIGITS_MAX    48   // hex digits of one word, leading zeros included
#define QMI_ID_COUNT      6    // request ids of the extended service that may be sent by hand
#define SEND_DATA_LEN_MAX 500  // bytes of one request; words behind them aren't read
#define SEND_DATA_SIZE    512  // of its buffers, bytes

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
