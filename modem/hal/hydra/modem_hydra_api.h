/* The statistics library's face to its clients: who may use it, the table of clients, and one set of result codes for
 * all failures below. It serves several processes of the device, so it asks for the process's name first.
 *
 * Order: modem_api_init, modem_api_init_client, requests, modem_api_free_client, modem_api_release.
 * Threads: requests on any thread, one at a time; init, release and the client's coming and going while no other
 * operation runs. */
#ifndef MODEM_HYDRA_API_H
#define MODEM_HYDRA_API_H

#include <stdint.h>

#include "qmi_idl.h"
#include "vs_client.h"

/* Results of all operations. */
enum : int32_t {
    MODEM_API_SUCCESS = 0,
    MODEM_API_FAILURE = 1,
    MODEM_API_FINISHED = 2,  // the last status of modem_api_process_response
    MODEM_API_NO_MEMORY = 3,
    MODEM_API_NOT_SUPPORTED = 4,
    MODEM_API_BAD_ARGUMENT = 5,
    MODEM_API_NOT_ALLOWED = 6,  // the process isn't on the white list
    MODEM_API_BAD_CLIENT = 7,
    MODEM_API_NOT_READY = 8,      // the modem isn't
    MODEM_API_OTHER_PENDING = 9,  // another client exists and isn't yet ready
    MODEM_API_ABORTED = 10,
    MODEM_API_TIMEOUT = 11,
    MODEM_API_TRANSPORT = 12,
    MODEM_API_TABLE_FULL = 14,
    MODEM_API_OTHER_READY = 15,  // another client exists and is ready
};

/* Ids of status events. */
enum : uint32_t {
    MODEM_API_EVENT_LOST = 0x10001,
    MODEM_API_EVENT_READY = 0x10002,
};

typedef void (*modem_api_status_callback)(uint32_t event_id, uint32_t client_type);

struct modem_api_client {
    uint32_t                  client_type;  // VS_CLIENT_TYPE
    int32_t                   pid;
    uint32_t                  operational_status;  // VS_STATUS_..., as last told
    uint8_t                   reserved[6];
    vs_event_callback         event_cb;
    modem_api_status_callback operational_status_cb;
};

constexpr int32_t        MODEM_API_CLIENTS_MAX = 10;
extern modem_api_client *g_modem_api_clients[MODEM_API_CLIENTS_MAX];  // a client's id is its index

constexpr uint32_t STATS_PARA_MAX = 10;

struct stats_para_entry {
    uint16_t sub;          // out: subscription of the value
    uint16_t second_word;  // out: as the modem gave it
    uint32_t id;           // statistics parameter
    uint32_t value_len;    // bytes of value; out: at most VS_VALUE_MAX
    uint8_t  value[VS_VALUE_MAX];
};

/* One exchange: what is asked for on the way in, what was answered on the way out. */
struct stats_para_data {
    uint32_t         para_num;  // entries: 1 to STATS_PARA_MAX on the way in, 0 to STATS_PARA_MAX on the way out
    stats_para_entry ids[STATS_PARA_MAX];
};

/* Checks the process's right and sets up the table, once until the release; takes the vs client to its start each time. */
int32_t modem_api_init();

/* Forgets all clients. The vs client is modem_api_free_client's to close, so that comes first. Result: 0. */
int32_t modem_api_release();

/* Makes a client and opens the vs service for it.
 *   client_type            VS_CLIENT_TYPE
 *   event_cb               receives the service's events, on the library's thread; may be null
 *   operational_status_cb  receives status events; may be null
 *   client_id_out          receives the id; untouched on failure */
int32_t modem_api_init_client(uint32_t client_type, vs_event_callback event_cb,
                              modem_api_status_callback operational_status_cb, int32_t *client_id_out);

/* Closes a client that modem_api_init_client gave. Result: 0 also when it had already gone. */
int32_t modem_api_free_client(int32_t client_id);

/* For the vs client: takes a change of status to the clients of the type. */
void modem_api_operational_status_cb(uint32_t client_type, uint32_t status);

/* 1 when this process may use the interface, 0 when not. The verdict is taken once, by the program's own name. */
int32_t modem_api_check_white_list();

/* Makes one result of a send's outcome.
 *   transport_code  of qmi_client_send_msg_sync
 *   response        result pair at the head of the response; looked at for the codes 0 and -2 alone */
int32_t modem_api_map_qmi_error_to_modem_api(int32_t transport_code, const qmi_response_type *response);

/* What an asynchronous request carries with it; of the heap. */
typedef void (*modem_api_response_callback)(void *data, uint32_t data_len, void *user, int32_t status);
struct modem_api_cookie {
    modem_api_response_callback callback;
    void                       *user;
};

/* The completion of an asynchronous request: tells the cookie's callback, and frees `response` and `cookie`. A block that
 * the callback is given belongs to it. Library's thread. */
void modem_api_process_response(uint32_t msg_id, void *response, uint32_t response_len, void *cookie,
                                int32_t transport_error);

/* Switches a feature of the modem's statistics.
 *   has_value, value  the optional value and whether it is sent */
int32_t modem_api_set_hydra_feature_status(int32_t client_id, uint32_t feature, uint8_t status, uint8_t has_value,
                                           uint8_t value);

/* Asks for parameters of one subscription. Waits up to 30000 ms.
 *   sub, slot  16 bits of each are sent
 *   data       in: ids (and values to go with them); out: the answer, in the same entries. Bytes of a value behind its
 *              length keep what they held; all of it stays as it was unless the result is 0 */
int32_t modem_api_get_stats_parameter(int32_t client_id, uint32_t sub, uint32_t slot, stats_para_data *data);

#endif
