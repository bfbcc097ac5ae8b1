// What a scenario file may say, what is refused, and what becomes of its content.
#include "simulator/scenario.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "simulator/scenario_reader.h"
#include "wire_client.h"

namespace rbk::sim {
namespace {

// The message of the refusal, without the folder; empty when the scenario is taken.
std::string refusal(std::string_view content)
{
    const TempDir folder;
    const std::filesystem::path file = folder.path() / "s.toml";
    write_file(file, content);
    try {
        static_cast<void>(read_scenario(file));
        return "";
    } catch (const ScenarioError& error) {
        const std::string line = error.what();
        EXPECT_EQ(line.rfind(folder.path().string() + "/s.toml", 0), 0u) << line;
        return line.substr(folder.path().string().size() + 1);
    }
}

std::string repeated(std::string_view words, std::size_t times)
{
    std::string text;
    while (times-- > 0) text += words;
    return text;
}

TEST(Scenario, RefusesWithFileLineAndWhatWasExpected)
{
    struct {
        std::string content;
        const char* refusal;
    } const rows[] = {
        {"[modem\n", "s.toml:1: "},
        {"\n[modme]\n", "s.toml:2: unknown key modme in the scenario: expected modem, nv, efs, at, indication, fault"},
        {"[modem]\nboot = 1\n", "s.toml:2: unknown key boot in [modem]: expected services, boot_ms, restart_ms"},
        {"[modem]\nboot_ms = -1\n", "s.toml:2: boot_ms: expected a whole number from 0 to 86400000"},
        {"[modem]\nboot_ms = 1.5\n", "s.toml:2: boot_ms: expected a whole number"},
        {"[modem]\nservices = 'vs'\n", "s.toml:2: services: expected a list"},
        {"[modem]\nservices = ['vs',\n'vx']\n",
         "s.toml:3: services: expected one of extended, vs, nas, uim, sar, pdc, diag"},
        {"nv = 1\n", "s.toml:1: [nv]: expected a table"},
        {"[nv]\n\"0/1\" = '1'\n", "s.toml:2: 0/1: expected hex bytes, two digits each"},
        {"[nv]\n\"0/1\" = '0 1'\n", "s.toml:2: 0/1: expected hex bytes"},
        {"[nv]\n\"0/1\" = 'GG'\n", "s.toml:2: 0/1: expected hex bytes"},
        {"[nv]\n\"0/1\" = 1\n", "s.toml:2: 0/1: expected hex text or { fill = byte, size = bytes }"},
        {"[nv]\n\"0/1\" = { fill = 1, size = 425 }\n", "s.toml:2: 0/1.size: expected a whole number from 0 to 424"},
        {"[nv]\n\"0/1\" = { fill = 256, size = 1 }\n", "s.toml:2: 0/1.fill: expected a whole number from 0 to 255"},
        {"[nv]\n\"0/1\" = { size = 1 }\n", "s.toml:2: 0/1: expected the key fill"},
        {"[nv]\n\"0/1\" = { fill = 1, size = 1, from = 1 }\n", "s.toml:2: unknown key from in 0/1"},
        {"[nv]\n\"2/551\" = '01'\n", "s.toml:2: 2/551: expected \"<sub>/<item>\" with sub 0 or 1"},
        {"[nv]\n\"0/7233\" = '01'\n", "s.toml:2: 0/7233: expected \"<sub>/<item>\""},
        {"[nv]\n\"0/1x\" = '01'\n", "s.toml:2: 0/1x: expected \"<sub>/<item>\""},
        {"[nv]\n\"550\" = '01'\n", "s.toml:2: 550: expected \"<sub>/<item>\""},
        {"[efs]\n\"/file\" = '01'\n", "s.toml:2: /file: expected \"<sub>:<path>\""},
        {"[efs]\n\"2:/file\" = '01'\n", "s.toml:2: 2:/file: expected \"<sub>:<path>\""},
        {"[efs]\n\"0:/a/../../b\" = '01'\n", "s.toml:2: 0:/a/../../b: expected \"<sub>:<path>\""},
        {"[stats.sub2]\n", "s.toml:1: unknown key sub2 in [stats]: expected sub0, sub1"},
        {"[stats.sub0]\n82x = ''\n", "s.toml:2: 82x: expected a parameter's number"},
        {"[stats.sub0]\n82 = { rsrp = 1 }\n", "s.toml:2: unknown key rsrp in 82: expected version, version_ssmr"},
        {"[stats.sub0]\n82 = { pci = 65536 }\n", "s.toml:2: pci: expected a whole number from 0 to 65535"},
        {"[stats.sub0]\n82 = { rsrp_rx0 = 1e39 }\n", "s.toml:2: rsrp_rx0: expected a number that 32 bits can hold"},
        {"[stats.sub0]\n83 = { version = 1 }\n", "s.toml:2: 83: expected bytes"},
        {"[debug_info]\nrecord = { fill = 0, size = 501 }\n", "s.toml:2: record.size: expected a whole number"},
        {"[debug_info]\nlogs = [65536]\n", "s.toml:2: logs: expected a whole number from 0 to 65535"},
        {"[efs]\n\"0:/a/b/c\" = '01'\n\"0:a//b\" = '02'\n", "s.toml:3: 0:a//b: expected the path of a file that"},
        {"[efs]\n\"0:/policyman\" = '01'\n", "s.toml:2: 0:/policyman: expected the path of a file that neither"},
        {"[at]\nAT = 1\n", "s.toml:2: AT: expected a text"},
        {"[diag]\nmask = 1\n", "s.toml:2: unknown key mask in [diag]: expected remote_mask, mpss_up, response, stream"},
        {"[[diag.stream]]\nkind = 'logs'\nbytes = ''\nevery_ms = 5\n", "s.toml:2: kind: expected log or event"},
        {"[[diag.stream]]\nkind = 'log'\nbytes = ''\nevery_ms = 0\n",
         "s.toml:4: every_ms: expected a whole number from 1"},
        {"[[diag.response]]\nrequest = '7C'\npackets = [ { size = 1 } ]\n", "s.toml:3: packets: expected the key fill"},
        {"[sar]\ndsi = 21\n", "s.toml:2: dsi: expected a whole number from 0 to 20"},
        {"[nas]\nnetworks = [ { mcc = 262 } ]\n", "s.toml:2: networks: expected the key mnc"},
        {"[[indication]]\nservice = 'diag'\nmessage = 1\nbytes = ''\n",
         "s.toml:1: [[indication]]: expected a service of QMI"},
        {"[[indication]]\nservice = 'vs'\nmessage = 1\n", "s.toml:1: [[indication]]: expected the key bytes"},
        {"[[indication]]\nservice = 'vs'\nmessage = 65536\nbytes = ''\n", "s.toml:3: message: expected a whole number"},
        {"[[indication]]\nservice = 'vs'\nmessage = 1\nbytes = ''\nevery_ms = 0\n",
         "s.toml:1: [[indication]]: expected"},
        {"[[fault]]\naction = 'silent'\n", "s.toml:1: [[fault]]: expected the key service"},
        {"[[fault]]\nservice = 'vs'\n", "s.toml:1: [[fault]]: expected the key action"},
        {"[[fault]]\nservice = 'vs'\naction = 'explode'\n", "s.toml:3: action: expected one of silent, delay, error"},
        {"[[fault]]\nservice = 'vs'\naction = 'twice'\n", "s.toml:3: action: expected one of silent, delay, error"},
        {"[[fault]]\nservice = 'vs'\non = 'indication'\naction = 'error'\ncode = 1\n",
         "s.toml:4: action: expected one of"},
        {"[[fault]]\nservice = 'vs'\non = 'answer'\naction = 'silent'\n",
         "s.toml:3: on: expected request or indication"},
        {"[[fault]]\nservice = 'vs'\naction = 'delay'\n", "s.toml:1: [[fault]]: expected the key ms"},
        {"[[fault]]\nservice = 'vs'\naction = 'error'\n", "s.toml:1: [[fault]]: expected the key code"},
        {"[[fault]]\nservice = 'vs'\naction = 'error'\ncode = 70000\n", "s.toml:4: code: expected a whole number"},
        {"[[fault]]\nservice = 'vs'\naction = 'result'\ncode = 1\n",
         "s.toml:3: action: expected result with the service"},
        {"[[fault]]\nservice = 'vs'\nqmi_id = 1\naction = 'silent'\n", "s.toml:1: [[fault]]: expected qmi_id with"},
        {"[[fault]]\nservice = 'vs'\nnth = 0\naction = 'silent'\n", "s.toml:3: nth: expected a whole number"},
        {"[[fault]]\nservice = 'vs'\nnth = 1\nfrom = 1\naction = 'silent'\n",
         "s.toml:1: [[fault]]: expected nth or from"},
        {"[[fault]]\nservice = 'vs'\naction = 'silent'\nms = 1\n", "s.toml:4: unknown key ms in [[fault]]"},
        {"[[fault]]\nservice = 'vs'\ncall = 'send'\naction = 'error'\ncode = 1\n",
         "s.toml:1: [[fault]]: expected call with"},
        {"[[fault]]\nservice = 'diag'\ncall = 'sent'\naction = 'error'\ncode = 1\n",
         "s.toml:3: call: expected one of lsm_init"},
        {"[[fault]]\nservice = 'diag'\ncall = 'send'\naction = 'silent'\n",
         "s.toml:4: action: expected error beside call"},
        {"[[fault]]\nservice = 'diag'\nmessage = 7\naction = 'silent'\n", "s.toml:1: [[fault]]: expected no message"},
        {"[[fault]]\nservice = 'diag'\naction = 'indicate'\nindication = 5\nbytes = ''\n",
         "s.toml:1: [[fault]]: expected no indication"},
        {"[[fault]]\nservice = 'diag'\naction = 'raw'\nbytes = { fill = 0, size = 16385 }\n",
         "s.toml:4: bytes.size: expected a whole number from 0 to 16384"},
        {"[[fault]]\nservice = 'extended'\naction = 'error'\ncode = 0\n", "s.toml:1: [[fault]]: expected a code other"},
        {"[[pdc.config]]\nid = 'A1'\n[[pdc.config]]\nid = 'a1'\n", "s.toml:3: [[pdc.config]]: expected each id"},
        {"[at]\n\"A\\rB\" = ''\n", "s.toml:2: [at]: expected commands of 1 to 2048 bytes"},
        // The same thing under two names.
        {"[nv]\n'0/1' = ''\n'0/1' = ''\n", "s.toml:3: expected each key and table once"},
        {"[nv]\n'0/1' = ''\n'00/0001' = ''\n", "s.toml:3: 00/0001: expected each one once, and 0/1 is the same"},
        {"[efs]\n'0://a' = ''\n'0:/a' = ''\n", "s.toml:3: 0:/a: expected each one once, and 0://a is the same"},
        {"[stats.sub0]\n082 = ''\n82 = ''\n", "s.toml:3: 82: expected each one once, and 082 is the same"},
        {"[[card]]\n[card.apdu]\n'80 CA' = ''\n80ca = ''\n", "s.toml:4: 80ca: expected each one once"},
        // What the parser fails at, or must not see.
        {"\n[@nv]\n", "s.toml:2: expected TOML"},
        {"[[[card]]\n", "s.toml:1: expected TOML"},
        {"[modem]\nservices = [}]\n[nv]\n", "s.toml:2: expected TOML"},
        {std::string("\n[\0s]\n", 6), "s.toml:2: expected no control characters"},
        {"[at]\nA = '\x7F'\n", "s.toml:2: expected no control characters"},
        {"# \xFF\n", "s.toml:1: expected TOML; Encountered invalid utf-8"},
        {"[nv]\nä = 1\n", "s.toml:2: expected letters outside ASCII in texts and comments alone"},
        {"[at]\nA = 'x'ä\n", "s.toml:2: expected letters"},
        {"[at]\nA = 1.'ä'\n", "s.toml:2: expected letters"},
        {"[at]\nA = 1[{'ä'}]\n", "s.toml:2: expected letters"},
        {"[at]\nA = [\n1='ä']\n", "s.toml:3: expected letters"},
        {"[at]\nA = '''''''ä'\n", "s.toml:2: expected letters"},
        {"[at]\nA = \"\\ä\"\n", "s.toml:2: expected no letter outside ASCII behind"},
        {"[at]\nA = \"\"\"\\ \n \nä\"\"\"\n", "s.toml:4: expected no letter outside ASCII behind"},
        {"[at]\nA = '\n'\n", "s.toml:2: expected the end of the text in its line"},
        {"\n" + repeated("a.", 40000) + "a = 1\n", "s.toml:2: expected a key of at most 16 parts"},
        {"[" + repeated("a . ", 16) + "a]\n", "s.toml:1: expected a key of at most 16 parts"},
        {"a = " + repeated("[\n", 17), "s.toml:17: expected at most 16 lists and tables within each other"},
        {"a = " + repeated("{a=", 17), "s.toml:1: expected at most 16 lists and tables within each other"},
        {repeated("a=1\n", 65537), "s.toml:65537: expected at most 65536 values"},
        {"a = [" + repeated("1,", 65536), "s.toml:1: expected at most 65536 values"},
        {std::string(4 * 1024 * 1024 + 1, ' '), "s.toml: expected at most 4194304 bytes"},
        {"[modem]\nservices = [\n" + repeated("{ fill = 1, size = 16777216 },\n", 5) + "]\n",
         "s.toml:7: size: expected at most 67108864 bytes of fillings in all"},
        // Control characters stay off the screen.
        {"[efs]\n\"0:/a\\u0000b\" = ''\n", "s.toml:2: 0:/a\\x00b: expected \"<sub>:<path>\""},
        {"[at]\n\"\\u001B[1m\\u009B1m\" = 1\n", "s.toml:2: \\x1B[1m\xC2\\x9B1m: expected a text"},
        // Values of other kinds, and files that are none.
        {"[modem]\nboot_ms = 1979-05-27\n", "s.toml:2: boot_ms: expected a whole number"},
        {"[stats.sub0]\n4294967296 = ''\n", "s.toml:2: 4294967296: expected a parameter's number"},
        {"[stats.sub0]\n82 = { fill = 1, size = 3001 }\n", "s.toml:2: 82.size: expected a whole number from 0 to 3000"},
        {"[pdc]\nreport = '.'\n", "s.toml:2: report: expected a regular file"},
        {"[pdc]\nreport = '/dev/zero'\n", "s.toml:2: report: expected a regular file"},
        {"[pdc]\nreport = \"a\\u0000\"\n", "s.toml:2: report: expected a file's name, without a zero byte"},
    };
    for (const auto& row : rows) {
        const std::string line = refusal(row.content);
        EXPECT_EQ(line.rfind(row.refusal, 0), 0u) << row.content.substr(0, 200) << line;
    }
}

TEST(Scenario, LettersOfAllTonguesPassInTextsAndComments)
{
    EXPECT_EQ(
        refusal("\xEF\xBB\xBF[at] # ä\r\n'ä' = \"\\\"ä\" # ä'\nA = '''\nä''ä'''''\nB = \"\"\"\\\n a ä\"ä\"\"\"\n"), "");
}

TEST(Scenario, OnlyARegularFileIsRead)
{
    const TempDir folder;
    ASSERT_EQ(::mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
    struct {
        std::filesystem::path file;
        const char* refusal;
    } const rows[] = {
        {folder.path() / "none", ": expected a file that can be read: No such file or directory"},
        {folder.path(), ": expected a regular file"},
        {folder.path() / "pipe", ": expected a regular file"},
        {"/dev/zero", ": expected a regular file"},
    };
    for (const auto& row : rows) {
        try {
            static_cast<void>(read_scenario(row.file));
            ADD_FAILURE() << row.file << " is taken";
        } catch (const ScenarioError& error) {
            EXPECT_EQ(error.what(), row.file.string() + row.refusal);
        }
    }
}

TEST(Scenario, ContentGoesIntoAFreshStateAloneOverTheBuiltInRows)
{
    const TempDir folder;
    const std::string scenario =
        "[nv]\n\"0/550\" = '08 3a\tFF'\n\"1/1\" = ''\n[efs]\n\"1:/deep/er\" = { fill = 0xAB, size = 5000 }\n";
    {
        RunningModem modem(scenario, folder.path());
        EXPECT_EQ(read_file(folder.path() / "nv/0/550"), (Bytes{0x08, 0x3A, 0xFF}));
        EXPECT_EQ(read_file(folder.path() / "nv/1/1"), Bytes{});
        EXPECT_EQ(read_file(folder.path() / "efs/1/deep/er"), Bytes(5000, 0xAB));
        EXPECT_EQ(read_file(folder.path() / "nv/0/6853").size(), 124u) << "the built-in rows are gone";
    }
    write_file(folder.path() / "nv/0/550", "kept");
    std::filesystem::remove_all(folder.path() / "efs");
    const RunningModem again(scenario, folder.path());
    EXPECT_EQ(read_file(folder.path() / "nv/0/550"), (Bytes{'k', 'e', 'p', 't'}));
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "efs"));
}

TEST(Scenario, OnlyTheServicesThatItNamesComeUp)
{
    RunningModem modem("[modem]\nservices = ['vs']\n");
    const std::vector<link::ControlPacket> found = modem.connect().lookup(0);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found.front().service, 228u);
}

}  // namespace
}  // namespace rbk::sim
