/* The diag library: sends raw diag requests to the modem's processors and hands on what they send.
 *
 * Two ways. Callback mode: one callback for each processor gets every packet while logging stands in mode 6. DCI: a
 * client gets the packets that answer its own request, and logs and events as streams.
 *
 * The library is started and stopped as a whole, for the process. While it isn't started, and where the modem has no
 * diag, every call is refused at once. Neither bytes nor frames are touched on the way: what a caller gives is what the
 * processor gets.
 *
 * Callbacks run on the library's own thread, one at a time and under no lock of the library. They may call nothing of
 * the library. `ptr` lives for the call only, and isn't null, also for a packet without bytes.
 *
 * At the end of the process the library ends as the QMI client library does: see qmi_client.h.
 *
 * Codes: diag_callback_send_data answers 0 for success; the DCI operations DIAG_DCI_NO_ERROR. Any other number is a
 * failure: DIAG_REFUSED with `errno` set when the library itself refuses (ENOTCONN not started or modem gone, EBADF
 * unknown client, EINVAL bad argument, EMSGSIZE too long, ETIMEDOUT no word from the modem), else the modem's own code. */
#ifndef DIAG_LSM_H
#define DIAG_LSM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define DIAG_DCI_NO_ERROR 1001
#define DIAG_REFUSED      (-1)

/* Where diag packets go. */
#define USB_MODE      1  // to the host on USB: callbacks get nothing
#define CALLBACK_MODE 6  // to the callbacks

/* Bits of a DCI peripheral list. */
#define DIAG_CON_MPSS 0x0002

/* Processors besides the primary one, which is 0: 1 to DIAG_REMOTE_MAX, by the bits of the remote mask from bit 0 up. */
#define DIAG_REMOTE_MAX 16

/* Longest request and longest packet, bytes. */
#define DIAG_REQUEST_MAX 16384
#define DIAG_PACKET_MAX  16384

/* Called with one packet of one processor; `context_data` is what the registration gave. Its result is for the library,
 * which has no use for it. */
typedef int32_t (*diag_packet_cb)(uint8_t *ptr, int32_t len, void *context_data);

/* Called with each packet that answers a DCI request; `ptr` is the packet buffer of the request. */
typedef void (*diag_dci_response_cb)(uint8_t *ptr, int32_t len, void *context_data);

/* Called with each log or event packet. */
typedef void (*diag_dci_stream_cb)(uint8_t *ptr, int32_t len);

/* Starts the library; without effect when it is started.
 *   params  null
 * Result: a boolean in the low byte, non-zero for success. Threads: any but a callback's. */
uint8_t Diag_LSM_Init(uint8_t *params);

/* Stops the library, however often it was started: callbacks and DCI clients are forgotten, packets that haven't been
 * handed on are dropped, logging stands in mode 1. A callback that is running is waited for; none runs once this has
 * returned. Result: as above, non-zero when it was started. Threads: any but a callback's. */
uint8_t Diag_LSM_DeInit(void);

/* Says where packets go from now on: USB_MODE, which is where a start leaves it, or CALLBACK_MODE.
 *   proc_type  null
 * Result: 0, or DIAG_REFUSED. Threads: any. */
int32_t diag_switch_logging(int32_t mode, char *proc_type);

/* Installs the callback of the primary processor, in the place of an earlier one.
 *   context_data  given back with each packet; the caller keeps what it points to alive until the library is stopped
 * Result: 0, or DIAG_REFUSED. Threads: any. */
int32_t diag_register_callback(diag_packet_cb callback, void *context_data);

/* Tells which remote processors there are: bit 0 is processor 1.
 *   remote_mask  receives the mask; untouched when refused
 * Result: 0, or DIAG_REFUSED. Threads: any. */
int32_t diag_has_remote_device(uint16_t *remote_mask);

/* Installs the callback of one remote processor, 1 to DIAG_REMOTE_MAX; else as diag_register_callback. */
int32_t diag_register_remote_callback(diag_packet_cb callback, int32_t processor, void *context_data);

/* Sends a request. Its packets come to the callbacks, as long as logging is in CALLBACK_MODE.
 *   processor  0
 *   data, len  the request, 1 to DIAG_REQUEST_MAX bytes; read during the call only
 * Result: 0, DIAG_REFUSED, or the modem's code. Threads: any but a callback's. */
int32_t diag_callback_send_data(int32_t processor, const uint8_t *data, int32_t len);

/* Makes a DCI client.
 *   client_id    receives its id, above 0; untouched when refused
 *   peripherals  bits of the peripherals that it is for
 *   processor    0
 *   os_params    the number of the signal that stands for DCI data; kept, never raised
 * Result: DIAG_DCI_NO_ERROR, DIAG_REFUSED, or the modem's code. Threads: any but a callback's; of all DCI calls. */
int32_t diag_register_dci_client(int32_t *client_id, const uint16_t *peripherals, int32_t processor,
                                 const int32_t *os_params);

/* Names the signal for DCI data. It is kept and never raised: packets come by callback. */
int32_t diag_register_dci_signal_data(int32_t client_id, int32_t signal_number);

/* Tells which peripherals of a processor are up.
 *   processor    0
 *   peripherals  receives their bits; untouched when refused */
int32_t diag_get_dci_support_list_proc(int32_t processor, uint16_t *peripherals);

/* Installs the callbacks of a client's log and event streams, and starts the streams. */
int32_t diag_register_dci_stream_proc(int32_t client_id, diag_dci_stream_cb log_callback,
                                      diag_dci_stream_cb event_callback);

/* Sends a client's request. Each packet of the answer is put into the packet buffer and handed to the callback; a packet
 * that is longer than the buffer is dropped. A later request of the client takes the place of an earlier one.
 *   data, len                 the request, 1 to DIAG_REQUEST_MAX bytes; read during the call only
 *   packet_buf, packet_size   the client's until it is released or the library stopped, bytes
 *   context_data              given back with each packet */
int32_t diag_send_dci_async_req(int32_t client_id, const uint8_t *data, int32_t len, uint8_t *packet_buf,
                                int32_t packet_size, diag_dci_response_cb callback, void *context_data);

/* Ends a client, and sets its id to 0. A callback that is running is waited for; none of the client's runs once this
 * has returned, and its packet buffer is the caller's again. Ending a client is refused as any other call is, with the
 * same certainty: a library that isn't started has no clients and no buffers. */
int32_t diag_release_dci_client(int32_t *client_id);

#ifdef __cplusplus
}
#endif
#endif
