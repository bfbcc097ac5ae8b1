/* The radio daemon's logger: its own channel, beside the system's log. */
#ifndef QTI_LOGGER_H
#define QTI_LOGGER_H

namespace qti::ril::logger {

/* Name of the calling thread, as the kernel knows it. The text belongs to the thread and lives as long as it does;
 * the next call on the same thread overwrites it. Never null. */
const char *qcril_get_thread_name();

class Logger {
 public:
    /* Writes one line to the platform's log.
     *   priority  as syslog counts them (3 error, 7 debug)
     *   tag       the module that speaks, such as "util"; stands before the text
     *   format    printf format of the line, without line end
     * Threads: any. Never blocks, and says nothing about whether the line was kept. */
    static void log(int priority, const char *tag, const char *format, ...) __attribute__((format(printf, 3, 4)));
};

}  // namespace qti::ril::logger
#endif
