/* The kit under everything else: messages over two channels, the process's identity, properties, conversions, workers
 * and waits.
 *
 * A message goes to the platform's log (the logcat channel) and to standard output (the shell channel), each behind a
 * mask of its own. Masks and flags are set once at start or by the command that runs, and read from every thread:
 * relaxed atomics, no lock. */
#ifndef VELMOR_UTILS_CMN_H
#define VELMOR_UTILS_CMN_H

#include <atomic>

#include <pthread.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

/* Bytes of the buffers that hold a property's name or value, terminator included. */
#define VELMOR_PROPERTY_SIZE 256

/* Generic refusal of bad arguments, and what results start from in the groups. */
#define VELMOR_ERR_BAD_ARGUMENT 0xffff00a

// ---- Messages ----

/* Reports something: the file's base name, the line and the calling function's name come by themselves.
 *   level   1 failure, bad input; 2 step of a test; 4 trace; 8 output for the user, bare on the shell
 *   format  the message's body, a literal printf format without prefix and without line end: the shell adds one "\n"
 * The arguments are worked out for each channel that is open, so not at all on closed ones: no side effects in them.
 * One printf or vsyslog carries the whole message, so that lines of two threads don't tear. Threads: any. */
#define LOG(level, format, ...) LOG_FROM(__func__, level, format __VA_OPT__(, ) __VA_ARGS__)

/* The second form, for the steps of an operation that stand in functions of their own: the message has the operation's
 * name, and the line is that of the step. */
#define LOG_FROM(function_name, level, format, ...)                                           \
    do {                                                                                      \
        if (velmor_hal_get_logcat_print_flag(level)) {                                        \
            ((level) == 1 ? velmor_utils_syslog_err : velmor_utils_syslog_dbg)(               \
                "%s[%s:%d] %s: " format, velmor_log_instance_text(), __FILE_NAME__, __LINE__, \
                function_name __VA_OPT__(, ) __VA_ARGS__);                                    \
        }                                                                                     \
        if (velmor_hal_get_shell_print_flag(level)) {                                         \
            if ((level) == 8) {                                                               \
                printf(format "\n" __VA_OPT__(, ) __VA_ARGS__);                               \
            } else {                                                                          \
                printf("RIL[%s:%d] %s: " format "\n", __FILE_NAME__, __LINE__,                \
                       function_name __VA_OPT__(, ) __VA_ARGS__);                             \
            }                                                                                 \
        }                                                                                     \
    } while (0)

extern std::atomic<uint32_t> g_velmor_logcat_print_mask;  // levels open on each channel, 0xffff at first
extern std::atomic<uint32_t> g_velmor_shell_print_mask;
extern std::atomic<uint8_t>  g_logcat_mask_merged;  // set before the channel's property is merged, and never again
extern std::atomic<uint8_t>  g_shell_mask_merged;

/* Narrow a channel's mask by its property, the first time that somebody asks for the channel. For the gates below. */
void velmor_merge_logcat_print_mask();
void velmor_merge_shell_print_mask();

/* True when every bit of `level` is open on the channel. The first call merges the channel's property. */
inline bool velmor_hal_get_logcat_print_flag(uint32_t level)
{
    if (g_logcat_mask_merged.load(std::memory_order_relaxed) == 0) [[unlikely]] {
        velmor_merge_logcat_print_mask();
    }
    return (g_velmor_logcat_print_mask.load(std::memory_order_relaxed) & level) == level;
}
inline bool velmor_hal_get_shell_print_flag(uint32_t level)
{
    if (g_shell_mask_merged.load(std::memory_order_relaxed) == 0) [[unlikely]] {
        velmor_merge_shell_print_mask();
    }
    return (g_velmor_shell_print_mask.load(std::memory_order_relaxed) & level) == level;
}

/* Sets the shell mask; takes bits out of it. The masks are not restored: one run is one command. */
void velmor_hal_set_shell_print_mask(uint32_t dst_mask);
void velmor_hal_remove_shell_print_mask(uint32_t rm_mask);

/* Closes both channels for the rest of the run, without a message. */
void velmor_hal_close_print();

/* Pass format and arguments on to vsyslog, with priority 7 and 3, whatever the masks say. */
void velmor_utils_syslog_dbg(const char *format, ...) __attribute__((format(printf, 1, 2)));
void velmor_utils_syslog_err(const char *format, ...) __attribute__((format(printf, 1, 2)));

/* What stands before a logcat message's "[file:line]" by the process instance: nothing for 255, the process's name in
 * brackets for 168, "SUB[n]" for any other. A text of the calling thread, overwritten by its next call. */
const char *velmor_log_instance_text();

/* The process instance: 255 in this program, which never changes it; a radio daemon that links the kit sets its own
 * before it starts threads. */
extern uint32_t g_ril_process_instance_id;
uint32_t        velmor_get_ril_process_instance_id();

// ---- Who this process is ----

typedef struct {
    int32_t p_id;
    char    p_name[256];  // last path component of the first word of the command line; empty when it can't be read
} velmor_pid_info;

/* Filled at its first use, in this program on the main thread; only read afterwards. */
extern velmor_pid_info g_pid_info;

/* Fills a record with the identity of the calling process. What can't be read stays empty. */
void velmor_get_current_pid_info(velmor_pid_info *p_pid_info);

/* The name alone, for LOG itself: reports through the syslog operations and not through LOG. */
const char *velmor_get_current_pid_name();

/* Number and name out of g_pid_info, which the first call fills. */
int32_t     velmor_utils_get_pid_number();
const char *velmor_utils_get_pid_name();

// ---- Properties ----

/* Reads a property.
 *   name           cut at 255 characters
 *   value          receives the text, terminated; at least VELMOR_PROPERTY_SIZE bytes. Untouched when an argument is null
 *   default_value  taken when the property is absent or empty */
void velmor_get_property_value(const char *name, char *value, const char *default_value);

/* Traces a property as "name: value", unless persist.vendor.radio.print_prop is something other than "1". */
void velmor_print_property_value(const char *name);

/* Writes a property of at most 92 characters and traces what stands there then. A longer value is refused with a
 * message; a refusal by the platform shows in the trace alone. */
void velmor_set_property_value(const char *name, const char *value);

/* The same with a number as decimal text. A property that isn't a number reads as 0, an absent one as the default;
 * the number is returned too. */
void    velmor_set_property_value_to_int(const char *name, int32_t number);
int32_t velmor_get_property_value_from_int(const char *name, int32_t *number_out, int32_t default_number);

/* The default data subscription: persist.radio.default_data_sub, else 0. */
int32_t velmor_get_default_data_sub();

// ---- Workers and waits ----

/* Starts a detached thread.
 *   name      for the trace alone, may be null; the thread isn't given it
 *   proc      its body; null starts nothing
 *   argument  handed to it; whoever starts the thread keeps it alive
 * Result: the thread's handle, 0 when none was started. */
pthread_t velmor_create_pthread(const char *name, void *(*proc)(void *), void *argument);

/* Sleeps `wait_s` seconds; a negative number takes persist.radio.modem_wait_s, else 3. Below 1 it doesn't wait.
 * Result: the seconds. */
int32_t velmor_modem_wait_s(int32_t wait_s);

// ---- Bytes to text ----

/* Renders bytes as upper-case hex, each with a blank before it: " 01 02 FF".
 *   hex_str   receives the text, terminated
 *   len_max   its room in bytes, above 4; bytes that don't fit are left out
 *   data_len  bytes; 0 or below gives an empty text
 * Result: 1, or 0 for a null argument or too little room. */
int32_t velmor_get_hex_str(char *hex_str, int32_t len_max, const uint8_t *ptr_data, int32_t data_len);

/* Renders `len` bytes as 2 * `len` lower-case hex digits, without blanks and without a terminator. Null `data` writes
 * nothing. */
void velmor_byte_to_hex(const uint8_t *data, uint32_t len, char *out);

// ---- Device states ----

#define VELMOR_DEVICE_STATE_COUNT 23

/* "[3]SAR_SENSOR_STATE" and "debug.device.sar_sensor_state" for index 3; null for an index above 22. Static texts,
 * overwritten by the next call of the same operation: for the main thread alone. */
const char *velmor_get_device_type_string_ex(uint32_t index);
const char *velmor_get_device_state_prop_name(uint32_t index);

// ---- The radio daemon's logger ----

/* Tells a failure of what this system shares with the radio daemon to the daemon's logger and not through LOG: with the
 * place that asks, and its thread. */
void qcril_log_failure(const char *text, const char *file = __builtin_FILE(), int line = __builtin_LINE(),
                       const char *function = __builtin_FUNCTION());

// ---- Memory ----

/* Allocates `size` bytes, zeroed. On failure the radio daemon's logger is told, with the place that asked.
 * Result: the block, or null. */
void *qcril_malloc_adv(size_t size, const char *file = __builtin_FILE(), int line = __builtin_LINE(),
                       const char *function = __builtin_FUNCTION());

/* Frees a block that isn't null. Name and line are what callers of other systems pass; nothing is done with them. */
void qcril_free_adv(void *pointer, const char *function_name, int line);

#endif
