/* Small clients of two published services: the SAR state of the service sar, and one request to the service nas.
 * All their messages are traces: that something failed is for the caller to say. Threads: one at a time. */
#ifndef VELMOR_EXTEND_SAR_NAS_H
#define VELMOR_EXTEND_SAR_NAS_H

#include <stdint.h>

/* Opens the client of sar, for the life of the process or until a send fails. The second does so where there is none,
 * and answers 1 when there is one then, else 0. */
void    velmor_init_qmi_client_rf_sar();
int32_t velmor_check_and_init_qmi_client_rf_sar();

/* The DSI: 1 to 20, 0 for none, and -1 when it can't be had. What the modem calls the state is believed, whether or not
 * it says that it is there. Waits up to 30000 ms. */
int32_t velmor_get_sar_dsi();

/* Sets the DSI; a number that is none is sent as 0. Waits up to 30000 ms.
 * Result: 0 answered (the answer's own result isn't looked at), -1 no client, or the QMI client's error. */
int32_t velmor_set_sar_dsi(uint32_t dsi);

/* Sends one request to nas, over a client that lives for this request: indications that follow the response are lost.
 *   msg_id       message id
 *   qmi_request, qmi_response and their lengths, time_out_ms  as in qmi_client_send_msg_sync; null buffers are refused
 * Result: 0, -1 for null or without a client, or the QMI client's error. Once in the life of a process: the handle keeps
 *   its stale value, and a further request is refused. */
int32_t velmor_send_nas_qmi_req_msg(uint32_t msg_id, const void *qmi_request, uint32_t request_len, void *qmi_response,
                                    uint32_t response_len, uint32_t time_out_ms);

#endif
