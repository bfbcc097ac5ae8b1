/* The client of the modem's service uim: power of the card slots, SIM types, the EID, card states, and APDUs to the eUICC
 * over a logical channel.
 *
 * One connection, made by the first operation that needs it. An operation sends once and waits up to 3000 ms. Its
 * connection is dropped when the service has gone (the library says so, or a send fails with -2) and after three failed
 * sends; the next operation then connects anew and waits up to 4000 ms for the service. All messages are traces: that
 * something failed is for the caller to say.
 *
 * Results of the operations: 0; -1 for no connection, no memory, or what stands beside an operation; any other number is
 * the QMI client's error. What the modem says in its answer's own result counts only where that is said.
 * Arguments are not null except where that is said. Threads: one at a time. */
#ifndef VELMOR_EXTEND_UIM_H
#define VELMOR_EXTEND_UIM_H

#include <stdint.h>

#include "qmi_client.h"

constexpr uint32_t UIM_EID_LEN = 16;
constexpr uint32_t UIM_STATE_SLOTS = 2;    // slots that a caller is told of
constexpr uint8_t  UIM_STATE_UNKNOWN = 3;  // beside the service's own: 0 absent, 1 present, 2 error

typedef struct {
    uint32_t power_up;        // 0: down
    uint32_t slot;            // as the service counts: 2 is the second one
    uint32_t ignore_hotswap;  // power-up alone; not 0: whatever the switch of the tray says
    uint32_t esim_enable;     // for the EFS file of that name
} uicc_power_param;

typedef struct {
    uint32_t count;
    uint32_t types[];  // a type for each slot, in order: `count` of them
} sim_type_param;

typedef struct {
    uint8_t slot;
    uint8_t value;  // to open: which file control information is wanted; to close: the channel
} uim_channel_param;

typedef struct {
    uint8_t slot;
    uint8_t channel_id;
    uint8_t apdu_len;  // bytes
    uint8_t apdu[255];
} uim_apdu_param;

typedef struct {
    uint8_t apdu_len;  // low byte of the length as the card sent it, also when the answer was cut to the room
    uint8_t apdu[63];  // status word included
} uim_apdu_result;

/* Powers a slot down or up. The switch file stands in EFS before the modem is told: a request that fails leaves it
 * changed. -1 too when the file can't be written; nothing is sent then. */
int32_t velmor_esim_request_uicc_power_ex(const uicc_power_param *param);

/* Sets the type of each slot. More types than the message has room for (5) are refused by the QMI client.
 * Result: -2 for null and for no memory; no failure here counts towards a new connection. */
int32_t velmor_setSimType(const sim_type_param *param);

/* Reads the EID of the slot's eUICC into `eid`, UIM_EID_LEN bytes. Untouched where the modem has none to tell, though
 * the result is 0: whoever asks zeroes it first and looks. */
int32_t velmor_uim_request_eid(const uint8_t *slot, uint8_t *eid);

/* Reads the states of the first UIM_STATE_SLOTS cards. Those that the modem doesn't tell are UIM_STATE_UNKNOWN; untouched
 * after a failed send. Trusts a connection whose service has gone until the send fails. */
int32_t velmor_uim_get_card_status(uint8_t *states);

/* Opens a channel to the eUICC's issuer security domain. `channel_id` receives it, and keeps what stood there where the
 * modem tells none. -1 too when the modem refuses. */
int32_t velmor_uim_open_channel(const uim_channel_param *param, uint8_t *channel_id);

/* Closes a channel. A refusal by the modem passes without a word. */
int32_t velmor_uim_close_channel(const uim_channel_param *param);

/* Sends a command and takes the answer. -1 too when the modem refuses; what the card says isn't looked at. */
int32_t velmor_uim_send_apdu(const uim_apdu_param *param, uim_apdu_result *result);

/* The connection: makes it (true when there is one), and drops it. The operations do both by themselves. */
bool init_uim_qmi_client();
void uim_qmi_client_recovery();

/* The library's word that the service has gone; on its own thread. */
void error_cb(qmi_client_handle client, int32_t error, void *data);

#endif
