/* The senders of the common requests and the counters of subsystem restarts. The senders keep nothing; the extended
 * client's mutex makes their callers wait for each other. */
#include "velmor_extend_cmn.h"

#include <string.h>

#include "velmor_extend_api.h"
#include "velmor_utils_cmn.h"

constexpr uint32_t TYPED_VALUE_LIMIT = 492;  // bytes that are too many; below the room there is
constexpr uint32_t VALUE_LIMIT = 500;

// ---- Senders ----

/* What both senders ask of their value. Reports under the sender's name and line. */
static int32_t check_value(const char *name, int line, uint32_t l, uint32_t limit, const void *v)
{
    LOG_FROM(name, line, 4, "l %d", l);
    if (l >= limit) {
        LOG_FROM(name, line, 4, "l is out of range");
        return VELMOR_ERR_BAD_ARGUMENT;
    }
    if (l > 0 && v == nullptr) {
        LOG_FROM(name, line, 4, "v is null");
        return VELMOR_ERR_BAD_ARGUMENT;
    }
    return 0;
}

static int32_t send_record(const void *req, void *rsp)
{
    uint32_t rsp_len = sizeof(common_rsp);
    return velmor_extend_qmi_send_sync(REQUEST_ID_COMMON, req, sizeof(common_req), rsp, &rsp_len);
}

int32_t velmor_send_common_qmi_msg(uint32_t t, uint32_t l, const void *v, void *rsp)
{
    LOG(4, "function entry ------------->");
    if (rsp == nullptr) {
        LOG(4, "rsp is NULL");
        return VELMOR_ERR_BAD_ARGUMENT;
    }
    memset(rsp, 0, sizeof(common_rsp));
    common_typed_req req = {};
    LOG(4, "t %d", t);
    int32_t result = check_value(__func__, __LINE__, l, TYPED_VALUE_LIMIT, v);
    if (result != 0) return result;

    req.cmd = COMMON_CMD_TYPED;
    req.t = t;
    req.l = l;
    if (l > 0) memcpy(req.v, v, l);
    result = send_record(&req, rsp);
    LOG(4, "function exit <-------------");
    return result;
}

int32_t velmor_common_qmi_req(uint32_t cmd, uint32_t l, const void *v, void *rsp)
{
    LOG(4, "function entry ------------->");
    if (rsp == nullptr) {
        LOG(4, "rsp is NULL");
        return VELMOR_ERR_BAD_ARGUMENT;
    }
    memset(rsp, 0, sizeof(common_rsp));
    common_req req = {};
    int32_t    result = check_value(__func__, __LINE__, l, VALUE_LIMIT, v);
    if (result != 0) return result;

    req.cmd = cmd;
    if (l > 0) memcpy(req.payload, v, l);
    result = send_record(&req, rsp);
    LOG(4, "function exit <-------------");
    return result;
}

// ---- Counters of restarts ----

/* The property of one type's counter: a static text, overwritten by the next call. */
static const char *ssr_count_name(int32_t ssr_type)
{
    static char name[256];
    snprintf(name, sizeof(name), "persist.radio.ssr_count_0x%08x", ssr_type);
    name[sizeof(name) - 1] = '\0';
    return name;
}

void velmor_update_modem_ssr_count(int32_t ssr_type)
{
    int32_t count = 0;
    velmor_get_property_value_from_int(ssr_count_name(ssr_type), &count, 0);
    LOG(4, "ssr_type = 0x%08X, ssr_count_old = %d", ssr_type, count);
    const int32_t next = static_cast<int32_t>(static_cast<uint32_t>(count) + 1);  // the last number wraps
    velmor_set_property_value_to_int(ssr_count_name(ssr_type), next);
}

void velmor_save_modem_ssr_count(int32_t flag)
{
    static const int32_t bits[] = {0x1,   0x2,    0x4,    0x8,     0x10,    0x20,    0x40,   0x80,
                                   0x100, 0x1000, 0x2000, 0x10000, 0x20000, 0x40000, 0x80000};

    LOG(4, "function entry ------------->");
    LOG(4, "flag = 0x%08X", flag);
    if (flag < 0) {
        LOG(4, "non-mask ssr type, flag = 0x%08X", flag);
        velmor_update_modem_ssr_count(flag);
    } else {
        for (const int32_t bit : bits)
            if ((flag & bit) != 0) velmor_update_modem_ssr_count(bit);
    }
    LOG(4, "function exit <-------------");
}
