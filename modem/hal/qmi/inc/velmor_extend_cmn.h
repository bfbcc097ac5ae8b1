/* The modem's small commands: records, senders, and the counters of subsystem restarts.
 *
 * All of them travel as the request id REQUEST_ID_COMMON of the extended service, little-endian. A command of type
 * COMMON_CMD_TYPED carries a message type, a length and that many bytes, and is answered in the same form. */
#ifndef VELMOR_EXTEND_CMN_H
#define VELMOR_EXTEND_CMN_H

#include <stdint.h>

/* Commands, the first word of a request. */
constexpr uint32_t COMMON_CMD_GPIO = 0;           // GPIO test values
constexpr uint32_t COMMON_CMD_TX = 1;             // fix transmit to an antenna
constexpr uint32_t COMMON_CMD_TYPED = 2;          // the types below, and those of the card commands
constexpr uint32_t COMMON_CMD_DEBUG_INFO = 20;    // debug information of the statistics
constexpr uint32_t COMMON_CMD_STATS_LACKED = 27;  // what the modem's statistics don't support

/* Types of COMMON_CMD_TYPED. */
constexpr uint32_t COMMON_TYPE_SSR = 31;        // restart the modem; 4 bytes: SSR type
constexpr uint32_t COMMON_TYPE_NV_SYNC = 35;    // write NV to the modem's storage; no data
constexpr uint32_t COMMON_TYPE_FULL_DUMP = 99;  // full dump; 4 bytes: SSR type

constexpr int32_t COMMON_SSR_TYPE_RESTART = 0x1000;
constexpr int32_t COMMON_SSR_TYPE_FULL_DUMP = 0x2000;

/* A request goes out whole, whatever part of it is used. */
struct common_req {
    uint32_t cmd;
    uint32_t reserved;  // 0
    uint8_t  payload[504];
};
struct common_typed_req {
    uint32_t cmd;  // COMMON_CMD_TYPED
    uint32_t reserved;
    uint32_t t;  // message type
    uint32_t l;  // bytes in v
    uint8_t  v[496];
};
struct common_rsp {
    uint32_t unread;
    int32_t  result;  // 0 for success; the caller's to judge
    uint8_t  payload[500];
};
struct common_typed_rsp {
    uint32_t unread;
    int32_t  result;
    uint32_t t;
    uint32_t l;  // bytes in v that mean something; foreign
    uint8_t  v[492];
};
static_assert(sizeof(common_req) == 512 && sizeof(common_typed_req) == 512);
static_assert(sizeof(common_rsp) == 508 && sizeof(common_typed_rsp) == 508);

/* Sends a command of COMMON_CMD_TYPED and waits for its answer.
 *   t    message type
 *   l    bytes of `v`, 0 to 491
 *   v    read during the call only; may be null when `l` is 0
 *   rsp  common_typed_rsp or common_rsp; zeroed first, so that what the answer leaves out reads as 0
 * Result: 0 when the service answered (`rsp.result` tells the rest), VELMOR_ERR_BAD_ARGUMENT without traffic, or that of
 *   velmor_extend_qmi_send_sync as it stands. Threads: any. */
int32_t velmor_send_common_qmi_msg(uint32_t t, uint32_t l, const void *v, void *rsp);

/* The same with a command of one's own, and the bytes straight behind its head: `l` is 0 to 499. */
int32_t velmor_common_qmi_req(uint32_t cmd, uint32_t l, const void *v, void *rsp);

/* Counts a restart: a negative `flag` as the one type that it is, any other as a mask, once for each known bit. Called
 * before the request: the figure tells how often a restart was asked for, not how often one came.
 * Threads: one at a time. */
void velmor_save_modem_ssr_count(int32_t flag);

/* Adds one to the property persist.radio.ssr_count_0x<type>; one that holds no number starts again at 1. */
void velmor_update_modem_ssr_count(int32_t ssr_type);

#endif
