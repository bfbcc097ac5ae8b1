/* The senders of the common requests, the counters of subsystem restarts, and the clients of the published services. The
 * senders keep nothing; the extended client's mutex makes their callers wait for each other. Each published service has
 * its client in one file-scope handle, used from the main thread. */
#include "velmor_extend_cmn.h"

#include <atomic>

#include <string.h>

#include "qmi_client.h"
#include "services/nas_v01.h"
#include "services/sar_v01.h"
#include "services/uim_v01.h"
#include "velmor_extend_api.h"
#include "velmor_extend_nvefs.h"
#include "velmor_extend_sar_nas.h"
#include "velmor_extend_uim.h"
#include "velmor_utils_cmn.h"

constexpr uint32_t TYPED_VALUE_LIMIT = 492;  // bytes that are too many; below the room there is
constexpr uint32_t VALUE_LIMIT = 500;

// ---- Senders ----

/* What both senders ask of their value. Reports under the sender's name. */
static int32_t check_value(const char *name, uint32_t l, uint32_t limit, const void *v)
{
    LOG_FROM(name, 4, "l %d", l);
    if (l >= limit) {
        LOG_FROM(name, 4, "l is out of range");
        return VELMOR_ERR_BAD_ARGUMENT;
    }
    if (l > 0 && v == nullptr) {
        LOG_FROM(name, 4, "v is null");
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
    int32_t result = check_value(__func__, l, TYPED_VALUE_LIMIT, v);
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
    int32_t    result = check_value(__func__, l, VALUE_LIMIT, v);
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
static int32_t sar_send(const char *name, uint32_t msg_id, const void *req, uint32_t req_len, void *resp,
                        uint32_t resp_len)
{
    const int32_t qmi_client_error =
        qmi_client_send_msg_sync(g_sar_client, msg_id, req, req_len, resp, resp_len, SAR_TIMEOUT_MS);
    if (qmi_client_error != 0) {
        LOG_FROM(name, 4, "qmi_client_send_msg_sync failed, qmi_client_error = %d", qmi_client_error);
        g_sar_client = nullptr;
    }
    return qmi_client_error;
}

int32_t velmor_get_sar_dsi()
{
    sar_rf_get_state_resp_msg_v01 resp = {};
    int32_t                       dsi = -1;
    if (velmor_check_and_init_qmi_client_rf_sar() == 0) {
        LOG(4, "velmor_check_and_init_qmi_client_rf_sar FAIL");
    } else if (sar_send(__func__, SAR_RF_GET_STATE_REQ_V01, nullptr, 0, &resp, sizeof(resp)) == 0) {
        dsi = static_cast<int32_t>(resp.state);
        LOG(4, "dsi vailid = %d , dsi value = %d", resp.state_valid, dsi);
    }
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
        qmi_client_error = sar_send(__func__, SAR_RF_SET_STATE_REQ_V01, &req, sizeof(req), &resp, sizeof(resp));
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
    LOG_FROM(SEND_NAS, 4, "init qmi_client");
    qmi_client_os_params os_params = {};
    qmi_client_handle    client = nullptr;
    const int32_t        qmi_client_error =
        qmi_client_init_instance(nas_get_service_object_internal_v01(1, 388, 6), QMI_CLIENT_INSTANCE_ANY,
                                 velmor_qmi_client_unsol_ind_cb, nullptr, &os_params, NAS_OPEN_TIMEOUT_MS, &client);
    if (qmi_client_error != 0) {
        LOG_FROM(SEND_NAS, 4, "velmor_qmi_client_init instance failed, qmi_client_error = %d", qmi_client_error);
        return;
    }
    LOG_FROM(SEND_NAS, 4, "qmi_svc_client %p", static_cast<void *>(client));
    if (qmi_client_register_error_cb(client, velmor_qmi_client_error_cb, nullptr) != 0) {
        LOG_FROM(SEND_NAS, 4, "qmi_client_register_error_cb failed");
        return;
    }
    g_nas_client = client;
}

/* The handle isn't cleared: one process makes one request. */
static void nas_recover()
{
    LOG_FROM(SEND_NAS, 4, "velmor_qmi_client_recovery, qmi_client_ptr %p", static_cast<void *>(g_nas_client));
    if (g_nas_client == nullptr)
        LOG_FROM(SEND_NAS, 4, "qmi_client_ptr is NULL");
    else if (qmi_client_release(g_nas_client) != 0)
        LOG_FROM(SEND_NAS, 4, "qmi_client_release failed");
}

static int32_t nas_exchange(uint32_t msg_id, const void *qmi_request, uint32_t request_len, void *qmi_response,
                            uint32_t response_len, uint32_t time_out_ms)
{
    if (qmi_request == nullptr) {
        LOG_FROM(SEND_NAS, 4, "qmi_request is NULL");
        return -1;
    }
    if (qmi_response == nullptr) {
        LOG_FROM(SEND_NAS, 4, "qmi_response is NULL");
        return -1;
    }
    if (g_nas_client == nullptr) nas_open();
    if (g_nas_client == nullptr) {
        LOG_FROM(SEND_NAS, 4, "qmi_client_ptr is NULL");
        return -1;
    }
    const int32_t qmi_client_error = qmi_client_send_msg_sync(g_nas_client, msg_id, qmi_request, request_len,
                                                              qmi_response, response_len, time_out_ms);
    if (qmi_client_error != 0)
        LOG_FROM(SEND_NAS, 4, "qmi_client_send_msg_sync fail, qmi_client_error = %d", qmi_client_error);
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

// ---- UIM: the connection ----

constexpr uint32_t UIM_OPEN_TIMEOUT_MS = 4000;
constexpr uint32_t UIM_TIMEOUT_MS = 3000;
constexpr uint8_t  UIM_FAILURES_MAX = 3;

/* All of it is the calling thread's, but for the flag, which is set on the QMI client library's thread. */
static qmi_client_handle    uim_qmi_client;  // null: not connected
static std::atomic<uint8_t> SSR_Detected;    // the service has gone; cleared by a new connection alone
static uint8_t              failed_cnt;      // sends that failed on this connection

void error_cb(qmi_client_handle, int32_t error, void *)
{
    LOG(4, "QMI error callback %d", error);
    if (error != -2) return;
    LOG(4, "SSR Detected, set SSR_Detected 1");
    SSR_Detected.store(1, std::memory_order_relaxed);
}

bool init_uim_qmi_client()
{
    qmi_client_os_params os_params = {};
    const int32_t        qmi_client_error = qmi_client_init_instance(
               uim_get_service_object_internal_v01(1, 103, 6), QMI_CLIENT_INSTANCE_ANY,
               velmor_qmi_client_common_empty_unsol_ind_cb, nullptr, &os_params, UIM_OPEN_TIMEOUT_MS, &uim_qmi_client);
    if (qmi_client_error != 0) {
        LOG(4, "qmi_client_init UIM instance failed, qmi_client_error = %d", qmi_client_error);
        uim_qmi_client = nullptr;
        return false;
    }
    LOG(4, "init_uim_qmi_client %p", static_cast<void *>(uim_qmi_client));
    if (qmi_client_register_error_cb(uim_qmi_client, error_cb, nullptr) != 0)
        LOG(4, "qmi_client_register_error_cb failed");
    SSR_Detected.store(0, std::memory_order_relaxed);
    failed_cnt = 0;
    return true;
}

/* Flag and count stay: only a new connection clears them. */
void uim_qmi_client_recovery()
{
    LOG(4, "uim_qmi_client_recovery qmi_client_release %p", static_cast<void *>(uim_qmi_client));
    if (uim_qmi_client == nullptr) return;
    if (qmi_client_release(uim_qmi_client) != 0) LOG(4, "qmi_client_release failed");
    uim_qmi_client = nullptr;
}

// ---- UIM: the steps of an operation ----

/* Each step reports under the operation's name. */
static void uim_drop_dead(const char *name)
{
    if (SSR_Detected.load(std::memory_order_relaxed) == 0) return;
    LOG_FROM(name, 4, "SSR_Detected, try recovery");
    uim_qmi_client_recovery();
}

/* `word` is what the lines begin with: not always the operation's name. */
static bool uim_connect(const char *name, const char *word)
{
    if (uim_qmi_client == nullptr) {
        if (!init_uim_qmi_client()) {
            LOG_FROM(name, 4, "init_uim_qmi_client failed");
            return false;
        }
        LOG_FROM(name, 4, "%s try init_uim_qmi_client %p", word, static_cast<void *>(uim_qmi_client));
    }
    LOG_FROM(name, 4, "%s uim_qmi_client %p", word, static_cast<void *>(uim_qmi_client));
    return true;
}

/* Sends and counts a failure, which the second one reports too. */
static int32_t uim_exchange(uint32_t msg_id, const void *req, uint32_t req_size, void *resp, uint32_t resp_size)
{
    const int32_t code =
        qmi_client_send_msg_sync(uim_qmi_client, msg_id, req, req_size, resp, resp_size, UIM_TIMEOUT_MS);
    if (code != 0) failed_cnt++;
    return code;
}

static int32_t uim_send(const char *name, uint32_t msg_id, const void *req, uint32_t req_size, void *resp,
                        uint32_t resp_size)
{
    const int32_t code = uim_exchange(msg_id, req, req_size, resp, resp_size);
    if (code != 0) LOG_FROM(name, 4, "send msg sync client error = %d", code);
    return code;
}

/* Drops the connection when it went wrong too badly; the next operation makes a new one. Gives `code` back. */
static int32_t uim_end(const char *name, int32_t code)
{
    if (code == -2 || failed_cnt >= UIM_FAILURES_MAX) {
        LOG_FROM(name, 4, "QMI error, try recovery");
        uim_qmi_client_recovery();
    }
    return code;
}

// ---- UIM: an operation's request and response ----

/* Both are on the heap and zeroed: the longest has 10616 bytes. */
template <typename request, typename response>
struct uim_call {
    const char *name;  // of the operation
    request    *req;
    response   *resp;
    int32_t     code;
};

template <typename message>
static message *uim_allocate(const char *name)
{
    return static_cast<message *>(qcril_malloc_adv(sizeof(message), __FILE__, __LINE__, name));
}

template <typename request, typename response>
static void uim_free(uim_call<request, response> *call)
{
    qcril_free_adv(call->req, call->name, __LINE__);
    qcril_free_adv(call->resp, call->name, __LINE__);
}

/* Connects and allocates. When it can't, the operation's result is in `code`. */
template <typename request, typename response>
static bool uim_begin(uim_call<request, response> *call, const char *name, const char *word)
{
    *call = {name, nullptr, nullptr, -1};
    if (!uim_connect(name, word)) {
        uim_end(name, call->code);
        return false;
    }
    call->req = uim_allocate<request>(name);
    call->resp = uim_allocate<response>(name);
    if (call->req != nullptr && call->resp != nullptr) return true;
    uim_free(call);
    return false;
}

/* True when the modem has answered. */
template <typename request, typename response>
static bool uim_ask(uim_call<request, response> *call, uint32_t msg_id)
{
    call->code = uim_send(call->name, msg_id, call->req, sizeof(request), call->resp, sizeof(response));
    return call->code == 0;
}

template <typename request, typename response>
static int32_t uim_finish(uim_call<request, response> *call)
{
    uim_free(call);
    return uim_end(call->name, call->code);
}

// ---- UIM: power ----

static const char ESIM_ENABLE_PATH[] = "/nv/item_files/modem/uim/uimdrv/esim_enable";

/* What follows reports under the name of the one operation that it is a step of; its lines begin with another word. */
static const char POWER[] = "velmor_esim_request_uicc_power_ex";
static const char POWER_WORD[] = "velmor_uim_request_uicc_power_ex";

/* Whether the file stands as the request wants it. It goes first, since the modem reads it when it is told. */
static bool power_prepare(const char *way, uint32_t esim_enable)
{
    if (velmor_efs_write(1, ESIM_ENABLE_PATH, sizeof(ESIM_ENABLE_PATH) - 1, &esim_enable, sizeof(esim_enable)) == 0)
        return true;
    LOG_FROM(POWER, 4, "Velmor, power %s write esim efs file failed", way);
    return false;
}

static int32_t power_exchange(uint32_t msg_id, const void *req, uint32_t req_size, uim_result_resp_msg_v01 *resp)
{
    const int32_t code = uim_exchange(msg_id, req, req_size, resp, sizeof(*resp));
    if (code != 0) LOG_FROM(POWER, 4, "send msg sync client error = %d, failed_cnt = %d", code, failed_cnt);
    return code;
}

static int32_t power_end(int32_t code)
{
    LOG_FROM(POWER, 4, "uicc_power_ex res = %d, failed_cnt = %d", code, failed_cnt);
    return uim_end(POWER, code);
}

/* A file that can't be written leaves request and response behind: the process ends soon after. */
static int32_t uim_power_up(const uicc_power_param *param)
{
    uim_call<uim_power_up_req_msg_v01, uim_result_resp_msg_v01> call;
    if (!uim_begin(&call, POWER, POWER_WORD)) return call.code;
    call.req->slot = param->slot;
    call.req->ignore_hotswap_switch_valid = 1;
    call.req->ignore_hotswap_switch = param->ignore_hotswap != 0 ? 1 : 0;
    call.req->card_mode_valid = 1;
    call.req->card_mode = 0;
    LOG_FROM(POWER, 4, "velmor_uim_request_uicc_power_ex power up sim, ignore hotswap = %d ", param->ignore_hotswap);
    if (power_prepare("up", param->esim_enable)) {
        call.code = power_exchange(QMI_UIM_POWER_UP_REQ_V01, call.req, sizeof(*call.req), call.resp);
        uim_free(&call);
    }
    return power_end(call.code);
}

static int32_t uim_power_down(const uicc_power_param *param)
{
    uim_call<uim_power_down_req_msg_v01, uim_result_resp_msg_v01> call;
    if (!uim_begin(&call, POWER, POWER_WORD)) return call.code;
    call.req->slot = param->slot;
    LOG_FROM(POWER, 4, "velmor_uim_request_uicc_power_ex power down sim");
    if (power_prepare("down", param->esim_enable)) {
        call.code = power_exchange(QMI_UIM_POWER_DOWN_REQ_V01, call.req, sizeof(*call.req), call.resp);
        uim_free(&call);
    }
    return power_end(call.code);
}

int32_t velmor_esim_request_uicc_power_ex(const uicc_power_param *param)
{
    uim_drop_dead(__func__);
    return param->power_up != 0 ? uim_power_up(param) : uim_power_down(param);
}

// ---- UIM: SIM types, EID, card states ----

/* Meant so: its failures aren't counted, and none of them drops the connection. */
int32_t velmor_setSimType(const sim_type_param *param)
{
    uim_drop_dead(__func__);
    if (param == nullptr) {
        LOG(4, "velmor_set_sim_type data error");
        return -2;
    }
    auto *resp = uim_allocate<uim_result_resp_msg_v01>(__func__);
    if (resp == nullptr) {
        LOG(4, "error allocating memory for get_sim_type_resp_ptr");
        return -2;
    }

    int32_t code = -1;
    if (uim_connect(__func__, "velmor_set_sim_type")) {
        uim_set_sim_type_req_msg_v01 req = {};
        req.sim_type_len = param->count;
        for (uint32_t i = 0; i < param->count; ++i) {
            if (i < QMI_UIM_SIM_TYPES_MAX_V01) req.sim_type[i] = param->types[i];
            LOG(4, "Set_sim_type value is %d", param->types[i]);
        }
        code = qmi_client_send_msg_sync(uim_qmi_client, QMI_UIM_SET_SIM_TYPE_REQ_V01, &req, sizeof(req), resp,
                                        sizeof(*resp), UIM_TIMEOUT_MS);
        qcril_free_adv(resp, __func__, __LINE__);  // without a connection it is left behind
        if (code != 0) LOG(4, "send msg sync client error = %d", code);
    }
    LOG(4, "velmor_set_sim_type res = %d ", code);
    return code;
}

int32_t velmor_uim_request_eid(const uint8_t *slot, uint8_t *eid)
{
    uim_drop_dead(__func__);
    uim_call<uim_get_eid_req_msg_v01, uim_get_eid_resp_msg_v01> call;
    if (!uim_begin(&call, __func__, __func__)) return call.code;
    call.req->slot = *slot;
    if (uim_ask(&call, QMI_UIM_GET_EID_REQ_V01) && call.resp->resp.result == 0 && call.resp->eid_valid != 0)
        memcpy(eid, call.resp->eid, UIM_EID_LEN);
    return uim_finish(&call);
}

/* Cards behind the second are told of and have no place with the caller; those behind the table's end read as 0. */
static void read_card_states(const char *name, const uim_card_status_type_v01 *status, uint8_t *states)
{
    LOG_FROM(name, 4, "velmor_uim_get_card_status check response");
    for (uint32_t i = 0; i < status->card_info_len; ++i) {
        const uint32_t state = i < QMI_UIM_CARDS_MAX_V01 ? status->card_info[i].card_state : 0;
        if (i < UIM_STATE_SLOTS) states[i] = static_cast<uint8_t>(state);
        LOG_FROM(name, 4, "SIM[%d] State = %d", i, state);
    }
}

/* Meant so: a dead connection isn't dropped first. The send fails then, and its end drops it. */
int32_t velmor_uim_get_card_status(uint8_t *states)
{
    uim_call<uim_get_card_status_req_msg_v01, uim_get_card_status_resp_msg_v01> call;
    if (!uim_begin(&call, __func__, __func__)) return call.code;
    call.req->extended_card_status_valid = 1;
    call.req->extended_card_status = 1;
    if (uim_ask(&call, QMI_UIM_GET_CARD_STATUS_REQ_V01)) {
        memset(states, UIM_STATE_UNKNOWN, UIM_STATE_SLOTS);
        if (call.resp->resp.result == 0 && call.resp->extended_card_status_valid == 1 &&
            call.resp->extended_card_status.card_info_len >= 1)
            read_card_states(__func__, &call.resp->extended_card_status, states);
    }
    return uim_finish(&call);
}

// ---- UIM: logical channels and APDUs ----

/* The eUICC's issuer security domain. */
static const uint8_t ISD_R_AID[] = {0xA0, 0x00, 0x00, 0x05, 0x59, 0x10, 0x10, 0xFF,
                                    0xFF, 0xFF, 0xFF, 0x89, 0x00, 0x00, 0x01, 0x00};

int32_t velmor_uim_open_channel(const uim_channel_param *param, uint8_t *channel_id)
{
    uim_drop_dead(__func__);
    uim_call<uim_open_logical_channel_req_msg_v01, uim_channel_resp_msg_v01> call;
    if (!uim_begin(&call, __func__, __func__)) return call.code;
    call.req->slot = param->slot;
    call.req->aid_valid = 1;
    call.req->aid_len = sizeof(ISD_R_AID);
    memcpy(call.req->aid, ISD_R_AID, sizeof(ISD_R_AID));
    call.req->file_control_information_valid = 1;
    call.req->file_control_information = param->value;
    if (uim_ask(&call, QMI_UIM_OPEN_LOGICAL_CHANNEL_REQ_V01)) {
        if (call.resp->resp.result != 0) {
            LOG(4, "velmor_uim_open_channel failed");
            call.code = -1;
        } else {
            LOG(4, "velmor_uim_open_channel successfully");
            if (call.resp->channel_id_valid != 0) *channel_id = call.resp->channel_id;
        }
    }
    return uim_finish(&call);
}

int32_t velmor_uim_close_channel(const uim_channel_param *param)
{
    uim_drop_dead(__func__);
    uim_call<uim_logical_channel_req_msg_v01, uim_channel_resp_msg_v01> call;
    if (!uim_begin(&call, __func__, __func__)) return call.code;
    call.req->slot = param->slot;
    call.req->channel_id_valid = 1;
    call.req->channel_id = param->value;
    call.req->terminate_application_valid = 1;
    call.req->terminate_application = 0;
    if (uim_ask(&call, QMI_UIM_LOGICAL_CHANNEL_REQ_V01) && call.resp->resp.result == 0)
        LOG(4, "velmor_uim_close_channel successfully");
    return uim_finish(&call);
}

/* The answer's length is the card's: what is copied is what was received and what has room. */
static void take_apdu(const uim_send_apdu_resp_msg_v01 *resp, uim_apdu_result *result)
{
    uint32_t len = resp->apdu_len;
    if (len > sizeof(result->apdu)) len = sizeof(result->apdu);
    result->apdu_len = static_cast<uint8_t>(resp->apdu_len);
    memcpy(result->apdu, resp->apdu, len);
}

int32_t velmor_uim_send_apdu(const uim_apdu_param *param, uim_apdu_result *result)
{
    uim_drop_dead(__func__);
    uim_call<uim_send_apdu_req_msg_v01, uim_send_apdu_resp_msg_v01> call;
    // The lines of the connection carry the close operation's word here; people know them so.
    if (!uim_begin(&call, __func__, "velmor_uim_close_channel")) return call.code;
    LOG(4, "velmor_uim_send_apdu apdu_len = %d", param->apdu_len);
    call.req->slot = param->slot;
    call.req->apdu_len = param->apdu_len;
    memcpy(call.req->apdu, param->apdu, param->apdu_len);
    call.req->channel_id_valid = 1;
    call.req->channel_id = param->channel_id;
    call.req->procedure_bytes_valid = 1;
    call.req->procedure_bytes = 1;
    if (uim_ask(&call, QMI_UIM_SEND_APDU_REQ_V01)) {
        if (call.resp->resp.result != 0) {
            LOG(4, "velmor_uim_send_apdu failed");
            call.code = -1;
        } else {
            LOG(4, "velmor_uim_send_apdu successfully");
            take_apdu(call.resp, result);
        }
    }
    return uim_finish(&call);
}
