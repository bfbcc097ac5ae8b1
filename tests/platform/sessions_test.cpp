// What people see of the platform, in sessions.txt: a chapter begins with "# " and has a directory of its own. Behind "$ "
// stand its commands, below each what it writes: to standard output, "! " to standard error, "= " its status but 0.
#include <filesystem>
#include <optional>

#include "support/home.h"
#include "support/program.h"

namespace rbk::test {
namespace {

std::string as_in_the_file(const RunResult& result)
{
    std::string text = result.out;
    for (const std::string& line : lines_of(result.err)) text += "! " + line + "\n";
    return text + (result.status != 0 ? "= " + std::to_string(result.status) + "\n" : "");
}

TEST(Sessions, PrintWhatStandsInTheirFile)
{
    const std::string path = std::filesystem::path(rbk_path()).parent_path().string() + ":" +
                             std::filesystem::path(bin_path("rbk-prop")).parent_path().string() + ":" + getenv("PATH");
    std::optional<TempDir> dir;
    std::string expected, actual;
    for (const std::string& line : lines_of(read_file(data_path("platform/sessions.txt")))) {
        expected += line + "\n";
        if (line.starts_with("# ")) {
            dir.emplace();
            actual += (actual.empty() ? "" : "\n") + line + "\n";
        }
        if (!line.starts_with("$ ")) continue;
        actual += line + "\n" +
                  as_in_the_file(run({"/bin/sh", "-c", "cd " + dir->path().string() + "\n" + line.substr(2)},
                                     {{{"PATH", path}, {"RBK_HOME", "state"}, {"LC_ALL", "C"}}}));
    }
    EXPECT_EQ(actual, expected);
}

}  // namespace
}  // namespace rbk::test
