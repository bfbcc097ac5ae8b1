/* Blocks of an answer. One that can't be freed on the spot waits in a list for the library's stop. */
#include "velmor_diag_rsp.h"

#include <stdlib.h>
#include <string.h>

static std::atomic<diag_rsp_block *> g_diag_rsp_retired;
static std::atomic<diag_rsp_block *> g_diag_rsp_copied;  // what the sender copies from at this moment; null: nothing

uint8_t *diag_rsp_bytes(diag_rsp_block *block)
{
    return reinterpret_cast<uint8_t *>(block + 1);
}

diag_rsp_block *diag_rsp_make(int32_t len)
{
    auto *block = static_cast<diag_rsp_block *>(calloc(1, sizeof(diag_rsp_block) + static_cast<size_t>(len) + 1));
    if (block != nullptr) block->size = len;
    return block;
}

void diag_rsp_copy(diag_rsp_block *block, uint8_t *to, int32_t len)
{
    if (block == nullptr) return;
    memcpy(to, diag_rsp_bytes(block), static_cast<size_t>(len < block->size ? len : block->size));
}

void diag_rsp_hand_out(const std::atomic<diag_rsp_block *> &place, uint8_t *to, int32_t len)
{
    /* Named first and looked at again: a block that still has its place then isn't freed before it is unnamed. */
    diag_rsp_block *block = nullptr;
    do {
        block = place.load();
        g_diag_rsp_copied.store(block);
    } while (block != place.load());
    diag_rsp_copy(block, to, len);
    g_diag_rsp_copied.store(nullptr);
}

static void retire(diag_rsp_block *block)
{
    diag_rsp_block *next = g_diag_rsp_retired.load(std::memory_order_relaxed);
    do {
        block->retired_next = next;
    } while (
        !g_diag_rsp_retired.compare_exchange_weak(next, block, std::memory_order_release, std::memory_order_relaxed));
}

void diag_rsp_replace(std::atomic<diag_rsp_block *> &place, diag_rsp_block *block)
{
    diag_rsp_block *earlier = place.exchange(block);
    if (earlier != nullptr && earlier == g_diag_rsp_copied.load())
        retire(earlier);
    else
        free(earlier);
}

void diag_rsp_retire(std::atomic<diag_rsp_block *> &place)
{
    diag_rsp_block *earlier = place.exchange(nullptr);
    if (earlier != nullptr) retire(earlier);
}

void diag_rsp_free_retired()
{
    diag_rsp_block *block = g_diag_rsp_retired.exchange(nullptr, std::memory_order_acquire);
    while (block != nullptr) {
        diag_rsp_block *next = block->retired_next;
        free(block);
        block = next;
    }
}
