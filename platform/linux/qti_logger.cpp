// The radio daemon's logger on a host: its lines go where the platform's log goes, behind their tag.
#include "qti_logger.h"

#include <pthread.h>

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
    std::va_list arguments;
    va_start(arguments, format);
    rbk::platform::write_formatted(priority, (std::string(tag) + ": ").c_str(), format, arguments);
    va_end(arguments);
}

}  // namespace qti::ril::logger
