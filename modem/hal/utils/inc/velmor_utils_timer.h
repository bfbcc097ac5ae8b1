/* One-shot timers in whole seconds, known by a small number, with their callback on a thread of its own. */
#ifndef VELMOR_UTILS_TIMER_H
#define VELMOR_UTILS_TIMER_H

#include <signal.h>
#include <stdint.h>

/* Runs on a thread of the system's timers; `sival_int` holds the timer's number. It may start and stop timers. */
typedef void (*velmor_timer_callback)(union sigval value);

/* Starts a timer.
 *   callback   called once, when the time is up
 *   timeout_s  seconds; 0 fires at once
 * Result: the timer's number, from 1 up; 0 when it couldn't be started. A short timer may fire before it can be found
 *   by its number: velmor_timer_stop answers 0 to such a callback, and the timer stays listed.
 * Threads: any. When two start timers at the same moment, one may be given the newer number of the other. */
uint32_t velmor_timer_start(velmor_timer_callback callback, unsigned long timeout_s);

/* Cancels a timer and forgets it. One that has fired stays known until it is stopped, by its own callback or later.
 * Result: 1 when the number was known, 0 when not. Threads: any. */
uint32_t velmor_timer_stop(uint32_t timer_id);

#endif
