/* The senders of the common requests, the counters of subsystem restarts, and the clients of the published services. The
 * senders keep nothing; the extended client's mutex makes their callers wait for each other. Each published service has
 * its client in one file-scope handle, used from the main thread. */
#include "velmor_extend_cmn.h"

#include <string.h>

#include "qmi_client.h"
#include "services/nas_v01.h"
#include "services/sar_v01.h"
#include "velmor_extend_api.h"
#include "velmor_extend_sar_nas.h"
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

// ---- SAR ----

constexpr uint32_t SAR_OPEN_TIMEOUT_MS = 4;  // for a service that isn't there yet
constexpr uint32_t SAR_TIMEOUT_MS = 30000;
constexpr uint32_t SAR_DSI_MAX = 20;

static qmi_client_handle g_sar_client;  // null at first and after a failed send

/* Nobody is told when the service goes away: the next send fails then, and the one after it opens a new client. */
void velmor_init_qmi_client_rf_sar()
{
    qmi_client_os_params os_params = {};
    const int32_t        qmi_client_error = qmi_client_init_instance(
               sar_get_service_object_internal_v01(1, 15, 6), QMI_CLIENT_INSTANCE_ANY,
               velmor_qmi_client_common_empty_unsol_ind_cb, nullptr, &os_params, SAR_OPEN_TIMEOUT_MS, &g_sar_client);
    if (qmi_client_error != 0) {
        LOG(4, "qmi_client_init_instance failed, qmi_client_error = %d", qmi_client_error);
        g_sar_client = nullptr;
    }
}

int32_t velmor_check_and_init_qmi_client_rf_sar()
{
    if (g_sar_client != nullptr) return 1;
    velmor_init_qmi_client_rf_sar();
    if (g_sar_client != nullptr) return 1;
    LOG(4, "qmi_client_error is NULL");
    return 0;
}

/* Under the name of the operation. After a failure the client is forgotten, not released. */
static int32_t sar_send(const char *name, int line, uint32_t msg_id, const void *req, uint32_t req_len, void *resp,
                        uint32_t resp_len)
{
    const int32_t qmi_client_error =
        qmi_client_send_msg_sync(g_sar_client, msg_id, req, req_len, resp, resp_len, SAR_TIMEOUT_MS);
    if (qmi_client_error != 0) {
        LOG_FROM(name, line, 4, "qmi_client_send_msg_sync failed, qmi_client_error = %d", qmi_client_error);
        g_sar_client = nullptr;
    }
    return qmi_client_error;
}

int32_t velmor_get_sar_dsi()
{
    LOG(4, "function entry ------------->");
    sar_rf_get_state_resp_msg_v01 resp = {};
    int32_t                       dsi = -1;
    if (velmor_check_and_init_qmi_client_rf_sar() == 0) {
        LOG(4, "velmor_check_and_init_qmi_client_rf_sar FAIL");
    } else if (sar_send(__func__, __LINE__, SAR_RF_GET_STATE_REQ_V01, nullptr, 0, &resp, sizeof(resp)) == 0) {
        dsi = static_cast<int32_t>(resp.state);
        LOG(4, "dsi vailid = %d , dsi value = %d", resp.state_valid, dsi);
    }
    LOG(4, "function exit <-------------");
    return dsi;
}

int32_t velmor_set_sar_dsi(uint32_t dsi)
{
    LOG(4, "function entry ------------->");
    int32_t qmi_client_error = -1;
    if (velmor_check_and_init_qmi_client_rf_sar() == 0) {
        LOG(4, "velmor_check_and_init_qmi_client_rf_sar FAIL");
    } else {
        sar_rf_set_state_req_msg_v01  req = {};
        sar_rf_set_state_resp_msg_v01 resp = {};
        req.state = dsi <= SAR_DSI_MAX ? dsi : 0;
        qmi_client_error =
            sar_send(__func__, __LINE__, SAR_RF_SET_STATE_REQ_V01, &req, sizeof(req), &resp, sizeof(resp));
    }
    LOG(4, "function exit, qmi_client_error = %d <-------------", qmi_client_error);
    return qmi_client_error;
}

// ---- NAS ----

constexpr uint32_t NAS_OPEN_TIMEOUT_MS = 5000;

static qmi_client_handle g_nas_client;  // null until the first request, and then never cleared

/* What follows reports under the name of the one operation that it is a step of. */
static const char SEND_NAS[] = "velmor_send_nas_qmi_req_msg";

static void nas_open()
{
    LOG_FROM(SEND_NAS, __LINE__, 4, "init qmi_client");
    qmi_client_os_params os_params = {};
    qmi_client_handle    client = nullptr;
    const int32_t        qmi_client_error =
        qmi_client_init_instance(nas_get_service_object_internal_v01(1, 388, 6), QMI_CLIENT_INSTANCE_ANY,
                                 velmor_qmi_client_unsol_ind_cb, nullptr, &os_params, NAS_OPEN_TIMEOUT_MS, &client);
    if (qmi_client_error != 0) {
        LOG_FROM(SEND_NAS, __LINE__, 4, "velmor_qmi_client_init instance failed, qmi_client_error = %d",
                 qmi_client_error);
        return;
    }
    LOG_FROM(SEND_NAS, __LINE__, 4, "qmi_svc_client %p", static_cast<void *>(client));
    if (qmi_client_register_error_cb(client, velmor_qmi_client_error_cb, nullptr) != 0) {
        LOG_FROM(SEND_NAS, __LINE__, 4, "qmi_client_register_error_cb failed");
        return;
    }
    g_nas_client = client;
}

/* The handle isn't cleared: one process makes one request. */
static void nas_recover()
{
    LOG_FROM(SEND_NAS, __LINE__, 4, "velmor_qmi_client_recovery, qmi_client_ptr %p", static_cast<void *>(g_nas_client));
    if (g_nas_client == nullptr)
        LOG_FROM(SEND_NAS, __LINE__, 4, "qmi_client_ptr is NULL");
    else if (qmi_client_release(g_nas_client) != 0)
        LOG_FROM(SEND_NAS, __LINE__, 4, "qmi_client_release failed");
}

static int32_t nas_exchange(uint32_t msg_id, const void *qmi_request, uint32_t request_len, void *qmi_response,
                            uint32_t response_len, uint32_t time_out_ms)
{
    if (qmi_request == nullptr) {
        LOG_FROM(SEND_NAS, __LINE__, 4, "qmi_request is NULL");
        return -1;
    }
    if (qmi_response == nullptr) {
        LOG_FROM(SEND_NAS, __LINE__, 4, "qmi_response is NULL");
        return -1;
    }
    if (g_nas_client == nullptr) nas_open();
    if (g_nas_client == nullptr) {
        LOG_FROM(SEND_NAS, __LINE__, 4, "qmi_client_ptr is NULL");
        return -1;
    }
    const int32_t qmi_client_error = qmi_client_send_msg_sync(g_nas_client, msg_id, qmi_request, request_len,
                                                              qmi_response, response_len, time_out_ms);
    if (qmi_client_error != 0)
        LOG_FROM(SEND_NAS, __LINE__, 4, "qmi_client_send_msg_sync fail, qmi_client_error = %d", qmi_client_error);
    return qmi_client_error;
}

int32_t velmor_send_nas_qmi_req_msg(uint32_t msg_id, const void *qmi_request, uint32_t request_len, void *qmi_response,
                                    uint32_t response_len, uint32_t time_out_ms)
{
    LOG(4, "function entry ------------->");
    LOG(4, "velmor_send_nas_qmi_req_msg, msg_id = %d, time_out_ms = %d, qmi_client_ptr = 0x%08x", msg_id, time_out_ms,
        static_cast<uint32_t>(reinterpret_cast<uintptr_t>(g_nas_client)));
    const int32_t result = nas_exchange(msg_id, qmi_request, request_len, qmi_response, response_len, time_out_ms);
    nas_recover();
    LOG(4, "function exit <-------------");
    return result;
}
