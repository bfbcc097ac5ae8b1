// What a scenario file may say, and how it is refused: refusals.t, and files that no editor writes.
#include "simulator/scenario/scenario.h"

#include <gtest/gtest.h>

#include "simulator/scenario/scenario_reader.h"
#include "support/program.h"
#include "wire.h"

namespace rbk::sim {
namespace {

// The message of the refusal behind the file's name; empty when the file is taken.
std::string refusal(std::string_view content)
{
    const TempDir folder;
    const std::string file = folder.path() / "s.toml";
    write_file(file, content);
    try {
        static_cast<void>(read_scenario(file));
        return "";
    } catch (const ScenarioError& error) {
        const std::string line = error.what();
        EXPECT_TRUE(line.starts_with(file + ":")) << line;
        return line.substr(file.size() + 1);
    }
}

std::string repeated(std::string_view words, std::size_t times)
{
    std::string text;
    while (times-- > 0) text += words;
    return text;
}

TEST(Scenario, IsRefusedWithLineAndWhatWasExpected)
{
    const std::vector<std::string> lines = test::lines_of(read_file(test::data_path("simulator/refusals.t")));
    std::string content;
    for (std::size_t i = 3; i < lines.size(); ++i) {  // behind the head
        if (!lines[i].starts_with("! ")) {
            content += lines[i] + "\n";
            continue;
        }
        const std::string said = refusal(content);
        EXPECT_TRUE(said.starts_with(lines[i].substr(2))) << content << lines[i] << "\n" << said;
        content.clear();
        ++i;
    }
    EXPECT_EQ(content, "");
}

TEST(Scenario, LimitsHoldAndControlCharactersStayOffTheScreen)
{
    const std::string network = "{ mcc = 262, mnc = 1 },";
    const std::pair<std::string, const char*> rows[] = {
        {std::string("\n[\0s]\n", 6), "2: expected no control characters"},
        {"[at]\nA = '\x7F'\n", "2: expected no control characters"},
        {"# \xFF\n", "1: expected TOML; Encountered invalid utf-8"},
        {"[efs]\n\"0:/a\\u0000b\" = ''\n", "2: 0:/a\\x00b: expected \"<sub>:<path>\""},
        {"[at]\n\"\\u001B[1m\\u009B1m\" = 1\n", "2: \\x1B[1m\xC2\\x9B1m: expected a text"},
        {"[pdc]\nreport = \"a\\u0000\"\n", "2: report: expected a file's name, without a zero byte"},
        {"\n" + repeated("a.", 40000) + "a = 1\n", "2: expected a key of at most 16 parts"},
        {"[" + repeated("a . ", 16) + "a]\n", "1: expected a key of at most 16 parts"},
        {"a = " + repeated("[\n", 17), "17: expected at most 16 lists and tables within each other"},
        {"a = " + repeated("{a=", 17), "1: expected at most 16 lists and tables within each other"},
        {repeated("a=1\n", 65537), "65537: expected at most 65536 values"},
        {"a = [" + repeated("1,", 65536), "1: expected at most 65536 values"},
        {std::string(4 * 1024 * 1024 + 1, ' '), " expected at most 4194304 bytes"},
        {"[modem]\nservices = [\n" + repeated("{ fill = 1, size = 16777216 },\n", 5) + "]\n",
         "7: size: expected at most 67108864 bytes of fillings in all"},
        {"[efs]\n" + repeated("\n", 4) + "'0:/a' = '00*16777216 00*50331649'\n",
         "6: bytes: expected at most 67108864 bytes"},
        {"[at]\n" + std::string(2049, 'A') + " = ''\n", "2: [at]: expected commands of 1 to 2048 bytes on one line"},
        {"[efs]\n'0:/" + std::string(103, 'a') + "' = ''\n", "2: 0:/a"},
        {"[nas]\nnetworks = [" + repeated(network, 41) + "]\n", "2: networks: expected at most 40 networks"},
        {"[nas]\nnetworks = [ { mcc = 1, mnc = 1, name = '" + std::string(256, 'x') + "' } ]\n",
         "2: networks: expected a name of at most 255 bytes"},
        {"[debug_info]\nlogs = [" + repeated("1,", 250) + "]\n", "2: logs: expected at most 249 numbers"},
        // These are taken: the last of each kind, and letters of all tongues in texts and comments.
        {"[nas]\nnetworks = [" + repeated(network, 40) + "]\n", ""},
        {"[at]\n" + std::string(2048, 'A') + " = ''\n", ""},
        {"[efs]\n'0:/" + std::string(102, 'a') + "' = ''\n", ""},
        {"\xEF\xBB\xBF[at] # ä\r\n'ä' = \"\\\"ä\" # ä'\nA = '''\nä''ä'''''\nB = \"\"\"\\\n a ä\"ä\"\"\"\n", ""},
    };
    for (const auto& [content, expected] : rows) {
        const std::string said = refusal(content);
        EXPECT_TRUE(said.starts_with(expected) && said.empty() == std::string(expected).empty())
            << content.substr(0, 100) << "\n"
            << said;
    }
}

}  // namespace
}  // namespace rbk::sim
