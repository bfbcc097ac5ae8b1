// Where the state is, what variables mean, and complaints.
#include "platform/linux/environment.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

#include "support/home.h"

namespace rbk::test {
namespace {

class EnvironmentTest : public HomeTest {};

TEST_F(EnvironmentTest, StateDirectoryHasItsDefaults)
{
    const passwd* entry = getpwuid(getuid());
    const std::string in_database = std::string(entry != nullptr ? entry->pw_dir : "") + "/.local/state/rbk";
    const struct {
        const char* catches;
        const char *rbk_home, *state_home, *home;
        std::string directory;
    } rows[] = {{"RbkHomeIgnored", "/a", "/b", "/c", "/a"},
                {"StateHomeIgnored", nullptr, "/b", "/c", "/b/rbk"},
                {"EmptyVariableTaken", "", "/b", "/c", "/b/rbk"},
                {"RelativeStateHomeTaken", nullptr, "b", "/c", "/c/.local/state/rbk"},
                {"HomeIgnored", nullptr, nullptr, "/c", "/c/.local/state/rbk"},
                {"DatabaseIgnored", nullptr, nullptr, nullptr, entry != nullptr ? in_database : ""}};
    for (const auto& row : rows) {
        const std::pair<const char*, const char*> variables[] = {
            {"RBK_HOME", row.rbk_home}, {"XDG_STATE_HOME", row.state_home}, {"HOME", row.home}};
        for (const auto& [name, value] : variables) value != nullptr ? setenv(name, value, 1) : unsetenv(name);
        EXPECT_EQ(platform::rbk_home(), row.directory) << row.catches;
    }
}

TEST_F(EnvironmentTest, UnsetAndEmptyVariablesAreMissing)
{
    setenv("RBK_MODEM", "unix:/x", 1);
    setenv("RBK_TRACE", "", 1);
    EXPECT_EQ(platform::environment().modem, "unix:/x");
    EXPECT_FALSE(platform::environment().trace);
    EXPECT_FALSE(platform::environment().scenario);
    EXPECT_EQ(platform::environment().logcat, (home() / "log").string());
}

struct ScaleCase {
    const char* catches;
    const char* text;
    double scale;
    bool complains;
};
const ScaleCase kScaleCases[] = {{"FractionRefused", "0.01", 0.01, false}, {"ZeroTaken", "0", 1, true},
                                 {"NegativeTaken", "-1", 1, true},         {"TailTaken", "2s", 1, true},
                                 {"InfinityTaken", "inf", 1, true},        {"NotANumberTaken", "nan", 1, true}};

class ScaleTest : public HomeTest, public testing::WithParamInterface<ScaleCase> {};

TEST_P(ScaleTest, IsAFiniteNumberAboveZero)
{
    setenv("RBK_QMI_TIMEOUT_SCALE", GetParam().text, 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(platform::environment().qmi_timeout_scale, GetParam().scale);
    EXPECT_EQ(testing::internal::GetCapturedStderr().empty(), !GetParam().complains);
}

INSTANTIATE_TEST_SUITE_P(, ScaleTest, testing::ValuesIn(kScaleCases),
                         [](const auto& row) { return row.param.catches; });

TEST_F(EnvironmentTest, EachLineIsSaidOnce)
{
    testing::internal::CaptureStderr();
    for (const char* line : {"one", "two", "one", "two"}) platform::complain(line);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "rbk: one\nrbk: two\n");
}

}  // namespace
}  // namespace rbk::test
