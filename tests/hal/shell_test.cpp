// The command line: groups, their help byte for byte, and the AT command.
#include <gtest/gtest.h>

#include "support/help_text.h"
#include "support/home.h"
#include "support/no_threads.h"
#include "support/program.h"
#include "velmor_rbk_groups.h"

namespace rbk::test {
namespace {

using Lines = std::vector<std::string>;

class ShellTest : public HomeTest {
 protected:
    // Runs the shell with only the levels 1, 2 and 8 shown; messages stand there without line numbers.
    std::string shown(const Lines& arguments)
    {
        set_property("persist.vendor.radio.adb_log_shell", "11");
        const RunResult result = run_rbk(arguments);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        return without_line_numbers(result.out);
    }
};

TEST_F(ShellTest, WholeHelpForNothingAndForWhatIsNoGroup)
{
    for (const Lines& arguments : {Lines{}, Lines{"0"}, Lines{"13"}, Lines{"-4"}, Lines{"word"}, Lines{""}})
        EXPECT_EQ(shown(arguments), help_of(0));
}

TEST_F(ShellTest, HelpOfOneGroupStandsBetweenTheBanners)
{
    for (int group = 1; group <= 12; ++group) {
        EXPECT_EQ(output_of([&] { show_help(group); }), help_of(group)) << group;
        EXPECT_GT(help_of(group).size(), 300u);
    }
}

TEST_F(ShellTest, HelpIsLoggedByTheOperationOfItsGroup)
{
    const struct {
        int group;
        std::string from;
    } rows[] = {{2, "[velmor_rbk_test_main.cpp:N] show_help: "},
                {3, "[velmor_rbk_test_rf.cpp:N] velmor_test_rf_show_help: "},
                {4, "[velmor_rbk_test_nvefs.cpp:N] velmor_test_nvefs_show_help: "},
                {5, "[velmor_rbk_test_cmn.cpp:N] velmor_test_cmn_show_help: "},
                {6, "[velmor_rbk_test_cmn.cpp:N] velmor_test_qmi_send_data_show_help: "},
                {7, "[velmor_rbk_hydra_test.cpp:N] velmor_test_qmi_modem_stats_show_help: "},
                {8, "[velmor_rbk_at_cmd.cpp:N] velmor_test_at_cmd_show_help: "},
                {9, "[velmor_rbk_hydra_data.cpp:N] velmor_test_modem_stats_show_help: "},
                {10, "[velmor_rbk_mbn.cpp:N] velmor_test_mbn_show_help: "},
                {11, "[velmor_rbk_smart_test.cpp:N] velmor_smart_test_show_help: "},
                {12, "[velmor_rbk_qmi.cpp:N] velmor_test_qmi_show_help: "}};
    for (const auto& row : rows) {
        const std::string out = output_of([&] { show_help(row.group); });
        const Lines told = log();
        const std::string head = "7 " + row.from + std::to_string(row.group) + ": ";
        EXPECT_EQ(std::count_if(told.begin(), told.end(),
                                [&](const std::string& line) { return without_line_numbers(line).starts_with(head); }),
                  1)
            << head;
    }
}

TEST_F(ShellTest, GroupsWithoutAnEntryAreNotSupported)
{
    for (const Lines& arguments : {Lines{"1"}, Lines{"1", "4", "550"}, Lines{"2", "0"}, Lines{"2x"}})
        EXPECT_EQ(shown(arguments), "RIL[velmor_rbk_test_main.cpp:N] main: Not support\n");
}

TEST_F(ShellTest, ClosedMaskSilencesStandardOutput)
{
    set_property("persist.vendor.radio.adb_log_shell", "0");
    EXPECT_EQ(run_rbk({}).out, "");
}

TEST_F(ShellTest, IdentityIsReadOnlyWhereATraceIsOpen)
{
    set_property("persist.vendor.radio.adb_log_shell", "9");
    set_property("persist.vendor.radio.adb_log_velmor", "9");
    run_rbk({"2"});
    for (const std::string& line : log()) EXPECT_EQ(line.find("pid"), std::string::npos) << line;
    set_property("persist.vendor.radio.adb_log_shell", "4");
    const std::string out = run_rbk({"2"}).out;
    EXPECT_NE(out.find("VELMOR_MANUFACTURER_ID is VELMOR_MANUFACTURER_ID_VELMOR(1), p_id: "), std::string::npos);
    EXPECT_NE(out.find(", p_name: rbk\n"), std::string::npos);
}

TEST_F(ShellTest, BadSurroundingsAreToldOnceAndTheCommandGoesOn)
{
    write_file(home() / "file", "no directory");
    const std::string file = home() / "file";
    const struct {
        const char* catches;
        Lines arguments;
        const char* variable;
        std::string value;
        std::string told;
    } rows[] = {
        {"BrokenHomeStopsTheHelp", {"13"}, "RBK_HOME", file, file + ": Not a directory"},
        {"BrokenHomeToldByStoreAndModem", {"4", "1", "0", "550"}, "RBK_HOME", file, file + ": Not a directory"},
        {"ModemWithoutPath",
         {"4", "1", "0", "550"},
         "RBK_MODEM",
         "unix:",
         "RBK_MODEM: expected embedded, unix:PATH or qrtr, not \"unix:\""},
    };
    for (const auto& row : rows) {
        const RunResult result = run_rbk(row.arguments, {.variables = {{row.variable, row.value}}});
        EXPECT_EQ(result.status, 0) << row.catches;
        EXPECT_EQ(result.err, "rbk: " + row.told + "\n") << row.catches;
        EXPECT_TRUE(result.out.ends_with(help_of(row.arguments[0] == "13" ? 0 : 4))) << row.catches;
    }
}

// ---- Group 8 ----

const char* const kAt = "RIL[velmor_rbk_at_cmd.cpp:N] ";

struct AtCase {
    const char* catches;
    Lines arguments;     // behind the group
    const char* answer;  // of the system's shell
    Lines calls;
    Lines shown;  // without order: two threads speak
    bool help;
};

const std::string kHundred(100, 'A');

const AtCase kAtCases[] = {
    {"CommandIsOptional",
     {},
     "0",
     {},
     {"velmor_test_at_cmd_do: note: The number of inputs should be 2, Pls refer to the following cmd:"},
     true},
    {"FurtherWordsIgnored",
     {"AT", "X"},
     "0",
     {},
     {"velmor_test_at_cmd_do: note: The number of inputs should be 2, Pls refer to the following cmd:"},
     true},
    {"LimitNotInclusive",
     {kHundred},
     "0",
     {"system echo \"" + kHundred + "\r\" > /dev/smd8"},
     {"velmor_test_at_cmd_do: At cmd you input: sscanf(1), len (100), " + kHundred,
      "velmor_test_at_cmd_send: echo, ret_sys: 0"},
     false},
    {"LongCommandCut",
     {kHundred + "B"},
     "0",
     {},
     {"velmor_test_at_cmd_do: note: the second parameters length should <= 100, Pls refer to the following cmd:"},
     true},
    {"BlankDoesNotEndTheCommand",
     {"AT+X Y"},
     "0",
     {"system echo \"AT+X\r\" > /dev/smd8"},
     {"velmor_test_at_cmd_do: At cmd you input: sscanf(1), len (4), AT+X",
      "velmor_test_at_cmd_send: Success to send at shell cmd"},
     false},
    {"EmptyCommandRefused",
     {""},
     "0",
     {"system echo \"\r\" > /dev/smd8"},
     {"velmor_test_at_cmd_do: At cmd you input: sscanf(-1), len (0), "},
     false},
    {"ShellCharactersQuoted", {"AT+`$X`"}, "0", {"system echo \"AT+`$X`\r\" > /dev/smd8"}, {}, false},
    {"FailedSendBringsHelp",
     {"AT"},
     "512",
     {"system echo \"AT\r\" > /dev/smd8"},
     {"velmor_test_at_cmd_send: echo, ret_sys: 512", "velmor_test_at_cmd_send: Fail to send at shell cmd",
      "velmor_test_at_cmd_receive: The thread to receive data from serial is started",
      "velmor_test_at_cmd_receive: The at channel is not opened, g_at_serial_fd 0"},
     false}};

class AtTest : public ShellTest, public testing::WithParamInterface<AtCase> {};

TEST_P(AtTest, OneCommand)
{
    setenv("RBK_TEST_SYSTEM", GetParam().answer, 1);
    Lines arguments{"8"};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());
    const std::string out = shown(arguments);
    for (const std::string& line : GetParam().shown)
        EXPECT_NE(out.find(kAt + line + "\n"), std::string::npos) << line << "\n" << out;
    EXPECT_EQ(out.ends_with(help_of(8)), GetParam().help);
    EXPECT_EQ(out.find("=====") != std::string::npos, GetParam().help);
    EXPECT_EQ(out.find("is started") == std::string::npos, GetParam().help) << "no thread where the help is shown";
    Lines sent;
    for (const std::string& call : calls())
        if (call != "sleep 1") sent.push_back(call);
    EXPECT_EQ(sent, GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(, AtTest, testing::ValuesIn(kAtCases), [](const auto& row) { return row.param.catches; });

// The group's entry in this process, as another caller than main would have it.
std::string at_entry(const char* group, const char* command)
{
    char* arguments[] = {const_cast<char*>("rbk"), const_cast<char*>(group), const_cast<char*>(command), nullptr};
    return output_of([&] { EXPECT_EQ(velmor_test_at_cmd_do(3, arguments), 0); });
}

TEST_F(ShellTest, AtEntrySendsNothingWithoutAThreadThatReceives)
{
    const NoThreads no_threads;
    EXPECT_TRUE(without_line_numbers(at_entry("8", "AT"))
                    .ends_with(std::string(kAt) + "velmor_test_at_cmd_do: Fail to create a thread\n" + help_of(8)));
    EXPECT_EQ(calls(), Lines{});
}

TEST_F(ShellTest, AtEntryChecksTheGroupThatItIsCalledWith)
{
    const std::string out = at_entry("9", "AT");
    EXPECT_EQ(without_line_numbers(out),
              std::string(kAt) +
                  "velmor_test_at_cmd_do: note: the first parameters should be 8, Pls refer to the following cmd:\n" +
                  help_of(8));
    EXPECT_EQ(calls(), Lines{});
}

}  // namespace
}  // namespace rbk::test
