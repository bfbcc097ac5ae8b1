/* Blocks of bytes that an answer is kept in while two threads know it: the library's thread puts one in the place of
 * another, and the sender may still be copying from the earlier one. Only the library's thread frees a block while the
 * library is started, and never the one that the sender copies from. */
#ifndef VELMOR_DIAG_RSP_H
#define VELMOR_DIAG_RSP_H

#include <atomic>

#include <stdint.h>

/* Filled before anybody else sees it and never changed afterwards: who still copies from a block that has been replaced
 * copies old bytes, and never past its end. The bytes stand behind this head. */
struct diag_rsp_block {
    diag_rsp_block *retired_next;
    int32_t         size;  // bytes
};

/* A block of `len` bytes, zeroed; null when there is no memory. */
diag_rsp_block *diag_rsp_make(int32_t len);

uint8_t *diag_rsp_bytes(diag_rsp_block *block);

/* Copies at most the block's own bytes. Without a block there are none, whatever a stale length says.
 * Threads: one that the block can't be freed under. */
void diag_rsp_copy(diag_rsp_block *block, uint8_t *to, int32_t len);

/* The same from the block that stands in a place, which may be replaced meanwhile. Threads: the sender. */
void diag_rsp_hand_out(const std::atomic<diag_rsp_block *> &place, uint8_t *to, int32_t len);

/* Puts a block in the place of an earlier one, which is freed, or retired while the sender copies from it: an answer of
 * many packets needs no more room than its own. Threads: the library's. */
void diag_rsp_replace(std::atomic<diag_rsp_block *> &place, diag_rsp_block *block);

/* Empties a place. Its block is retired, since the library's thread may be reading it. Threads: the sender. */
void diag_rsp_retire(std::atomic<diag_rsp_block *> &place);

/* Frees what has been retired. Only while nobody else can know a block: the library has stopped. */
void diag_rsp_free_retired();

#endif
