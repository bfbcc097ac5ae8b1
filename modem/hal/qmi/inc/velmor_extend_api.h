/* The client of the modem's extended service: one envelope there and back at a time, over a service that is opened at
 * the first use and stays open until the process ends. Beside it the small callbacks and the map of results that the
 * other QMI clients share. */
#ifndef VELMOR_EXTEND_API_H
#define VELMOR_EXTEND_API_H

#include <atomic>

#include <stdint.h>

#include "qmi_client.h"
#include "velmor_extend_v01.h"

/* Request ids of the envelope that the system uses itself. */
constexpr uint32_t REQUEST_ID_NV_LEGACY = 1;  // one-shot read of an NV item
constexpr uint32_t REQUEST_ID_EFS = 2;        // NV and EFS operations
constexpr uint32_t REQUEST_ID_COMMON = 4;     // common requests

/* Results of velmor_extend_qmi_send_sync. */
constexpr int32_t EXTEND_BAD_ARGUMENT = -1;  // null buffer, or a length above EXTEND_DATA_MAX
constexpr int32_t EXTEND_NOT_OPEN = -2;      // the service could not be opened
constexpr int32_t EXTEND_FAILED = -3;        // the send failed, or the service answered with an error

/* Whether the request and the open log; 1 at first. The eSIM test clears it for a silent run. */
extern std::atomic<int32_t> g_extend_log_on;

/* Who is told of the modem's indications. `id` is the envelope's request id (0 to 6) or the message id, `payload` lives
 * for the call only. Called on the QMI client library's thread; must not send. Nothing in the system registers one: the
 * slots are to be set, if at all, before the first request. */
typedef void (*extend_handler)(uint32_t id, const void *payload, uint32_t payload_len);

constexpr uint32_t    EXTEND_IND_IDS = 7;
extern extend_handler g_extend_ind_handlers[EXTEND_IND_IDS];  // indication 3, by the envelope's request id
extern extend_handler g_extend_stat_handler;                  // indications 5, 6, 7, 8, 9, 11: the structure, whole
extern extend_handler g_extend_ind13_handler;                 // indication 13: the structure, whole

/* Puts the client into its first state: not open, nothing asked. An open client is forgotten, not released.
 * The other operations call it by themselves at the first use. Threads: any. */
void velmor_extend_qmi_client_init();

/* Opens the service where it isn't open yet. Waits for it up to one second (50 times 20 ms).
 * Result: the client's handle; null when the service isn't there, and the next call then waits anew.
 * Threads: only with the client's mutex held, so within velmor_extend_qmi_send_sync. */
qmi_client_handle velmor_extend_qmi_client_open();

/* Sends one envelope and waits up to 3000 ms for the answer. No retry.
 *   qmi_id        request id; the service knows 0 to 5
 *   req, req_len  the data, bytes, 0 to 550; read during the call only
 *   rsp           receives the answer's data
 *   rsp_len       in: bytes of `rsp`, at most 550; out, after success: bytes filled. An answer that is longer than `rsp`
 *                 is cut without a word; one without data gives 0
 * Result: 0 success; EXTEND_BAD_ARGUMENT, EXTEND_NOT_OPEN, EXTEND_FAILED, with `rsp` and `rsp_len` untouched.
 * Threads: any; callers wait for each other, up to the second of an open and 3000 ms a request. */
int32_t velmor_extend_qmi_send_sync(uint32_t qmi_id, const void *req, int32_t req_len, void *rsp, uint32_t *rsp_len);

/* Indication callback of the extended client: decodes and hands on to the slots above. Library's thread. */
void velmor_extend_qmi_ind_cb(qmi_client_handle client, uint32_t msg_id, void *buffer, uint32_t buffer_len,
                              void *cb_data);

/* Turns a result of velmor_extend_qmi_send_sync into the range of the NV and EFS results: -1, -2, -3 become -101, -102,
 * -103, all others stay. Threads: any. */
int32_t velmor_qmi_result_map(int32_t result);

/* Callbacks for the clients of the published services: they log and do nothing else. Library's thread. */
void velmor_qmi_client_common_empty_unsol_ind_cb(qmi_client_handle client, uint32_t msg_id, void *buffer,
                                                 uint32_t buffer_len, void *cb_data);
void velmor_qmi_client_unsol_ind_cb(qmi_client_handle client, uint32_t msg_id, void *buffer, uint32_t buffer_len,
                                    void *cb_data);
void velmor_qmi_client_error_cb(qmi_client_handle client, int32_t error, void *cb_data);

#endif
