/* One-shot timers. A started timer is a POSIX timer of the process with a node in a list, by which its number finds it.
 *
 * Called from any thread, timer callbacks included. The two mutexes are never held together. */
#include "velmor_utils_timer.h"

#include <atomic>

#include <time.h>

#include "qti_shared_mutex.h"
#include "velmor_utils_cmn.h"

struct tcbinfo {
    uint32_t              timer_id;
    timer_t               sys_timerid;  // lives until the process ends, beyond this node: never deleted
    uint64_t              timeout_s;
    velmor_timer_callback timer_callback;
    tcbinfo              *next;
    tcbinfo              *prev;
};

static qtimutex::QtiSharedMutex g_timer_id_mutex;    // guards the count of g_timer_id
static std::atomic<uint32_t>    g_timer_id;          // the last number given
static qtimutex::QtiSharedMutex g_timer_list_mutex;  // guards the list
static tcbinfo                 *g_timer_list;        // all timers that haven't been stopped, oldest first

static unsigned timer_handle_number(timer_t sys_timerid)
{
    return static_cast<unsigned>(reinterpret_cast<uintptr_t>(sys_timerid));
}

/* Creates and arms the system's timer under a new number, and fills the node with them. The number stays used when
 * that fails. Result: 1 armed, 0 not. */
static uint32_t velmor_sys_timer_create(tcbinfo *tcb, velmor_timer_callback callback, unsigned long timeout_s)
{
    g_timer_id_mutex.lock();
    const uint32_t timer_id = g_timer_id.load(std::memory_order_relaxed) + 1;
    g_timer_id.store(timer_id, std::memory_order_relaxed);
    g_timer_id_mutex.unlock();

    sigevent event = {};
    event.sigev_notify = SIGEV_THREAD;
    event.sigev_value.sival_int = static_cast<int>(timer_id);
    event.sigev_notify_function = callback;
    timer_t sys_timerid = {};
    if (timer_create(CLOCK_REALTIME, &event, &sys_timerid) != 0) {
        LOG(1, "fail to timer_create, timer_id = %u, timeout_s = %lu", timer_id, timeout_s);
        return 0;
    }

    itimerspec due = {};
    due.it_value.tv_sec = static_cast<time_t>(timeout_s);
    due.it_value.tv_nsec = timeout_s == 0 ? 1 : 0;  // all zero would disarm it: at once instead
    if (timer_settime(sys_timerid, 0, &due, nullptr) != 0) {
        LOG(1, "fail to timer_settime, sys_timerid = 0x%x", timer_handle_number(sys_timerid));
        return 0;
    }
    tcb->timer_id = timer_id;
    tcb->sys_timerid = sys_timerid;
    tcb->timeout_s = timeout_s;
    tcb->timer_callback = callback;
    return 1;
}

static uint32_t velmor_timer_start_do(velmor_timer_callback callback, unsigned long timeout_s)
{
    tcbinfo *tcb = static_cast<tcbinfo *>(qcril_malloc_adv(sizeof(tcbinfo)));
    if (tcb == nullptr) {
        LOG(1, "Failed to allocate memory for tcbinfo");
        return 0;
    }
    if (velmor_sys_timer_create(tcb, callback, timeout_s) == 0) {
        LOG(1, "velmor_sys_timer_create failed");
        qcril_free_adv(tcb, __func__, __LINE__);
        return 0;
    }
    // The timer runs already, and a short one may fire before its node can be found. Once it is in the list another
    // thread may stop it, which frees it: the node isn't touched after the unlock.
    const uint32_t timer_id = tcb->timer_id;
    g_timer_list_mutex.lock();
    tcbinfo *last = g_timer_list;
    while (last != nullptr && last->next != nullptr) last = last->next;
    tcb->prev = last;
    if (last == nullptr) {
        g_timer_list = tcb;
    } else {
        last->next = tcb;
    }
    g_timer_list_mutex.unlock();
    LOG(4, "Set timer with ID %u, timeout_s = %lu", timer_id, timeout_s);
    return g_timer_id.load(std::memory_order_relaxed);  // read again: may be the newer number of another thread
}

uint32_t velmor_timer_start(velmor_timer_callback callback, unsigned long timeout_s)
{
    return velmor_timer_start_do(callback, timeout_s);
}

uint32_t velmor_timer_stop(uint32_t timer_id)
{
    g_timer_list_mutex.lock();
    tcbinfo *tcb = g_timer_list;
    while (tcb != nullptr && tcb->timer_id != timer_id) tcb = tcb->next;
    if (tcb != nullptr) {
        if (tcb->prev != nullptr) {
            tcb->prev->next = tcb->next;
        } else {
            g_timer_list = tcb->next;
        }
        if (tcb->next != nullptr) tcb->next->prev = tcb->prev;
        tcb->next = nullptr;
        tcb->prev = nullptr;
    }
    g_timer_list_mutex.unlock();
    if (tcb == nullptr) {
        LOG(1, "Not find the timer_callback, timer_id = %u", timer_id);
        return 0;
    }

    const itimerspec never = {};
    if (timer_settime(tcb->sys_timerid, 0, &never, nullptr) != 0) {
        LOG(1, "fail to timer_settime, sys_timerid = 0x%x", timer_handle_number(tcb->sys_timerid));
    }
    LOG(4, "Cancel timer with ID %u, timeout_s = %lu", tcb->timer_id, static_cast<unsigned long>(tcb->timeout_s));
    qcril_free_adv(tcb, __func__, __LINE__);
    return 1;
}
