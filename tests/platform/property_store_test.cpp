// Properties: the store, and the library's two operations. What rbk-prop makes of them stands in sessions.txt.
#include "platform/linux/property_store.h"

#include <cutils/properties.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "support/home.h"

namespace rbk::test {
namespace {

class PropertyStoreTest : public HomeTest {
 protected:
    PropertyStoreTest() { write_file(home() / "boot_id", "first\n"); }
    std::filesystem::path root() const { return home() / "properties"; }
    platform::PropertyStore store() const { return platform::PropertyStore(root(), home() / "boot_id"); }
};

TEST_F(PropertyStoreTest, KeptNamesSurviveABootAndTheOthersDoNot)
{
    for (const char* name : {"persist.x", "ro.x", "debug.device.wifi_state", "persistent.x"})
        EXPECT_EQ(store().set(name, "1"), "");
    write_file(root() / "boot-first/.new.AbCdEf", "what a kill left behind");
    EXPECT_EQ(store().list().values.size(), 4u);
    EXPECT_EQ(store().list().problem, "");
    write_file(home() / "boot_id", "second\n");
    EXPECT_FALSE(store().get("debug.device.wifi_state").value);
    EXPECT_EQ(store().set("debug.y", "2"), "");
    EXPECT_FALSE(std::filesystem::exists(root() / "boot-first")) << "what an earlier boot left goes";
    EXPECT_EQ(store().list().values,
              (std::map<std::string, std::string>{{"debug.y", "2"}, {"persist.x", "1"}, {"ro.x", "1"}}));
}

// No reader sees half a value, and what a kill could leave lies where the next boot clears it.
TEST_F(PropertyStoreTest, ValuesAreRenamedIntoTheirPlace)
{
    EXPECT_EQ(store().set("persist.x", "1"), "");
    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ASSERT_GE(inotify_add_watch(watch, (root() / "kept").c_str(), IN_CREATE | IN_MODIFY), 0);
    EXPECT_EQ(store().set("persist.x", "2"), "");
    char events[4096];
    EXPECT_LT(read(watch, events, sizeof events), 0) << "written among the kept ones";
    EXPECT_EQ(store().set("ro.x", "1"), "");
    EXPECT_NE(store().set("ro.x", "2"), "");
    EXPECT_TRUE(std::filesystem::is_empty(root() / "boot-first")) << "something was left behind";
    close(watch);
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

TEST_F(PropertyStoreTest, GetHasItsDefaultsAndGivesBackWhatWasSet)
{
    EXPECT_EQ(property_set("persist.null", nullptr), 0);
    EXPECT_EQ(property_set("persist.lines", "\n=\\\xff\n\n"), 0);
    const std::string long_default(300, 'd');
    const struct {
        const char* catches;
        const char* name;
        const char* otherwise;
        std::string value;
    } rows[] = {{"ValueChanged", "persist.lines", "other", "\n=\\\xff\n\n"},
                {"EmptyIsAValue", "persist.null", "other", "other"},
                {"AbsentHasNoDefault", "persist.none", "other", "other"},
                {"NullDefaultRead", "persist.none", nullptr, ""},
                {"DefaultOverflows", "persist.none", long_default.c_str(), std::string(255, 'd')}};
    for (const auto& row : rows) {
        char room[PROPERTY_VALUE_MAX];
        EXPECT_EQ(property_get(row.name, room, row.otherwise), static_cast<int>(row.value.size())) << row.catches;
        EXPECT_EQ(room, row.value) << row.catches;
    }
}

TEST_F(PropertyStoreTest, RefusalsOfSetAreToldOnceEach)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(property_set("ro.x", "1"), 0);
    for (const char* value : {"2", "3"}) EXPECT_LT(property_set("ro.x", value), 0);
    EXPECT_LT(property_set("../x", "1"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "rbk: ro.x is set already, and can be set once\n"
              "rbk: ../x: a property's name has letters, digits and .-_@: behind a letter or a digit\n");
}

}  // namespace
}  // namespace rbk::test
