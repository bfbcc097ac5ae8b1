// The platform's log: both its ends, the radio daemon's logger, and the mutex that outlives its destructor.
#include "platform/linux/system_log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <qti_logger.h>
#include <qti_shared_mutex.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <memory>
#include <thread>

#include "platform/linux/environment.h"
#include "platform/linux/link_trace.h"
#include "support/home.h"

extern "C" void __vsyslog_chk(int priority, int flag, const char* format, va_list arguments);

namespace rbk::test {
namespace {

using Lines = std::vector<std::string>;

// A system's log that listens, and reads only when it is asked to.
class Listener {
 public:
    explicit Listener(const std::string& path) : fd_(socket(AF_UNIX, SOCK_DGRAM, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, path.c_str());
        EXPECT_EQ(bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    ~Listener() { close(fd_); }
    std::string next() const
    {
        char room[4096];
        const ssize_t length = recv(fd_, room, sizeof room, MSG_DONTWAIT);
        return length < 0 ? "(nothing)" : std::string(room, static_cast<std::size_t>(length));
    }

 private:
    int fd_;
};

class SystemLogTest : public HomeTest {
 protected:
    std::string socket_path() const { return home() / "log_socket"; }
};

void say(void (*entry)(int, const char*, va_list), int priority, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    entry(priority, format, arguments);
    va_end(arguments);
}

TEST_F(SystemLogTest, BothEntriesOfTheCLibraryReachTheCopy)
{
    say(vsyslog, LOG_USER | LOG_ERR, "%s %d", "plain", 1);
    say([](int priority, const char* format, va_list arguments) { __vsyslog_chk(priority, 1, format, arguments); },
        LOG_DEBUG, "fortified\n%s\n", "line");
    EXPECT_EQ(log(), (Lines{"3 plain 1", "7 fortified\\nline\\n"}));
}

TEST_F(SystemLogTest, LongLinesStayWhole)
{
    for (const std::size_t length : {1022u, 1023u, 1024u, 1025u, 100'000u}) {
        const std::string text(length, 'x');
        say(vsyslog, LOG_DEBUG, "%s", text.c_str());
        EXPECT_EQ(log(), Lines{"7 " + text}) << length;
    }
}

TEST_F(SystemLogTest, ErrorNumberPassesThrough)
{
    errno = ENOTDIR;
    say(vsyslog, LOG_DEBUG, "%m");
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_EQ(log(), Lines{"7 Not a directory"});
}

TEST_F(SystemLogTest, LoggerPutsItsTagBeforeTheText)
{
    qti::ril::logger::Logger::log(LOG_ERR, "util", "%s %d", "text", 5);
    EXPECT_EQ(log(), Lines{"3 util: text 5"});
    std::string other;
    std::thread([&] {
        pthread_setname_np(pthread_self(), "PDC_TEST");
        other = qti::ril::logger::qcril_get_thread_name();
    }).join();
    EXPECT_EQ(other, "PDC_TEST");
    EXPECT_NE(qti::ril::logger::qcril_get_thread_name(), other);
}

TEST_F(SystemLogTest, SystemsLogGetsFacilityMomentAndTag)
{
    const Listener listener(socket_path());
    platform::SystemLog log(socket_path().c_str(), "");
    log.write(LOG_ERR, "text\n of two lines");
    const std::string seen = listener.next();
    ASSERT_TRUE(seen.starts_with("<11>")) << seen;
    std::tm moment{};
    const char* rest = strptime(seen.c_str() + 4, "%b %e %T ", &moment);
    ASSERT_NE(rest, nullptr) << seen;
    EXPECT_EQ(rest, program_invocation_short_name + std::string(": text\n of two lines"));
}

TEST_F(SystemLogTest, SystemsLogThatDoesNotReadIsNotWaitedFor)
{
    const Listener listener(socket_path());
    platform::SystemLog log(socket_path().c_str(), "");
    const std::string text(2000, 'x');
    for (int i = 0; i < 2000; ++i) log.write(LOG_DEBUG, text);  // hangs here where a full queue blocks
    EXPECT_TRUE(listener.next().ends_with(text));
}

TEST_F(SystemLogTest, AbsentEndsAreNoHindrance)
{
    platform::SystemLog nowhere(socket_path().c_str(), "");
    nowhere.write(LOG_ERR, "nobody hears this");
    testing::internal::CaptureStderr();
    platform::SystemLog refused(std::string(200, 'x').c_str(), home());
    refused.write(LOG_ERR, "nor this");
    platform::SystemLog standard_error(socket_path().c_str(), "stderr");
    standard_error.write(LOG_ERR, "but this");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "rbk: RBK_LOGCAT=" + home().string() + ": Is a directory\n3 but this\n");
}

// The copy of the log, the trace and complaints: none is worth the command's life, or a second complaint.
TEST_F(SystemLogTest, WhatCannotBeWrittenIsGivenUpWithOneComplaint)
{
    const std::string pipe = home() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string full = home() / "full";
    write_file(full, std::string(5000, 'x'));
    const rlimit longest{5000, RLIM_INFINITY};  // bytes of a file
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &longest), 0);
    const struct {
        const char* catches;
        std::string path;
        bool read_at_first;
        std::string complaint;
    } rows[] = {
        {"EndedByItsReader", pipe, true, ": Broken pipe; given up"},
        {"WaitsForAReaderForEver", pipe, false, "=" + pipe + ": nobody reads it"},
        {"EndedByTheLongestFile", full, false, ": File too large; given up"},
        {"ComplainsOfAFullDiskEachTime", "/dev/full", false, ": No space left on device; given up"},
    };
    for (const auto& row : rows) {
        const int reader = row.read_at_first ? open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC) : -1;
        testing::internal::CaptureStderr();
        platform::SystemLog log(socket_path().c_str(), row.path);
        platform::LinkTrace trace(row.path);
        close(reader);
        for (int i = 0; i < 2; ++i) {
            log.write(LOG_ERR, "line");
            const platform::MutexLock lock(trace.mutex());
            trace.diag(platform::Direction::to_modem, {});
        }
        EXPECT_FALSE(trace.is_on()) << row.catches;
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  "rbk: RBK_LOGCAT" + row.complaint + "\nrbk: RBK_TRACE" + row.complaint + "\n")
            << row.catches;
    }
    int broken[2];
    ASSERT_EQ(::pipe(broken), 0);
    close(broken[0]);
    const int standard_error = dup(STDERR_FILENO);
    dup2(broken[1], STDERR_FILENO);
    platform::complain("nobody hears this");
    dup2(standard_error, STDERR_FILENO);
    sigset_t left;
    sigpending(&left);
    EXPECT_TRUE(sigisemptyset(&left));
    pthread_sigmask(SIG_BLOCK, nullptr, &left);
    EXPECT_TRUE(sigisemptyset(&left)) << "a command without a reader would not end";
}

TEST_F(SystemLogTest, MutexStaysUsableAfterItsDestructor)
{
    alignas(qtimutex::QtiSharedMutex) unsigned char room[sizeof(qtimutex::QtiSharedMutex)];
    auto* mutex = new (room) qtimutex::QtiSharedMutex;
    mutex->lock();
    std::destroy_at(mutex);
    int step = 0;
    std::thread late([&] {
        mutex->lock();
        step = 2;
        mutex->unlock();
    });
    step = 1;
    mutex->unlock();
    late.join();
    EXPECT_EQ(step, 2);
}

}  // namespace
}  // namespace rbk::test
