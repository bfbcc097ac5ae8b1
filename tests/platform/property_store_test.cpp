// Properties: the store, the library's two operations, and rbk-prop.
#include "platform/linux/property_store.h"

#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "support/home.h"
#include "support/program.h"

namespace rbk::test {
namespace {

using platform::PropertyStore;

class PropertyStoreTest : public HomeTest {
 protected:
    PropertyStoreTest() { boot("first"); }
    void boot(const std::string& id) const { write_file(home() / "boot_id", id + "\n"); }
    std::filesystem::path root() const { return home() / "properties"; }
    PropertyStore store() const { return PropertyStore(root(), home() / "boot_id"); }
    std::string value(const std::string& name) const { return store().get(name).value.value_or("(absent)"); }
};

TEST_F(PropertyStoreTest, NamesThatAreRefusedTouchNothing)
{
    const struct {
        const char* catches;
        std::string name;
    } rows[] = {{"ParentReached", "../persist.x"},
                {"FolderReached", "persist./x"},
                {"DotsAreAName", ".."},
                {"TemporaryReached", ".new.abc"},
                {"EmptyName", ""},
                {"BlankInName", "persist. x"},
                {"LineFeedInName", "persist.x\n"},
                {"NameTooLong", std::string(256, 'x')}};
    for (const auto& row : rows) {
        EXPECT_NE(store().set(row.name, "1"), "") << row.catches;
        EXPECT_NE(store().get(row.name).problem, "") << row.catches;
        EXPECT_NE(store().unset(row.name), "") << row.catches;
    }
    EXPECT_FALSE(std::filesystem::exists(root()));
    EXPECT_EQ(store().set(std::string(255, 'x'), "1"), "");
    EXPECT_EQ(store().set("persist.radio.ssr_count_@:-9", "1"), "");
}

TEST_F(PropertyStoreTest, KeptNamesSurviveABootAndTheOthersDoNot)
{
    for (const char* name : {"persist.x", "ro.x", "debug.device.wifi_state", "persistent.x"})
        EXPECT_EQ(store().set(name, "1"), "");
    write_file(root() / "boot-first/.new.AbCdEf", "what a kill left behind");
    EXPECT_EQ(store().list().values.size(), 4u);
    EXPECT_EQ(store().list().problem, "");
    boot("second");
    EXPECT_EQ(value("persist.x"), "1");
    EXPECT_EQ(value("ro.x"), "1");
    EXPECT_EQ(value("debug.device.wifi_state"), "(absent)");
    EXPECT_EQ(value("persistent.x"), "(absent)");
    EXPECT_EQ(store().set("debug.y", "2"), "");
    EXPECT_FALSE(std::filesystem::exists(root() / "boot-first")) << "what an earlier boot left goes";
    EXPECT_EQ(store().list().values,
              (std::map<std::string, std::string>{{"debug.y", "2"}, {"persist.x", "1"}, {"ro.x", "1"}}));
}

TEST_F(PropertyStoreTest, FilesHaveTheModeThatTheUmaskLeaves)
{
    for (const mode_t mask : {0077, 0002}) {
        const mode_t before = umask(mask);
        EXPECT_EQ(store().set("persist.x", "1"), "");
        umask(before);
        EXPECT_EQ(std::filesystem::status(root() / "kept/persist.x").permissions(),
                  static_cast<std::filesystem::perms>(0666 & ~mask));
    }
}

TEST_F(PropertyStoreTest, WhatAKillCouldLeaveLiesWhereTheNextBootClearsIt)
{
    EXPECT_EQ(store().set("persist.x", "1"), "");
    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(inotify_add_watch(watch, (root() / "kept").c_str(), IN_CREATE), 0);
    EXPECT_EQ(store().set("persist.x", "2"), "");
    char events[4096];
    EXPECT_LT(read(watch, events, sizeof events), 0) << "written among the kept ones";
    close(watch);
}

TEST_F(PropertyStoreTest, ReadOnlyNameIsSetOnceUntilItIsUnset)
{
    EXPECT_EQ(store().set("ro.product.name", "one"), "");
    EXPECT_EQ(store().set("ro.product.name", "two"), "ro.product.name is set already, and can be set once");
    EXPECT_EQ(value("ro.product.name"), "one");
    EXPECT_EQ(store().unset("ro.product.name"), "");
    EXPECT_EQ(store().set("ro.product.name", "two"), "");
    EXPECT_EQ(value("ro.product.name"), "two");
}

TEST_F(PropertyStoreTest, OneOfManySettersOfAReadOnlyNameWins)
{
    std::atomic<int> winners{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&, i] { winners += static_cast<int>(store().set("ro.x", std::to_string(i)).empty()); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(winners, 1);
}

TEST_F(PropertyStoreTest, ReaderNeverSeesHalfAValue)
{
    const std::string values[] = {std::string(255, 'a'), std::string(3, 'b')};
    ASSERT_EQ(store().set("persist.x", values[0]), "");
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (int i = 0; i < 500; ++i) EXPECT_EQ(store().set("persist.x", values[i % 2]), "");
        done = true;
    });
    while (!done) {
        const std::string seen = value("persist.x");
        EXPECT_TRUE(seen == values[0] || seen == values[1]) << seen;
    }
    writer.join();
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root()))
        EXPECT_FALSE(entry.path().filename().string().starts_with(".")) << entry.path();
}

TEST_F(PropertyStoreTest, ValuesComeBackAsTheyWereSet)
{
    for (const std::string& text : {std::string(), std::string("a b"), std::string("\n"), std::string("x\n\n"),
                                    std::string("=\\\xff"), std::string(255, 'v')}) {
        EXPECT_EQ(store().set("persist.x", text), "");
        EXPECT_EQ(value("persist.x"), text);
    }
    EXPECT_NE(store().set("persist.x", std::string(256, 'v')), "");
    EXPECT_EQ(value("persist.x"), std::string(255, 'v')) << "a refusal leaves what stood there";
}

TEST_F(PropertyStoreTest, FilesThatPeopleWrote)
{
    const struct {
        const char* catches;
        std::string content, value;
    } rows[] = {{"LineFeedNeeded", "9", "9"},
                {"LineFeedKept", "9\n", "9"},
                {"ZeroByteWithin", std::string("9\0x", 3), "9"},
                {"EmptyFileRefused", "", ""},
                {"LongFileCut", std::string(257, 'v'), "(absent)"}};
    for (const auto& row : rows) {
        write_file(root() / "kept/persist.x", row.content);
        EXPECT_EQ(value("persist.x"), row.value) << row.catches;
    }
    EXPECT_EQ(store().get("persist.x").problem, (root() / "kept/persist.x").string() + ": expected at most 255 bytes");
    std::filesystem::create_directories(root() / "kept/persist.folder");
    EXPECT_EQ(store().get("persist.folder").problem, (root() / "kept/persist.folder").string() + ": Is a directory");
    EXPECT_NE(store().set("persist.folder", "1"), "");
}

TEST_F(PropertyStoreTest, BrokenRootIsOneProblemForAllNames)
{
    write_file(root(), "no directory");
    const std::string problem = root().string() + ": Not a directory";
    EXPECT_EQ(store().get("persist.x").problem, problem);
    EXPECT_EQ(store().get("debug.x").problem, problem);
    EXPECT_EQ(store().set("persist.x", "1"), problem);
    EXPECT_NE(PropertyStore("").set("persist.x", "1"), "") << "nothing is written into the current directory";
    EXPECT_NE(PropertyStore("").get("persist.x").problem, "");
}

// ---- The library's operations ----

TEST_F(PropertyStoreTest, DefaultsOfPropertyGet)
{
    const std::string long_default(300, 'd');
    set_property("persist.empty", "");
    set_property("persist.full", "value");
    const struct {
        const char* catches;
        const char* name;
        const char* default_value;
        std::string value;
    } rows[] = {{"ValueLost", "persist.full", "other", "value"},
                {"EmptyIsAValue", "persist.empty", "other", "other"},
                {"AbsentHasNoDefault", "persist.none", "other", "other"},
                {"NullDefaultRead", "persist.none", nullptr, ""},
                {"DefaultOverflows", "persist.none", long_default.c_str(), std::string(255, 'd')}};
    for (const auto& row : rows) {
        char room[PROPERTY_VALUE_MAX];
        EXPECT_EQ(property_get(row.name, room, row.default_value), static_cast<int>(row.value.size())) << row.catches;
        EXPECT_EQ(room, row.value) << row.catches;
    }
    EXPECT_EQ(property_set("persist.full", nullptr), 0);
    EXPECT_EQ(value("persist.full"), "");
}

TEST_F(PropertyStoreTest, RefusalsOfPropertySetAreToldOnceEach)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(property_set("ro.x", "1"), 0);
    EXPECT_LT(property_set("ro.x", "2"), 0);
    EXPECT_LT(property_set("ro.x", "2"), 0);
    EXPECT_LT(property_set("persist.x", std::string(256, 'v').c_str()), 0);
    EXPECT_LT(property_set("../x", "1"), 0);
    const auto lines = lines_of(testing::internal::GetCapturedStderr());
    ASSERT_EQ(lines.size(), 3u);
    for (const std::string& line : lines) EXPECT_TRUE(line.starts_with("rbk: ")) << line;
}

// ---- rbk-prop ----

TEST_F(PropertyStoreTest, ProgramReadsWritesForgetsAndLists)
{
    const struct {
        const char* catches;
        std::vector<std::string> arguments;
        int status;
        std::string out;
        bool complains;
    } rows[] = {{"AbsentIsAnError", {"get", "persist.x"}, 0, "\n", false},
                {"DefaultIgnored", {"get", "persist.x", "7"}, 0, "7\n", false},
                {"SetSaysSomething", {"set", "persist.x", "-5"}, 0, "", false},
                {"DefaultWins", {"get", "persist.x", "7"}, 0, "-5\n", false},
                {"ReadOnlyRefusedAtFirst", {"set", "ro.y", "1"}, 0, "", false},
                {"ReadOnlySetTwice", {"set", "ro.y", "2"}, 1, "", true},
                {"NameUnchecked", {"set", "../x", "1"}, 1, "", true},
                {"NameOfGetUnchecked", {"get", "a/b"}, 1, "", true},
                {"ListUnsorted", {"list"}, 0, "persist.x=-5\nro.y=1\n", false},
                {"ValueTakenForAnOption", {"set", "persist.x", "-v"}, 0, "", false},
                {"ValueTakenForAMark", {"set", "persist.x", "--"}, 0, "", false},
                {"MarkTakenForAValue", {"set", "persist.x", "--", "--help"}, 0, "", false},
                {"DashedValueLost", {"get", "persist.x"}, 0, "--help\n", false},
                {"DefaultTakenForAnOption", {"get", "persist.y", "-1d"}, 0, "-1d\n", false},
                {"UnsetFails", {"unset", "persist.x"}, 0, "", false},
                {"UnsetOfNothingFails", {"unset", "persist.x"}, 0, "", false},
                {"UnsetForgetsAll", {"list"}, 0, "ro.y=1\n", false},
                {"NoCommandPasses", {}, 1, "", true},
                {"UnknownCommandPasses", {"put", "x"}, 1, "", true},
                {"LineFeedMakesTwoLines", {"set", "persist.x", "1\nro.y=2"}, 1, "", true},
                {"ReturnMakesTwoLines", {"set", "persist.x", "1\r"}, 1, "", true},
                {"MissingValuePasses", {"set", "persist.x"}, 1, "", true}};
    for (const auto& row : rows) {
        const RunResult result = run_rbk_prop(row.arguments);
        EXPECT_EQ(result.status, row.status) << row.catches;
        EXPECT_EQ(result.out, row.out) << row.catches;
        EXPECT_EQ(!result.err.empty(), row.complains) << row.catches << ": " << result.err;
    }
    EXPECT_EQ(run_rbk_prop({"--help"}).status, 0);
}

TEST_F(PropertyStoreTest, ProgramTellsOfOutputThatIsLost)
{
    set_property("persist.x", std::string(255, 'v'));
    for (const char* words : {"list", "get persist.x"}) {
        const RunResult result = run({"/bin/sh", "-c", bin_path("rbk-prop") + " " + words + " >/dev/full"});
        EXPECT_EQ(result.status, 1) << words;
        EXPECT_EQ(result.err, "rbk: standard output: No space left on device\n") << words;
    }
}

}  // namespace
}  // namespace rbk::test
