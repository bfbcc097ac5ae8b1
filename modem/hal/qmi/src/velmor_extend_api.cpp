/* The extended client. A request takes the mutex, opens the service if need be, sends its envelope from one static
 * structure and takes the answer from another, so that once it is open nothing is allocated. Indications come on the QMI
 * client library's thread, use their own stack and never the mutex. */
#include "velmor_extend_api.h"

#include <pthread.h>

#include <string.h>

#include "velmor_utils_cmn.h"

constexpr uint32_t OPEN_ATTEMPTS = 50;
constexpr uint32_t OPEN_WAIT_MS = 20;  // a service that isn't there costs 50 of these, one second
constexpr uint32_t SEND_TIMEOUT_MS = 3000;

/* State: everything down to the flag belongs to g_extend_mutex; the flag is also read without it. */
static pthread_mutex_t             g_extend_mutex = PTHREAD_MUTEX_INITIALIZER;
static extend_envelope             g_extend_req;
static extend_envelope             g_extend_rsp;
static qmi_client_os_params        g_extend_os_params;
static qmi_idl_service_object_type g_extend_service_object;
static qmi_client_handle           g_extend_client;  // null until open, never released
static bool                        g_extend_client_open;
static qmi_client_handle           g_extend_notifier;
static std::atomic<bool>           g_extend_client_inited;

std::atomic<int32_t> g_extend_log_on{1};
extend_handler       g_extend_ind_handlers[EXTEND_IND_IDS];
extend_handler       g_extend_stat_handler;
extend_handler       g_extend_ind13_handler;

/* LOG under the client's log switch; macros, because LOG tells the place where it stands. */
#define EXTEND_LOG_FROM(name, level, ...)                                                             \
    do {                                                                                              \
        if (g_extend_log_on.load(std::memory_order_relaxed) != 0) LOG_FROM(name, level, __VA_ARGS__); \
    } while (0)
#define EXTEND_LOG(level, ...) EXTEND_LOG_FROM(__func__, level, __VA_ARGS__)

static const char SEND_SYNC[] = "velmor_extend_qmi_send_sync";

/* Handles are names; their low half is what a log line shows. */
static int32_t handle_number(const void *handle)
{
    return static_cast<int32_t>(reinterpret_cast<uintptr_t>(handle));
}

// ---- Opening the service ----

/* With the mutex held. */
static void extend_init_locked()
{
    g_extend_req = {};
    g_extend_rsp = {};
    g_extend_os_params = {};
    g_extend_service_object = nullptr;
    g_extend_client = nullptr;
    g_extend_client_open = false;
    g_extend_notifier = nullptr;

    g_extend_service_object =
        velmor_extend_get_service_object_internal_v01(EXTEND_VERSION, EXTEND_MINOR_VERSION, IDL_LIBRARY_VERSION);
    if (g_extend_service_object == nullptr)
        LOG_FROM("velmor_extend_qmi_client_init", 1, "QMI get service obj failed. Check .c and .h");
    g_extend_client_inited = true;  // after a failure too: a second try would fail alike
}

void velmor_extend_qmi_client_init()
{
    pthread_mutex_lock(&g_extend_mutex);
    extend_init_locked();
    pthread_mutex_unlock(&g_extend_mutex);
}

/* With the mutex held. */
static void extend_init_once_locked()
{
    if (!g_extend_client_inited) extend_init_locked();
}

qmi_client_handle velmor_extend_qmi_client_open()
{
    extend_init_once_locked();
    if (g_extend_client != nullptr) return g_extend_client;

    qmi_client_notifier_init(g_extend_service_object, &g_extend_os_params, &g_extend_notifier);
    uint32_t num_services = 0;
    for (uint32_t attempt = 0; attempt < OPEN_ATTEMPTS; ++attempt) {
        const int32_t err = qmi_client_get_service_list(g_extend_service_object, nullptr, nullptr, &num_services);
        EXTEND_LOG(4, "VELMOR_QMI_NV: qmi_client_get_service_list() returned %d num_services = %d", err, num_services);
        if (err == 0) break;
        qmi_cci_os_signal_wait(&g_extend_os_params, OPEN_WAIT_MS);
    }

    /* The first entry is taken. An absent service leaves it zero; it is qmi_client_init that refuses then. */
    uint32_t          num_entries = num_services;
    qmi_service_info *table =
        static_cast<qmi_service_info *>(qcril_malloc_adv((num_services + size_t{1}) * sizeof(*table)));
    if (table == nullptr) return nullptr;
    int32_t err = qmi_client_get_service_list(g_extend_service_object, table, &num_entries, &num_services);
    EXTEND_LOG(4, "qmi_client_get_service_list, err = %d, num_entries = %d, num_services = %d", err, num_entries,
               num_services);

    err = qmi_client_init(&table[0], g_extend_service_object, velmor_extend_qmi_ind_cb, nullptr, nullptr,
                          &g_extend_client);
    qcril_free_adv(table, __func__, __LINE__);
    EXTEND_LOG(4, "qmi_client_init, err = %d, handle = %d, client_handle = %d", err, handle_number(g_extend_notifier),
               handle_number(g_extend_client));
    if (err != 0) {
        g_extend_client = nullptr;
        LOG(1, "%d QMI client init failed", err);
        return nullptr;
    }
    EXTEND_LOG(4, "QMI client inited");
    g_extend_client_open = true;
    return g_extend_client;
}

// ---- One request ----

/* With the mutex held and the client open. Reports under the name of the operation that it belongs to. */
static int32_t extend_exchange(uint32_t qmi_id, const void *req, uint32_t req_len, void *rsp, uint32_t *rsp_len)
{
    g_extend_req = {};
    g_extend_rsp = {};
    g_extend_req.qmi_id = qmi_id;
    g_extend_req.data_len = req_len;
    g_extend_req.data_valid = 1;
    memcpy(g_extend_req.data, req, req_len);

    const int32_t sent =
        qmi_client_send_msg_sync(g_extend_client, EXTEND_MSG_ENVELOPE, &g_extend_req, sizeof(g_extend_req),
                                 &g_extend_rsp, sizeof(g_extend_rsp), SEND_TIMEOUT_MS);
    if (sent != 0) {
        EXTEND_LOG_FROM(SEND_SYNC, 1, "send msg sync failed:%d", sent);
        return EXTEND_FAILED;
    }
    if (g_extend_rsp.qmi_id != 0) {
        EXTEND_LOG_FROM(SEND_SYNC, 1, "%d QMI service framework error. Check client", g_extend_rsp.qmi_id);
        return EXTEND_FAILED;
    }

    /* The answer's length is foreign: the caller's room, at most 550, bounds what is copied. */
    if (g_extend_rsp.data_len <= *rsp_len) *rsp_len = g_extend_rsp.data_len;
    if (g_extend_rsp.data_valid == 0) *rsp_len = 0;
    memcpy(rsp, g_extend_rsp.data, *rsp_len);
    EXTEND_LOG_FROM(SEND_SYNC, 4, "velmor_extend_qmi_send_sync resp_len:%d", *rsp_len);
    return 0;
}

int32_t velmor_extend_qmi_send_sync(uint32_t qmi_id, const void *req, int32_t req_len, void *rsp, uint32_t *rsp_len)
{
    if (!g_extend_client_inited) {  // refused requests included; who only checks needn't wait for another's request
        pthread_mutex_lock(&g_extend_mutex);
        extend_init_once_locked();
        pthread_mutex_unlock(&g_extend_mutex);
    }
    if (req == nullptr || rsp == nullptr || rsp_len == nullptr) {
        EXTEND_LOG(1, "%x,  put Invalid param", handle_number(req));
        return EXTEND_BAD_ARGUMENT;
    }
    if (static_cast<uint32_t>(req_len) > EXTEND_DATA_MAX || *rsp_len > EXTEND_DATA_MAX) {  // a negative length is above
        EXTEND_LOG(1, "put data_len %d > max %d", req_len, EXTEND_DATA_MAX);
        return EXTEND_BAD_ARGUMENT;
    }

    pthread_mutex_lock(&g_extend_mutex);
    int32_t result = EXTEND_NOT_OPEN;
    if (velmor_extend_qmi_client_open() != nullptr)
        result = extend_exchange(qmi_id, req, static_cast<uint32_t>(req_len), rsp, rsp_len);
    EXTEND_LOG(4, "velmor_extend_qmi_handle_req_cb result:%d", result);
    pthread_mutex_unlock(&g_extend_mutex);
    return result;
}

// ---- What the modem says unasked ----

/* Indication 3: an envelope. A decode that fails leaves id 0 without data, which is what the slot 0 then hears. */
static void extend_hand_on_envelope(qmi_client_handle client, uint32_t msg_id, const void *buffer, uint32_t buffer_len)
{
    static const char IND_CB[] = "velmor_extend_qmi_ind_cb";

    extend_envelope envelope = {};
    LOG_FROM(IND_CB, 4, "VELMOR__EXTEND_QMI: Indication msg_id=0x%x buf_len=%d ", msg_id, buffer_len);
    qmi_client_message_decode(client, INDICATION, msg_id, buffer, buffer_len, &envelope, sizeof(envelope));
    if (envelope.qmi_id >= EXTEND_IND_IDS) {
        LOG_FROM(IND_CB, 4, "Indicaion: %d greater than maximum known indication.", envelope.qmi_id);
        return;
    }
    const extend_handler handler = g_extend_ind_handlers[envelope.qmi_id];
    if (handler == nullptr) {
        LOG_FROM(IND_CB, 4, "No function defined to handle indication: %d", envelope.qmi_id);
        return;
    }
    /* The length is foreign, and the handler believes it. */
    const uint32_t data_len = envelope.data_len < EXTEND_DATA_MAX ? envelope.data_len : EXTEND_DATA_MAX;
    handler(envelope.qmi_id, envelope.data, envelope.data_valid != 0 ? data_len : 0);
}

void velmor_extend_qmi_ind_cb(qmi_client_handle client, uint32_t msg_id, void *buffer, uint32_t buffer_len,
                              [[maybe_unused]] void *cb_data)
{
    union {
        extend_records_ind records;
        extend_groups_ind  groups;
        extend_words_2     words_2;
        extend_value_ind   value;
        extend_longs_ind   longs;
        extend_words_5     words_5;
        extend_event_ind   event;
    } ind;

    uint32_t       size = 0;
    extend_handler handler = g_extend_stat_handler;
    switch (msg_id) {
    case 3: extend_hand_on_envelope(client, msg_id, buffer, buffer_len); return;
    case 5: size = sizeof(ind.records); break;
    case 6: size = sizeof(ind.groups); break;
    case 7: size = sizeof(ind.words_2); break;
    case 8: size = sizeof(ind.value); break;
    case 9: size = sizeof(ind.longs); break;
    case 11: size = sizeof(ind.words_5); break;
    case 13:
        size = sizeof(ind.event);
        handler = g_extend_ind13_handler;
        break;
    default: return;
    }

    memset(&ind, 0, sizeof(ind));
    const int32_t decoded = qmi_client_message_decode(client, INDICATION, msg_id, buffer, buffer_len, &ind, size);
    if (decoded == 0 && handler != nullptr) handler(msg_id, &ind, size);
}

// ---- For the other clients ----

int32_t velmor_qmi_result_map(int32_t result)
{
    const int32_t new_result = result <= -1 && result >= -3 ? result - 100 : result;
    LOG(4, "velmor_qmi_result_map, old_result %d, new_result %d", result, new_result);
    return new_result;
}

void velmor_qmi_client_common_empty_unsol_ind_cb(qmi_client_handle, uint32_t msg_id, void *, uint32_t, void *)
{
    LOG(4, "msg_id %d", msg_id);
}

void velmor_qmi_client_unsol_ind_cb(qmi_client_handle, uint32_t msg_id, void *, uint32_t, void *)
{
    LOG(4, "msg_id %d", msg_id);
}

void velmor_qmi_client_error_cb(qmi_client_handle, int32_t error, void *)
{
    LOG(4, "QMI error callback %d", error);
}
