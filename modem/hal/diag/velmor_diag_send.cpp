/* Raw diag requests over the diag library, in callback and in DCI mode, with and without an answer.
 *
 * A send with result blocks its caller in a semaphore. Three may post it: the library's thread with a packet, and the
 * wait thread, which polls every 100 ms and ends the wait, once for a long answer that has no closing packet and once
 * for a time-out. The sender takes one post; what is left goes with the semaphore. A send without result is the work of
 * a detached worker. The group of raw commands is the only caller. */
#include "velmor_diag_send.h"

#include <atomic>

#include <errno.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "diag_lsm.h"
#include "velmor_diag_rsp.h"
#include "velmor_utils_cmn.h"

constexpr int32_t  DIAG_CHANNEL = 0;         // the processor that requests go to
constexpr uint32_t HEX_LEN_MAX = 4096;       // bytes that the dump shows
constexpr int32_t  FRAGMENT_LEN = 4096;      // a DCI packet of just this length says that more follows
constexpr int32_t  DCI_PACKET_SIZE = 16384;  // bytes of the packet buffer
constexpr int32_t  DCI_SIGNAL_TYPE = 18;     // operating-system parameter of a DCI registration
constexpr int32_t  DCI_SIGNAL_OFFSET = 30;   // the data signal, from the lowest real-time signal on
constexpr uint32_t WAIT_STEP_US = 100000;    // of the wait thread
constexpr uint32_t WAIT_STEP_MS = 100;       // the same, for the counts of steps
constexpr int32_t  WAIT_CNT_AT_REST = 30;    // steps
constexpr uint32_t WAIT_DEFAULT_MS = 3000;   // callback mode
constexpr uint32_t WAIT_MAX_MS = 60000;      // callback mode
constexpr uint32_t PASS_US = 200000;         // for packets to pass in a send without result, callback mode
constexpr uint32_t PASS_DCI_S = 1;           // and in DCI mode
constexpr uint32_t LAST_SLEEP_US = 3000000;  // of a worker

static const char THREAD_NAME[] = "VELM DIAG";

/* The answer as received so far. Data first, then length, then the post; no lock holds them together, and in callback
 * mode a second packet may replace the first while the sender copies. Nothing sets the length back to 0. */
static struct {
    std::atomic<diag_rsp_block *> data;
    std::atomic<int32_t>          length;
} g_qcril_diag_rsp_buf;

static std::atomic<diag_rsp_block *> g_diag_rsp_prev;  // what had come, while a further packet is joined to it

static pthread_mutex_t g_diag_rsp_mutex = PTHREAD_MUTEX_INITIALIZER;        // the joining of packets, DCI mode alone
static pthread_mutex_t g_diag_send_mutex = PTHREAD_MUTEX_INITIALIZER;       // a whole send with result
static pthread_mutex_t g_diag_no_result_mutex = PTHREAD_MUTEX_INITIALIZER;  // a worker's whole send
static sem_t           g_diag_rsp_sem;  // lives from the library's start to its stop

static std::atomic<uint8_t> g_diag_wait_active;  // 1 from just before the wait thread starts until the sender wakes
static std::atomic<uint8_t> g_diag_timed_out;    // set by the wait thread, read and cleared by the sender
static std::atomic<int32_t> g_diag_wait_cnt{WAIT_CNT_AT_REST};  // steps
static pthread_t            g_diag_wait_thread;                 // the latest one; detached, nobody joins it

int32_t g_diag_init_status;

/* Flags and figures that threads share without a lock. */
template <typename T>
static T peek(const std::atomic<T> &shared)
{
    return shared.load(std::memory_order_relaxed);
}
template <typename T>
static void put(std::atomic<T> &shared, T value)
{
    shared.store(value, std::memory_order_relaxed);
}

// ---- Checks ----

static const char *diag_processor_name(int32_t processor)
{
    static const char *const names[] = {"MSM", "MDM", "MDM_2"};
    return processor >= 0 && processor < 3 ? names[processor] : "Unknown";
}

void velmor_print_data_with_hex(const uint8_t *data, uint32_t len)
{
    static const char digits[] = "0123456789ABCDEF";

    if (data == nullptr) {
        LOG(4, "print_data_with_hex, data is null");
        return;
    }
    if (len < 1 || len > HEX_LEN_MAX) {
        LOG(4, "print_data_with_hex, invalid data len(%d)", len);
        return;
    }
    char  text[3 * HEX_LEN_MAX + 1];
    char *end = text;
    for (uint32_t i = 0; i < len; ++i) {
        *end++ = digits[data[i] >> 4];
        *end++ = digits[data[i] & 0xF];
        *end++ = ' ';
    }
    end[-1] = '\0';  // in the place of the last blank
    LOG(4, "data hex show, len(%d), data: %s", len, text);
}

int32_t velmor_diag_comand_input_check(const uint8_t *data, int32_t data_len)
{
    LOG(4, "diag_comand, data_len = %d", data_len);
    if (data == nullptr) {
        LOG(4, "data is null");
        return 1;
    }
    if (data_len < 1 || data_len > DIAG_CMD_LEN_MAX) {
        LOG(4, "Invalid input parameter, data_len = %d", data_len);
        return 1;
    }
    velmor_print_data_with_hex(data, static_cast<uint32_t>(data_len));
    return 0;
}

int32_t velmor_diag_comand_output_check(const uint8_t *reply_buf, const int32_t *p_reply_len)
{
    if (reply_buf == nullptr) {
        LOG(4, "reply_buf is null");
        return 1;
    }
    if (p_reply_len == nullptr) {
        LOG(4, "p_reply_len is null");
        return 1;
    }
    LOG(4, "reply_len = %d", *p_reply_len);
    if (*p_reply_len <= 0) {
        LOG(4, "Invalid output parameter, reply_len = %d", *p_reply_len);
        return 1;
    }
    return 0;
}

/* A packet between the dump's limit and this one passes; the dump then only says that it is too long for it. */
int32_t velmor_diag_cmd_response_check(const uint8_t *ptr, uint32_t len, const int32_t *context_data)
{
    if (context_data == nullptr) LOG(4, "context_data is null");
    const int32_t processor = context_data == nullptr ? -1 : *context_data;
    LOG(4, "================ response from %d[%s], len = %d ========================", processor,
        diag_processor_name(processor), len);
    if (ptr == nullptr) {
        LOG(4, "ptr is null");
        return 1;
    }
    if (len < 1 || len > DIAG_RSP_LEN_MAX) {
        LOG(4, "Invalid parameter, len = %d", len);
        return 1;
    }
    velmor_print_data_with_hex(ptr, len);
    return 0;
}

// ---- Start and stop of the library ----

/* After a failure the caller goes on, and a library that isn't started refuses what it asks for. */
void velmor_diag_init_with_result()
{
    if (g_diag_init_status != 0) {
        LOG(4, "diag init done, g_diag_init_status = %d", g_diag_init_status);
        ++g_diag_init_status;
        return;
    }
    if (Diag_LSM_Init(nullptr) != 0) {
        sem_init(&g_diag_rsp_sem, 0, 0);
        g_diag_init_status = 1;
    } else {
        LOG(4, "LSM init failed");
    }
}

/* No packet comes any more once the library has stopped: then nobody but the sender can know a block. A wait thread that
 * is late may still post; the semaphore stands in file-scope storage, so that touches nothing that is gone. */
void velmor_diag_deinit_with_result()
{
    Diag_LSM_DeInit();
    diag_rsp_free_retired();
    g_diag_init_status = 0;
    sem_destroy(&g_diag_rsp_sem);
}

/* A packet's context is the number of its processor, for one line of the log. Packets may come when this has long
 * returned, so the numbers stand here for good. */
static void velmor_diag_register_callback(diag_packet_cb cb)
{
    static int32_t processors[DIAG_REMOTE_MAX + 1] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    static const char *const names[] = {" APSS", " MPSS", " LPASS", " WCNSS", " SENSORS", " WDSP"};

    uint16_t remote_mask = 0;
    diag_register_callback(cb, &processors[0]);
    diag_has_remote_device(&remote_mask);

    /* Names of peripherals, though the mask is one of processors, and of the lowest bit alone: read by scripts so. */
    const char *name = "";
    for (int32_t bit = 5; bit >= 0; --bit)
        if ((remote_mask >> bit & 1) != 0) name = names[bit];
    LOG(4, "register call back, g_diag_channel = [%d]%s, data_primary = %d, remote_mask = [%d]%s", DIAG_CHANNEL,
        diag_processor_name(DIAG_CHANNEL), processors[0], remote_mask, name);

    for (int32_t bit = 0; remote_mask >> bit != 0; ++bit) {
        if ((remote_mask >> bit & 1) == 0) continue;
        int32_t *data_remote = &processors[bit + 1];
        LOG(4, "register remote call back, data_remote = %d", *data_remote);
        diag_register_remote_callback(cb, *data_remote, data_remote);
    }
}

// ---- The wait and its time-out ----

/* Makes a detached thread with its name: named first, since a detached one may be gone by then. Result: that of the
 * creation. */
static int32_t start_detached(pthread_t *thread, void *(*proc)(void *), void *argument)
{
    const int32_t conf = pthread_create(thread, nullptr, proc, argument);
    if (conf != 0) return conf;
    pthread_setname_np(*thread, THREAD_NAME);
    pthread_detach(*thread);
    return 0;
}

/* There is always at least one step, also for a count of 0 or less. */
static void *velmor_diag_cmd_send_with_result_wait_thread_proc(void *)
{
    int32_t cnt_of_100ms = 0;
    int32_t wait_cnt = 0;
    bool    active = false;
    do {
        usleep(WAIT_STEP_US);
        ++cnt_of_100ms;
        LOG(4, "velmor_diag_cmd_send_with_result_wait_thread_proc, cnt_of_100ms = %d", cnt_of_100ms);
        active = peek(g_diag_wait_active) == 1;
        wait_cnt = peek(g_diag_wait_cnt);
    } while (active && cnt_of_100ms < wait_cnt);

    /* Nobody else posts for an answer that ends with a whole fragment. Asked of a sender that has long been awake, too:
     * that post goes to a semaphore that is idle or ended. */
    const int32_t length = peek(g_qcril_diag_rsp_buf.length);
    if (length != 0 && length % FRAGMENT_LEN == 0) {
        LOG(4, "stop waiting, receive success, length is times of 4096");
        sem_post(&g_diag_rsp_sem);
    } else if (active && cnt_of_100ms >= wait_cnt) {
        /* The post goes first: a quick sender then finds no time-out, and the flag stays for the next send. Meant so. */
        LOG(4, "stop waiting");
        sem_post(&g_diag_rsp_sem);
        put<uint8_t>(g_diag_timed_out, 1);
    }
    return nullptr;
}

/* Without the thread only a packet ends the wait. */
static void velmor_diag_cmd_send_with_result_wait_create_thread()
{
    const int32_t conf =
        start_detached(&g_diag_wait_thread, velmor_diag_cmd_send_with_result_wait_thread_proc, nullptr);
    LOG(4, "velmor daig is created, conf = %d", conf);
}

static void set_wait(int32_t wait_cnt)
{
    put<uint8_t>(g_diag_wait_active, 1);
    put(g_diag_wait_cnt, wait_cnt);
}

static void await_response()
{
    velmor_diag_cmd_send_with_result_wait_create_thread();
    while (sem_wait(&g_diag_rsp_sem) != 0 && errno == EINTR) {
    }
    put<uint8_t>(g_diag_wait_active, 0);
    put(g_diag_wait_cnt, WAIT_CNT_AT_REST);
}

/* Hands back what there is at this moment, also after a time-out. Reports under the name of the send. */
static void hand_back(const char *name, uint8_t *reply_buf, int32_t *p_reply_len)
{
    const int32_t reply_len = *p_reply_len;
    const int32_t length = peek(g_qcril_diag_rsp_buf.length);
    const int32_t data_size = length < reply_len ? length : reply_len;
    LOG_FROM(name, 4, "req end, data_size = %d, g_qcril_diag_rsp_buf.length = %d, reply_len = %d", data_size, length,
             reply_len);
    *p_reply_len = data_size;
    if (data_size >= 1) diag_rsp_hand_out(g_qcril_diag_rsp_buf.data, reply_buf, data_size);
}

/* Result of the send: 1 when the wait thread gave up. */
static int32_t take_time_out()
{
    const int32_t timed_out = peek(g_diag_timed_out);
    if (timed_out == 1) put<uint8_t>(g_diag_timed_out, 0);
    return timed_out;
}

/* What both sends with result ask before anything else. Reports under the name of the send. */
static bool is_sendable(const char *name, const uint8_t *data, uint32_t data_len, const uint8_t *reply_buf,
                        const int32_t *p_reply_len)
{
    if (velmor_diag_comand_input_check(data, static_cast<int32_t>(data_len)) != 0) {
        LOG_FROM(name, 4, "velmor_diag_comand_param_check fail");
        return false;
    }
    if (velmor_diag_comand_output_check(reply_buf, p_reply_len) != 0) {
        LOG_FROM(name, 4, "velmor_diag_comand_output_check fail");
        return false;
    }
    return true;
}

// ---- Callback mode: the first packet is the answer ----

/* Any packet of any processor counts. A later one takes the place of one that the sender hasn't copied yet. */
static int32_t velmor_diag_cmd_response_by_callback(uint8_t *ptr, int32_t len, void *context_data)
{
    if (velmor_diag_cmd_response_check(ptr, static_cast<uint32_t>(len), static_cast<int32_t *>(context_data)) != 0) {
        LOG(4, "velmor_diag_cmd_response_check fail");
        return 1;
    }
    diag_rsp_block *ptr_out = diag_rsp_make(len);
    if (ptr_out == nullptr) {
        LOG(1, "Failed to allocate memory for ptr_out");
        return 1;
    }
    memcpy(diag_rsp_bytes(ptr_out), ptr, static_cast<size_t>(len));
    diag_rsp_replace(g_qcril_diag_rsp_buf.data, ptr_out);
    put(g_qcril_diag_rsp_buf.length, len);
    LOG(4, "callback, cmd_code = 0x%02x, data_size = %d", ptr[0], len);
    sem_post(&g_diag_rsp_sem);
    return 0;
}

/* With logging in callback mode. The time-out is judged after the send. */
static int32_t send_and_wait_by_callback(const char *name, const uint8_t *data, uint32_t data_len,
                                         uint32_t wait_time_ms, uint8_t *reply_buf, int32_t *p_reply_len)
{
    const int32_t ret_send = diag_callback_send_data(DIAG_CHANNEL, data, static_cast<int32_t>(data_len));
    LOG_FROM(name, 4, "ret_send = %d, will wait callback", ret_send);
    if (ret_send != 0) {
        LOG_FROM(name, 4, "Fail to send diag cmd");
        return 1;
    }
    if (wait_time_ms == 0 || wait_time_ms > WAIT_MAX_MS) {
        LOG_FROM(name, 4, "Time out is invalid, set default");
        wait_time_ms = WAIT_DEFAULT_MS;
    }
    const int32_t wait_cnt = static_cast<int32_t>(wait_time_ms / WAIT_STEP_MS);
    set_wait(wait_cnt);
    LOG_FROM(name, 4, "Command time = %d * 100ms", wait_cnt);
    await_response();
    hand_back(name, reply_buf, p_reply_len);
    return take_time_out();
}

int32_t velmor_diag_cmd_send_with_result_by_callback_mode(const uint8_t *data, uint32_t data_len, uint32_t wait_time_ms,
                                                          uint8_t *reply_buf, int32_t *p_reply_len)
{
    int32_t result = 1;
    pthread_mutex_lock(&g_diag_send_mutex);
    if (is_sendable(__func__, data, data_len, reply_buf, p_reply_len)) {
        velmor_diag_init_with_result();
        velmor_diag_register_callback(velmor_diag_cmd_response_by_callback);
        diag_switch_logging(CALLBACK_MODE, nullptr);
        result = send_and_wait_by_callback(__func__, data, data_len, wait_time_ms, reply_buf, p_reply_len);
        diag_switch_logging(USB_MODE, nullptr);  // whatever mode was in force before
        velmor_diag_deinit_with_result();
    }
    pthread_mutex_unlock(&g_diag_send_mutex);
    return result;
}

// ---- DCI mode: the answer comes in packets ----

/* One client from its registration to its release. */
struct dci_session {
    const char *name;  // of the operation that reports
    int32_t     client_id;
    uint16_t    peripherals;  // asked for at first, then those that are up
    uint8_t    *packet_buf;
};

static dci_session dci_start(const char *name)
{
    return {name, 0, DIAG_CON_MPSS, static_cast<uint8_t *>(malloc(DCI_PACKET_SIZE))};
}

/* False, after a message, when there is no packet buffer. */
static bool dci_has_buffer(const dci_session *dci)
{
    if (dci->packet_buf != nullptr) return true;
    const int32_t error = errno;
    LOG_FROM(dci->name, 4, "Unable to allocate memory for DCI rsp pkt, errno: %d", error);
    return false;
}

static bool dci_register(dci_session *dci)
{
    const int32_t signal_type = DCI_SIGNAL_TYPE;
    const int32_t err = diag_register_dci_client(&dci->client_id, &dci->peripherals, DIAG_CHANNEL, &signal_type);
    const int32_t error = errno;
    if (err != DIAG_DCI_NO_ERROR) {
        LOG_FROM(dci->name, 4, "Could not register with DCI, err: %d, errno: %d ch:%d", err, error, DIAG_CHANNEL);
        return false;
    }
    LOG_FROM(dci->name, 4, "Successfully registered with DCI for ch:%d, client ID = %d", DIAG_CHANNEL, dci->client_id);
    return true;
}

/* From the signal to the request. A modem that is down is told and sent to all the same. */
static bool dci_send(dci_session *dci, const uint8_t *data, int32_t data_len, diag_dci_stream_cb log_stream,
                     diag_dci_stream_cb event_stream, diag_dci_response_cb response)
{
    int32_t err = diag_register_dci_signal_data(dci->client_id, __libc_current_sigrtmin() + DCI_SIGNAL_OFFSET);
    int32_t error = errno;
    if (err != DIAG_DCI_NO_ERROR) {
        LOG_FROM(dci->name, 4, "Could not register signal for DCI Data for ch:%d, err: %d, errno: %d", DIAG_CHANNEL,
                 err, error);
        return false;
    }

    LOG_FROM(dci->name, 4, "DCI Status on Processors for ch%d:", DIAG_CHANNEL);
    err = diag_get_dci_support_list_proc(DIAG_CHANNEL, &dci->peripherals);
    error = errno;
    if (err != DIAG_DCI_NO_ERROR) {
        LOG_FROM(dci->name, 4, "Could not get support list for ch %d, err: %d, errno: %d", DIAG_CHANNEL, err, error);
        return false;
    }
    if ((dci->peripherals & DIAG_CON_MPSS) != 0)
        LOG_FROM(dci->name, 4, "MPSS on ch:%d: UP", DIAG_CHANNEL);
    else
        LOG_FROM(dci->name, 4, "MPSS on ch:%d: DOWN", DIAG_CHANNEL);

    LOG_FROM(dci->name, 4, "Opening Data Stream, registering listeners for ch:%d", DIAG_CHANNEL);
    err = diag_register_dci_stream_proc(dci->client_id, log_stream, event_stream);
    error = errno;
    if (err != DIAG_DCI_NO_ERROR) {
        LOG_FROM(dci->name, 4, "Unable to register DCI stream for ch:%d, err: %d, errno: %d", DIAG_CHANNEL, err, error);
        return false;
    }

    LOG_FROM(dci->name, 4, "Sending Asynchronous Command for ch:%d", DIAG_CHANNEL);
    err = diag_send_dci_async_req(dci->client_id, data, data_len, dci->packet_buf, DCI_PACKET_SIZE, response, nullptr);
    if (err != DIAG_DCI_NO_ERROR) {
        LOG_FROM(dci->name, 4, "Error sending SEND_REQUEST_ASYNC to peripheral %d for ch:%d", err, DIAG_CHANNEL);
        return false;
    }
    return true;
}

static void dci_release(dci_session *dci)
{
    const int32_t err = diag_release_dci_client(&dci->client_id);
    const int32_t error = errno;
    LOG_FROM(dci->name, 4, "Releasing DCI connection, err: %d, errno: %d", err, error);
}

/* Nothing of a stream reaches the caller. */
static void velmor_diag_cmd_response_by_dci_log_stream(uint8_t *ptr, int32_t len)
{
    velmor_print_data_with_hex(ptr, static_cast<uint32_t>(len));
}

static void velmor_diag_cmd_response_by_dci_event_stream(uint8_t *ptr, int32_t len)
{
    velmor_print_data_with_hex(ptr, static_cast<uint32_t>(len));
}

/* Puts a packet behind what has come so far. False, with the answer as it was, when there is no memory. */
static bool join_packet(const char *name, const uint8_t *ptr, int32_t len)
{
    diag_rsp_block *data = g_qcril_diag_rsp_buf.data.load(std::memory_order_acquire);
    const int32_t   old = data == nullptr ? 0 : peek(g_qcril_diag_rsp_buf.length);
    if (data != nullptr) {
        diag_rsp_block *ptr_out_2 = diag_rsp_make(old);
        if (ptr_out_2 == nullptr) {
            LOG_FROM(name, 1, "Failed to allocate memory for ptr_out_2");
            return false;
        }
        diag_rsp_copy(data, diag_rsp_bytes(ptr_out_2), old);
        diag_rsp_replace(g_diag_rsp_prev, ptr_out_2);
        data = ptr_out_2;
    }
    diag_rsp_block *joined = old <= INT32_MAX - len ? diag_rsp_make(old + len) : nullptr;
    if (joined == nullptr && data == nullptr) {
        LOG_FROM(name, 1, "Failed to allocate memory for ptr_out_1");
        return false;
    }
    if (joined == nullptr) {
        LOG_FROM(name, 1, "Failed to allocate memory for ptr_out_3");
        return false;
    }
    diag_rsp_copy(data, diag_rsp_bytes(joined), old);
    memcpy(diag_rsp_bytes(joined) + old, ptr, static_cast<size_t>(len));
    diag_rsp_replace(g_qcril_diag_rsp_buf.data, joined);
    put(g_qcril_diag_rsp_buf.length, old + len);
    return true;
}

/* A packet of a whole fragment says that more follows; any other one ends the answer. The context is null here, so that
 * the check names no processor. A packet that comes after the sender woke is joined too, and never collected. */
static void velmor_diag_cmd_response_by_dci(uint8_t *ptr, int32_t len, void *context_data)
{
    pthread_mutex_lock(&g_diag_rsp_mutex);
    if (velmor_diag_cmd_response_check(ptr, static_cast<uint32_t>(len), static_cast<int32_t *>(context_data)) != 0) {
        LOG(4, "velmor_diag_cmd_response_check fail");
    } else if (join_packet(__func__, ptr, len)) {
        LOG(4, "response, cmd_code = 0x%02x, data_size = %d", ptr[0], len);
        if (len != FRAGMENT_LEN) sem_post(&g_diag_rsp_sem);
    }
    pthread_mutex_unlock(&g_diag_rsp_mutex);
}

/* With the request sent. There is neither a range nor a default of the time-out here. */
static int32_t await_dci_response(const char *name, uint32_t wait_time_ms, uint8_t *reply_buf, int32_t *p_reply_len)
{
    const int32_t wait_cnt = static_cast<int32_t>(wait_time_ms) / static_cast<int32_t>(WAIT_STEP_MS);
    set_wait(wait_cnt);
    LOG_FROM(name, 4, "Dci Command time = %d", wait_cnt);
    await_response();
    hand_back(name, reply_buf, p_reply_len);
    diag_rsp_retire(g_diag_rsp_prev);
    diag_rsp_retire(g_qcril_diag_rsp_buf.data);  // its length stays
    return take_time_out();
}

/* The library stops before the client is released, unlike in a send without result; a library that has stopped knows no
 * client, which shows in the code of the release and changes nothing. */
static int32_t send_with_result_by_dci(dci_session *dci, const uint8_t *data, uint32_t data_len, uint32_t wait_time_ms,
                                       uint8_t *reply_buf, int32_t *p_reply_len)
{
    if (!dci_has_buffer(dci) || !dci_register(dci)) {
        velmor_diag_deinit_with_result();
        return 1;
    }
    int32_t result = 1;
    if (dci_send(dci, data, static_cast<int32_t>(data_len), velmor_diag_cmd_response_by_dci_log_stream,
                 velmor_diag_cmd_response_by_dci_event_stream, velmor_diag_cmd_response_by_dci))
        result = await_dci_response(dci->name, wait_time_ms, reply_buf, p_reply_len);
    velmor_diag_deinit_with_result();
    dci_release(dci);
    return result;
}

int32_t velmor_diag_cmd_send_with_result_by_dci_mode(const uint8_t *data, uint32_t data_len, uint32_t wait_time_ms,
                                                     uint8_t *reply_buf, int32_t *p_reply_len)
{
    int32_t result = 1;
    pthread_mutex_lock(&g_diag_send_mutex);
    if (is_sendable(__func__, data, data_len, reply_buf, p_reply_len)) {
        velmor_diag_init_with_result();
        dci_session dci = dci_start(__func__);
        result = send_with_result_by_dci(&dci, data, data_len, wait_time_ms, reply_buf, p_reply_len);
        free(dci.packet_buf);
    }
    pthread_mutex_unlock(&g_diag_send_mutex);
    return result;
}

// ---- Sends without result: a worker does everything ----

/* A request on its way to its worker, which owns and frees it; the bytes stand behind this head. */
struct diag_send_param {
    int32_t length;  // bytes
};

static uint8_t *bytes_of(diag_send_param *param)
{
    return reinterpret_cast<uint8_t *>(param + 1);
}

static int32_t velmor_diag_cmd_response_by_callback_no_handle(uint8_t *, int32_t len, void *)
{
    LOG(4, "len = %d", len);
    return 0;
}

static void velmor_diag_cmd_response_by_dci_no_handle(uint8_t *, int32_t len, void *)
{
    LOG(4, "len = %d", len);
}

static void velmor_diag_cmd_response_by_dci_log_stream_no_handle(uint8_t *, int32_t len)
{
    LOG(4, "len = %d", len);
}

static void velmor_diag_cmd_response_by_dci_event_stream_no_handle(uint8_t *, int32_t len)
{
    LOG(4, "len = %d", len);
}

/* Both workers start and stop the library by themselves, without the count of the sends with result. */
static bool worker_starts(const char *name, const diag_send_param *param)
{
    if (param == nullptr) {
        LOG_FROM(name, 4, "param is null");
        return false;
    }
    LOG_FROM(name, 4, "data_len = %d", param->length);
    if (Diag_LSM_Init(nullptr) != 0) return true;
    LOG_FROM(name, 4, "LSM init failed");
    return false;
}

/* The last act of a worker, with everything cleaned up and the lock released. */
static void worker_sleeps(const char *name)
{
    LOG_FROM(name, 4, "will sleep 3s before quit");
    usleep(LAST_SLEEP_US);
}

static void *velmor_diag_cmd_send_without_result_by_callback_mode_thread_proc(void *argument)
{
    auto *param = static_cast<diag_send_param *>(argument);
    pthread_mutex_lock(&g_diag_no_result_mutex);
    if (worker_starts(__func__, param)) {
        velmor_diag_register_callback(velmor_diag_cmd_response_by_callback_no_handle);
        diag_switch_logging(CALLBACK_MODE, nullptr);
        const int32_t ret_send = diag_callback_send_data(DIAG_CHANNEL, bytes_of(param), param->length);
        LOG(4, "ret_send = %d, will wait callback", ret_send);
        usleep(PASS_US);
        diag_switch_logging(USB_MODE, nullptr);
        Diag_LSM_DeInit();
    }
    free(param);
    pthread_mutex_unlock(&g_diag_no_result_mutex);
    worker_sleeps(__func__);
    return nullptr;
}

/* The client is released before the library stops, unlike in a send with result. */
static void send_without_result_by_dci(dci_session *dci, diag_send_param *param)
{
    if (!dci_has_buffer(dci) || !dci_register(dci)) return;
    if (dci_send(dci, bytes_of(param), param->length, velmor_diag_cmd_response_by_dci_log_stream_no_handle,
                 velmor_diag_cmd_response_by_dci_event_stream_no_handle, velmor_diag_cmd_response_by_dci_no_handle))
        sleep(PASS_DCI_S);
    dci_release(dci);
}

static void *velmor_diag_cmd_send_without_result_by_dci_mode_thread_proc(void *argument)
{
    auto *param = static_cast<diag_send_param *>(argument);
    pthread_mutex_lock(&g_diag_no_result_mutex);
    if (worker_starts(__func__, param)) {
        dci_session dci = dci_start(__func__);
        send_without_result_by_dci(&dci, param);
        Diag_LSM_DeInit();
        free(dci.packet_buf);
    }
    free(param);
    pthread_mutex_unlock(&g_diag_no_result_mutex);
    worker_sleeps(__func__);
    return nullptr;
}

/* A worker that can't be created leaves its request behind; the caller isn't told. */
static int32_t velmor_diag_cmd_send_without_result_start_thread(const uint8_t *data, uint32_t data_len,
                                                                uint32_t diag_work_mode)
{
    if (velmor_diag_comand_input_check(data, static_cast<int32_t>(data_len)) != 0) {
        LOG(4, "velmor_diag_comand_input_check fail");
        return 1;
    }
    auto *ptr_out = static_cast<diag_send_param *>(malloc(sizeof(diag_send_param) + data_len + 1));
    if (ptr_out == nullptr) {
        LOG(1, "Failed to allocate memory for ptr_out");
        return 1;
    }
    ptr_out->length = static_cast<int32_t>(data_len);
    memcpy(bytes_of(ptr_out), data, data_len);

    pthread_t     thread;
    const int32_t conf =
        start_detached(&thread,
                       diag_work_mode == 0 ? velmor_diag_cmd_send_without_result_by_callback_mode_thread_proc
                                           : velmor_diag_cmd_send_without_result_by_dci_mode_thread_proc,
                       ptr_out);
    LOG(4, "velmor daig is created, conf = %d, diag_work_mode = %d", conf, diag_work_mode);
    return 0;
}

int32_t velmor_diag_cmd_send_without_result_by_callback_mode(const uint8_t *data, uint32_t data_len)
{
    return velmor_diag_cmd_send_without_result_start_thread(data, data_len, 0);
}

int32_t velmor_diag_cmd_send_without_result_by_dci_mode(const uint8_t *data, uint32_t data_len)
{
    return velmor_diag_cmd_send_without_result_start_thread(data, data_len, 1);
}
