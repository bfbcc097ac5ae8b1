// The platform's log: both its ends, the radio daemon's logger, and the mutex that outlives its destructor.
#include "platform/linux/system_log.h"

#include <qti_logger.h>
#include <qti_shared_mutex.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <ctime>
#include <future>
#include <memory>

#include "support/home.h"

extern "C" void __vsyslog_chk(int priority, int flag, const char* format, va_list arguments);

namespace rbk::test {
namespace {

using Lines = std::vector<std::string>;
using qti::ril::logger::Logger;

class SystemLogTest : public HomeTest {
 protected:
    std::string path() const { return home() / "log_socket"; }
};

void say(void (*entry)(int, const char*, va_list), int priority, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    entry(priority, format, arguments);
    va_end(arguments);
}

TEST_F(SystemLogTest, LinesReachTheCopyWhole)
{
    say(vsyslog, LOG_USER | LOG_ERR, "%s %d", "plain", 1);
    say([](int priority, const char* format, va_list arguments) { __vsyslog_chk(priority, 1, format, arguments); },
        LOG_DEBUG, "fortified\n%s\n", "line");
    errno = ENOTDIR;
    say(vsyslog, LOG_DEBUG, "%m");
    Logger::log(LOG_ERR, "util", "%s %d", "text", 5);
    EXPECT_EQ(log(), (Lines{"3 plain 1", "7 fortified\\nline\\n", "7 Not a directory", "3 util: text 5"}));
    for (const std::size_t length : {1022u, 1023u, 1024u, 1025u, 100'000u}) {
        const std::string text(length, 'x');
        say(vsyslog, LOG_DEBUG, "%s", text.c_str());
        EXPECT_EQ(log(), Lines{"7 " + text}) << length;
    }
}

TEST_F(SystemLogTest, SystemsLogGetsItsHeadAndIsNotWaitedFor)
{
    const int listener = socket(AF_UNIX, SOCK_DGRAM, 0);
    sockaddr_un address{AF_UNIX, {}};
    path().copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    platform::SystemLog log(path().c_str(), "");
    log.write(LOG_ERR, "text\n of two lines");
    for (int i = 0; i < 2000; ++i) log.write(LOG_DEBUG, std::string(2000, 'x'));  // hangs where a full queue blocks
    char seen[4096] = {};
    EXPECT_GT(recv(listener, seen, sizeof seen - 1, MSG_DONTWAIT), 0);
    std::tm moment{};
    const char* rest = strptime(seen, "<11>%b %e %T ", &moment);
    ASSERT_NE(rest, nullptr) << seen;
    EXPECT_EQ(rest, program_invocation_short_name + std::string(": text\n of two lines"));
    close(listener);
}

TEST_F(SystemLogTest, AbsentEndsAreNoHindrance)
{
    testing::internal::CaptureStderr();
    setenv("RBK_LOGCAT", "/dev/full", 1);
    errno = ENOTDIR;
    say(vsyslog, LOG_DEBUG, "lost");
    EXPECT_EQ(errno, ENOTDIR) << "the caller's own";
    platform::SystemLog nowhere(path().c_str(), "");
    nowhere.write(LOG_ERR, "nobody hears this");
    platform::SystemLog standard_error(std::string(200, 'x').c_str(), "stderr");
    standard_error.write(LOG_ERR, "but this");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "rbk: RBK_LOGCAT: No space left on device; given up\n3 but this\n");
}

TEST_F(SystemLogTest, MutexStillKeepsOthersOutAfterItsDestructor)
{
    alignas(qtimutex::QtiSharedMutex) unsigned char room[sizeof(qtimutex::QtiSharedMutex)];
    auto* mutex = new (room) qtimutex::QtiSharedMutex;
    std::destroy_at(mutex);
    mutex->lock();
    auto late = std::async(std::launch::async, [mutex] { mutex->lock(); });
    EXPECT_EQ(late.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    mutex->unlock();
}

}  // namespace
}  // namespace rbk::test
