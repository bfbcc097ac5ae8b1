// The program rbk-modem and the embedded modem: their starts, their ends, and being killed.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <ctime>
#include <sstream>

#include "simulator/complaints.h"
#include "simulator/embedded.h"
#include "support/modem_process.h"
#include "support/program.h"
#include "support/wait_until.h"
#include "wire.h"

namespace rbk::sim {
namespace {

using std::filesystem::exists;
using test::ModemProcess;
using test::wait_until;

constexpr char kEcho[] = "extended 2 env 3: A1";

bool answers(WireClient client)
{
    return client.ask(kEcho).starts_with("extended r2 01:00000000 ");
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
    // Not waiting for its "ready". -1: without standard output.
    pid_t start_with_output(int output) const
    {
        const std::string program = test::bin_path("rbk-modem");
        const std::string address = "unix:" + socket_;
        const std::string state = in_folder("state");
        const pid_t child = ::fork();
        if (child != 0) return child;
        output < 0 ? ::close(STDOUT_FILENO) : ::dup2(output, STDOUT_FILENO);
        ::execl(program.c_str(), program.c_str(), "--listen", address.c_str(), "--state", state.c_str(), nullptr);
        ::_exit(127);
    }
    static int ended(pid_t child)
    {
        int status = -1;
        ::kill(child, SIGTERM);
        ::waitpid(child, &status, 0);
        return status;
    }

    TempDir folder_;
    std::string socket_ = in_folder("modem.sock");
};

// ---- Starts and ends ----

TEST_F(ServerTest, EndsOnASignalWithoutItsSocketAndNamesUnmatchedRules)
{
    const std::string scenario = in_folder("s.toml");
    write_file(scenario,
               "[[fault]]\nservice = 'extended'\nmessage = 3\naction = 'silent'\n"
               "[[fault]]\nservice = 'extended'\nnth = 9\naction = 'silent'\n"
               "[[fault]]\nservice = 'extended'\nnth = 1\naction = 'delay'\nms = 0\n");
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        ModemProcess server(folder_.path(), {"--scenario", scenario});
        EXPECT_TRUE(answers(connect(socket_)));
        EXPECT_EQ(server.end(signal), 0);
        const std::string rule = ": the fault rule for extended never matched";
        EXPECT_EQ(server.errors(), "rbk-modem: " + scenario + ":1" + rule + "\nrbk-modem: " + scenario + ":5" + rule +
                                       " often enough: 1 of 9 times\n");
        EXPECT_FALSE(exists(socket_));
        EXPECT_FALSE(exists(socket_ + ".lock"));
    }
}

// Nothing that a start waits for, here the room for its "ready", keeps a signal from ending it.
TEST_F(ServerTest, EndsOnASignalWhereverItWaits)
{
    int out[2];
    ASSERT_EQ(::pipe2(out, O_CLOEXEC | O_NONBLOCK), 0);
    const Fd reader(out[0]);
    const Fd writer(out[1]);
    while (::write(writer.get(), "full", 1) == 1) continue;
    ::fcntl(writer.get(), F_SETFL, 0);
    const pid_t child = start_with_output(writer.get());
    EXPECT_TRUE(wait_until([&] { return exists(in_folder("state")); }));
    EXPECT_EQ(ended(child), 0);
    EXPECT_FALSE(exists(socket_));
}

TEST_F(ServerTest, WithoutStandardOutputItsReadyGoesNowhere)
{
    const pid_t child = start_with_output(-1);
    std::string error;
    link::LinkSocket socket;
    EXPECT_TRUE(wait_until([&] { return (socket = link::LinkSocket::connect_unix(socket_, error)).is_open(); }));
    EXPECT_TRUE(answers(WireClient(std::move(socket))));
    EXPECT_EQ(read_file(socket_ + ".lock"), "") << "the first file that it opened";
    EXPECT_EQ(ended(child), 0);
}

TEST_F(ServerTest, TakesOverADeadSocketAndRefusesALivingOne)
{
    // Whoever may open the folder can lock it, and delays nobody.
    const Fd watcher(::open(folder_.path().c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(watcher.get(), LOCK_EX), 0);
    ModemProcess first(folder_.path());
    const test::RunResult second = test::run({test::bin_path("rbk-modem"), "--listen", first.address()});
    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.err, "rbk-modem: " + socket_ + ": a server listens there already\n");
    EXPECT_TRUE(answers(connect(socket_))) << "the refused one has removed the socket";
    first.end(SIGKILL);
    EXPECT_TRUE(exists(socket_));
    std::vector<std::unique_ptr<ModemProcess>> servers(8);
    std::vector<std::thread> starts;
    for (auto& server : servers)
        starts.emplace_back([&] {
            server = std::make_unique<ModemProcess>(folder_.path(), std::vector<std::string>{},
                                                    ModemProcess::Start::may_fail);
        });
    for (std::thread& start : starts) start.join();
    EXPECT_EQ(std::count_if(servers.begin(), servers.end(), [](const auto& server) { return server->is_ready(); }), 1);
    EXPECT_TRUE(answers(connect(socket_)));
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
}

// As a user who may not connect: to root's sockets in a folder for all, or without root to a socket that nobody may.
TEST_F(ServerTest, TellsADeadSocketOfAnotherUserFromALivingServer)
{
    const std::string living = in_folder("living");
    const std::string dead = in_folder("dead");
    const std::string claimed = in_folder("claimed");
    std::filesystem::permissions(folder_.path(), std::filesystem::perms(01777));
    write_file(claimed + ".lock", "");
    const Fd server = socket_at(living, SOCK_SEQPACKET, true);
    socket_at(dead, SOCK_SEQPACKET, false);
    for (const std::string& path : {living, dead}) std::filesystem::permissions(path, std::filesystem::perms::none);
    std::vector<std::pair<std::string, std::string>> rows = {
        {living, living + ": a server of another user listens there"},
        {dead, dead + ": a dead socket of another user lies there"},
    };
    const bool as_root = ::geteuid() == 0;
    if (as_root) rows.emplace_back(claimed, claimed + ".lock: belongs to another user");
    ASSERT_EQ(::seteuid(as_root ? 65534 : ::geteuid()), 0);
    for (const auto& [path, says] : rows) {
        std::string error;
        EXPECT_EQ(Listener::open(path, error), nullptr);
        EXPECT_EQ(error, says);
    }
    ASSERT_EQ(::seteuid(::getuid()), 0);
}

TEST_F(ServerTest, RefusesWhatItCantServe)
{
    write_file(in_folder("bad.toml"), "[nv]\n\"0/1\" = 'x'\n");
    write_file(in_folder("file"), "precious");
    write_file(in_folder("held.lock"), "");
    const Fd holder(::open(in_folder("held.lock").c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(holder.get(), LOCK_EX), 0);
    for (const char* link : {"link", "linked.lock"}) std::filesystem::create_symlink("file", in_folder(link));
    const Fd other = socket_at(in_folder("stream"), SOCK_STREAM, true);
    // What stands behind the program, and what it says; F is the folder.
    const std::pair<std::string, std::string> rows[] = {
        {"--listen unix:F/s --scenario F/bad.toml", "F/bad.toml:2: 0/1: expected hex bytes"},
        {"--listen unix:F/file", "F/file: something that isn't a socket"},
        {"--listen unix:F/stream", "F/stream: a server listens there already"},
        {"--listen unix:F/held", "F/held: a server listens there already"},
        {"--listen unix:F/linked", "F/linked.lock: something that isn't a lock"},
        {"--listen unix:F/s --at F/file", "F/file: something that isn't a link"},
        {"--listen unix:F/s --at F/link", "F/link: a link to file lies"},
        {"--listen unix:F/s --at F/held", "F/held: a server listens there"},
        {"--listen unix:F/s --at F/s", "F/s: the socket and the terminal's link can't have one place"},
        {"--listen unix:F/none/s", "F/none/s: No such file"},
        {"--listen unix:/" + std::string(200, 'x'), "a socket's path has 1 to 107 bytes"},
        {"--listen F/s", "expected unix:PATH"},
        {"--state F/state", "--listen is required"},
        {"--listen unix:F/s --colour", "--colour"},
        {"--listen unix:F/s --state F/file", "F/file: Not a directory"},
        {"--listen unix:F/s --state F/file/\x1B[1m", "F/file/\\x1B[1m: Not a directory"},
        {"--listen unix:F/s --state /proc/modem/state", "/proc/modem: No such file or directory"},
    };
    const auto in_words = [&](std::string text) {
        for (std::size_t at; (at = text.find("F/")) != std::string::npos;) text.replace(at, 1, folder_.path().string());
        return text;
    };
    for (const auto& [arguments, says] : rows) {
        SCOPED_TRACE(arguments);
        std::istringstream words(in_words(arguments));
        std::vector<std::string> command{test::bin_path("rbk-modem")};
        for (std::string word; words >> word;) command.push_back(word);
        const test::RunResult result = test::run(command, {{{"RBK_HOME", in_folder("home")}}});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find(in_words(says)), std::string::npos) << result.err;
    }
    EXPECT_EQ(read_file(in_folder("file")), "precious");
    EXPECT_TRUE(std::filesystem::is_symlink(in_folder("link")));
    EXPECT_FALSE(exists(in_folder("home"))) << "a refused start has touched the state";
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
    WireClient first = connect(socket_);
    first.lookup(1);
    rlimit before{};
    ASSERT_EQ(::prlimit(server.pid(), RLIMIT_NOFILE, nullptr, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(::prlimit(server.pid(), RLIMIT_NOFILE, &none, nullptr), 0);
    WireClient second = connect(socket_);
    EXPECT_TRUE(wait_until([&] { return server.errors().find("a client has to wait") != std::string::npos; }));
    clockid_t clock{};
    ASSERT_EQ(::clock_getcpuclockid(server.pid(), &clock), 0);
    const auto spent = [clock] {
        timespec time{};
        ::clock_gettime(clock, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    };
    const auto at_first = spent();
    std::this_thread::sleep_for(milliseconds(300));
    EXPECT_LT(spent() - at_first, milliseconds(75));
    ASSERT_EQ(::prlimit(server.pid(), RLIMIT_NOFILE, &before, nullptr), 0);
    EXPECT_TRUE(answers(std::move(second)));
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
    {
        ModemProcess refused(folder_.path(), {"--at", in_folder("others")}, ModemProcess::Start::may_fail);
        EXPECT_TRUE(
            refused.errors().starts_with("rbk-modem: " + in_folder("others") + ": a link to " + before.string()));
        EXPECT_EQ(refused.end(SIGTERM), 1);
    }
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
    for (int i = 0; i < 5000 && !silenced(); ++i) complaints.say("flood " + std::to_string(i));
    ASSERT_TRUE(silenced());
    EXPECT_LE(said.size(), 2 * Complaints::kLinesOfAPeriod + 2) << "of two periods at the most";
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
    EXPECT_TRUE(client.lookup(0).empty());
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
