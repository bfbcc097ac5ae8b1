// Properties: the store, the library's two operations, and the home of both. What rbk-prop makes of them stands in
// golden/host.t.
#include "platform/linux/property_store.h"

#include <cutils/properties.h>
#include <pwd.h>
#include <qmi_client.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "platform/linux/environment.h"
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

TEST_F(PropertyStoreTest, TheLibraryBoundsDefaultsAndTellsARefusalOnce)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(property_set("ro.null", nullptr), 0);
    for (const char* value : {"1", "2"}) EXPECT_LT(property_set("ro.null", value), 0);
    EXPECT_LT(property_set("../x", "1"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "rbk: ro.null is set already, and can be set once\n"
              "rbk: ../x: a property's name has letters, digits and .-_@: behind a letter or a digit\n");
    EXPECT_EQ(property_set("persist.lines", "\n=\\\xff\n\n"), 0);
    char room[PROPERTY_VALUE_MAX];
    EXPECT_EQ(property_get("persist.lines", room, "other"), 6);
    EXPECT_STREQ(room, "\n=\\\xff\n\n");
    EXPECT_EQ(property_get("ro.null", room, nullptr), 0);
    EXPECT_STREQ(room, "");
    EXPECT_EQ(property_get("persist.none", room, std::string(300, 'd').c_str()), 255);
    EXPECT_EQ(room, std::string(255, 'd'));
}

// A user whom the password database knows, and one whom nobody does. Other homes: golden/host.t.
TEST_F(PropertyStoreTest, WithoutAHomeNothingIsWrittenAndOneLineSaysSo)
{
    for (const char* name : {"RBK_HOME", "XDG_STATE_HOME", "HOME"}) unsetenv(name);
    std::string problem;
    if (const passwd* entry = getpwuid(getuid())) {
        EXPECT_EQ(platform::rbk_home(problem), std::filesystem::path(entry->pw_dir) / ".local/state/rbk");
    }
    setenv("RBK_TEST_NOBODY", "1", 1);
    EXPECT_EQ(platform::rbk_home(problem), "");

    std::filesystem::create_directory(home() / "empty");
    std::filesystem::current_path(home() / "empty");
    testing::internal::CaptureStderr();
    char value[PROPERTY_VALUE_MAX];
    EXPECT_EQ(property_get("persist.x", value, "otherwise"), 9);
    EXPECT_LT(property_set("persist.x", "1"), 0);
    constexpr qmi_idl_service_object extended{0xFFE4, 1, 1, IDL_LIBRARY_VERSION, 0, nullptr, 0};
    uint32_t services = 0;
    EXPECT_EQ(qmi_client_get_service_list(&extended, nullptr, nullptr, &services), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "rbk: " + problem + "\n");
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

}  // namespace
}  // namespace rbk::test
