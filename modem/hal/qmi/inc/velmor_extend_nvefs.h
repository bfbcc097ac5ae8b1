/* NV items and files of the modem's EFS.
 *
 * Six operations share one record of the extended service; files go in chunks, because one envelope carries 424 bytes.
 * An operation holds its lock (one for NV, one for EFS) from before its checks to the end, so a transfer is never mixed
 * with another one of its kind; a chunk may wait 3000 ms. Order of locks: the operation's, then the extended client's.
 * All messages are traces: that something failed is for the caller to say.
 *
 * Common to all:
 *   sub_id              subscription, 0 or 1
 *   nv_id               item, 0 to NV_ID_MAX
 *   efs_path, path_len  path, bytes without a terminator: all of them are read
 * Results: 0; the negative numbers below; a service's own error as in <errno.h>, negative too (-2: no such item).
 * Threads: any. */
#ifndef VELMOR_EXTEND_NVEFS_H
#define VELMOR_EXTEND_NVEFS_H

#include <stdint.h>

enum {
    NVEFS_BAD_ARGUMENT = -101,  // from the extended client; the next two too
    NVEFS_NOT_OPEN = -102,
    NVEFS_FAILED = -103,
    NVEFS_BAD_SUB = -104,
    NVEFS_NO_PATH = -105,
    NVEFS_BAD_PATH_LEN = -106,
    NVEFS_NO_BUFFER = -107,
    NVEFS_BAD_LEN = -108,  // of a buffer, or in an answer
    NVEFS_BAD_NV_ID = -109,
};

/* velmor_extend_nv_read_item: the item didn't fit into the buffer; what fits has been delivered. */
#define NVEFS_ITEM_CUT 0xffff001

constexpr uint32_t NV_ID_MAX = 7232;
constexpr uint32_t NVEFS_DATA_MAX = 424;  // bytes of data in one envelope
constexpr uint32_t EFS_PATH_READ_MAX = 100;
constexpr uint32_t EFS_PATH_CHANGE_MAX = 99;  // write and delete
constexpr uint32_t EFS_WRITE_MAX = 102410;

/* Reads an NV item.
 *   sub_id     2 too, for item 550 alone: the customer's own case
 *   buf        receives the bytes
 *   p_buf_len  in: bytes of `buf`, above 0; out: bytes filled. A longer item is cut without a word, with result 0 */
int32_t velmor_nv_read(uint32_t sub_id, uint32_t nv_id, void *buf, uint32_t *p_buf_len);

/* Writes an NV item whole: `buf_len` is 1 to NVEFS_DATA_MAX bytes. */
int32_t velmor_nv_write_ex(uint32_t sub_id, uint32_t nv_id, const void *buf, uint32_t buf_len);

int32_t velmor_nv_delete(uint32_t sub_id, uint32_t nv_id);

/* Reads a file from its start, until it ends, the buffer is full, 102410 bytes or 300 chunks have come.
 *   path_len   1 to EFS_PATH_READ_MAX; of a path of 100 bytes the modem sees the last one as 0
 *   p_buf_len  in: bytes of `buf`, above 0; out: bytes filled, also by a read that failed after some chunks */
int32_t velmor_efs_read(uint32_t sub_id, const char *efs_path, uint32_t path_len, void *buf, uint32_t *p_buf_len);

/* Replaces a file: `path_len` is 1 to EFS_PATH_CHANGE_MAX, `buf_len` 1 to EFS_WRITE_MAX bytes. */
int32_t velmor_efs_write(uint32_t sub_id, const char *efs_path, uint32_t path_len, const void *buf, uint32_t buf_len);

int32_t velmor_efs_delete(uint32_t sub_id, const char *efs_path, uint32_t path_len);

/* Reads an NV item in the modem's older way, in one envelope and with the client's mutex alone.
 *   p_buf_len  in: bytes of `buf`; out: bytes filled, at most 412, and 0 after a failure
 * Result: 0, NVEFS_ITEM_CUT, VELMOR_ERR_BAD_ARGUMENT for null, the client's own -1 to -3, or the service's error. */
int32_t velmor_extend_nv_read_item(uint32_t nv_id, uint32_t sub_id, void *buf, uint32_t *p_buf_len);

/* Has the modem write its NV to storage. Result: 0, or the bits of the send's result and of the modem's together. */
int32_t velmor_nvefs_sync();

#endif
