// The program rbk-modem and the embedded modem: their starts, their ends, and being killed.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <set>

#include "simulator/embedded.h"
#include "support/program.h"
#include "wire_client.h"

namespace rbk::sim {
namespace {

// rbk-modem in a process of its own, its output in files.
class Server {
 public:
    Server(const std::filesystem::path& folder, std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), test::bin_path("rbk-modem"));
        std::vector<char*> words;
        for (std::string& argument : arguments) words.push_back(argument.data());
        words.push_back(nullptr);
        int ready[2];
        EXPECT_EQ(::pipe2(ready, O_CLOEXEC), 0);
        errors_ = folder / "errors";
        pid_ = ::fork();
        if (pid_ == 0) {
            ::dup2(ready[1], STDOUT_FILENO);
            ::dup2(::open(errors_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
            ::execv(words[0], words.data());
            ::_exit(127);
        }
        ::close(ready[1]);
        char word[7] = {};
        for (std::size_t got = 0; got < 6;) {
            const ssize_t size = ::read(ready[0], word + got, 6 - got);
            if (size <= 0) break;
            got += static_cast<std::size_t>(size);
        }
        is_ready = word == std::string("ready\n");
        ::close(ready[0]);
    }
    ~Server() { end(SIGKILL); }

    // The exit status, -1 after a kill.
    int end(int signal)
    {
        if (pid_ <= 0) return -1;
        int status = 0;
        if (signal != 0) ::kill(pid_, signal);
        ::waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::string errors() const
    {
        const Bytes bytes = read_file(errors_);
        return {bytes.begin(), bytes.end()};
    }
    bool is_ready = false;

 private:
    pid_t pid_ = -1;
    std::filesystem::path errors_;
};

WireClient connect(const std::string& path)
{
    std::string error;
    link::LinkSocket socket = link::LinkSocket::connect_unix(path, error);
    EXPECT_TRUE(socket.is_open()) << error;
    return WireClient(std::move(socket));
}

class ServerTest : public testing::Test {
 protected:
    std::vector<std::string> arguments(std::vector<std::string> more = {}) const
    {
        more.insert(more.begin(), {"--listen", "unix:" + socket_, "--state", state_});
        return more;
    }
    TemporaryFolder folder_;
    std::string socket_ = (folder_.path() / "socket").string();
    std::string state_ = (folder_.path() / "state").string();
};

TEST_F(ServerTest, EndsOnASignalWithoutItsSocketAndNamesUnmatchedRules)
{
    const std::string scenario = (folder_.path() / "s.toml").string();
    write_file(scenario, "[[fault]]\nservice = 'extended'\nmessage = 3\naction = 'silent'\n");
    for (const int signal : {SIGTERM, SIGINT}) {
        Server server(folder_.path(), arguments({"--scenario", scenario}));
        ASSERT_TRUE(server.is_ready) << server.errors();
        EXPECT_EQ(connect(socket_).envelope(0, Bytes{1}).data_len, 1u);
        EXPECT_EQ(server.end(signal), 0);
        EXPECT_EQ(server.errors(), "rbk-modem: " + scenario + ":1: the fault rule for extended never matched\n");
        EXPECT_FALSE(std::filesystem::exists(socket_));
    }
}

TEST_F(ServerTest, TakesOverADeadSocketAndRefusesALivingOne)
{
    Server first(folder_.path(), arguments());
    ASSERT_TRUE(first.is_ready);
    Server second(folder_.path(), arguments());
    EXPECT_FALSE(second.is_ready);
    EXPECT_EQ(second.end(0), 1);
    EXPECT_EQ(second.errors(), "rbk-modem: " + socket_ + ": a server listens there already\n");
    EXPECT_EQ(connect(socket_).envelope(0, Bytes{1}).data_len, 1u) << "the refused one has removed the socket";
    first.end(SIGKILL);
    EXPECT_TRUE(std::filesystem::exists(socket_));
    Server third(folder_.path(), arguments());
    EXPECT_TRUE(third.is_ready) << third.errors();
}

TEST_F(ServerTest, StartsOfManyLeaveOneServer)
{
    Server(folder_.path(), arguments()).end(SIGKILL);
    std::vector<std::unique_ptr<Server>> servers(8);
    std::vector<std::thread> starts;
    for (std::size_t i = 0; i < servers.size(); ++i) {
        std::filesystem::create_directory(folder_.path() / std::to_string(i));
        starts.emplace_back(
            [&, i] { servers[i] = std::make_unique<Server>(folder_.path() / std::to_string(i), arguments()); });
    }
    for (std::thread& start : starts) start.join();
    EXPECT_EQ(std::count_if(servers.begin(), servers.end(), [](const auto& server) { return server->is_ready; }), 1);
    EXPECT_EQ(connect(socket_).envelope(0, Bytes{1}).data_len, 1u);
}

TEST_F(ServerTest, RefusesWhatItCantServe)
{
    write_file(folder_.path() / "bad.toml", "[nv]\n\"0/1\" = 'x'\n");
    write_file(folder_.path() / "file", "precious");
    const std::string bad = (folder_.path() / "bad.toml").string();
    const std::string file = (folder_.path() / "file").string();
    struct {
        const char* catches;
        std::vector<std::string> arguments;
        std::string says;
    } const rows[] = {
        {"BadScenario", arguments({"--scenario", bad}), bad + ":2: 0/1: expected hex bytes"},
        {"FileAsSocket", {"--listen", "unix:" + file, "--state", state_}, file + ": something that isn't a socket"},
        {"FileAsTerminal", arguments({"--at", file}), file + ": "},
        {"NoFolder", {"--listen", "unix:/nonexistent/socket"}, "/nonexistent/socket: No such file"},
        {"PathTooLong", {"--listen", "unix:/" + std::string(200, 'x')}, "a socket's path has 1 to 107 bytes"},
        {"NoScheme", {"--listen", socket_}, "expected unix:PATH"},
        {"NoListen", {"--state", state_}, "--listen is required"},
        {"UnknownOption", arguments({"--colour"}), "--colour"},
    };
    for (const auto& row : rows) {
        Server server(folder_.path(), row.arguments);
        EXPECT_FALSE(server.is_ready) << row.catches;
        EXPECT_EQ(server.end(0), 1) << row.catches;
        EXPECT_NE(server.errors().find(row.says), std::string::npos) << row.catches << server.errors();
    }
    EXPECT_EQ(read_file(file).size(), 8u);
    EXPECT_FALSE(std::filesystem::exists(state_ + "/nv")) << "a refused start has touched the state";
}

TEST_F(ServerTest, AKillAmongWritesLosesNothingThatWasAcknowledged)
{
    // Content that shows when it is torn: all bytes alike.
    const auto content = [](int round) { return Bytes(400, static_cast<std::uint8_t>(1 + round % 250)); };
    int round = 0;
    for (int life = 0; life < 8; ++life) {
        Server server(folder_.path(), arguments());
        ASSERT_TRUE(server.is_ready) << server.errors();
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
        while (acknowledged < round + 3) std::this_thread::yield();  // busy machines take their time
        std::this_thread::sleep_for(std::chrono::milliseconds(7 * life));
        server.end(SIGKILL);
        writer.join();
        const Bytes stored = read_file(state_ + "/nv/0/77");
        ASSERT_EQ(stored.size(), 400u);
        EXPECT_EQ(std::set<std::uint8_t>(stored.begin(), stored.end()).size(), 1u) << "torn";
        EXPECT_TRUE(stored == content(acknowledged) || stored == content(acknowledged + 1)) << "lost";
        round = acknowledged + 1;
    }
}

TEST_F(ServerTest, TheTerminalAnswersOpenersThatComeAndGo)
{
    const std::string scenario = (folder_.path() / "s.toml").string();
    write_file(scenario, "[at]\n\"AT+CSQ\" = \"+CSQ: 20\\nOK\"\n");
    const std::string path = (folder_.path() / "smd").string();
    std::filesystem::create_symlink("/dev/pts/gone", path);  // what a killed server leaves
    Server server(folder_.path(), arguments({"--scenario", scenario, "--at", path}));
    ASSERT_TRUE(server.is_ready) << server.errors();
    struct {
        std::string written;
        std::string answer;
    } const rows[] = {
        {"AT+CSQ\r\n", "\r\n+CSQ: 20\r\nOK\r\n"},
        {"AT\r", "\r\nOK\r\n"},
        {"\r\n\r\n", ""},
        {"AT+NONE\n", "\r\nERROR\r\n"},
    };
    for (const auto& row : rows) {
        std::ofstream(path) << row.written;
        const int reader = ::open(path.c_str(), O_RDWR | O_NOCTTY);
        std::string answer;
        pollfd ready{reader, POLLIN, 0};
        while (answer.size() < row.answer.size() && ::poll(&ready, 1, 5000) > 0) {
            char bytes[100];
            answer.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(::read(reader, bytes, sizeof bytes), 0)));
        }
        EXPECT_EQ(answer, row.answer) << row.written;
        ::close(reader);
    }
    EXPECT_EQ(server.end(SIGTERM), 0);
    EXPECT_FALSE(std::filesystem::is_symlink(path));
}

// ---- The embedded modem ----

TEST(Embedded, ServesItsOneClientAndLeavesItsState)
{
    const TemporaryFolder folder;
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
    const TemporaryFolder folder;
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
    const TemporaryFolder folder;
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
