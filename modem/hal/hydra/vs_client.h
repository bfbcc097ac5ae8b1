/* The client of the modem's statistics service `vs`: the one of the process. It opens the service with retries, sends
 * requests, and turns the service's indications into numbered events. What a parameter means is its callers' business.
 *
 * Order: vs_init, vs_client_set_operational_status_callback, vs_client_init, requests, vs_client_release.
 * No lock: the operations are for one thread at a time (requests excepted), while indications and the loss of the
 * service come on the QMI client library's thread. */
#ifndef VS_CLIENT_H
#define VS_CLIENT_H

#include <atomic>

#include <stdint.h>

#include "qmi_client.h"
#include "vs_v01.h"

/* The client type that status callbacks are given. */
constexpr uint32_t VS_CLIENT_TYPE = 0;

/* Operational status. */
enum : uint32_t {
    VS_STATUS_RELEASED = 0,    // vs_client_release begins
    VS_STATUS_CONNECTING = 1,  // vs_client_init begins to connect
    VS_STATUS_FAILED = 2,      // every attempt failed
    VS_STATUS_READY = 3,       // the client is open
    VS_STATUS_LOST = 4,        // receivers know it; this client never says it
};

// ---- Events: what indications become ----

struct vs_event_2 {  // from indication 0x0004
    uint32_t word;
    uint8_t  flag_1;  // 0 or 1
    uint8_t  flag_2;  // 0 or 1
};

struct vs_event_stats_record {
    uint32_t id;
    uint8_t  value[VS_VALUE_MAX];
    uint32_t value_len;  // bytes, at most VS_VALUE_MAX
    uint32_t sub_word;   // sub in the low half, the element's second word above it
};

struct vs_event_3 {  // from indication 0x0203
    uint32_t              word;
    vs_event_stats_record records[VS_PARAMETERS_MAX];
    uint32_t              record_count;  // slots used
    vs_event_stats_record more_records[VS_MORE_PARAMETERS_MAX];
    uint32_t              more_record_count;
    uint32_t              last_word;  // 0xFFFFFFFF when the modem left it out
};

struct vs_event_4 {  // from indication 0x0204
    uint32_t word;
    uint32_t values[VS_IND_BYTES_MAX];
    uint32_t value_count;  // slots used
    uint32_t halves;       // TLV 3 in the low half, TLV 4 above it
};

struct vs_event_5 {  // from indication 0x0601
    uint8_t byte;
};
static_assert(sizeof(vs_event_2) == 8 && sizeof(vs_event_3) == 10696);
static_assert(sizeof(vs_event_4) == 412 && sizeof(vs_event_5) == 1);

constexpr uint32_t VS_EVENT_PAYLOAD_SIZE = 10700;

/* Receives an event: 2, 3, 4 or 5 with the structure of that number, which lives for the call only.
 * Library's thread; must not send. */
typedef void (*vs_event_callback)(uint32_t event_id, void *data, uint32_t data_len);

/* Receives a change of the operational status. On the thread of vs_client_init or vs_client_release. */
typedef void (*vs_operational_status_callback)(uint32_t client_type, uint32_t status);

typedef void (*vs_command_callback)(qmi_client_handle client, uint32_t msg_id, void *response, uint32_t response_len,
                                    void *cookie, int32_t transport_error);

/* All zero before vs_init and after vs_client_release. What the library's thread reads too is atomic. */
struct vs_client_info_type {
    std::atomic<qmi_idl_service_object_type> vs_service_object;
    qmi_client_handle                        vs_client_handle;
    qmi_client_os_params                     vs_os_params;
    vs_command_callback                      command_cb;
    std::atomic<vs_event_callback>           event_cb;
    vs_operational_status_callback           operational_status_cb;
    uint32_t                                 is_client_inited;  // 1 once the client is open
};
extern vs_client_info_type vs_client_info;

// ---- Operations ----

/* Zeroes the client's record and takes the service object. A client that is open is forgotten, not released. */
void vs_init();

/* Sets who is told of status changes, until the release. */
void vs_client_set_operational_status_callback(vs_operational_status_callback cb);

/* Opens the client. A service that is there is opened at once; an absent one costs ten attempts, a second apart.
 *   event_cb  receives events; may be null, indications are then dropped
 * Result: 1, or 0 when every attempt failed; the record then stays as it is, without a handle. */
int32_t vs_client_init(vs_event_callback event_cb);

/* Closes the client and zeroes its record, callbacks and service object included. Result: 1. */
int32_t vs_client_release();

/* Sends a request and waits up to 30000 ms for its response. Sizes are the structures', bytes.
 * Result: that of qmi_client_send_msg_sync; `response` is untouched unless it is 0. Threads: any. */
int32_t vs_client_send_msg_sync(uint32_t msg_id, const void *request, uint32_t request_size, void *response,
                                uint32_t response_size);

/* Callbacks for the QMI client library: an indication, the loss of the service, and the completion of an asynchronous
 * request, of which the system has none. */
void vs_client_unsol_ind_cb(qmi_client_handle client, uint32_t msg_id, void *data, uint32_t data_len, void *cookie);
void vs_client_service_down_event(qmi_client_handle client, int32_t error, void *cookie);
void vs_client_command_cb(qmi_client_handle client, uint32_t msg_id, void *response, uint32_t response_len,
                          void *cookie, int32_t transport_error);

#endif
