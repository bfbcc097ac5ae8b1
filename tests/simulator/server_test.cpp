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
#include <fstream>
#include <set>

#include "simulator/complaints.h"
#include "simulator/embedded.h"
#include "support/modem_process.h"
#include "support/program.h"
#include "support/wait_until.h"
#include "wire_client.h"

namespace rbk::sim {
namespace {

using test::ModemProcess;

WireClient connect(const std::string& path)
{
    std::string error;
    link::LinkSocket socket = link::LinkSocket::connect_unix(path, error);
    EXPECT_TRUE(socket.is_open()) << error;
    return WireClient(std::move(socket));
}

class ServerTest : public testing::Test {
 protected:
    // Not waiting for its "ready". -1: without standard output.
    pid_t start_with_output(int output) const
    {
        const std::string program = test::bin_path("rbk-modem");
        const std::string address = "unix:" + socket_;
        const std::string state = (folder_.path() / "state").string();
        const pid_t child = ::fork();
        if (child != 0) return child;
        output < 0 ? ::close(STDOUT_FILENO) : ::dup2(output, STDOUT_FILENO);
        ::execl(program.c_str(), program.c_str(), "--listen", address.c_str(), "--state", state.c_str(), nullptr);
        ::_exit(127);
    }

    TempDir folder_;
    std::string socket_ = (folder_.path() / "modem.sock").string();
};

TEST_F(ServerTest, EndsOnASignalWithoutItsSocketAndNamesUnmatchedRules)
{
    const std::string scenario = (folder_.path() / "s.toml").string();
    write_file(scenario, "[[fault]]\nservice = 'extended'\nmessage = 3\naction = 'silent'\n");
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        ModemProcess server(folder_.path(), {"--scenario", scenario});
        EXPECT_EQ(connect(socket_).envelope(0, Bytes{1}).data_len, 1u);
        EXPECT_EQ(server.end(signal), 0);
        EXPECT_EQ(server.errors(), "rbk-modem: " + scenario + ":1: the fault rule for extended never matched\n");
        EXPECT_FALSE(std::filesystem::exists(socket_));
        EXPECT_FALSE(std::filesystem::exists(socket_ + ".lock"));
    }
}

// Nothing that a start waits for, here the room for its "ready", keeps a signal from ending it.
TEST_F(ServerTest, EndsOnASignalWhereverItWaits)
{
    int out[2];
    ASSERT_EQ(::pipe2(out, O_CLOEXEC | O_NONBLOCK), 0);
    const Fd reader(out[0]);
    while (::write(out[1], "full", 1) == 1) continue;
    ::fcntl(out[1], F_SETFL, 0);
    const pid_t child = start_with_output(out[1]);
    ::close(out[1]);
    EXPECT_TRUE(test::wait_until([&] { return std::filesystem::exists(folder_.path() / "state"); }));
    ::kill(child, SIGTERM);
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_FALSE(std::filesystem::exists(socket_));
}

TEST_F(ServerTest, WithoutStandardOutputItsReadyGoesNowhere)
{
    const pid_t child = start_with_output(-1);
    std::string error;
    link::LinkSocket socket;
    const auto connect = [&] { return (socket = link::LinkSocket::connect_unix(socket_, error)).is_open(); };
    EXPECT_TRUE(test::wait_until(connect)) << error;
    EXPECT_EQ(WireClient(std::move(socket)).envelope(0, Bytes{1}).data_len, 1u);
    EXPECT_TRUE(test::read_file(socket_ + ".lock").empty()) << "the first file that it opened";
    ::kill(child, SIGTERM);
    ::waitpid(child, nullptr, 0);
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
    EXPECT_EQ(connect(socket_).envelope(0, Bytes{1}).data_len, 1u) << "the refused one has removed the socket";
    first.end(SIGKILL);
    EXPECT_TRUE(std::filesystem::exists(socket_));
    ModemProcess third(folder_.path());
}

// As a user who may not connect: to root's sockets in a folder for all, or without root to a socket that nobody may.
TEST_F(ServerTest, TellsADeadSocketOfAnotherUserFromALivingServer)
{
    const std::string living = (folder_.path() / "living").string();
    const std::string dead = (folder_.path() / "dead").string();
    const std::string claimed = (folder_.path() / "claimed").string();
    std::filesystem::permissions(folder_.path(), std::filesystem::perms(01777));
    write_file(claimed + ".lock", "");
    Fd sockets[2];
    for (const std::string& path : {living, dead}) {
        Fd& socket = sockets[path == dead];
        sockaddr_un address{AF_UNIX, {}};
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        socket = Fd(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        ASSERT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        std::filesystem::permissions(path, std::filesystem::perms::none);
    }
    ASSERT_EQ(::listen(sockets[0].get(), 1), 0);
    sockets[1] = Fd();
    struct {
        std::string path;
        std::string says;
        bool as_root_alone;
    } const rows[] = {
        {living, living + ": a server of another user listens there", false},
        {dead, dead + ": a dead socket of another user lies there", false},
        {claimed, claimed + ".lock: belongs to another user", true},
    };
    const bool as_root = ::geteuid() == 0;
    ASSERT_EQ(::seteuid(as_root ? 65534 : ::geteuid()), 0);
    for (const auto& row : rows) {
        if (row.as_root_alone && !as_root) continue;
        std::string error;
        EXPECT_EQ(Listener::open(row.path, error), nullptr);
        EXPECT_EQ(error, row.says);
    }
    ASSERT_EQ(::seteuid(::getuid()), 0);
}

TEST_F(ServerTest, StartsOfManyLeaveOneServer)
{
    ModemProcess(folder_.path()).end(SIGKILL);
    std::vector<std::unique_ptr<ModemProcess>> servers(8);
    std::vector<std::thread> starts;
    for (auto& server : servers) {
        starts.emplace_back([&] {
            server = std::make_unique<ModemProcess>(folder_.path(), std::vector<std::string>{},
                                                    ModemProcess::Start::may_fail);
        });
    }
    for (std::thread& start : starts) start.join();
    EXPECT_EQ(std::count_if(servers.begin(), servers.end(), [](const auto& server) { return server->is_ready(); }), 1);
    EXPECT_EQ(connect(socket_).envelope(0, Bytes{1}).data_len, 1u);
}

TEST_F(ServerTest, RefusesWhatItCantServe)
{
    const auto in_folder = [&](const char* name) { return (folder_.path() / name).string(); };
    const std::string bad = in_folder("bad.toml");
    const std::string file = in_folder("file");
    const std::string stream = in_folder("stream");
    const std::string state = in_folder("state");
    write_file(bad, "[nv]\n\"0/1\" = 'x'\n");
    write_file(file, "precious");
    const std::string held = in_folder("held");
    write_file(held + ".lock", "");
    const Fd holder(::open((held + ".lock").c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(holder.get(), LOCK_EX), 0);
    const std::string linked = in_folder("linked");
    std::filesystem::create_symlink(file, linked);
    std::filesystem::create_symlink(file, linked + "2.lock");
    sockaddr_un address{AF_UNIX, {}};
    stream.copy(address.sun_path, sizeof address.sun_path - 1);
    const Fd other(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::bind(other.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(other.get(), 1), 0);
    struct {
        const char* catches;
        std::vector<std::string> arguments;
        std::string says;
    } const rows[] = {
        {"BadScenario", {"--listen", "unix:" + socket_, "--scenario", bad}, bad + ":2: 0/1: expected hex bytes"},
        {"FileAsSocket", {"--listen", "unix:" + file}, file + ": something that isn't a socket"},
        {"AnotherKindOfServer", {"--listen", "unix:" + stream}, stream + ": a server listens there already"},
        {"StartingServer", {"--listen", "unix:" + held}, held + ": a server listens there already"},
        {"LinkAsLock", {"--listen", "unix:" + linked + "2"}, linked + "2.lock: something that isn't a lock"},
        {"FileAsTerminal", {"--listen", "unix:" + socket_, "--at", file}, file + ": something that isn't a link"},
        {"AnotherLink", {"--listen", "unix:" + socket_, "--at", linked}, linked + ": a link to " + file + " lies"},
        {"TerminalOfAnotherModem", {"--listen", "unix:" + socket_, "--at", held}, held + ": a server listens there"},
        {"NoFolder", {"--listen", "unix:" + in_folder("none/socket")}, "none/socket: No such file"},
        {"PathTooLong", {"--listen", "unix:/" + std::string(200, 'x')}, "a socket's path has 1 to 107 bytes"},
        {"NoScheme", {"--listen", socket_}, "expected unix:PATH"},
        {"NoListen", {}, "--listen is required"},
        {"UnknownOption", {"--listen", "unix:" + socket_, "--colour"}, "--colour"},
    };
    for (const auto& row : rows) {
        std::vector<std::string> command{test::bin_path("rbk-modem"), "--state", state};
        command.insert(command.end(), row.arguments.begin(), row.arguments.end());
        const test::RunResult result = test::run(command);
        EXPECT_EQ(result.status, 1) << row.catches;
        EXPECT_NE(result.err.find(row.says), std::string::npos) << row.catches << result.err;
    }
    EXPECT_EQ(read_file(file).size(), 8u);
    EXPECT_EQ(std::filesystem::read_symlink(linked), file);
    EXPECT_FALSE(std::filesystem::exists(state)) << "a refused start has touched the state";
}

TEST_F(ServerTest, AKillAmongWritesLosesNothingThatWasAcknowledged)
{
    // Content that shows when it is torn: all bytes alike.
    const auto content = [](int round) { return Bytes(400, static_cast<std::uint8_t>(1 + round % 250)); };
    int round = 0;
    for (int life = 0; life < 8; ++life) {
        ModemProcess server(folder_.path());
        WireClient client = connect(socket_);
        std::atomic<int> acknowledged = round;
        std::thread writer([&] {
            const link::Address to = client.extended();
            for (int next = round + 1;; ++next) {
                client.send(to, 2, envelope_tlvs(2, 544, nv_record(kNvWrite, 0, 77, content(next)).bytes));
                const auto answer = client.receive();
                if (!answer) return;
                acknowledged = next;
            }
        });
        EXPECT_TRUE(test::wait_until([&] { return acknowledged >= round + 3; }));
        std::this_thread::sleep_for(std::chrono::milliseconds(7 * life));
        server.end(SIGKILL);
        writer.join();
        const Bytes stored = read_file(folder_.path() / "modem/nv/0/77");
        ASSERT_EQ(stored.size(), 400u);
        EXPECT_EQ(std::set<std::uint8_t>(stored.begin(), stored.end()).size(), 1u) << "torn";
        EXPECT_TRUE(stored == content(acknowledged) || stored == content(acknowledged + 1)) << "lost";
        round = acknowledged + 1;
    }
}

class TerminalTest : public ServerTest {
 protected:
    void SetUp() override
    {
        if (!Fd(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)).is_open())
            GTEST_SKIP() << "this machine has no pseudo terminals: " << std::strerror(errno);
        // A modem with echo, and an answer that no terminal's queue holds.
        write_file(scenario_,
                   "[at]\n\"AT+CSQ\" = \"AT+CSQ\\n+CSQ: 20\\nOK\"\n\"AT+LONG\" = '" + std::string(200000, 'x') + "'\n");
    }
    // What comes until nothing more does; waits for the first byte of something that is due.
    static std::string read(int terminal, bool due)
    {
        std::string text;
        pollfd ready{terminal, POLLIN, 0};
        while (::poll(&ready, 1, text.empty() && due ? 5000 : 100) > 0) {
            char bytes[4096];
            text.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(::read(terminal, bytes, sizeof bytes), 0)));
        }
        return text;
    }

    std::string scenario_ = (folder_.path() / "s.toml").string();
    std::string path_ = (folder_.path() / "smd").string();
};

TEST_F(TerminalTest, AnswersOpenersThatComeAndGo)
{
    std::filesystem::create_symlink("/dev/pts/999999", path_);  // what a server leaves with a machine that goes down
    ModemProcess server(folder_.path(), {"--scenario", scenario_, "--at", path_});
    struct {
        std::string written;
        std::string answer;
    } const rows[] = {
        {"AT+CSQ\r\n", "\r\nAT+CSQ\r\n+CSQ: 20\r\nOK\r\n"},
        {"AT\r", "\r\nOK\r\n"},
        {"\r\n\r\n", ""},
        {"at+none\n", "\r\nERROR\r\n"},
        {"no command\n", ""},
        {"AT+LONG\r", "\r\n" + std::string(200000, 'x') + "\r\n"},
    };
    for (const auto& row : rows) {
        std::ofstream(path_) << row.written;
        const Fd reader(::open(path_.c_str(), O_RDWR | O_NOCTTY));
        EXPECT_EQ(read(reader.get(), !row.answer.empty()), row.answer) << row.written;
    }
    EXPECT_EQ(server.end(SIGTERM), 0);
    EXPECT_FALSE(std::filesystem::is_symlink(path_));
}

TEST_F(TerminalTest, LeavesATerminalThatSomebodyElseServes)
{
    const Fd others(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    char terminal[64];
    ASSERT_EQ(::ptsname_r(others.get(), terminal, sizeof terminal), 0);
    std::filesystem::create_symlink(terminal, path_);
    ModemProcess server(folder_.path(), {"--at", path_}, ModemProcess::Start::may_fail);
    EXPECT_EQ(server.errors().find("rbk-modem: " + path_ + ": a link to " + terminal), 0u) << server.errors();
    EXPECT_EQ(server.end(SIGTERM), 1);
}

TEST_F(TerminalTest, NeverAnswersItsOwnAnswers)
{
    ModemProcess server(folder_.path(), {"--scenario", scenario_, "--at", path_});
    const Fd terminal(::open(path_.c_str(), O_RDWR | O_NOCTTY));
    for (const std::string command : {"AT+CSQ\r\n", "AT+NONE\r\n"}) {
        ASSERT_EQ(::write(terminal.get(), command.data(), command.size()), static_cast<ssize_t>(command.size()));
        const std::string answer = read(terminal.get(), true);
        ASSERT_EQ(::write(terminal.get(), answer.data(), answer.size()), static_cast<ssize_t>(answer.size()));
        EXPECT_EQ(read(terminal.get(), false), "") << "a peer that sends back what it reads";
    }
    termios echoing{};
    ASSERT_EQ(::tcgetattr(terminal.get(), &echoing), 0);
    echoing.c_lflag |= ECHO;
    ASSERT_EQ(::tcsetattr(terminal.get(), TCSANOW, &echoing), 0);
    ASSERT_EQ(::write(terminal.get(), "AT\r", 3), 3);
    EXPECT_EQ(read(terminal.get(), true), "\r\nOK\r\n") << "an opener that has switched echo on";
    ASSERT_EQ(::tcgetattr(terminal.get(), &echoing), 0);
    EXPECT_EQ(echoing.c_lflag & ECHO, 0u);
}

// The number of the killed one's terminal has gone to somebody else by then.
TEST_F(TerminalTest, ALinkIsReplacedOnceItsServerWasKilled)
{
    ModemProcess killed(folder_.path(), {"--at", path_});
    const std::filesystem::path before = std::filesystem::read_symlink(path_);
    killed.end(SIGKILL);
    std::vector<Fd> terminals;
    while (!std::filesystem::exists(before)) {
        terminals.emplace_back(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
        ASSERT_TRUE(terminals.back().is_open());
    }
    ModemProcess next(folder_.path(), {"--at", path_});
    EXPECT_TRUE(std::filesystem::exists(path_));
}

// Idle connections, and files half read, up to what there is.
TEST_F(ServerTest, TurnsClientsAwayBeforeTheModemsFilesRunShort)
{
    write_file(folder_.path() / "modem/efs/0/long", std::string(5000, 'x'));
    rlimit few{20, 140};  // the modem raises the first one
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    ModemProcess server(folder_.path());
    few.rlim_cur = few.rlim_max;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    std::vector<WireClient> clients;
    do {
        clients.push_back(connect(socket_));
        // The end of an empty answer, or of the connection.
        clients.back().send_raw({0, QRTR_PORT_CTRL}, link::pack_control({QRTR_TYPE_NEW_LOOKUP, 1, 0, {}}));
    } while (clients.back().receive());
    EXPECT_TRUE(clients.back().closed());
    clients.pop_back();
    EXPECT_GT(clients.size(), 70u);
    for (WireClient& client : clients) client.envelope(2, efs_record(kEfsRead, 0, "/long").bytes);
    for (WireClient& client : clients) EXPECT_EQ(nv_write(client, 0, 77, Bytes{1, 2, 3}), 0);
    clients.pop_back();
    EXPECT_FALSE(connect(socket_).lookup(0).empty()) << "one has left, and no other can come";
    EXPECT_EQ(test::lines_of(server.errors()).size(), 1u) << server.errors();
}

// ---- What it says ----

TEST(Complaints, EachLineIsSaidOnceAndAFloodSilencesThemForAWhileAlone)
{
    std::vector<std::string> said;
    Complaints complaints([&](const std::string& line) { said.push_back(line); }, std::chrono::milliseconds(500));
    for (const char* line : {"one", "two", "one", "two"}) complaints.say(line);
    EXPECT_EQ(said, (std::vector<std::string>{"one", "two"}));
    for (int i = 0; i < 5000; ++i) complaints.say("flood " + std::to_string(i));
    ASSERT_LE(said.size(), 2 * Complaints::kLinesOfAPeriod);
    const std::string last = said.back();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    complaints.say("late");
    EXPECT_TRUE(last.ends_with("left out for now")) << last;
    EXPECT_TRUE(said.end()[-2].ends_with(" lines were left out")) << said.end()[-2];
    EXPECT_EQ(said.back(), "late");
}

// ---- The embedded modem ----

TEST(Embedded, ServesItsOneClientAndLeavesItsState)
{
    const TempDir folder;
    std::vector<std::string> complaints;
    link::LinkSocket socket;
    auto modem = start_embedded_modem({folder.path() / "state", std::nullopt}, socket, complaints);
    ASSERT_NE(modem, nullptr);
    WireClient client(std::move(socket));
    EXPECT_EQ(nv_write(client, 0, 77, Bytes{1, 2, 3}), 0);
    modem.reset();
    EXPECT_FALSE(client.receive());
    EXPECT_TRUE(client.closed());
    EXPECT_TRUE(complaints.empty());
    EXPECT_EQ(read_file(folder.path() / "state/nv/0/77"), (Bytes{1, 2, 3}));
}

TEST(Embedded, ABadScenarioIsToldAndLeavesAModemWithoutServices)
{
    const TempDir folder;
    write_file(folder.path() / "s.toml", "[modem]\nx = 1\n");
    std::vector<std::string> complaints;
    link::LinkSocket socket;
    const auto modem = start_embedded_modem({folder.path() / "state", folder.path() / "s.toml"}, socket, complaints);
    ASSERT_NE(modem, nullptr);
    ASSERT_EQ(complaints.size(), 1u);
    EXPECT_NE(complaints[0].find("s.toml:2: unknown key x"), std::string::npos);
    EXPECT_TRUE(WireClient(std::move(socket)).lookup(0).empty());
}

TEST(Embedded, ManyAtOnceOnAFreshDirectoryFindItWhole)
{
    const TempDir folder;
    for (int round = 0; round < 5; ++round) {
        const std::filesystem::path state = folder.path() / std::to_string(round);
        std::vector<pid_t> children;
        for (int i = 0; i < 8; ++i) {
            const pid_t child = ::fork();
            if (child == 0) {
                std::vector<std::string> complaints;
                link::LinkSocket socket;
                const auto modem = start_embedded_modem({state, std::nullopt}, socket, complaints);
                WireClient client(std::move(socket));
                Bytes read;
                // The last item and the last file that are put in, and one value of each modem's own.
                const bool whole = complaints.empty() && nv_read(client, 2, 550, read) == 0 &&
                                   efs_read(client, 0, "/policyman/device_config.xml", read) == 0 &&
                                   nv_write(client, 0, static_cast<std::uint16_t>(100 + i), Bytes{1}) == 0;
                ::_exit(whole ? 0 : 1);
            }
            children.push_back(child);
        }
        if (round == 4) ::kill(children[3], SIGKILL);
        for (std::size_t i = 0; i < children.size(); ++i) {
            int status = 0;
            ::waitpid(children[i], &status, 0);
            if (round == 4 && i == 3) continue;
            EXPECT_EQ(status, 0);
            EXPECT_TRUE(std::filesystem::exists(state / "nv/0" / std::to_string(100 + i)));
        }
    }
}

}  // namespace
}  // namespace rbk::sim
