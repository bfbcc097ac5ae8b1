/* The client of the statistics service. Requests run on their callers' threads; an indication is decoded into one block
 * of the heap, and its event is built on the stack of the library's thread. */
#include "vs_client.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "modem_hydra_api.h"
#include "velmor_utils_cmn.h"

constexpr uint32_t INIT_ATTEMPTS = 10;
constexpr uint32_t INIT_WAIT_S = 1;      // between two attempts
constexpr uint32_t INIT_TIMEOUT_MS = 4;  // of one attempt; the first look at the service list isn't bounded by it
constexpr uint32_t SEND_TIMEOUT_MS = 30000;

vs_client_info_type vs_client_info;

// ---- Building events ----

static uint32_t at_most(uint32_t count, uint32_t limit)
{
    return count < limit ? count : limit;
}

/* The lengths and counts of an indication are foreign: the room bounds what is copied and what is told. */
static void build_record(const vs_stats_parameter *parameter, vs_event_stats_record *record)
{
    record->id = parameter->id;
    record->value_len = at_most(parameter->value_len, VS_VALUE_MAX);
    memcpy(record->value, parameter->value, record->value_len);
    record->sub_word = parameter->sub | static_cast<uint32_t>(parameter->second_word) << 16;
}

static void build_event_2(const vs_ind_2 *ind, vs_event_2 *event)
{
    event->word = ind->word_1;
    event->flag_1 = ind->byte_2 != 0;
    event->flag_2 = ind->byte_3 != 0;
}

/* The second table's count counts without its flag: a table that is left out has the count 0. */
static void build_event_3(const vs_ind_stats *ind, vs_event_3 *event)
{
    event->word = ind->word_1;
    event->record_count = at_most(ind->table_2_len, VS_PARAMETERS_MAX);
    for (uint32_t i = 0; i < event->record_count; ++i) build_record(&ind->table_2[i], &event->records[i]);
    event->more_record_count = at_most(ind->table_10_len, VS_MORE_PARAMETERS_MAX);
    for (uint32_t i = 0; i < event->more_record_count; ++i) build_record(&ind->table_10[i], &event->more_records[i]);
    event->last_word = ind->word_11_valid != 0 ? ind->word_11 : 0xFFFFFFFF;
}

static void build_event_4(const vs_ind_bytes *ind, vs_event_4 *event)
{
    event->word = ind->word_1;
    event->value_count = at_most(ind->bytes_2_len, VS_IND_BYTES_MAX);
    for (uint32_t i = 0; i < event->value_count; ++i) event->values[i] = ind->bytes_2[i];
    event->halves = ind->half_3 | static_cast<uint32_t>(ind->half_4) << 16;
}

// ---- What the modem says unasked ----

/* Decodes into `decoded`, which has the room of the indication's structure, and hands on the event. */
static void vs_client_ind_hdlr(qmi_client_handle client, uint32_t msg_id, const void *data, uint32_t data_len,
                               void *decoded, uint32_t decoded_len)
{
    const int32_t error = qmi_client_message_decode(client, INDICATION, msg_id, data, data_len, decoded, decoded_len);
    if (error != 0) {
        LOG(1, "Indication decode failed for msg 0x%x with error %d", msg_id, error);
        return;
    }

    union {
        vs_event_2 event_2;
        vs_event_3 event_3;
        vs_event_4 event_4;
        vs_event_5 event_5;
        uint8_t    whole[VS_EVENT_PAYLOAD_SIZE];
    } payload;
    memset(&payload, 0, sizeof(payload));
    LOG(4, "Handling indication msg 0x%x", msg_id);
    /* The second look: the client may have been set up anew while the indication was decoded. */
    const vs_event_callback event_cb = vs_client_info.event_cb.load(std::memory_order_relaxed);
    if (event_cb == nullptr) {
        LOG(1, "vvs_client_info.event_cb is null, do nothing");
        return;
    }

    switch (msg_id) {
    case VS_IND_2:
        build_event_2(static_cast<const vs_ind_2 *>(decoded), &payload.event_2);
        event_cb(2, &payload, sizeof(payload.event_2));
        break;
    case VS_IND_STATS:
        build_event_3(static_cast<const vs_ind_stats *>(decoded), &payload.event_3);
        event_cb(3, &payload, sizeof(payload.event_3));
        break;
    case VS_IND_BYTES:
        build_event_4(static_cast<const vs_ind_bytes *>(decoded), &payload.event_4);
        event_cb(4, &payload, sizeof(payload.event_4));
        break;
    case VS_IND_BYTE:
        payload.event_5.byte = static_cast<const vs_ind_byte *>(decoded)->byte_1;
        event_cb(5, &payload, sizeof(payload.event_5));
        break;
    default: LOG(1, "Unknown indication msg %0x", msg_id); break;
    }
}

void vs_client_unsol_ind_cb(qmi_client_handle client, uint32_t msg_id, void *data, uint32_t data_len,
                            [[maybe_unused]] void *cookie)
{
    if (vs_client_info.event_cb.load(std::memory_order_relaxed) == nullptr) {
        LOG(1, "vs_client_info.event_cb is null, do nothing");
        return;
    }
    uint32_t decoded_payload_len = 0;
    qmi_idl_get_message_c_struct_len(vs_client_info.vs_service_object.load(std::memory_order_relaxed), INDICATION,
                                     static_cast<uint16_t>(msg_id), &decoded_payload_len);
    if (decoded_payload_len == 0) {
        LOG(1, "decoded_payload_len(%d) can not <= 0", decoded_payload_len);
        return;
    }
    void *decoded_payload = malloc(decoded_payload_len);
    if (decoded_payload == nullptr) {
        LOG(1, "decoded_payload is NULL");
        return;
    }
    vs_client_ind_hdlr(client, msg_id, data, data_len, decoded_payload, decoded_payload_len);
    free(decoded_payload);
}

/* Changes nothing: requests fail with the library's own result from now on, and the next init opens anew. */
void vs_client_service_down_event(qmi_client_handle, int32_t error, void *)
{
    LOG(1, "service down with error %d", error);
}

void vs_client_command_cb(qmi_client_handle, uint32_t msg_id, void *response, uint32_t response_len, void *cookie,
                          int32_t transport_error)
{
    modem_api_process_response(msg_id, response, response_len, cookie, transport_error);
}

// ---- Opening and closing ----

static void zero_client_info()
{
    vs_client_info.vs_service_object.store(nullptr, std::memory_order_relaxed);
    vs_client_info.vs_client_handle = nullptr;
    vs_client_info.vs_os_params = {};
    vs_client_info.command_cb = nullptr;
    vs_client_info.event_cb.store(nullptr, std::memory_order_relaxed);
    vs_client_info.operational_status_cb = nullptr;
    vs_client_info.is_client_inited = 0;
}

static void report_status(uint32_t status)
{
    if (vs_client_info.operational_status_cb != nullptr) vs_client_info.operational_status_cb(VS_CLIENT_TYPE, status);
}

static uint32_t vs_client_get_master_port()
{
    return QMI_CLIENT_INSTANCE_ANY;
}

void vs_init()
{
    zero_client_info();
    vs_client_info.command_cb = vs_client_command_cb;
    vs_client_info.vs_service_object.store(
        vs_get_service_object_internal_v01(VS_VERSION, VS_MINOR_VERSION, IDL_LIBRARY_VERSION),
        std::memory_order_relaxed);
}

void vs_client_set_operational_status_callback(vs_operational_status_callback cb)
{
    vs_client_info.operational_status_cb = cb;
}

int32_t vs_client_init(vs_event_callback event_cb)
{
    vs_client_info.event_cb.store(event_cb, std::memory_order_relaxed);
    LOG(4, "Client connecting to QMI FW");
    report_status(VS_STATUS_CONNECTING);
    const uint32_t port = vs_client_get_master_port();
    LOG(4, "using port %d", port);

    int32_t result = -1;
    for (uint32_t attempt = 0; attempt < INIT_ATTEMPTS && result != 0; ++attempt) {
        if (attempt > 0) sleep(INIT_WAIT_S);
        LOG(4, "Trying qmi_client_init_instance() try # %d port[%d]", attempt, port);
        result = qmi_client_init_instance(vs_client_info.vs_service_object.load(std::memory_order_relaxed), port,
                                          vs_client_unsol_ind_cb, nullptr, &vs_client_info.vs_os_params,
                                          INIT_TIMEOUT_MS, &vs_client_info.vs_client_handle);
    }
    LOG(4, "qmi_client_init_instance returned (%d)", result);
    if (result != 0) {
        LOG(4, "qmi_client_init_instance returned failure(%d)", result);
        report_status(VS_STATUS_FAILED);
        return 0;
    }
    qmi_client_register_error_cb(vs_client_info.vs_client_handle, vs_client_service_down_event, nullptr);
    vs_client_info.is_client_inited = 1;
    report_status(VS_STATUS_READY);
    return 1;
}

int32_t vs_client_release()
{
    report_status(VS_STATUS_RELEASED);
    vs_client_info.is_client_inited = 0;
    if (vs_client_info.vs_client_handle != nullptr) qmi_client_release(vs_client_info.vs_client_handle);
    zero_client_info();
    return 1;
}

// ---- Requests ----

int32_t vs_client_send_msg_sync(uint32_t msg_id, const void *request, uint32_t request_size, void *response,
                                uint32_t response_size)
{
    return qmi_client_send_msg_sync(vs_client_info.vs_client_handle, msg_id, request, request_size, response,
                                    response_size, SEND_TIMEOUT_MS);
}
