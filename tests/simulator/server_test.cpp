// The program rbk-modem and the embedded modem: their starts, their ends, and being killed.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <latch>

#include "simulator/base/complaints.h"
#include "simulator/embedded.h"
#include "support/lines.h"
#include "support/modem_process.h"
#include "support/program.h"
#include "support/wait_until.h"
#include "wire.h"

namespace rbk::sim {
namespace {

using std::filesystem::exists;
using test::Lines;
using test::ModemProcess;
using test::wait_until;

bool answers(WireClient client)
{
    return client.ask("extended 2 env 3: A1").starts_with("extended r2 01:00000000 ");
}

// A bound socket without a server, or with one.
Fd socket_at(const std::string& path, int kind, bool listening)
{
    sockaddr_un address{AF_UNIX, {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    Fd socket(::socket(AF_UNIX, kind | SOCK_CLOEXEC, 0));
    EXPECT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listening ? ::listen(socket.get(), 1) : 0, 0);
    return socket;
}

class ServerTest : public testing::Test {
 protected:
    std::string in_folder(const std::string& name) const { return (folder_.path() / name).string(); }
    TempDir folder_;
    std::string socket_ = in_folder("modem.sock");
};

// ---- Starts and ends ----

TEST_F(ServerTest, StartsOfManyLeaveOneServer)
{
    ModemProcess(folder_.path()).end(SIGKILL);
    std::vector<std::unique_ptr<ModemProcess>> servers(8);
    std::vector<std::jthread> starts;
    std::latch started(8), looked_at(1);  // a server ends with the thread that has started it
    for (auto& server : servers)
        starts.emplace_back([&] {
            server = std::make_unique<ModemProcess>(folder_.path(), Lines{}, ModemProcess::Start::may_fail);
            started.count_down();
            looked_at.wait();
        });
    started.wait();
    EXPECT_EQ(std::ranges::count_if(servers, [](const auto& server) { return server->is_ready(); }), 1);
    EXPECT_TRUE(answers(connect(socket_)));
    looked_at.count_down();
}

TEST_F(ServerTest, LeavesWhatOthersHavePutInItsPlace)
{
    std::string error;
    auto listener = Listener::open(socket_, error);
    std::filesystem::remove(socket_);
    const Fd successor = socket_at(socket_, SOCK_SEQPACKET, true);
    write_file(socket_ + ".new", "");
    std::filesystem::rename(socket_ + ".new", socket_ + ".lock");
    listener.reset();
    EXPECT_TRUE(exists(socket_));
    EXPECT_TRUE(exists(socket_ + ".lock"));
    // A server without a claim, and one of another kind.
    for (const int kind : {SOCK_SEQPACKET, SOCK_STREAM}) {
        const std::string path = in_folder("other" + std::to_string(kind));
        const Fd other = socket_at(path, kind, true);
        EXPECT_EQ(Listener::open(path, error), nullptr);
        EXPECT_EQ(error, path + ": a server listens there already");
    }
}

// As a user who may not connect: to root's sockets in a folder for all, or without root to a socket that nobody may.
TEST_F(ServerTest, TellsADeadSocketOfAnotherUserFromALivingServer)
{
    std::filesystem::permissions(folder_.path(), std::filesystem::perms(01777));
    write_file(in_folder("claimed.lock"), "");
    const Fd server = socket_at(in_folder("living"), SOCK_SEQPACKET, true);
    socket_at(in_folder("dead"), SOCK_SEQPACKET, false);
    for (const char* name : {"living", "dead"})
        std::filesystem::permissions(in_folder(name), std::filesystem::perms::none);
    std::vector<std::pair<const char*, const char*>> rows = {
        {"living", "living: a server of another user listens there"},
        {"dead", "dead: a dead socket of another user lies there"},
    };
    const bool as_root = ::geteuid() == 0;
    if (as_root) rows.emplace_back("claimed", "claimed.lock: belongs to another user");
    ASSERT_EQ(::seteuid(as_root ? 65534 : ::geteuid()), 0);
    for (const auto& [name, says] : rows) {
        std::string error;
        EXPECT_EQ(Listener::open(in_folder(name), error), nullptr);
        EXPECT_EQ(error, in_folder(says));
    }
    ASSERT_EQ(::seteuid(::getuid()), 0);
}

// The modem comes to its requests when it is no longer there, be it that it had answers unread or that it gets none.
TEST_F(ServerTest, HandlesAllThatAClientSentBeforeItWent)
{
    ModemProcess server(folder_.path());
    for (const char* leaves_unread : {"", "extended 2 env 3: A1"}) {
        WireClient going = connect(socket_);
        going.lookup(0);
        if (*leaves_unread != '\0') {
            going.send(leaves_unread);
            pollfd ready{going.socket().fd(), POLLIN, 0};
            ASSERT_EQ(::poll(&ready, 1, 20000), 1);
        }
        ::kill(server.pid(), SIGSTOP);
        for (const char* item : {"1", "2"})
            going.send("extended 2 env 2: 02 00 h" + std::string(item) + " @108 w1 @120 A1");
        going = WireClient({});
        ::kill(server.pid(), SIGCONT);
        EXPECT_TRUE(wait_until([&] { return exists(in_folder("modem/nv/0/2")); })) << leaves_unread;
        std::filesystem::remove(in_folder("modem/nv/0/2"));
    }
}

// ---- Descriptors ----

// Idle connections, and files half read, up to what there is.
TEST_F(ServerTest, TurnsClientsAwayBeforeTheModemsFilesRunShort)
{
    write_file(in_folder("modem/efs/0/long"), std::string(5000, 'x'));
    rlimit few{20, 140};  // the modem raises the first one
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    ModemProcess server(folder_.path());
    few.rlim_cur = few.rlim_max;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    std::vector<WireClient> clients;
    do {
        clients.push_back(connect(socket_));
        clients.back().send("router raw w10 w1 @20");
    } while (clients.back().next() == "+ 0");
    EXPECT_EQ(clients.back().next(), "closed");
    clients.pop_back();
    EXPECT_GT(clients.size(), 70u);
    for (WireClient& client : clients) client.ask("extended 2 env 2: 04 00 h0 05 \"/long\"");
    for (WireClient& client : clients)
        EXPECT_EQ(client.ask("extended 2 env 2: 02 00 h77 @108 w1 @120 A1"),
                  "extended r2 " + show_tlvs(tlvs_of("env 0: @444")));
    clients.pop_back();
    EXPECT_TRUE(answers(connect(socket_))) << "one has left, and no other can come";
    EXPECT_EQ(test::lines_of(server.errors()).size(), 1u) << server.errors();
}

// The one who waits in the queue would be reported again and again.
TEST_F(ServerTest, SleepsWhileTheMachineHasNoDescriptorLeft)
{
    ModemProcess server(folder_.path());
    rlimit before{};
    ASSERT_EQ(::prlimit(server.pid(), RLIMIT_NOFILE, nullptr, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(::prlimit(server.pid(), RLIMIT_NOFILE, &none, nullptr), 0);
    WireClient waiting = connect(socket_);
    EXPECT_TRUE(wait_until([&] { return server.errors().find("a client has to wait") != std::string::npos; }));
    clockid_t clock{};
    ASSERT_EQ(::clock_getcpuclockid(server.pid(), &clock), 0);
    const auto spent = processor_time(clock);
    std::this_thread::sleep_for(milliseconds(300));
    EXPECT_LT(processor_time(clock) - spent, milliseconds(75));
    ASSERT_EQ(::prlimit(server.pid(), RLIMIT_NOFILE, &before, nullptr), 0);
    EXPECT_TRUE(answers(std::move(waiting)));
}

// ---- The terminal ----

class TerminalTest : public ServerTest {
 protected:
    void SetUp() override
    {
        if (!Fd(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)).is_open())
            GTEST_SKIP() << "this machine has no pseudo terminals: " << std::strerror(errno);
    }
    // What the modem answers to this, read to the answer of a command behind it.
    static std::string answer(const Fd& terminal, const std::string& written)
    {
        const std::string text = written + "AT+END\r";
        const std::string end = "\r\nend\r\n";
        EXPECT_EQ(::write(terminal.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
        std::string read;
        pollfd ready{terminal.get(), POLLIN, 0};
        while (!read.ends_with(end) && ::poll(&ready, 1, 20000) > 0) {
            char bytes[4096];
            read.append(bytes,
                        static_cast<std::size_t>(std::max<ssize_t>(::read(terminal.get(), bytes, sizeof bytes), 0)));
        }
        EXPECT_TRUE(read.ends_with(end)) << read;
        return read.substr(0, read.size() - std::min(read.size(), end.size()));
    }
    Fd opened() const { return Fd(::open(path_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)); }

    std::string path_ = in_folder("smd");
};

TEST_F(TerminalTest, AnswersOpenersThatComeAndGoAndNeverItsOwnAnswers)
{
    // A modem with echo, an answer that no terminal's queue holds, and the longest command.
    const std::string longest = "AT" + std::string(2046, 'y');
    write_file(in_folder("s.toml"), "[at]\n'AT+END' = 'end'\n\"AT+CSQ\" = \"AT+CSQ\\n+CSQ: 20\\nOK\"\n'AT+LONG' = '" +
                                        std::string(60000, 'x') + "'\n" + longest + " = 'cut'\n");
    std::filesystem::create_symlink("/dev/pts/999999", path_);  // what a server leaves with a machine that goes down
    ModemProcess server(folder_.path(), {"--scenario", in_folder("s.toml"), "--at", path_});
    const std::pair<std::string, std::string> rows[] = {
        {"AT\r", "\r\nOK\r\n"},
        {"AT+CSQ\r\n", "\r\nAT+CSQ\r\n+CSQ: 20\r\nOK\r\n"},
        {"\r\n\r\n", ""},
        {"at+none\n", "\r\nERROR\r\n"},
        {"no command\n", ""},
        {"AT+LONG\r", "\r\n" + std::string(60000, 'x') + "\r\n"},
        {longest + std::string(1000, 'z') + "\r", "\r\ncut\r\n"},
        // What a peer sends back that reads it.
        {"\r\nAT+CSQ\r\n+CSQ: 20\r\nOK\r\n", ""},
        {"\r\nERROR\r\n", ""},
    };
    for (const auto& [written, answered] : rows) EXPECT_EQ(answer(opened(), written), answered) << written;
    const Fd terminal = opened();
    termios echoing{};
    ASSERT_EQ(::tcgetattr(terminal.get(), &echoing), 0);
    echoing.c_lflag |= ECHO;
    ASSERT_EQ(::tcsetattr(terminal.get(), TCSANOW, &echoing), 0);
    EXPECT_EQ(answer(terminal, "AT\r"), "\r\nOK\r\n") << "an opener that has switched echo on";
    ASSERT_EQ(::tcgetattr(terminal.get(), &echoing), 0);
    EXPECT_EQ(echoing.c_lflag & ECHO, 0u);
    EXPECT_EQ(server.end(SIGTERM), 0);
    EXPECT_FALSE(std::filesystem::is_symlink(path_));
}

// The number of an ended server's terminal has gone to somebody else by then; another's link is another's.
TEST_F(TerminalTest, ReplacesALinkOfAKilledServerAlone)
{
    ModemProcess killed(folder_.path(), {"--at", path_});
    const std::filesystem::path before = std::filesystem::read_symlink(path_);
    killed.end(SIGKILL);
    std::vector<Fd> terminals;
    while (!exists(before)) {
        terminals.emplace_back(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
        ASSERT_TRUE(terminals.back().is_open());
    }
    std::filesystem::create_symlink(before, in_folder("others"));
    ModemProcess refused(folder_.path(), {"--at", in_folder("others")}, ModemProcess::Start::may_fail);
    EXPECT_EQ(refused.errors().find("rbk-modem: " + in_folder("others") + ": a link to " + before.string()), 0u);
    EXPECT_EQ(refused.end(SIGTERM), 1);
    ModemProcess next(folder_.path(), {"--at", path_});
    EXPECT_NE(std::filesystem::read_symlink(path_), before);
}

// ---- What it says, and the embedded modem ----

TEST(Complaints, EachLineIsSaidOnceAndAFloodSilencesThemForAWhileAlone)
{
    std::vector<std::string> said;
    Complaints complaints([&](const std::string& line) { said.push_back(line); }, milliseconds(300));
    for (const char* line : {"one", "two", "one", "two"}) complaints.say(line);
    EXPECT_EQ(said, (std::vector<std::string>{"one", "two"}));
    const auto silenced = [&] { return said.back().ends_with("left out for now"); };
    for (int i = 0; i < 5000 || !silenced(); ++i) complaints.say("flood " + std::to_string(i));
    EXPECT_LE(said.size(), 2 * Complaints::kLinesOfAPeriod + 3) << "of two periods at the most";
    EXPECT_TRUE(wait_until([&] { return complaints.say("late"), said.back() == "late"; }));
    EXPECT_TRUE(said.end()[-2].ends_with(" lines were left out")) << said.end()[-2];
}

TEST(Embedded, LeavesSignalsToItsHostAndTellsOfABadScenario)
{
    const TempDir folder;
    std::vector<std::string> complaints;
    link::LinkSocket socket;
    const std::filesystem::path none = folder.path() / "none.toml";
    auto modem = start_embedded_modem({folder.path() / "state", none}, socket, complaints);
    ASSERT_NE(modem, nullptr);
    EXPECT_EQ(complaints, std::vector{none.string() + ": expected a file that can be read: No such file or directory"});
    WireClient client(std::move(socket));
    EXPECT_EQ(client.lookup(0), 0u);
    // Blocked here, it waits: had the modem's thread taken it, that would have been before the next answer.
    std::signal(SIGUSR1, [](int) {});
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    ::kill(::getpid(), SIGUSR1);
    client.lookup(0);
    ::sigpending(&signals);
    EXPECT_EQ(sigismember(&signals, SIGUSR1), 1);
    modem.reset();
    EXPECT_EQ(client.next(), "closed");
}

}  // namespace
}  // namespace rbk::sim
