// The radio daemon's logger on a host: its lines go where the platform's log goes, behind their tag.
#include "qti_logger.h"

#include <pthread.h>

#include <cerrno>
#include <cstdarg>

#include "platform/linux/system_log.h"

namespace qti::ril::logger {

const char* qcril_get_thread_name()
{
    static thread_local char name[16];  // the kernel's limit, terminator included
    if (pthread_getname_np(pthread_self(), name, sizeof name) != 0) name[0] = 0;
    return name;
}

void Logger::log(int priority, const char* tag, const char* format, ...)
{
    const int error = errno;
    std::va_list arguments;
    va_start(arguments, format);
    const std::string text = rbk::platform::format_text(format, arguments);
    va_end(arguments);
    rbk::platform::SystemLog::instance().write(priority, std::string(tag) + ": " + text);
    errno = error;
}

}  // namespace qti::ril::logger
