// The home of a user whom only the password database knows, and of one whom nobody does. Other variables: sessions.txt.
#include "platform/linux/environment.h"

#include <cutils/properties.h>
#include <pwd.h>
#include <qmi_client.h>
#include <unistd.h>

#include "support/home.h"

namespace rbk::test {
namespace {

class EnvironmentTest : public HomeTest {
 protected:
    EnvironmentTest()
    {
        for (const char* name : {"RBK_HOME", "XDG_STATE_HOME", "HOME"}) unsetenv(name);
    }
    std::string problem_;
};

TEST_F(EnvironmentTest, PasswordDatabaseKnowsTheHome)
{
    const passwd* entry = getpwuid(getuid());
    if (entry == nullptr) return;
    EXPECT_EQ(platform::rbk_home(problem_), std::filesystem::path(entry->pw_dir) / ".local/state/rbk");
}

TEST_F(EnvironmentTest, WithoutAHomeNothingIsWrittenAndOneLineSaysSo)
{
    const std::filesystem::path empty = home() / "empty";
    std::filesystem::create_directory(empty);
    std::filesystem::current_path(empty);
    setenv("RBK_TEST_NOBODY", "1", 1);
    EXPECT_EQ(platform::rbk_home(problem_), "");

    testing::internal::CaptureStderr();
    char value[PROPERTY_VALUE_MAX];
    EXPECT_EQ(property_get("persist.x", value, "otherwise"), 9);
    EXPECT_LT(property_set("persist.x", "1"), 0);
    constexpr qmi_idl_service_object extended{0xFFE4, 1, 1, IDL_LIBRARY_VERSION, 0, nullptr, 0};
    uint32_t services = 0;
    EXPECT_EQ(qmi_client_get_service_list(&extended, nullptr, nullptr, &services), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "rbk: " + problem_ + "\n");
    EXPECT_TRUE(std::filesystem::is_empty(empty));
}

}  // namespace
}  // namespace rbk::test
