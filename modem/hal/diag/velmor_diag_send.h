/* Raw diag requests: one there, and, if asked, what the modem answers to it. Bytes go out and come back as they are;
 * nothing of the diag protocol is known here but that the first byte of a packet is its command code.
 *
 * Two modes. Callback mode takes logging over for the length of one request and counts the first packet of any processor
 * as the answer; DCI mode leaves logging alone, asks the modem's own processor and joins an answer of several packets.
 *
 * Common to all:
 *   data, data_len  request, 1 to DIAG_CMD_LEN_MAX bytes; read during the call only
 * Result: 0, or 1 for any failure. There are no other codes: what went wrong stands in the messages.
 * Threads: any. Sends with result wait for each other, and so do the workers of the sends without. */
#ifndef VELMOR_DIAG_SEND_H
#define VELMOR_DIAG_SEND_H

#include <stdint.h>

constexpr int32_t  DIAG_CMD_LEN_MAX = 4096;   // bytes of a request
constexpr uint32_t DIAG_RSP_LEN_MAX = 10240;  // bytes of one packet of an answer

/* Sends and waits for the answer.
 *   wait_time_ms  milliseconds, in steps of 100 and at least one; in callback mode 0 and all above 60000 stand for 3000,
 *                 in DCI mode a number with the top bit set is one step
 *   reply_buf     receives the answer; a longer one is cut without a word
 *   p_reply_len   in: bytes of `reply_buf`; out: bytes filled. Untouched when nothing was sent
 * After a time-out the result is 1, though `reply_buf` may hold an earlier answer: not to be read then. In DCI mode an
 * answer whose length is a multiple of 4096 has no closing packet and costs the whole time-out. */
int32_t velmor_diag_cmd_send_with_result_by_callback_mode(const uint8_t *data, uint32_t data_len, uint32_t wait_time_ms,
                                                          uint8_t *reply_buf, int32_t *p_reply_len);
int32_t velmor_diag_cmd_send_with_result_by_dci_mode(const uint8_t *data, uint32_t data_len, uint32_t wait_time_ms,
                                                     uint8_t *reply_buf, int32_t *p_reply_len);

/* Copies the request and returns: a worker sends it, and drops what comes back. The result tells that the request was
 * well formed and the copy made, no more. A process that ends takes the worker with it: how long to stay is the
 * caller's to decide. */
int32_t velmor_diag_cmd_send_without_result_by_callback_mode(const uint8_t *data, uint32_t data_len);
int32_t velmor_diag_cmd_send_without_result_by_dci_mode(const uint8_t *data, uint32_t data_len);

// ---- Their steps ----

/* Logs bytes as "7C 01 FF" in one line; only 1 to 4096 of them. */
void velmor_print_data_with_hex(const uint8_t *data, uint32_t len);

/* Check a request, the place for an answer, and a packet that came from the processor that `context_data` points to. */
int32_t velmor_diag_comand_input_check(const uint8_t *data, int32_t data_len);
int32_t velmor_diag_comand_output_check(const uint8_t *reply_buf, const int32_t *p_reply_len);
int32_t velmor_diag_cmd_response_check(const uint8_t *ptr, uint32_t len, const int32_t *context_data);

/* Start and stop the library for sends with result. Starts are counted and one stop ends them all; a failure is logged
 * and not told. Threads: one at a time. */
void           velmor_diag_init_with_result();
void           velmor_diag_deinit_with_result();
extern int32_t g_diag_init_status;  // starts since the last stop, 0: stopped

#endif
