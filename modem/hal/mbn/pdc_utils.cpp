/* The PDC client: the record that joins requests and indications, the timers that free a requester, the requests, and a
 * handler for each indication.
 *
 * Three kinds of thread meet here: requesters, the client library's thread with the indications, and timer threads. Lock
 * order: the record's mutex, then the locks of the timer service. */
#include "pdc_utils.h"

#include <string.h>
#include <unistd.h>

#include "qcril_result.h"
#include "velmor_mbn_utils.h"
#include "velmor_utils_cmn.h"
#include "velmor_utils_timer.h"

constexpr unsigned long REQUEST_TIMEOUT_S = 5;
constexpr uint32_t      SEND_TIMEOUT_MS = 10000;
constexpr int           OPEN_ATTEMPTS = 20;
constexpr unsigned      OPEN_WAIT_S = 5;
constexpr uint32_t OPEN_TIMEOUT_MS = 4;  // for a service that isn't there yet; the first look at the list isn't bounded

/* What the load indication's error says. */
constexpr uint16_t LOAD_NO_MEMORY = 2;
constexpr uint16_t LOAD_INVALID_ID = 41;

pdc_info_s_type g_pdc_info_ex;

static qmi_idl_service_object_type    pdc_service_object;
static std::atomic<qmi_client_handle> pdc_client;         // null when closed
static qmi_client_os_params           pdc_os_params;      // for the library
static qtimutex::QtiSharedMutex       g_pdc_debug_mutex;  // held while the silent modem switch is read

/* The low half of an address is what a log line shows. */
static uint32_t address_number(const volatile void *address)
{
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(address));
}

// ---- Blocks by their kind ----

struct pdc_block {
    const char            *word;  // in messages
    pdc_cond              *cond;  // null: nobody sleeps here
    std::atomic<int32_t>  *handling;
    std::atomic<int32_t>  *waiting;
    std::atomic<int32_t>  *done;
    std::atomic<int32_t>  *result;
    std::atomic<uint32_t> *timer_id;
};

#define PDC_BLOCK(block)                                                                       \
    {                                                                                          \
#block, &g_pdc_info_ex.block.cond, &g_pdc_info_ex.block.is_##block##_handling,         \
            &g_pdc_info_ex.block.is_##block##_waiting, &g_pdc_info_ex.block.is_##block##_done, \
            &g_pdc_info_ex.block.result, &g_pdc_info_ex.block.timer_id                         \
    }

/* In the order of the kinds, from 1. */
static const pdc_block g_pdc_blocks[] = {
    PDC_BLOCK(pdc_list),
    PDC_BLOCK(pdc_load),
    PDC_BLOCK(pdc_info),
    PDC_BLOCK(pdc_deact),
    PDC_BLOCK(pdc_del),
    PDC_BLOCK(get_sel),
    PDC_BLOCK(sel_config),
    PDC_BLOCK(act_config),
    PDC_BLOCK(set_feature),
    PDC_BLOCK(default_info),
    {"pdc_validate_config_req", nullptr, nullptr, nullptr, nullptr, nullptr,
     &g_pdc_info_ex.pdc_validate_config_req.timer_id},
};

static const pdc_block &block_of(int req_type)
{
    return g_pdc_blocks[req_type - 1];
}

void qmi_pdc_init_pdc_info()
{
    for (const pdc_block &block : g_pdc_blocks) {
        *block.timer_id = 0;
        if (block.cond == nullptr) continue;
        *block.handling = 0;
        *block.waiting = 0;
        *block.done = 0;
        *block.result = 0;
    }
    g_pdc_info_ex.pdc_list.config_list_holder = nullptr;
    g_pdc_info_ex.pdc_list.num_of_configs = nullptr;
    g_pdc_info_ex.pdc_list.pdc_list_ind_token = 0;
    g_pdc_info_ex.pdc_info.config_info_holder = nullptr;
    g_pdc_info_ex.get_sel.get_sel_holder = nullptr;
    g_pdc_info_ex.default_info.config_info = nullptr;
    g_pdc_info_ex.pdc_validate_config_req.is_pdc_validate_waiting = 0;
    g_pdc_info_ex.pdc_validate_config_req.dump_fd = -1;
    g_pdc_info_ex.pdc_test.is_pdc_test_handling = 0;
    g_pdc_info_ex.pdc_test.is_pdc_test_waiting = 0;
    g_pdc_info_ex.pdc_test.is_pdc_test_done = 0;
    LOG(1, "pdc_info init done");
}

// ---- Request timers ----

std::atomic<uint32_t> *qmi_pdc_request_timer_get_ptr_by_req_type(int req_type)
{
    if (req_type < PDC_REQ_LIST || req_type > PDC_REQ_VALIDATE) {
        LOG(1, "not support this req_type(%d)", req_type);
        return nullptr;
    }
    return block_of(req_type).timer_id;
}

/* The kind whose slot holds the number, 0 for none. The slot of a validation is not searched, so that it keeps the number
 * of a timer that has run out. */
static int req_type_with_timer(uint32_t timer_id)
{
    for (int req_type = PDC_REQ_LIST; req_type <= PDC_REQ_DEFAULT_INFO; ++req_type)
        if (*block_of(req_type).timer_id == timer_id) return req_type;
    return 0;
}

std::atomic<uint32_t> *qmi_pdc_request_timer_get_ptr_by_timer_id(uint32_t timer_id)
{
    const int req_type = req_type_with_timer(timer_id);
    if (req_type != 0) return block_of(req_type).timer_id;
    LOG(1, "not find this timer_id(%u)", timer_id);
    return nullptr;
}

int qmi_pdc_request_timer_get_req_type_by_timer_id(uint32_t timer_id)
{
    const int req_type = req_type_with_timer(timer_id);
    if (req_type != 0) return req_type;
    LOG(1, "not find this timer_id(%u)", timer_id);
    return PDC_REQ_LIST;
}

void qmi_pdc_request_timer_start(int req_type)
{
    std::atomic<uint32_t> *slot = qmi_pdc_request_timer_get_ptr_by_req_type(req_type);
    if (slot == nullptr) {
        LOG(1, "req_type = %d, not support this req_type, do nothing.", req_type);
        return;
    }
    if (*slot != 0) {
        LOG(4, "find the timer is running, will stop it af first, timer_id = %u, req_type = %d", slot->load(),
            req_type);
        qmi_pdc_request_timer_stop(req_type);
    }
    // 0 when it couldn't be started: only the indication ends the wait then.
    const uint32_t timer_id = velmor_timer_start(qmi_pdc_request_timer_timeout_proc, REQUEST_TIMEOUT_S);
    LOG(4, "req_type = %d, timer_id = %u", req_type, timer_id);
    *slot = timer_id;
}

void qmi_pdc_request_timer_stop(int req_type)
{
    std::atomic<uint32_t> *slot = qmi_pdc_request_timer_get_ptr_by_req_type(req_type);
    if (slot == nullptr) {
        LOG(1, "req_type = %d, not support this req_type, do nothing.", req_type);
        return;
    }
    LOG(4, "req_type = %d, timer_id = %u", req_type, slot->load());
    velmor_timer_stop(*slot);
    *slot = 0;
}

// Frees all that sleep, not only the requester whose timer it is: the modem counts as silent. The others' timers go on and
// free in their turn whoever sleeps then.
void qmi_pdc_request_timer_timeout_proc(union sigval value)
{
    const uint32_t timer_id = static_cast<uint32_t>(value.sival_int);
    LOG(4, "timer_id = %u", timer_id);
    velmor_timer_stop(timer_id);

    g_pdc_info_ex.mutex.lock();
    for (const pdc_block &block : g_pdc_blocks) {
        if (block.cond == nullptr || *block.waiting == 0) continue;
        LOG(4, "%s is waiting, will stop it.", block.word);
        *block.result = PDC_ERROR;
        block.cond->any.notify_one();
        *block.done = 1;
    }
    auto &validate = g_pdc_info_ex.pdc_validate_config_req;
    if (validate.is_pdc_validate_waiting != 0) {
        LOG(4, "pdc_validate_config_req is waiting, will stop it, dump_fd = %d", validate.dump_fd.load());
        validate.is_pdc_validate_waiting = 0;
        if (validate.dump_fd >= 0) close(validate.dump_fd);  // and keeps its number
    }
    std::atomic<uint32_t> *slot = qmi_pdc_request_timer_get_ptr_by_timer_id(timer_id);
    const int              req_type = qmi_pdc_request_timer_get_req_type_by_timer_id(timer_id);
    if (slot != nullptr) {
        *slot = 0;
        LOG(4, "reset this timer_id(%u), req_type = %d.", timer_id, req_type);
    }
    g_pdc_info_ex.mutex.unlock();
}

// ---- Opening and closing ----

int32_t pdc_init_ex()
{
    qmi_pdc_init_pdc_info();
    pdc_service_object =
        pdc_get_service_object_internal_v01(PDC_VERSION, PDC_MINOR_VERSION, static_cast<int32_t>(IDL_LIBRARY_VERSION));
    for (int attempt = 0; attempt < OPEN_ATTEMPTS; ++attempt) {
        qmi_client_handle client = nullptr;
        const int32_t     result =
            qmi_client_init_instance(pdc_service_object, QMI_CLIENT_INSTANCE_ANY, qmi_pdc_unsol_ind_cb_ex, nullptr,
                                     &pdc_os_params, OPEN_TIMEOUT_MS, &client);
        if (result == 0) {
            pdc_client = client;
            LOG(4, "qmi_client_init succeeds for PDC");
            return PDC_SUCCESS;
        }
        LOG(1, "qmi_client_init returned failure (%d) for PDC, retry times %d", result, attempt);
        sleep(OPEN_WAIT_S);  // after the last attempt too
    }
    pdc_client = nullptr;
    return PDC_ERROR;
}

void pdc_clean_ex()
{
    if (pdc_client.load() != nullptr) {
        LOG(4, "Release client connection to PDC");
        qmi_client_release(pdc_client);
    }
    pdc_client = nullptr;
}

// ---- The steps of a request ----

int32_t pdc_request_begin(int req_type)
{
    const pdc_block &block = block_of(req_type);
    int32_t          result = PDC_BUSY;
    g_pdc_info_ex.mutex.lock();
    if (*block.handling == 0) {
        *block.handling = 1;
        result = PDC_SUCCESS;
    }
    g_pdc_info_ex.mutex.unlock();
    return result;
}

int32_t pdc_request_send(uint32_t msg_id, const void *req, uint32_t req_size, pdc_resp_v01 *resp)
{
    *resp = {};
    return qmi_client_send_msg_sync(pdc_client, msg_id, req, req_size, resp, sizeof(*resp), SEND_TIMEOUT_MS);
}

// The done flag may be set by the indication that overtook its requester, or by one that came after the time-out of the
// request before: its result is then this request's, which is meant.
int32_t pdc_request_wait(int req_type)
{
    const pdc_block &block = block_of(req_type);
    g_pdc_info_ex.mutex.lock();
    if (*block.done == 0) {
        *block.waiting = 1;
        qmi_pdc_request_timer_start(req_type);
        block.cond->any.wait(g_pdc_info_ex.mutex);
    }
    const int32_t result = *block.result;
    *block.handling = 0;
    *block.waiting = 0;
    *block.done = 0;
    if (req_type == PDC_REQ_GET_SEL) g_pdc_info_ex.get_sel.get_sel_holder = nullptr;
    g_pdc_info_ex.mutex.unlock();
    return result;
}

void pdc_request_deliver(int req_type, int32_t result)
{
    const pdc_block &block = block_of(req_type);
    *block.result = result;
    if (*block.waiting != 0) {
        qmi_pdc_request_timer_stop(req_type);
        block.cond->any.notify_one();
    }
    *block.done = 1;
}

static void deliver_locking(int req_type, int32_t result)
{
    g_pdc_info_ex.mutex.lock();
    pdc_request_deliver(req_type, result);
    g_pdc_info_ex.mutex.unlock();
}

// ---- Requests ----

int32_t pdc_get_current_config_ex(pdc_config_pdc_info *info, pdc_config_type_enum_v01 config_type, uint32_t sub)
{
    if (pdc_request_begin(PDC_REQ_GET_SEL) != PDC_SUCCESS) return PDC_BUSY;
    g_pdc_info_ex.mutex.lock();
    g_pdc_info_ex.get_sel.get_sel_holder = info;
    g_pdc_info_ex.mutex.unlock();

    pdc_get_selected_config_req_v01 req = {};
    req.config_type = config_type;
    req.subscription_id_valid =
        config_type == PDC_CONFIG_TYPE_MODEM_PLATFORM_V01 || config_type == PDC_CONFIG_TYPE_MODEM_SW_V01;
    req.subscription_id = req.subscription_id_valid != 0 ? sub : 0;

    pdc_resp_v01  resp;
    const int32_t sent = pdc_request_send(PDC_GET_SELECTED_CONFIG_V01, &req, sizeof(req), &resp);
    const int32_t ril_result = qcril_qmi_util_convert_qmi_response_codes_to_ril_result(sent, &resp.resp);
    if (ril_result != 0) {
        LOG(1, "qmi send message error for get_sel_configs, errno: %d %d", sent, ril_result);
        g_pdc_info_ex.get_sel.is_get_sel_handling = 0;
        return PDC_ERROR;
    }
    return pdc_request_wait(PDC_REQ_GET_SEL);
}

// An id that is too long and a failed send leave the handling flag set, so that every later select is refused until the
// client is opened again. Meant so.
int32_t pdc_select_config_ex(const pdc_config_pdc_info *info, pdc_config_type_enum_v01 config_type, uint32_t sub)
{
    if (pdc_request_begin(PDC_REQ_SEL_CONFIG) != PDC_SUCCESS) return PDC_BUSY;
    if (info->config_id_len > PDC_CONFIG_ID_MAX) return PDC_INVALID_CONFIG_ID;

    pdc_set_selected_config_req_v01 req = {};
    req.new_config_info.config_type = config_type;
    req.new_config_info.config_id_len = info->config_id_len;
    memcpy(req.new_config_info.config_id, info->config_id, info->config_id_len);
    req.subscription_id_valid = config_type == PDC_CONFIG_TYPE_MODEM_SW_V01;
    req.subscription_id = req.subscription_id_valid != 0 ? sub : 0;

    pdc_resp_v01  resp;
    const int32_t sent = pdc_request_send(PDC_SET_SELECTED_CONFIG_V01, &req, sizeof(req), &resp);
    if (sent != 0) {
        LOG(1, "qmi send message error for set_selected_config, errno: %d", sent);
        return PDC_ERROR;
    }
    return pdc_request_wait(PDC_REQ_SEL_CONFIG);
}

// A failed send leaves the handling flag set, as in a select.
int32_t pdc_deactivate_config_ex(uint32_t sub, pdc_config_type_enum_v01 config_type)
{
    if (pdc_request_begin(PDC_REQ_DEACT) != PDC_SUCCESS) return PDC_BUSY;

    pdc_deactivate_config_req_v01 req = {};
    req.config_type = config_type;
    req.subscription_id_valid = 1;
    req.subscription_id = sub;

    pdc_resp_v01  resp;
    const int32_t sent = pdc_request_send(PDC_DEACTIVATE_CONFIG_V01, &req, sizeof(req), &resp);
    if (sent != 0) {
        LOG(1, "qmi send mssage error for deactivate_config, errno: %d", sent);
        return PDC_ERROR;
    }
    return pdc_request_wait(PDC_REQ_DEACT);
}

static void activation_ends()
{
    g_pdc_info_ex.mutex.lock();
    g_pdc_info_ex.act_config.is_act_config_handling = 0;
    g_pdc_info_ex.mutex.unlock();
}

int32_t pdc_activate_config_ex(pdc_config_type_enum_v01 config_type, pdc_activation_type_enum_v01 activation_type,
                               uint32_t sub_id, uint32_t slot_id)
{
    LOG(4, "QMI_PDC_ACTIVATE_CONFIG_REQ_V01 begin, config_type: %d, activation_type: %d, sub_id: %d, slot_id: %d",
        config_type, activation_type, sub_id, slot_id);
    if (pdc_request_begin(PDC_REQ_ACT_CONFIG) != PDC_SUCCESS) return PDC_BUSY;

    pdc_activate_config_req_v01 req = {};
    req.config_type = config_type;
    req.activation_type_valid = 1;
    req.activation_type = activation_type;
    if (config_type == PDC_CONFIG_TYPE_MODEM_SW_V01) {
        req.subscription_id_valid = 1;
        req.subscription_id = sub_id;
        req.slot_id_valid = 1;
        req.slot_id = slot_id;
    }

    pdc_resp_v01  resp;
    const int32_t sent = pdc_request_send(PDC_ACTIVATE_CONFIG_V01, &req, sizeof(req), &resp);
    if (sent != 0) {
        LOG(1, "qmi send message error for activate_config, errno: %d", sent);
        activation_ends();
        return PDC_ERROR;
    }
    LOG(4, "QMI_PDC_ACTIVATE_CONFIG_REQ_V01 end, config_type: %d, sub_id: %d", config_type, sub_id);

    // An activation of these types may take the modem down before it says how it went: nobody waits for its indication.
    if (config_type == PDC_CONFIG_TYPE_MODEM_PLATFORM_V01 || config_type == PDC_CONFIG_TYPE_MODEM_SW_V01) {
        activation_ends();
        LOG(4, "There is not the response to PDC_CONFIG_TYPE_MODEM_PLATFORM_V01");
        return PDC_SUCCESS;
    }
    return pdc_request_wait(PDC_REQ_ACT_CONFIG);
}

int32_t pdc_activate_config_ex2(pdc_config_type_enum_v01 config_type, uint32_t sub)
{
    return pdc_activate_config_ex(config_type, PDC_ACTIVATION_REGULAR_V01, sub, sub);
}

// ---- Indications that carry a result alone ----

/* Delivers what an indication says. Reports under its handler's name. */
static void handle_result(const char *name, int req_type, const void *ind_data_ptr)
{
    int32_t result = PDC_SUCCESS;
    if (ind_data_ptr == nullptr) {
        LOG_FROM(name, 1, "NULL pointer for ind_data_ptr");
        result = PDC_ERROR;
    } else if (const uint16_t error = static_cast<const pdc_result_ind_v01 *>(ind_data_ptr)->error; error != 0) {
        LOG_FROM(name, 1, "QMI error, error code: %d", error);
        result = PDC_ERROR;
    }
    deliver_locking(req_type, result);
}

void qmi_pdc_deactivate_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t)
{
    handle_result(__func__, PDC_REQ_DEACT, ind_data_ptr);
}

void qmi_pdc_select_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t)
{
    handle_result(__func__, PDC_REQ_SEL_CONFIG, ind_data_ptr);
}

void qmi_pdc_delete_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t)
{
    handle_result(__func__, PDC_REQ_DEL, ind_data_ptr);
}

void qmi_pdc_activate_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t)
{
    LOG(4, "entering %s", __func__);
    handle_result(__func__, PDC_REQ_ACT_CONFIG, ind_data_ptr);
}

void qmi_pdc_set_feature_ind_hdlr_ex(void *ind_data_ptr, uint32_t)
{
    LOG(4, "entering %s", __func__);
    handle_result(__func__, PDC_REQ_SET_FEATURE, ind_data_ptr);
}

// ---- Load and get selected ----

void qmi_pdc_load_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t)
{
    auto *ind = static_cast<pdc_load_config_ind_v01 *>(ind_data_ptr);
    if (ind == nullptr) {
        LOG(1, "NULL pointer for ind_dat_ptr");
        deliver_locking(PDC_REQ_LOAD, PDC_ERROR);
        return;
    }
    if (ind->error == LOAD_NO_MEMORY) {
        LOG(1, "no memory in modem EFS");
        deliver_locking(PDC_REQ_LOAD, PDC_NO_MEMORY);
        return;
    }
    if (ind->error == LOAD_INVALID_ID) {
        LOG(1, "Invalid config id, maybe already exists");
        deliver_locking(PDC_REQ_LOAD, PDC_INVALID_CONFIG_ID);
        return;
    }
    if (ind->error != 0) {
        LOG(1, "load configuration error, code = %d", ind->error);
        deliver_locking(PDC_REQ_LOAD, PDC_ERROR);
        return;
    }
    // That the field is there says that the frames are lost; its value, 0 too, says nothing. Meant so.
    if (ind->frame_data_reset_valid != 0) {
        ind->frame_data_reset = 1;
        LOG(1, "PDC frame data is reset");
        deliver_locking(PDC_REQ_LOAD, PDC_FRAME_RESET);
        return;
    }
    g_pdc_info_ex.mutex.lock();
    if (ind->remaining_valid != 0) g_pdc_info_ex.pdc_load.remaining_size = ind->remaining;
    if (ind->received_valid != 0) g_pdc_info_ex.pdc_load.received_size = ind->received;
    pdc_request_deliver(PDC_REQ_LOAD, PDC_SUCCESS);
    g_pdc_info_ex.mutex.unlock();
}

/* Judges the indication and fills the holder. With the mutex held, so that the requester can't leave with its holder.
 * Reports under the handler's name. */
static int32_t take_selected(const char *name, const pdc_get_selected_config_ind_v01 *ind)
{
    if (ind == nullptr) {
        LOG_FROM(name, 1, "NULL pointer for ind_data_ptr");
        return PDC_ERROR;
    }
    pdc_config_pdc_info *holder = g_pdc_info_ex.get_sel.get_sel_holder;
    if (holder == nullptr) {
        LOG_FROM(name, 1, "NULL pointer for get_sel_holder");
        return PDC_ERROR;
    }
    if (ind->error != 0) {
        LOG_FROM(name, 1, "QMI error, error code: %d", ind->error);
        return PDC_ERROR;
    }
    if (ind->active_id_valid == 0) {
        if (ind->pending_id_valid != 0) LOG_FROM(name, 4, "has pending configuration");
        return PDC_NOT_AVAILABLE;
    }
    if (ind->active_id_len > PDC_CONFIG_ID_MAX) return PDC_ERROR;
    holder->config_id_len = ind->active_id_len;
    memcpy(holder->config_id, ind->active_id, ind->active_id_len);
    return PDC_SUCCESS;
}

void qmi_pdc_get_selected_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t)
{
    g_pdc_info_ex.mutex.lock();
    const int32_t result = take_selected(__func__, static_cast<const pdc_get_selected_config_ind_v01 *>(ind_data_ptr));
    pdc_request_deliver(PDC_REQ_GET_SEL, result);
    g_pdc_info_ex.mutex.unlock();
}

// ---- Listing: chunks, each asked for by a request of its own ----

/* Adds a chunk to the caller's count and list, whose head then is the last one that came. With the mutex held, since the
 * requester may have left meanwhile. A node that can't be had is counted all the same. Reports under the handler's name. */
static bool list_take_chunk(const char *name, const pdc_list_configs_ind_v01 *ind)
{
    auto     &list = g_pdc_info_ex.pdc_list;
    uint32_t *num_of_configs = list.num_of_configs;
    if (num_of_configs == nullptr) {
        LOG_FROM(name, 1, "pdc_list_configs_flag, g_pdc_info_ex.num_of_configs is null, quit");
        return false;
    }
    LOG_FROM(name, 4, "pdc_list_configs_flag, config_list_len %d, old num_of_configs %d", ind->config_list_len,
             *num_of_configs);
    *num_of_configs += ind->config_list_len;

    pdc_config_list_node **holder = list.config_list_holder;
    if (holder == nullptr) {
        LOG_FROM(name, 1, "pdc_list_configs_flag, g_pdc_info_ex.config_list_holder is null, quit");
        return false;
    }
    LOG_FROM(name, 4, "pdc_list_configs_flag, new num_of_configs %d", *num_of_configs);
    for (uint32_t i = 0; i < ind->config_list_len; ++i) {
        const pdc_config_info_v01 &config = ind->config_list[i];
        auto *node = static_cast<pdc_config_list_node *>(qcril_malloc_adv(sizeof(pdc_config_list_node)));
        if (node == nullptr) {
            LOG_FROM(name, 4, "pdc_list_configs_flag, Unable to allocate memory for the list element: %d", i);
            continue;
        }
        // An id longer than the room is foreign: what there is of it is what the node tells.
        node->config_id_len = config.config_id_len < PDC_CONFIG_ID_MAX ? config.config_id_len : PDC_CONFIG_ID_MAX;
        memcpy(node->config_id, config.config_id, node->config_id_len);
        node->next = *holder;
        *holder = node;
    }
    return true;
}

constexpr int32_t LIST_CALLER_GONE = 1;  // no result of a request: the caller's places went while a chunk was judged

/* What a chunk comes to; `complete` is cleared when the modem has more. */
static int32_t list_judge(const char *name, const pdc_list_configs_ind_v01 *ind, int32_t *complete)
{
    if (ind->error != 0) {
        LOG_FROM(name, 1, "pdc_list_configs_flag, QMI error, error code: %d", ind->error);
        return PDC_ERROR;
    }
    if (ind->config_list_valid == 0 || ind->config_list_len == 0) {
        LOG_FROM(name, 4, "pdc_list_configs_flag, None MBN available in modem EFS");
        return PDC_NOT_AVAILABLE;
    }
    if (ind->config_list_len > PDC_CONFIG_LIST_MAX) {
        LOG_FROM(name, 4,
                 "pdc_list_configs_flag, PDC_ERROR, more_available_valid %d, ind_token_valid %d, more_available %d, "
                 "config_list_len %d",
                 ind->more_available_valid, ind->ind_token_valid, ind->more_available, ind->config_list_len);
        return PDC_ERROR;
    }
    LOG_FROM(name, 4, "pdc_list_configs_flag, succeed to get config_list %d ", ind->config_list_len);
    g_pdc_info_ex.mutex.lock();
    const bool taken = list_take_chunk(name, ind);
    g_pdc_info_ex.mutex.unlock();
    if (!taken) return LIST_CALLER_GONE;

    if (ind->more_available_valid != 0 && ind->ind_token_valid != 0 && ind->more_available != 0) *complete = 0;
    LOG_FROM(name, 4,
             "pdc_list_configs_flag, PDC_SUCCESS, more_available_valid %d, ind_token_valid %d, more_available %d, "
             "get_list_complete %d",
             ind->more_available_valid, ind->ind_token_valid, ind->more_available, *complete);
    return PDC_SUCCESS;
}

/* Whether the caller's places are there. They may go at any moment: the requester may be leaving after its time-out. */
static bool list_has_holders(const char *name, const pdc_list_configs_ind_v01 *ind)
{
    auto &list = g_pdc_info_ex.pdc_list;
    if (ind == nullptr || list.num_of_configs == nullptr || list.config_list_holder == nullptr) {
        LOG_FROM(name, 1,
                 "pdc_list_configs_flag, NULL pointer for ind_data_ptr or  g_pdc_info_ex.num_of_configs or "
                 "g_pdc_info_ex.config_list_holder");
        return false;
    }
    g_pdc_info_ex.mutex.lock();
    const bool counted = list.num_of_configs != nullptr;
    if (!counted) LOG_FROM(name, 1, "pdc_list_configs_flag, g_pdc_info_ex.num_of_configs is null");
    g_pdc_info_ex.mutex.unlock();
    return counted;
}

void qmi_pdc_list_configs_ind_hdlr_ex(void *ind_data_ptr, uint32_t ind_data_len)
{
    auto       &list = g_pdc_info_ex.pdc_list;
    const auto *ind = static_cast<const pdc_list_configs_ind_v01 *>(ind_data_ptr);
    LOG(4,
        "pdc_list_configs_flag, qmi_pdc_list_configs_ind_hdlr_ex, ind_data_ptr = 0x%x, ind_data_len = %d, "
        "is_pdc_list_handling = %d",
        address_number(ind_data_ptr), ind_data_len, list.is_pdc_list_handling.load());
    g_pdc_info_ex.mutex.lock();
    const bool handling = list.is_pdc_list_handling != 0;
    if (!handling) {
        LOG(1, "pdc_list_configs_flag, g_pdc_info_ex.is_pdc_list_handling is not running, do nothing");
    }
    g_pdc_info_ex.mutex.unlock();
    if (!handling) return;
    if (!list_has_holders(__func__, ind)) {
        deliver_locking(PDC_REQ_LIST, PDC_ERROR);
        return;
    }

    int32_t       get_list_complete = 1;
    const int32_t result = list_judge(__func__, ind, &get_list_complete);
    if (result == LIST_CALLER_GONE) {
        deliver_locking(PDC_REQ_LIST, PDC_ERROR);
        return;
    }
    g_pdc_info_ex.mutex.lock();
    list.result = result;
    if (result == PDC_SUCCESS && get_list_complete == 0) {
        g_pdc_info_ex.mutex.unlock();
        LOG(4, "pdc_list_configs_flag, Continue to req, get_list_complete %d", get_list_complete);
        // On a timer's thread, since this one is where the answer to the request comes in. The requester sleeps on and its
        // timer runs on: the whole list has its 5 seconds.
        velmor_timer_start(qmi_pdc_list_configs_follow_up_request_ex, 0);
        return;
    }
    LOG(4, "pdc_list_configs_flag, Abort to req, get_list_complete %d", get_list_complete);
    pdc_request_deliver(PDC_REQ_LIST, result);
    g_pdc_info_ex.mutex.unlock();
}

void qmi_pdc_list_configs_follow_up_request_ex(union sigval value)
{
    LOG(4, "qmi_pdc_list_configs_follow_up_request_ex, timer_id = %d", value.sival_int);
    velmor_timer_stop(static_cast<uint32_t>(value.sival_int));

    pdc_list_configs_req_v01 req = {};
    req.ind_token_valid = 1;
    req.ind_token = g_pdc_info_ex.pdc_list.pdc_list_ind_token;
    req.config_type_valid = 1;
    req.config_type = PDC_CONFIG_TYPE_MODEM_SW_V01;
    req.follow_up_valid = 1;
    req.follow_up = 1;

    pdc_resp_v01  resp;
    const int32_t sent = pdc_request_send(PDC_LIST_CONFIGS_V01, &req, sizeof(req), &resp);
    const int32_t ril_result = qcril_qmi_util_convert_qmi_response_codes_to_ril_result(sent, &resp.resp);
    if (ril_result == 0) return;
    LOG(1, "qmi send mssage error for list_configs, errno: %d %d", sent, ril_result);
    deliver_locking(PDC_REQ_LIST, PDC_ERROR);
}

// ---- What the modem tells of one configuration ----

void qmi_pdc_get_config_info_ind_hdlr_ex(void *ind_data_ptr, uint32_t ind_data_len)
{
    const auto *ind = static_cast<const pdc_get_config_info_ind_v01 *>(ind_data_ptr);
    g_pdc_info_ex.mutex.lock();
    pdc_config_desc_info *holder = g_pdc_info_ex.pdc_info.config_info_holder;
    LOG(4, "qmi_pdc_get_config_info_ind_hdlr_ex, ind_data_ptr = 0x%x, ind_data_len = %d, config_info_holder = 0x%x",
        address_number(ind_data_ptr), ind_data_len, address_number(holder));
    int32_t result = PDC_ERROR;
    if (holder == nullptr) {
        LOG(1, "NULL pointer for config_info_holder");
    } else if (ind == nullptr) {
        LOG(1, "NULL pointer for ind_data_ptr");
    } else {
        // Whatever the error says: without it there is nothing to take.
        holder->config_desc_valid = ind->config_desc_valid;
        if (ind->config_desc_valid != 0) {
            holder->config_desc_len =
                ind->config_desc_len < PDC_CONFIG_DESC_MAX ? ind->config_desc_len : PDC_CONFIG_DESC_MAX;
            memcpy(holder->config_desc, ind->config_desc, holder->config_desc_len);
        }
        holder->config_version_valid = ind->config_version_valid;
        holder->config_version = ind->config_version;
        holder->second_version_valid = ind->second_version_valid;
        holder->second_version = ind->second_version;
        result = PDC_SUCCESS;
    }
    pdc_request_deliver(PDC_REQ_INFO, result);
    g_pdc_info_ex.mutex.unlock();
}

void velmor_mbn_get_default_config_info_ind_hdlr(void *ind_data_ptr, uint32_t ind_data_len)
{
    const auto *def_ind = static_cast<const pdc_get_default_config_info_ind_v01 *>(ind_data_ptr);
    if (def_ind == nullptr) {
        LOG(1, "NULL pointer for ind_data_ptr");
        deliver_locking(PDC_REQ_DEFAULT_INFO, PDC_ERROR);
        return;
    }
    LOG(4, "ind_data_len = %d", ind_data_len);
    LOG(4, "def_ind->error = %d", def_ind->error);
    LOG(4, "def_ind->config_desc_valid = %d", def_ind->config_desc_valid);
    LOG(4, "def_ind->config_desc_len = %d", def_ind->config_desc_len);
    LOG(4, "def_ind->config_version_valid = %d", def_ind->config_version_valid);
    LOG(4, "def_ind->config_version = %d", def_ind->config_version);

    g_pdc_info_ex.mutex.lock();
    pdc_config_desc_info *holder = g_pdc_info_ex.default_info.config_info;
    int32_t               result = PDC_ERROR;
    if (holder == nullptr) {
        LOG(1, "NULL pointer for config_info");
    } else {
        holder->config_desc_valid = def_ind->config_desc_valid;
        holder->config_desc_len = def_ind->config_desc_len;
        memcpy(holder->config_desc, def_ind->config_desc,
               sizeof(holder->config_desc));  // all of it, whatever its length
        holder->config_version_valid = def_ind->config_version_valid;
        holder->config_version = def_ind->config_version;
        result = PDC_SUCCESS;
    }
    pdc_request_deliver(PDC_REQ_DEFAULT_INFO, result);
    g_pdc_info_ex.mutex.unlock();
}

// ---- Where indications come in ----

bool velmor_mbn_debug_all_pdc_no_rsp_count_check()
{
    int32_t count = 0;
    g_pdc_debug_mutex.lock();
    velmor_get_property_value_from_int("persist.radio.all_pdc_no_rsp_count", &count, 0);
    const bool silent = count >= 1;  // a switch for all that it is called a count: nothing counts it down
    if (silent) LOG(1, "NOTICE!!! PROPERTY_DEBUG_ALL_PDC_NO_RSP_COUNT(%d) is running", count);
    g_pdc_debug_mutex.unlock();
    return !silent;
}

struct pdc_ind_row {
    uint32_t msg_id;
    void (*handle)(void *ind_data_ptr, uint32_t ind_data_len);
};
static const pdc_ind_row g_pdc_ind_rows[] = {
    {PDC_GET_SELECTED_CONFIG_V01, qmi_pdc_get_selected_config_ind_hdlr_ex},
    {PDC_SET_SELECTED_CONFIG_V01, qmi_pdc_select_config_ind_hdlr_ex},
    {PDC_LIST_CONFIGS_V01, qmi_pdc_list_configs_ind_hdlr_ex},
    {PDC_DELETE_CONFIG_V01, qmi_pdc_delete_config_ind_hdlr_ex},
    {PDC_LOAD_CONFIG_V01, qmi_pdc_load_config_ind_hdlr_ex},
    {PDC_ACTIVATE_CONFIG_V01, qmi_pdc_activate_config_ind_hdlr_ex},
    {PDC_GET_CONFIG_INFO_V01, qmi_pdc_get_config_info_ind_hdlr_ex},
    {PDC_GET_DEFAULT_CONFIG_INFO_V01, velmor_mbn_get_default_config_info_ind_hdlr},
    {PDC_DEACTIVATE_CONFIG_V01, qmi_pdc_deactivate_config_ind_hdlr_ex},
    {PDC_VALIDATE_CONFIG_V01, qcril_qmi_pdc_validate_config_ind_hdlr_ex},
    {PDC_SET_FEATURE_V01, qmi_pdc_set_feature_ind_hdlr_ex},
};

void qmi_pdc_unsol_ind_cb_ex(qmi_client_handle client, uint32_t msg_id, void *ind_buf, uint32_t ind_buf_len,
                             void *ind_cb_data)
{
    LOG(4, "msg_id: 0x%02x, ind_buf = 0x%x, ind_buf_len: %d, ind_cb_data = 0x%x", msg_id, address_number(ind_buf),
        ind_buf_len, address_number(ind_cb_data));
    if (!velmor_mbn_debug_all_pdc_no_rsp_count_check()) {
        LOG(1, "velmor_mbn_debug_all_pdc_no_rsp_count_check fail");
        return;
    }
    uint32_t size = 0;
    if (qmi_idl_get_message_c_struct_len(pdc_service_object, INDICATION, static_cast<uint16_t>(msg_id), &size) != 0) {
        LOG(1, "failed to get message c_struct len");
        return;
    }
    void *ind = qcril_malloc_adv(size);
    if (ind == nullptr) {
        LOG(1, "failed to allocate memory for payload");
        return;
    }
    if (qmi_client_message_decode(client, INDICATION, msg_id, ind_buf, ind_buf_len, ind, size) != 0) {
        LOG(1, "failed to decode qmi message, msg_id: 0x%02x", msg_id);
    } else {
        for (const pdc_ind_row &row : g_pdc_ind_rows)
            if (row.msg_id == msg_id) row.handle(ind, size);
    }
    qcril_free_adv(ind, __func__, __LINE__);
}
