// The state directory under races: a fresh one that many starts fill at once, and kills among writes.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

#include "support/modem_process.h"
#include "support/wait_until.h"
#include "wire.h"

namespace rbk::sim {
namespace {

using std::filesystem::path;

// A phone of four values, each of them `mark`.
bool fill(StateStore& fresh, const std::string& mark)
{
    const Bytes bytes(mark.begin(), mark.end());
    return fresh.write("nv/0/550", bytes) == 0 && fresh.write("nv/1/550", bytes) == 0 &&
           fresh.write_in("efs/0", {"file"}, bytes) == 0 && fresh.write("of/" + mark, bytes) == 0;
}

// Prepares the directory; what is complained of, "!" when it can't be used.
std::string prepare(const path& root, const std::function<bool(StateStore& fresh)>& fill_in)
{
    std::string said;
    Complaints complaints([&said](const std::string& line) { said += line; });
    return StateStore(root, complaints).prepare(fill_in) ? said : said + "!";
}

// The same with a phone of this mark; all complaints, and the marks that then stand there.
std::string prepared(
    const path& root, const std::string& mark, const std::function<void()>& meanwhile = [] {})
{
    std::string seen = prepare(root, [&](StateStore& fresh) {
        meanwhile();
        return fill(fresh, mark);
    });
    for (const char* name : {"nv/0/550", "nv/1/550", "efs/0/file"}) seen += read_file(root / name) + " ";
    for (const auto& entry : std::filesystem::directory_iterator(root / "of"))
        seen += entry.path().filename().string() + " ";
    EXPECT_FALSE(std::filesystem::exists(root / ".new"));
    EXPECT_TRUE(std::filesystem::is_empty(root / "tmp"));
    return seen;
}

TEST(State, OfStartsAtOnceOneFills)
{
    for (int round = 0; round < 20; ++round) {
        const TempDir folder;
        const path root = folder.path() / "not/there";
        if (round % 2 == 0) std::filesystem::create_directories(root);
        const auto start = [&](const std::string& mark) {
            std::string seen = prepare(root, [&](StateStore& fresh) { return fill(fresh, mark); });
            seen += read_file(root / "efs/0/file");
            const std::string item = read_file(root / "nv/0/550");
            if (!item.empty() && item != seen) seen += " and an item of " + item;
            // By a client, and only once: no other start may bring them back.
            if (::rename((root / "nv").c_str(), (folder.path() / "gone").c_str()) != 0 && errno != ENOENT) seen += "?";
            write_file(folder.path() / ("seen" + mark), seen);
        };
        std::vector<pid_t> starts;
        for (int i = 0; i < 8; ++i) {
            if (starts.emplace_back(::fork()) != 0) continue;
            start(std::to_string(i));
            ::_exit(0);
        }
        const bool one_is_killed = round % 4 == 3;
        if (one_is_killed) ::kill(starts[0], SIGKILL);
        for (const pid_t child : starts) ::waitpid(child, nullptr, 0);
        const std::string mark = read_file(folder.path() / "seen7");
        for (int i = one_is_killed ? 1 : 0; i < 8; ++i)
            EXPECT_EQ(read_file(folder.path() / ("seen" + std::to_string(i))), mark) << round;
        EXPECT_EQ(prepared(root, "x"), "  " + mark + " " + mark + " ");
    }
}

TEST(State, ABuildThatComesTooLateIsDropped)
{
    const TempDir folder;
    const auto another = [&] {
        EXPECT_EQ(prepare(folder.path(), [](StateStore& fresh) { return fill(fresh, "a"); }), "");
        std::filesystem::remove_all(folder.path() / "nv");  // by one of its clients
    };
    EXPECT_EQ(prepared(folder.path(), "late", another), "  a a ");
}

TEST(State, AFailureToFillIsToldOnceAndLeavesTheDirectoryFresh)
{
    const TempDir folder;
    // Of a name that a client could choose: it would hear of it without a complaint.
    EXPECT_EQ(prepare(folder.path(),
                      [](StateStore& fresh) {
                          return fresh.write_in("efs/0", {"file"}, {}) == 0 &&
                                 fresh.write_in("efs/0", {"file", "below"}, {}) == 0;
                      }),
              (folder.path() / "efs/0/file/below").string() + ": Not a directory!");
    EXPECT_EQ(prepared(folder.path(), "a"), "a a a a ");
}

TEST(State, AKillAmongWritesLosesNothingThatWasAcknowledged)
{
    const TempDir folder;
    // Content that shows when it is torn: all bytes alike.
    const auto byte = [](int round) { return show_bytes(Bytes{static_cast<std::uint8_t>(1 + round % 250)}); };
    int round = 0;
    for (int life = 0; life < 8; ++life) {
        test::ModemProcess server(folder.path());
        WireClient client = connect((folder.path() / "modem.sock").string());
        std::atomic<int> acknowledged = round;
        std::thread writer([&] {
            for (int next = round + 1;; ++next) {
                client.send("extended 2 env 2: 02 00 h77 @108 w400 @120 " + byte(next) + "*400");
                if (client.next() == "closed") return;
                acknowledged = next;
            }
        });
        EXPECT_TRUE(test::wait_until([&] { return acknowledged >= round + 3 + 5 * life; }));
        server.end(SIGKILL);
        writer.join();
        const std::string text = read_file(folder.path() / "modem/nv/0/77");
        const std::string stored = show_bytes(Bytes(text.begin(), text.end()));
        const int last = acknowledged;
        EXPECT_TRUE(stored == byte(last) + "*400" || stored == byte(last + 1) + "*400") << stored;
        round = last + 1;
    }
}

}  // namespace
}  // namespace rbk::sim
