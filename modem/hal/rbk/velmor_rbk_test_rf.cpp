/* Group 3: GPIO and transmit antenna tests of the radio front end. The values go to the modem as they are typed; it keeps
 * them in two files of its own, which are shown as bytes and removed to end a test. */
#include "velmor_rbk_groups.h"

#include <stdlib.h>
#include <string.h>

#include "velmor_extend_api.h"
#include "velmor_extend_cmn.h"
#include "velmor_extend_nvefs.h"
#include "velmor_utils_cmn.h"

#define READ_SIZE       365  // bytes of a file that are shown at most
#define GPIO_VALUES_MAX 50   // values that a request holds
#define GPIO_FILE       "/nv/item_files/modem/velmor/rf_ant_port_config"
#define TX_FILE         "/nv/item_files/modem/antenna/ant_tx_config"
#define RF_SUB          0  // both files stand on subscription 0

// ---- Requests ----

struct gpio_req {
    uint32_t cmd;         // COMMON_CMD_GPIO
    uint32_t reserved;    // 0
    uint32_t gpio_count;  // values on the command line, also those that didn't fit
    int32_t  gpio_v[GPIO_VALUES_MAX];
    uint8_t  rest[300];
};
struct tx_req {
    uint32_t cmd;  // COMMON_CMD_TX
    uint32_t reserved;
    int32_t  v_ant;        // 0 lower antenna, 1 upper antenna
    int32_t  v_sys;        // 0 gsm, 1 wcdma, 2 cdma, 3 tds, 4 lte
    uint64_t v_band_list;  // a bit a band
    uint8_t  rest[488];
};
static_assert(sizeof(gpio_req) == sizeof(common_req) && sizeof(tx_req) == sizeof(common_req));

/* What the modem answers beyond that it did isn't looked at. */
static int32_t send_request(const char *name, const void *req)
{
    common_rsp    rsp = {};
    uint32_t      rsp_len = sizeof(rsp);
    const int32_t result = velmor_extend_qmi_send_sync(REQUEST_ID_COMMON, req, sizeof(common_req), &rsp, &rsp_len);
    if (result != 0) LOG_FROM(name, 1, "velmor_extend_qmi_send_sync fail, REQUEST_ID_COMMON");
    return result;
}

static int32_t velmor_gpio_test_set(int argc, char *argv[])
{
    LOG(2, "velmor_gpio_test_set");
    if (argc < 3) {
        LOG(1, "note: Too few inputs, Pls refer to the following cmd:");
        return VELMOR_ERR_BAD_ARGUMENT;
    }
    gpio_req req = {};
    req.cmd = COMMON_CMD_GPIO;
    req.gpio_count = static_cast<uint32_t>(argc - 3);
    for (int i = 0; i < argc - 3 && i < GPIO_VALUES_MAX; ++i) {
        req.gpio_v[i] = atoi(argv[3 + i]);
        LOG(2, "velmor_gpio_test_set, gpio_v[%d]: %d", i, req.gpio_v[i]);
    }
    return send_request(__func__, &req);
}

static int32_t velmor_rf_tx_test_set(int argc, char *argv[])
{
    LOG(2, "velmor_rf_tx_test_set, argc(%d)", argc);
    if (argc != 6) {
        LOG(1, "note: need %d inputs, Pls refer to the following cmd:", 5);
        return VELMOR_ERR_BAD_ARGUMENT;
    }
    tx_req req = {};
    req.cmd = COMMON_CMD_TX;
    req.v_ant = atoi(argv[3]);
    req.v_sys = atoi(argv[4]);
    req.v_band_list = strtoul(argv[5], nullptr, 0);
    LOG(2, " v_ant(%d)", req.v_ant);
    LOG(2, " v_sys(%d)", req.v_sys);
    LOG(2, " v_band_list(%lu)", static_cast<unsigned long>(req.v_band_list));
    return send_request(__func__, &req);
}

// ---- Files ----

/* Reading and closing take no words behind the sub-command. Reports under the name of the operation. */
static bool has_no_words(const char *name, int argc, int sub_command)
{
    if (argc == 3) return true;
    LOG_FROM(name, 1, "note: Cmd error, should be: rbk %d %d , Pls refer to the following cmd:", RBK_GROUP_RF,
             sub_command);
    return false;
}

static int32_t tell_failure(const char *name, int32_t result)
{
    if (result != 0) LOG_FROM(name, 1, "velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS");
    return result;
}

/* The length of a path counts its terminator in this group. */
static int32_t read_file(const char *name, const char *path, uint8_t *data, uint32_t *len)
{
    const uint32_t path_len = static_cast<uint32_t>(strlen(path) + 1);
    return tell_failure(name, velmor_efs_read(RF_SUB, path, path_len, data, len));
}

static int32_t delete_file(const char *name, const char *path)
{
    return tell_failure(name, velmor_efs_delete(RF_SUB, path, static_cast<uint32_t>(strlen(path) + 1)));
}

static void show_bytes(const char *name, const uint8_t *data, uint32_t len)
{
    for (uint32_t i = 0; i < len; ++i) LOG_FROM(name, 2, " %02X", data[i]);
    LOG_FROM(name, 2, "");
}

static int32_t velmor_gpio_test_get(int argc, char **)
{
    LOG(2, "velmor_gpio_test_get");
    if (!has_no_words(__func__, argc, 1)) return VELMOR_ERR_BAD_ARGUMENT;
    uint8_t       data[READ_SIZE] = {};
    uint32_t      len = sizeof(data);
    const int32_t result = read_file(__func__, GPIO_FILE, data, &len);
    if (result != 0) return result;
    LOG(2, "data len(%d)data: ", len);  // without the line end that the other test has: scripts know both
    show_bytes(__func__, data, len);
    return 0;
}

static int32_t velmor_rf_tx_test_get(int argc, char **)
{
    LOG(2, "velmor_rf_tx_test_get");
    if (!has_no_words(__func__, argc, 4)) return VELMOR_ERR_BAD_ARGUMENT;
    uint8_t       data[READ_SIZE] = {};
    uint32_t      len = sizeof(data);
    const int32_t result = read_file(__func__, TX_FILE, data, &len);
    if (result != 0) return result;
    LOG(2, "data len(%d)\ndata: ", len);
    show_bytes(__func__, data, len);
    return 0;
}

static int32_t velmor_gpio_test_closed(int argc, char **)
{
    LOG(2, "velmor_gpio_test_closed");
    if (!has_no_words(__func__, argc, 2)) return VELMOR_ERR_BAD_ARGUMENT;
    return delete_file(__func__, GPIO_FILE);
}

static int32_t velmor_rf_tx_test_closed(int argc, char **)
{
    LOG(2, "velmor_rf_tx_test_closed");
    if (!has_no_words(__func__, argc, 5)) return VELMOR_ERR_BAD_ARGUMENT;
    return delete_file(__func__, TX_FILE);
}

// ---- The group ----

void velmor_test_rf_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_RF) return;
    // clang-format off
    LOG(8, "%d: rf option cmd", RBK_GROUP_RF);
    LOG(8, "   rbk %d %d ...   /* gpio value setting(pls input enough gpio value by notice)*/", RBK_GROUP_RF, 0);
    LOG(8, "                    (need to reboot duing first setting) ");
    LOG(8, "   rbk %d %d       /* get gpio test state */", RBK_GROUP_RF, 1);
    LOG(8, "   rbk %d %d       /* Close gpio test(need to reboot) */", RBK_GROUP_RF, 2);
    LOG(8, "   rbk %d %d v_ant v_sys v_band_list", RBK_GROUP_RF, 3);
    LOG(8, "                 /* fix tx to upper(lower) antenna for given band list */");
    LOG(8, "                    (need to reboot) ");
    LOG(8, "                    v_ant: 0 - lower antenna, 1 - upper antenna ");
    LOG(8, "                    v_sys: 0 - gsm, 1 - wcdma, 2 - cdma, 3 - tds, 4 - lte ");
    LOG(8, "                    v_band_list: bit0~bi43 - (gsm: 850,900,1800,1900; wcdma: b1,b2,b4,b5,b8; ");
    LOG(8, "                                            cdma: bc0, tds: b34,b39; lte: b1...b44 ");
    LOG(8, "                    v_band_list: bit44~bi63 - (only for lte: b28b,b40b,b41b,b41c,b39b,b252,");
    LOG(8, "                                            b255,b253,b254,b66,b46,b250,b47,b48,b71,b71b,b38k ...  ");
    LOG(8, "   rbk %d %d       /* get tx test state */", RBK_GROUP_RF, 4);
    LOG(8, "   rbk %d %d       /* Close tx test(need to reboot) */", RBK_GROUP_RF, 5);
    // clang-format on
}

int velmor_test_rf_do(int argc, char *argv[])
{
    static int32_t (*const operations[])(int argc, char *argv[]) = {
        // by the sub-command's number
        velmor_gpio_test_set,  velmor_gpio_test_get,  velmor_gpio_test_closed,
        velmor_rf_tx_test_set, velmor_rf_tx_test_get, velmor_rf_tx_test_closed,
    };

    constexpr int operation_count = sizeof(operations) / sizeof(operations[0]);

    bool      help_wanted = true;
    const int sub_command = argc < 3 ? 0 : atoi(argv[2]);
    if (argc < 2) {
        LOG(1, "note: Too few parameters, Pls refer to the following cmd:");
    } else if (atoi(argv[1]) != RBK_GROUP_RF) {
        LOG(1, "note: the first parameters should be %d, Pls refer to the following cmd:", RBK_GROUP_RF);
    } else if (argc < 3) {
        LOG(1, "note: Too few parameters, Pls refer to the following cmd:");
    } else if (sub_command < 0 || sub_command >= operation_count) {
        LOG(1, "note: the second parameters is invalid, Pls refer to the following cmd:");
    } else {
        const int32_t result = operations[sub_command](argc, argv);
        if (result != 0) LOG(1, "note: Error happen! error_code(%d)", result);
        help_wanted = result != 0;
    }
    if (help_wanted) show_help(RBK_GROUP_RF);
    return 0;
}
