// Waits of seconds, shortened by one factor so that orders and races stay as they are, and the system's shell, not run.
// Each call is a line in the file that RBK_TEST_CALLS names: "sleep 3", "usleep 20000", "timer_settime 10.000000000",
// "system echo ...". Requests with the time-out that they ask for, "send 0x0020 30000", go to the file that RBK_TEST_SENDS
// names, in the order of their threads. RBK_TEST_DIVISOR is the factor, 100 when unset; RBK_TEST_SYSTEM what `system` answers, else 0;
// RBK_TEST_FAIL names a wrapped operation of timers that fails.
#include <fcntl.h>
#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "on_calls.h"
#include "qmi_client.h"

namespace {

long number_from(const char* variable, long otherwise)
{
    const char* text = std::getenv(variable);
    return text != nullptr ? std::atol(text) : otherwise;
}

void write_down(const std::string& call, const char* variable = "RBK_TEST_CALLS")
{
    const char* file = std::getenv(variable);
    if (file == nullptr) return;
    const int fd = open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0 && errno == ENOENT) return;  // a thread that outlives its case, whose directory is gone
    const std::string line = call + "\n";
    if (fd < 0 || write(fd, line.data(), line.size()) < 0) std::abort();  // a test that misses calls isn't one
    close(fd);
}

bool is_to_fail(const char* operation)
{
    const char* name = std::getenv("RBK_TEST_FAIL");
    if (name == nullptr || std::strcmp(name, operation) != 0) return false;
    errno = EAGAIN;
    return true;
}

timespec shortened(long seconds, long nanoseconds)
{
    const long divisor = number_from("RBK_TEST_DIVISOR", 100);
    const long total = seconds / divisor * 1'000'000'000 + (seconds % divisor * 1'000'000'000 + nanoseconds) / divisor;
    return {total / 1'000'000'000, total % 1'000'000'000};
}

void wait_for(timespec rest)
{
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
}

}  // namespace

extern "C" {

unsigned __wrap_sleep(unsigned seconds)
{
    rbk::test::tell_call("sleep " + std::to_string(seconds));
    write_down("sleep " + std::to_string(seconds));
    wait_for(shortened(seconds, 0));
    return 0;
}

int __wrap_usleep(useconds_t microseconds)
{
    rbk::test::tell_call("usleep " + std::to_string(microseconds));
    write_down("usleep " + std::to_string(microseconds));
    wait_for(shortened(microseconds / 1'000'000, microseconds % 1'000'000 * 1000L));
    return 0;
}

// Under thread sanitizer a carrier of our own stands in the place of the system's timers.
#ifdef __SANITIZE_THREAD__
int carried_timer_create(const sigevent& event, timer_t* timer);
int carried_timer_settime(timer_t timer, const itimerspec& due);
#else
int __real_timer_create(clockid_t clock, sigevent* event, timer_t* timer);
int __real_timer_settime(timer_t timer, int flags, const itimerspec* due, itimerspec* old);
#endif

int __wrap_timer_create(clockid_t clock, sigevent* event, timer_t* timer)
{
    if (is_to_fail("timer_create")) return -1;
#ifdef __SANITIZE_THREAD__
    (void)clock;
    return carried_timer_create(*event, timer);
#else
    return __real_timer_create(clock, event, timer);
#endif
}

int __wrap_timer_settime(timer_t timer, int flags, const itimerspec* due, itimerspec* old)
{
    char call[64];
    std::snprintf(call, sizeof call, "timer_settime %ld.%09ld", due->it_value.tv_sec, due->it_value.tv_nsec);
    rbk::test::tell_call(call);
    write_down(call);
    if (is_to_fail("timer_settime")) return -1;
    itimerspec soon = *due;
    if (due->it_value.tv_sec != 0 || due->it_value.tv_nsec != 0) {
        soon.it_value = shortened(due->it_value.tv_sec, due->it_value.tv_nsec);
        if (soon.it_value.tv_sec == 0 && soon.it_value.tv_nsec == 0) soon.it_value.tv_nsec = 1;  // not disarmed
    }
#ifdef __SANITIZE_THREAD__
    (void)flags;
    (void)old;
    return carried_timer_settime(timer, soon);
#else
    return __real_timer_settime(timer, flags, &soon, old);
#endif
}

int32_t __real_qmi_client_send_msg_sync(qmi_client_handle client, uint32_t msg_id, const void* request,
                                        uint32_t request_size, void* response, uint32_t response_size,
                                        uint32_t timeout_ms);

int32_t __wrap_qmi_client_send_msg_sync(qmi_client_handle client, uint32_t msg_id, const void* request,
                                        uint32_t request_size, void* response, uint32_t response_size,
                                        uint32_t timeout_ms)
{
    char call[32];
    std::snprintf(call, sizeof call, "send 0x%04X %u", msg_id, timeout_ms);
    write_down(call, "RBK_TEST_SENDS");
    return __real_qmi_client_send_msg_sync(client, msg_id, request, request_size, response, response_size, timeout_ms);
}

int __wrap_system(const char* command)
{
    write_down(std::string("system ") + command);
    return static_cast<int>(number_from("RBK_TEST_SYSTEM", 0));
}

}  // extern "C"
