/* The QMI client library: finds a service of the modem, sends it requests, and hands on what it says unasked.
 *
 * Results of all operations: 0 success, -1 internal failure (a bad argument, an unknown or released handle, an answer
 * that can't be decoded), -2 the service is gone or refused, -3 no answer in time, -4 and -5 failures of the transport.
 *
 * A handle is a name that the library looks up and never follows: a released one is refused with -1.
 *
 * Callbacks run on the library's own thread, one at a time and never under a lock of the library. They may decode and
 * may release; a synchronous send from a callback is refused with -1, since the answer couldn't be awaited there.
 *
 * The library ends in an exit handler registered at its first use, so before the caller's file-scope objects go. A callback
 * that runs then is waited for, up to a second. From then on calls of the thread that ends the process fail, and wait for
 * nothing; one of any other thread, also one that is under way, doesn't return. */
#ifndef QMI_CLIENT_H
#define QMI_CLIENT_H

#include "qmi_idl.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct qmi_client_handle_tag *qmi_client_handle;

/* Where a caller waits for news of a service. Zeroed by its owner before the first use; filled by the library. */
typedef struct {
    uint32_t service_id;  // watched for, 0 before the notifier is set up
    uint32_t news_seen;   // count of changes of the service list that the owner has been woken for
} qmi_client_os_params;

/* One server of a service, as the service list tells it. All zero: none. */
typedef struct {
    uint32_t service_id;
    uint32_t instance;  // version in the low byte, instance number above it
    uint32_t node;      // address on the link
    uint32_t port;
} qmi_service_info;

/* Called with an indication. `buffer` holds `buffer_len` bytes of TLVs and lives for the call only. */
typedef void (*qmi_client_ind_cb)(qmi_client_handle client, uint32_t msg_id, void *buffer, uint32_t buffer_len,
                                  void *cb_data);

/* Called once for each registration when the client's service goes away or has gone; `error` is -2. The client stays
 * refused with -2 until released. */
typedef void (*qmi_client_error_cb)(qmi_client_handle client, int32_t error, void *cb_data);

/* Any instance of a service. */
#define QMI_CLIENT_INSTANCE_ANY 0xFFFF

/* Sets up a place to wait for servers of a service. The modem tells of them from the first service list on that is asked
 * for; until then nothing ends a wait.
 *   service    service object
 *   os_params  where the caller will wait
 *   notifier   receives the notifier's handle
 * Result: 0, or -1 for a null argument. Threads: any. */
int32_t qmi_client_notifier_init(qmi_idl_service_object_type service, qmi_client_os_params *os_params,
                                 qmi_client_handle *notifier);

/* Lists the servers of a service. The first call for a service asks the modem and waits for the whole list; later ones
 * answer from what the modem has told since.
 *   service       service object
 *   table         receives the servers; null to ask for their count alone
 *   num_entries   in: rows in `table`; out: rows filled. May be null when `table` is
 *   num_services  receives the count of servers there are, also when that is more than the table holds
 * Result: 0 when at least one server is known, -2 when none is, -1 for a null argument, -4 or -5. Threads: any. */
int32_t qmi_client_get_service_list(qmi_idl_service_object_type service, qmi_service_info *table, uint32_t *num_entries,
                                    uint32_t *num_services);

/* Waits until the service list that `os_params` watches has changed, at most `timeout_ms` milliseconds. A change that
 * came since the last wait ends it at once.
 * Result: 1 when there was a change, 0 when the time ran out. Threads: one at a time for each os_params. */
int32_t qmi_cci_os_signal_wait(qmi_client_os_params *os_params, uint32_t timeout_ms);

/* Opens a client to one server.
 *   entry      row of a service list; an all-zero one is refused with -2
 *   service    service object
 *   ind_cb     called with each indication; null for none
 *   cb_data    given back to it
 *   os_params  unused by this library; may be null
 *   client     receives the handle; untouched on failure
 * Result: 0, -1 for a null argument, -2 when the server isn't there, -4 or -5. Threads: any. */
int32_t qmi_client_init(const qmi_service_info *entry, qmi_idl_service_object_type service, qmi_client_ind_cb ind_cb,
                        void *cb_data, qmi_client_os_params *os_params, qmi_client_handle *client);

/* Opens a client to a service, and waits for the service where it isn't there yet.
 *   instance    instance number, or QMI_CLIENT_INSTANCE_ANY
 *   timeout_ms  longest wait for a server, milliseconds; 0 for no wait. The first look at the list isn't bounded by it
 *   others      as above
 * Result: 0, -1 for a null argument, -3 when no server came up in time or stayed, -4 or -5. Threads: any. */
int32_t qmi_client_init_instance(qmi_idl_service_object_type service, uint32_t instance, qmi_client_ind_cb ind_cb,
                                 void *cb_data, qmi_client_os_params *os_params, uint32_t timeout_ms,
                                 qmi_client_handle *client);

/* Sets who is told when the client's service goes away. Where it has gone already, the callback comes at once (on the
 * library's thread).
 * Result: 0, or -1 for an unknown handle or a null callback. Threads: any. */
int32_t qmi_client_register_error_cb(qmi_client_handle client, qmi_client_error_cb error_cb, void *cb_data);

/* Sends a request and waits for its response.
 *   client                   open; a released one is refused with -1
 *   msg_id                   message id
 *   request, request_size    structure and its bytes; null and 0 for a message without fields; read during the call only
 *   response, response_size  receives the structure, bytes; untouched unless the result is 0
 *   timeout_ms               milliseconds, counted from the send; 0 waits as long as the service lives
 * Result: 0 answered (what the response says in its own result field is the caller's to judge), -1 internal failure,
 *   -2 service gone or refused, -3 no answer in time, -4 and -5 transport.
 * Threads: any, several at once on one client. Not from a callback.
 * Callers wait 3000 ms (extended, uim), 10000 ms (pdc, nas) or 30000 ms (vs, sar). */
int32_t qmi_client_send_msg_sync(qmi_client_handle client, uint32_t msg_id, const void *request, uint32_t request_size,
                                 void *response, uint32_t response_size, uint32_t timeout_ms);

/* Turns the TLVs of a message into its structure.
 *   client           open: its service object tells the tables; a callback's own client may be released beside it
 *   kind, msg_id     which message
 *   raw, raw_len     the TLVs, bytes
 *   structure, size  receives the structure, bytes; untouched unless the result is 0
 * Result: 0; -1 for an unknown handle or message, a size that isn't the structure's, or TLVs that don't fit the tables.
 * Threads: any, callbacks too. */
int32_t qmi_client_message_decode(qmi_client_handle client, qmi_idl_type_of_message kind, uint32_t msg_id,
                                  const void *raw, uint32_t raw_len, void *structure, uint32_t size);

/* Closes a client or a notifier. Requests in flight on it end with -2. No callback of it runs once this has returned: one
 * that is running is waited for, and where its service has gone and that hasn't been told yet, its error callback comes
 * first. Indications that wait are dropped. Since callbacks come one at a time, the caller may hold no lock that a callback
 * of any client takes. From within a callback, of this client or another, nothing is waited for or told.
 * Result: 0, or -1 for a handle that is unknown or released already. Threads: any. */
int32_t qmi_client_release(qmi_client_handle client);

#ifdef __cplusplus
}
#endif
#endif
