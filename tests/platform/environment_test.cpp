// Where the state is, what variables mean, and complaints.
#include "platform/linux/environment.h"

#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <qmi_client.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>

#include "support/home.h"
#include "support/program.h"

namespace rbk::test {
namespace {

class EnvironmentTest : public HomeTest {};

TEST_F(EnvironmentTest, StateDirectoryHasItsDefaults)
{
    const passwd* entry = getpwuid(getuid());
    std::filesystem::path in_database;
    if (entry != nullptr) in_database = std::string(entry->pw_dir) + "/.local/state/rbk";
    const std::string a = home() / "a";
    const std::string b = home() / "b";
    const std::string c = home() / "c";
    const std::string file = home() / "log";
    const struct {
        const char* catches;
        std::optional<std::string> rbk_home, state_home, home;
        std::filesystem::path directory;
    } rows[] = {{"RbkHomeIgnored", a, b, c, a},
                {"FileTakenForAHome", file, b, c, ""},
                {"StateHomeIgnored", {}, b, c, b + "/rbk"},
                {"EmptyVariableTaken", "", b, c, b + "/rbk"},
                {"RelativeStateHomeTaken", {}, "b", c, c + "/.local/state/rbk"},
                {"HomeIgnored", {}, {}, c, c + "/.local/state/rbk"},
                {"DatabaseIgnored", {}, {}, {}, in_database}};
    for (const auto& row : rows) {
        const std::pair<const char*, const std::optional<std::string>&> variables[] = {
            {"RBK_HOME", row.rbk_home}, {"XDG_STATE_HOME", row.state_home}, {"HOME", row.home}};
        for (const auto& [name, value] : variables) value ? setenv(name, value->c_str(), 1) : unsetenv(name);
        std::string problem;
        EXPECT_EQ(platform::rbk_home(problem), row.directory) << row.catches;
        EXPECT_EQ(problem.empty(), !row.directory.empty()) << row.catches << problem;
    }
}

TEST_F(EnvironmentTest, WithoutAHomeNothingIsWrittenAndOneLineSaysSo)
{
    const std::filesystem::path empty = home() / "empty";
    std::filesystem::create_directory(empty);
    std::filesystem::current_path(empty);
    for (const char* name : {"RBK_HOME", "XDG_STATE_HOME", "HOME"}) unsetenv(name);
    setenv("RBK_TEST_NOBODY", "1", 1);
    std::string problem;
    EXPECT_EQ(platform::rbk_home(problem), "");

    testing::internal::CaptureStderr();
    char value[PROPERTY_VALUE_MAX];
    EXPECT_EQ(property_get("persist.x", value, "otherwise"), 9);
    EXPECT_LT(property_set("persist.x", "1"), 0);
    constexpr qmi_idl_service_object extended{0xFFE4, 1, 1, IDL_LIBRARY_VERSION, 0, nullptr, 0};
    uint32_t services = 0;
    EXPECT_EQ(qmi_client_get_service_list(&extended, nullptr, nullptr, &services), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "rbk: " + problem + "\n");
    EXPECT_TRUE(std::filesystem::is_empty(empty));
}

// The first file that is opened would get the number, and the stream's text.
TEST_F(EnvironmentTest, ClosedStreamsGiveTheirNumbersToNothing)
{
    for (const char* closed : {">&-", "2>&-", "<&- >&- 2>&-"}) {
        const RunResult result = run({"/bin/sh", "-c", std::string("exec \"$0\" 4 1 0 550 ") + closed, rbk_path()},
                                     {{{"RBK_TRACE", home() / "trace"}, {"RBK_QMI_TIMEOUT_SCALE", "word"}}});
        EXPECT_EQ(result.status, 0);
        for (const std::string& line : log()) EXPECT_TRUE(line.starts_with("7 ") || line.starts_with("3 ")) << line;
        for (const std::string& line : lines_of(read_file(home() / "trace")))
            EXPECT_NE(line.find(" svc=0xFFE4 "), std::string::npos) << line;
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
