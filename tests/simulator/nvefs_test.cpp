// NV items and EFS files: limits, error numbers, and transfers in chunks.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <numeric>

#include "support/program.h"
#include "wire_client.h"

namespace rbk::sim {
namespace {

Bytes counting(std::size_t size, std::uint8_t first = 1)
{
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

std::int32_t result(WireClient& client, const Record& record)
{
    return client.envelope(2, record.bytes).at<std::int32_t>(16);
}

Record first_chunk(std::string_view path, std::uint32_t total, std::uint32_t size, std::uint32_t offset = 0,
                   std::uint16_t instance = 255)
{
    Record record = efs_record(kEfsWrite, 0, path);
    return record.put(2, instance).put(108, total).put(112, size).put(116, offset);
}

TEST(Nv, ItemsAreWrittenReadAndDeletedAsFiles)
{
    RunningModem modem;
    WireClient client = modem.connect();
    const Bytes longest = counting(424);
    Bytes read;
    EXPECT_EQ(nv_read(client, 1, 7232, read), -2);
    EXPECT_EQ(nv_write(client, 1, 7232, longest), 0);
    EXPECT_EQ(read_file(modem.state() / "nv/1/7232"), longest);
    EXPECT_EQ(nv_read(client, 1, 7232, read), 0);
    EXPECT_EQ(read, longest);
    EXPECT_EQ(nv_read(client, 0, 7232, read), -2) << "the subscriptions share their items";
    write_file(modem.state() / "nv/1/7232", "put in by hand");
    EXPECT_EQ(nv_read(client, 1, 7232, read), 0);
    EXPECT_EQ(std::string(read.begin(), read.end()), "put in by hand");
    EXPECT_EQ(result(client, nv_record(kNvDelete, 1, 7232)), 0);
    EXPECT_EQ(result(client, nv_record(kNvDelete, 1, 7232)), -2);
}

TEST(Nv, ALongItemIsCutButItsLengthIsTold)
{
    RunningModem modem;
    WireClient client = modem.connect();
    write_file(modem.state() / "nv/0/77", std::string(1000, 'x'));
    const auto answer = client.envelope(2, nv_record(kNvRead, 0, 77).bytes);
    EXPECT_EQ(answer.at<std::int32_t>(16), 0);
    EXPECT_EQ(answer.at<std::uint32_t>(4), 1000u);
    EXPECT_EQ(answer.data_len, 444u);
    EXPECT_EQ(answer.at<std::uint8_t>(443), 'x');
    EXPECT_EQ(answer.at<std::uint8_t>(444), 0) << "written past the record";

    Record legacy(428);
    const auto legacy_answer = client.envelope(1, legacy.put(0, 1).put(4, 77).put(8, 0).bytes);
    EXPECT_EQ(legacy_answer.data_len, 432u);
    EXPECT_EQ(legacy_answer.at<std::uint32_t>(4), 0u);
    EXPECT_EQ(legacy_answer.at<std::uint32_t>(16), 1000u);
    EXPECT_EQ(legacy_answer.at<std::uint8_t>(431), 'x');
    EXPECT_EQ(legacy_answer.at<std::uint8_t>(432), 0) << "written past the record";
    const auto refused = client.envelope(1, legacy.put(0, 2).bytes);
    EXPECT_EQ(refused.at<std::int32_t>(4), -22);
}

TEST(NvEfs, RefusalsHaveTheirNumbers)
{
    RunningModem modem(
        "[efs]\n\"0:/file\" = '01'\n\"0:/folder/inside\" = '02'\n\"0:/long\" = { fill = 7, size = 500 }\n");
    WireClient client = modem.connect();
    const TempDir outside;
    write_file(outside.path() / "file", "x");
    std::filesystem::create_symlink(outside.path(), modem.state() / "efs/0/way_out");
    std::filesystem::create_symlink(outside.path() / "file", modem.state() / "efs/0/link_out");
    struct {
        const char* catches;
        Record record;
        std::int32_t result;
    } const rows[] = {
        {"Operation0", Record(544), -22},
        {"Operation7", Record(544).put<std::uint8_t>(0, 7), -22},
        {"NvThirdSubscription", nv_record(kNvRead, 2, 551), -22},
        {"NvItemPastTheLast", nv_record(kNvRead, 0, 7233), -22},
        {"NvWriteOfNothing", nv_record(kNvWrite, 0, 1), -22},
        {"NvWriteBeyondTheRecord", nv_record(kNvWrite, 0, 1).put<std::uint32_t>(108, 425), -22},
        {"NvDeleteThirdSubscription", nv_record(kNvDelete, 2, 1), -22},
        {"EfsThirdSubscription", efs_record(kEfsRead, 2, "/file"), -22},
        {"EfsNoPath", efs_record(kEfsRead, 0, ""), -22},
        {"EfsRootAlone", efs_record(kEfsRead, 0, "//./"), -22},
        {"EfsPathBeyondItsRoom", efs_record(kEfsRead, 0, "/file").put<std::uint8_t>(4, 104), -22},
        {"EfsUpwards", efs_record(kEfsRead, 0, "/folder/../file"), -22},
        {"EfsWriteUpwards", first_chunk("/../nv/0/550", 1, 1), -22},
        {"EfsDeleteUpwards", efs_record(kEfsDelete, 0, "../1/policyman"), -22},
        {"EfsThroughALink", efs_record(kEfsRead, 0, "/way_out/file"), -20},
        {"EfsALink", efs_record(kEfsRead, 0, "/link_out"), -22},
        {"EfsWriteThroughALink", first_chunk("/way_out/new", 1, 1), -20},
        {"EfsMissing", efs_record(kEfsRead, 0, "/missing"), -2},
        {"EfsMissingFolder", efs_record(kEfsRead, 0, "/missing/file"), -2},
        {"EfsReadOfAFolder", efs_record(kEfsRead, 0, "/folder"), -21},
        {"EfsFileAsFolder", efs_record(kEfsRead, 0, "/file/inside"), -20},
        {"EfsWriteOverAFolder", first_chunk("/folder", 1, 1), -21},
        {"EfsWriteBelowAFile", first_chunk("/file/new", 1, 1), -20},
        {"EfsDeleteOfAFolder", efs_record(kEfsDelete, 0, "/folder"), -21},
        {"EfsDeleteBelowAFile", efs_record(kEfsDelete, 0, "/file/inside"), -20},
        {"EfsWriteOfNothing", first_chunk("/new", 0, 0), -22},
        {"EfsEmptyChunk", first_chunk("/new", 5, 0), -22},
        {"EfsChunkBeyondTheRecord", first_chunk("/new", 500, 425), -22},
        {"EfsChunkBeyondTheFile", first_chunk("/new", 5, 6), -22},
        {"EfsFileTooLong", first_chunk("/new", 102411, 414), -28},
        {"EfsUnknownInstance", first_chunk("/new", 500, 100, 400, 3), -22},
        {"EfsFirstChunkInTheMiddle", first_chunk("/new", 500, 100, 400), -22},
        {"EfsPathEndsAtItsZero", efs_record(kEfsRead, 0, std::string_view("/file\0/..", 9)), 0},
        {"EfsReadFromBehindTheEnd", efs_record(kEfsRead, 0, "/long").put<std::uint32_t>(116, 0xFFFFFFFF), 0},
    };
    for (const auto& row : rows) EXPECT_EQ(result(client, row.record), row.result) << row.catches;
    EXPECT_FALSE(std::filesystem::exists(modem.state() / "efs/0/new"));
    EXPECT_TRUE(std::filesystem::exists(modem.state() / "efs/1/policyman/device_config.xml") ||
                !std::filesystem::exists(modem.state() / "efs/1/policyman"));
    modem.stop();
    EXPECT_TRUE(modem.complaints.empty()) << modem.complaints.front();
}

TEST(NvEfs, AShortRequestReadsAsZeros)
{
    RunningModem modem("[nv]\n\"0/0\" = 'A1 B2'\n");
    WireClient client = modem.connect();
    const auto answer = client.envelope(2, Bytes{kNvRead});
    EXPECT_EQ(answer.at<std::int32_t>(16), 0);
    EXPECT_EQ(answer.at<std::uint16_t>(20), 0xB2A1);
    // A write whose bytes never came stores zeros, not what an earlier request left.
    EXPECT_EQ(nv_write(client, 0, 1, counting(424)), 0);
    Record record = nv_record(kNvWrite, 0, 2);
    record.put<std::uint32_t>(108, 4).bytes.resize(122);
    record.bytes[120] = 0x55;
    EXPECT_EQ(result(client, record), 0);
    EXPECT_EQ(read_file(modem.state() / "nv/0/2"), (Bytes{0x55, 0, 0, 0}));
}

TEST(Efs, AFileIsStoredWithItsLastChunkOnly)
{
    RunningModem modem;
    WireClient client = modem.connect();
    const Bytes content = counting(1000);
    EXPECT_EQ(result(client, first_chunk("/new/folder/file", 1000, 414)), 0);
    EXPECT_FALSE(std::filesystem::exists(modem.state() / "efs/0/new"));
    EXPECT_EQ(efs_write(client, 0, "/new/folder/file", content), 1);
    EXPECT_EQ(read_file(modem.state() / "efs/0/new/folder/file"), content);
    Bytes read;
    EXPECT_EQ(efs_read(client, 0, "new//./folder/file", read), 0);
    EXPECT_EQ(read, content);
    EXPECT_EQ(efs_delete(client, 0, "/new/folder/file"), 0);
    EXPECT_EQ(efs_delete(client, 0, "/new/folder/file"), -2);
}

TEST(Efs, TheLongestFileGoesThroughIn248Chunks)
{
    RunningModem modem;
    WireClient client = modem.connect();
    const Bytes content = counting(102410);
    EXPECT_GE(efs_write(client, 1, "/long", content), 0);
    Bytes read;
    EXPECT_EQ(efs_read(client, 1, "/long", read), 0);
    EXPECT_EQ(read, content);
}

TEST(Efs, WritesOfTwoClientsCrossWithoutMixing)
{
    RunningModem modem;
    WireClient one = modem.connect();
    WireClient two = modem.connect();
    Record first = first_chunk("/same", 600, 400);
    Record second = first_chunk("/same", 600, 200, 400, 0);
    std::fill_n(first.bytes.begin() + 120, 424, std::uint8_t{0x11});
    std::fill_n(second.bytes.begin() + 120, 424, std::uint8_t{0x11});
    EXPECT_EQ(result(one, first), 0);
    std::fill_n(first.bytes.begin() + 120, 424, std::uint8_t{0x22});
    EXPECT_EQ(result(two, first), 0);
    EXPECT_EQ(result(one, second), 0);
    EXPECT_EQ(read_file(modem.state() / "efs/0/same"), Bytes(600, 0x11));
    std::fill_n(second.bytes.begin() + 120, 424, std::uint8_t{0x22});
    EXPECT_EQ(result(two, second), 0);
    EXPECT_EQ(read_file(modem.state() / "efs/0/same"), Bytes(600, 0x22));
}

TEST(Efs, AChunkThatDoesNotFitItsTransferChangesNothing)
{
    RunningModem modem;
    WireClient client = modem.connect();
    EXPECT_EQ(result(client, first_chunk("/file", 500, 400)), 0);
    EXPECT_EQ(result(client, first_chunk("/other", 500, 100, 400, 0)), -22);
    EXPECT_EQ(result(client, first_chunk("/file", 501, 100, 400, 0)), -22);
    EXPECT_EQ(result(client, first_chunk("/file", 500, 100, 300, 0)), -22);
    EXPECT_EQ(result(client, first_chunk("/file", 500, 101, 400, 0)), -22);
    EXPECT_EQ(result(client, first_chunk("/file", 500, 100, 400, 0)), 0);
    EXPECT_EQ(read_file(modem.state() / "efs/0/file").size(), 500u);
}

TEST(Efs, OpenWritesAreLimitedForEachClient)
{
    RunningModem modem;
    WireClient client = modem.connect();
    for (int i = 0; i < 8; ++i) EXPECT_EQ(result(client, first_chunk("/file", 500, 100)), i);
    EXPECT_EQ(result(client, first_chunk("/file", 500, 100)), -24);
    WireClient other = modem.connect();
    EXPECT_EQ(result(other, first_chunk("/file", 500, 100)), 0) << "one client can keep the others out";
    EXPECT_EQ(result(other, first_chunk("/file", 500, 400, 100, 1)), -22) << "a transfer can be taken over";
}

TEST(Efs, TransfersEndWithTheirClient)
{
    const auto open_files = [] {
        const std::filesystem::directory_iterator files("/proc/self/fd");
        return std::distance(begin(files), end(files));
    };
    RunningModem modem("[efs]\n\"0:/long\" = { fill = 1, size = 1000 }\n");
    const auto before = open_files();
    {
        WireClient client = modem.connect();
        EXPECT_EQ(result(client, efs_record(kEfsRead, 0, "/long")), 0);
        EXPECT_EQ(open_files(), before + 3);  // both ends of the socket, and the file
    }
    for (int i = 0; i < 500 && open_files() != before; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(open_files(), before);
}

TEST(Efs, AReadSeesOneVersionToItsEnd)
{
    RunningModem modem;
    WireClient reader = modem.connect();
    WireClient again = modem.connect();
    WireClient writer = modem.connect();
    EXPECT_GE(efs_write(writer, 0, "/file", Bytes(1000, 0x0B)), 0);
    Record chunk = efs_record(kEfsRead, 0, "/file");
    EXPECT_EQ(reader.envelope(2, chunk.bytes).at<std::uint32_t>(8), 424u);
    EXPECT_EQ(again.envelope(2, chunk.bytes).at<std::uint32_t>(8), 424u);
    EXPECT_GE(efs_write(writer, 0, "/file", Bytes(2000, 0xAF)), 0);
    EXPECT_EQ(again.envelope(2, chunk.bytes).at<std::uint32_t>(4), 2000u) << "a new read sees an old file";
    for (const std::uint32_t offset : {424u, 848u}) {
        const auto answer = reader.envelope(2, chunk.put(116, offset).bytes);
        EXPECT_EQ(answer.at<std::uint32_t>(4), 1000u);
        EXPECT_EQ(answer.at<std::uint8_t>(20), 0x0B);
    }
}

TEST(Efs, OpenReadsAreLimitedToTheLatest)
{
    RunningModem modem;
    WireClient client = modem.connect();
    std::vector<Record> reads;
    for (int i = 0; i < 9; ++i) {
        const std::string path = "/file" + std::to_string(i);
        write_file(modem.state() / ("efs/0" + path), std::string(1000, 'x'));
        reads.push_back(efs_record(kEfsRead, 0, path));
        EXPECT_EQ(result(client, reads.back()), 0);
    }
    for (int i = 0; i < 9; ++i) std::filesystem::remove(modem.state() / ("efs/0/file" + std::to_string(i)));
    for (int i = 8; i > 0; --i) EXPECT_EQ(result(client, reads[i].put<std::uint32_t>(116, 424)), 0) << i;
    EXPECT_EQ(result(client, reads[0].put<std::uint32_t>(116, 424)), -2);
}

// ---- State that can't be made or read ----

TEST(State, TroubleIsOneComplaintAndMinus5)
{
    struct {
        const char* catches;
        std::function<void(const std::filesystem::path& state)> spoil;
        Record record;
    } const rows[] = {
        {"FolderInPlaceOfAnItem", [](const auto& state) { std::filesystem::create_directories(state / "nv/0/5"); },
         nv_record(kNvRead, 0, 5)},
        {"WriteOverAFolder", [](const auto& state) { std::filesystem::create_directories(state / "nv/0/5"); },
         nv_record(kNvWrite, 0, 5, counting(3))},
        {"PipeInPlaceOfAnItem", [](const auto& state) { ::mkfifo((state / "nv/0/5").c_str(), 0600); },
         nv_record(kNvRead, 0, 5)},
        {"PipeInPlaceOfAFile", [](const auto& state) { ::mkfifo((state / "efs/0/\x1B[1m").c_str(), 0600); },
         efs_record(kEfsRead, 0, "/\x1B[1m")},
        {"FileInPlaceOfTheTree",
         [](const auto& state) {
             std::filesystem::remove_all(state / "efs/0");
             write_file(state / "efs/0", "x");
         },
         efs_record(kEfsRead, 0, "/any")},
        {"FileInPlaceOfTheTemporaries",
         [](const auto& state) {
             std::filesystem::remove_all(state / "tmp");
             write_file(state / "tmp", "x");
         },
         nv_record(kNvWrite, 0, 5, counting(3))},
        {"ItemOfATerabyte", [](const auto& state) { std::filesystem::resize_file(state / "nv/0/550", 1ULL << 40); },
         nv_record(kNvRead, 0, 550)},
        {"StateGone", [](const auto& state) { std::filesystem::remove_all(state); }, nv_record(kNvRead, 0, 550)},
    };
    for (const auto& row : rows) {
        RunningModem modem;
        WireClient client = modem.connect();
        row.spoil(modem.state());
        EXPECT_EQ(result(client, row.record), -5) << row.catches;
        EXPECT_EQ(result(client, row.record), -5) << row.catches;
        EXPECT_EQ(client.envelope(0, counting(4)).data_len, 4u) << row.catches << ": the modem has died of it";
        modem.stop();
        ASSERT_EQ(modem.complaints.size(), 1u) << row.catches;
        EXPECT_EQ(modem.complaints[0].find('\x1B'), std::string::npos) << "the terminal would obey";
    }
}

// A phone of four values, each of them `mark`.
bool fill(StateStore& fresh, const std::string& mark)
{
    const Bytes bytes(mark.begin(), mark.end());
    return fresh.write("nv/0/550", bytes) == 0 && fresh.write("nv/1/550", bytes) == 0 &&
           fresh.write_in("efs/0", {"file"}, bytes) == 0 && fresh.write("of/" + mark, bytes) == 0;
}

// Prepares the directory, and gives all complaints and the marks of what then stands in it.
std::string prepared(
    const std::filesystem::path& root, const std::string& mark, const std::function<void()>& meanwhile = [] {})
{
    std::string seen;
    Complaints complaints([&seen](const std::string& line) { seen += line + "\n"; });
    StateStore store(root, complaints);
    const bool usable = store.prepare([&](StateStore& fresh) {
        meanwhile();
        return fill(fresh, mark);
    });
    EXPECT_TRUE(usable);
    for (const char* name : {"nv/0/550", "nv/1/550", "efs/0/file"}) seen += test::read_file(root / name) + " ";
    for (const auto& entry : std::filesystem::directory_iterator(root / "of")) {
        seen += entry.path().filename().string() + " ";
    }
    EXPECT_FALSE(std::filesystem::exists(root / ".new"));
    return seen;
}

TEST(State, AnEmptyDirectoryIsFilledWhereItStands)
{
    const TempDir folder;  // as a volume: no other directory can take its place
    std::filesystem::create_directory(folder.path() / "lost+found");
    struct stat before {};
    struct stat after {};
    ::stat(folder.path().c_str(), &before);
    EXPECT_EQ(prepared(folder.path(), "a"), "a a a a ");
    ::stat(folder.path().c_str(), &after);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path() / "tmp"));
    EXPECT_EQ(prepared(folder.path(), "b"), "a a a a ");
}

TEST(State, AKilledStartIsMadeGoodByTheNext)
{
    struct {
        const char* killed;
        std::function<void(const std::filesystem::path& root)> start;
        const char* found;
    } const rows[] = {
        {"AtItsBeginning", [](const auto& root) { std::filesystem::create_directories(root / ".new"); }, "b b b b "},
        {"WhileItFilled",
         [](const auto& root) {
             const pid_t child = ::fork();
             if (child == 0) {
                 Complaints complaints([](const std::string&) {});
                 StateStore(root, complaints).prepare([](StateStore& fresh) {
                     return fresh.write("nv/0/550", counting(3)) != 0 || ::raise(SIGKILL) != 0;
                 });
             }
             ::waitpid(child, nullptr, 0);
         },
         "b b b b "},
        {"WithTheNumberOfThisProcess",
         [](const auto& root) {
             for (int i = 1; i < 99; ++i) {
                 const std::string build = std::to_string(::getpid()) + "-" + std::to_string(i);
                 std::filesystem::create_directories(root / ".new" / build);
             }
         },
         "b b b b "},
        {"WhileItMoved",
         [](const auto& root) {
             prepared(root, "a");
             std::filesystem::create_directories(root / ".new/whole/content");
             std::filesystem::rename(root / "efs", root / ".new/whole/content/efs");
         },
         "a a a a "},
        {"WhenItHadMovedAll",
         [](const auto& root) {
             prepared(root, "a");
             std::filesystem::create_directories(root / ".new/whole/content");
         },
         "a a a a "},
    };
    for (const auto& row : rows) {
        const TempDir folder;
        row.start(folder.path() / "modem");
        EXPECT_EQ(prepared(folder.path() / "modem", "b"), row.found) << row.killed;
    }
}

TEST(State, OfStartsAtOnceOneFills)
{
    for (int round = 0; round < 20; ++round) {
        const TempDir folder;
        const std::filesystem::path root = round % 2 == 0 ? folder.path() : folder.path() / "not/there";
        std::vector<std::thread> starts;
        std::vector<std::string> seen(8);
        for (std::size_t i = 0; i < seen.size(); ++i) {
            starts.emplace_back([&, i] {
                Complaints complaints([&, i](const std::string& line) { seen[i] += line; });
                StateStore store(root, complaints);
                if (!store.prepare([i](StateStore& fresh) { return fill(fresh, std::to_string(i)); })) seen[i] += "!";
                seen[i] += test::read_file(root / "efs/0/file");
                const std::string item = test::read_file(root / "nv/0/550");
                if (!item.empty() && item != seen[i]) seen[i] += " and an item of " + item;
                // By a client, and only once: no other start may bring them back.
                if (::rename((root / "nv").c_str(), (root / "gone").c_str()) != 0 && errno != ENOENT) seen[i] += "?";
            });
        }
        for (std::thread& start : starts) start.join();
        for (const std::string& one : seen) EXPECT_EQ(one, seen[0]);
        EXPECT_EQ(prepared(root, "x"), "  " + seen[0] + " " + seen[0] + " ");
    }
}

TEST(State, ABuildThatComesTooLateIsDropped)
{
    const TempDir folder;
    const auto another = [&] {
        EXPECT_EQ(prepared(folder.path(), "a"), "a a a a ");
        std::filesystem::remove_all(folder.path() / "nv");  // by one of its clients
    };
    EXPECT_EQ(prepared(folder.path(), "late", another), "  a a ");
}

TEST(State, WhatKilledProcessesLeftIsSwept)
{
    const TempDir folder;
    prepared(folder.path() / "modem", "a");
    const pid_t dead = ::fork();
    if (dead == 0) ::_exit(0);
    ::waitpid(dead, nullptr, 0);
    const std::filesystem::path tmp = folder.path() / "modem/tmp";
    write_file(tmp / (std::to_string(dead) + "-1"), "half a value");
    write_file(tmp / (std::to_string(dead) + "-2/whole/content/file"), "of a start");
    const std::filesystem::path others[] = {tmp / (std::to_string(::getpid()) + "-0"), tmp / "notes",
                                            tmp / (std::to_string(dead) + "-01-31")};
    for (const auto& file : others) write_file(file, "");
    // In a container each start may have the same number.
    test::run({"/bin/sh", "-c", "echo > " + tmp.string() + "/$$-1 && exec " + test::rbk_path() + " 4 1 0 550"},
              {{{"RBK_HOME", folder.path()}}});
    for (const auto& file : others) EXPECT_TRUE(std::filesystem::remove(file)) << file;
    EXPECT_TRUE(std::filesystem::is_empty(tmp));
    // What lies behind a person's link isn't the modem's.
    std::filesystem::remove(tmp);
    const std::filesystem::path elsewhere = folder.path() / "elsewhere";
    write_file(elsewhere / (std::to_string(dead) + "-1"), "");
    write_file(elsewhere / "whole/content/nv/0/551", "");
    for (const char* name : {"modem/tmp", "modem/.new", "fresh/.new"}) {
        const std::filesystem::path link = folder.path() / name;
        std::filesystem::create_directories(link.parent_path());
        std::filesystem::create_directory_symlink(elsewhere, link);
        std::string said;
        Complaints complaints([&said](const std::string& line) { said += line; });
        StateStore store(link.parent_path(), complaints);
        EXPECT_FALSE(store.prepare([](StateStore&) { return true; }));
        EXPECT_EQ(said, link.string() + ": Not a directory");
        EXPECT_TRUE(std::filesystem::exists(elsewhere / (std::to_string(dead) + "-1"))) << name;
        EXPECT_TRUE(std::filesystem::exists(elsewhere / "whole/content/nv/0/551")) << name;
        std::filesystem::remove(link);
    }
}

TEST(State, ADirectoryThatCantBeHadLeavesAModemWithoutMemory)
{
    const TempDir folder;
    const std::string file = folder.path() / "file";
    write_file(file, "x");
    const std::pair<std::string, std::string> rows[] = {
        {file, file + ": Not a directory"},
        {file + "/modem", file + "/modem: Not a directory"},
        {"/proc/modem/state", "/proc/modem: No such file or directory"},
    };
    for (const auto& [place, complaint] : rows) {
        RunningModem modem("", place);
        WireClient client = modem.connect();
        Bytes read;
        EXPECT_EQ(nv_read(client, 0, 550, read), -5) << place;
        EXPECT_EQ(nv_write(client, 0, 550, counting(3)), -5) << place;
        EXPECT_EQ(efs_write(client, 0, "/file", counting(3)), -5) << place;
        modem.stop();
        EXPECT_EQ(modem.complaints, std::vector{complaint});
    }
    EXPECT_EQ(read_file(file), Bytes{'x'});

    const test::RunResult server = test::run(
        {test::bin_path("rbk-modem"), "--listen", "unix:" + (folder.path() / "socket").string(), "--state", file});
    EXPECT_EQ(server.status, 1);
    EXPECT_EQ(server.out, "");
    EXPECT_EQ(server.err, "rbk-modem: " + file + ": Not a directory\n");
}

TEST(State, AFailureToFillIsToldOnceAndLeavesTheDirectoryFresh)
{
    const TempDir folder;
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit none{0, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &none);
    RunningModem modem("", folder.path());
    WireClient client = modem.connect();
    Bytes read;
    EXPECT_EQ(nv_read(client, 0, 550, read), -5);
    modem.stop();
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(modem.complaints, std::vector{(folder.path() / "nv/0/10").string() + ": File too large"});
    // So is what a client would hear as a result of its own.
    std::vector<std::string> lines;
    Complaints complaints([&lines](const std::string& line) { lines.push_back(line); });
    EXPECT_FALSE(StateStore(folder.path(), complaints).prepare([](StateStore& fresh) {
        return fresh.write_in("efs/0", {"file"}, {}) == 0 && fresh.write_in("efs/0", {"file", "below"}, {}) == 0;
    }));
    EXPECT_EQ(lines, std::vector{(folder.path() / "efs/0/file/below").string() + ": Not a directory"});
    EXPECT_EQ(prepared(folder.path(), "a"), "a a a a ");
}

}  // namespace
}  // namespace rbk::sim
