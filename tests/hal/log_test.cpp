// Masks, the two forms of LOG, and what each channel gets.
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "support/home.h"
#include "support/program.h"
#include "velmor_utils_cmn.h"

namespace rbk::test {
namespace {

using Lines = std::vector<std::string>;

// One message at each level, as the shell shows it without traces' line numbers.
std::string all_levels()
{
    return without_line_numbers(output_of([] {
        LOG(1, "one");
        LOG(2, "two");
        LOG(4, "four");
        LOG(8, "eight");
    }));
}

const char* const kShell[] = {"RIL[log_test.cpp:N] operator(): one\n", "RIL[log_test.cpp:N] operator(): two\n",
                              "RIL[log_test.cpp:N] operator(): four\n", "eight\n"};

std::string shell_lines(unsigned levels)
{
    std::string text;
    for (unsigned i = 0; i < 4; ++i)
        if ((levels >> i & 1) != 0) text += kShell[i];
    return text;
}

struct MaskCase {
    const char* catches;
    std::optional<std::string> property;
    unsigned mask;
};
const MaskCase kMaskCases[] = {{"DefaultIsNotAllOpen", std::nullopt, 15},
                               {"DefaultClosesALevel", "65535", 15},
                               {"PropertyIgnored", "9", 9},
                               {"ZeroIsTakenForUnset", "0", 0},
                               {"MergeWidensTheMask", "65536", 0},
                               {"WordIsNotZero", "none", 0},
                               {"NumberEndsTheValueWrongly", "6 levels", 6}};

class MaskTest : public HomeTest, public testing::WithParamInterface<MaskCase> {};

TEST_P(MaskTest, ShellShowsTheLevelsOfItsProperty)
{
    if (GetParam().property) set_property("persist.vendor.radio.adb_log_shell", *GetParam().property);
    EXPECT_EQ(all_levels(), shell_lines(GetParam().mask));
}

TEST_P(MaskTest, LogShowsTheLevelsOfItsProperty)
{
    if (GetParam().property) set_property("persist.vendor.radio.adb_log_velmor", *GetParam().property);
    all_levels();
    const char* const bodies[] = {"one", "two", "four", "eight"};
    unsigned seen = 0;
    for (const std::string& line : log())
        for (unsigned i = 0; i < 4; ++i)
            if (line.ends_with(std::string("operator(): ") + bodies[i])) seen |= 1u << i;
    EXPECT_EQ(seen, GetParam().mask);
}

INSTANTIATE_TEST_SUITE_P(, MaskTest, testing::ValuesIn(kMaskCases), [](const auto& row) { return row.param.catches; });

class LogTest : public HomeTest {
 protected:
    // The log without the lines of the two merges.
    Lines messages()
    {
        Lines lines;
        for (const std::string& line : log())
            if (line.find("_print_mask 0x") == std::string::npos) lines.push_back(without_line_numbers(line));
        return lines;
    }
};

void operation_with_failure()
{
    LOG(1, "item %d: %s", 6853, "gone");
}

void shared_steps(const char* operation)
{
    LOG_FROM(operation, 2, "step %d", 1);
    LOG_FROM(operation, 2, "step %d", 2);
}
constexpr int kShared = __LINE__ - 3;  // of the first step

TEST_F(LogTest, LevelOneIsAnErrorWithFileLineAndFunction)
{
    EXPECT_EQ(without_line_numbers(output_of(operation_with_failure)),
              "RIL[log_test.cpp:N] operation_with_failure: item 6853: gone\n");
    EXPECT_EQ(messages(), Lines{"3 [log_test.cpp:N] operation_with_failure: item 6853: gone"});
}

TEST_F(LogTest, SecondFormHasTheOperationsNameAndTheLineOfTheStep)
{
    const auto step = [](int number) {
        return "[log_test.cpp:" + std::to_string(kShared - 1 + number) + "] velmor_cmn_card_status_cmd: step " +
               std::to_string(number);
    };
    EXPECT_EQ(output_of([] { shared_steps("velmor_cmn_card_status_cmd"); }),
              "RIL" + step(1) + "\nRIL" + step(2) + "\n");
    EXPECT_NE(read_file(home() / "log").find("7 " + step(2)), std::string::npos);
}

TEST_F(LogTest, LineFeedsOfABodyStayOnTheShellAndAreEscapedInTheCopy)
{
    EXPECT_EQ(output_of([] { LOG(8, "100%% of %s\n", "two lines"); }), "100% of two lines\n\n");
    EXPECT_EQ(messages(), Lines{"7 [log_test.cpp:N] operator(): 100% of two lines\\n"});
}

TEST_F(LogTest, ProcessInstanceChoosesThePrefixOfTheLogAlone)
{
    const std::string name = std::filesystem::read_symlink("/proc/self/exe").filename();
    const struct {
        uint32_t instance;
        std::string prefix;
    } rows[] = {{255, ""}, {168, "[" + name + "]"}, {0, "SUB[0]"}, {1, "SUB[1]"}};
    for (const auto& row : rows) {
        g_ril_process_instance_id = row.instance;
        EXPECT_EQ(without_line_numbers(output_of(operation_with_failure)),
                  "RIL[log_test.cpp:N] operation_with_failure: item 6853: gone\n");
        EXPECT_EQ(messages().back(), "3 " + row.prefix + "[log_test.cpp:N] operation_with_failure: item 6853: gone");
    }
    EXPECT_EQ(velmor_get_ril_process_instance_id(), 1u);
}

TEST_F(LogTest, MergeIsToldOnceInTheLog)
{
    set_property("persist.vendor.radio.adb_log_velmor", "3");
    set_property("persist.vendor.radio.adb_log_shell", "0");
    output_of([] {
        LOG(4, "closed on both");
        LOG(4, "closed on both");
    });
    EXPECT_EQ(log(),
              (Lines{"7 merge, old velmor_hal_set_logcat_print_mask 0xffff, merge_mask 0x3",
                     "7 new velmor_hal_set_logcat_print_mask 0x3",
                     "7 logcat print is started, g_velmor_logcat_print_mask 0x3",
                     "7 merge, old g_velmor_shell_print_mask 0xffff, merge_mask 0x0",
                     "7 new g_velmor_shell_print_mask 0x0", "7 shell print is stoped, g_velmor_shell_print_mask 0x0"}));
}

TEST_F(LogTest, SetReplacesAMergedMaskAndRemoveTakesBitsOut)
{
    set_property("persist.vendor.radio.adb_log_shell", "9");
    EXPECT_EQ(all_levels(), shell_lines(9));
    log();
    velmor_hal_set_shell_print_mask(11);
    EXPECT_EQ(all_levels(), shell_lines(11));
    velmor_hal_remove_shell_print_mask(3);
    EXPECT_EQ(all_levels(), shell_lines(8));
    Lines told;
    for (const std::string& line : log())
        if (line.find("_print_mask 0x") != std::string::npos) told.push_back(line);
    EXPECT_EQ(
        told,
        (Lines{"7 set, old g_velmor_shell_print_mask 0x9, dst_mask 0xb", "7 new g_velmor_shell_print_mask 0xb",
               "7 remove, old g_velmor_shell_print_mask 0xb, rm_mask 0x3", "7 new g_velmor_shell_print_mask 0x8"}));
}

TEST_F(LogTest, GateAsksForEveryBit)
{
    velmor_hal_get_shell_print_flag(1);
    velmor_hal_set_shell_print_mask(5);
    EXPECT_TRUE(velmor_hal_get_shell_print_flag(5));
    EXPECT_FALSE(velmor_hal_get_shell_print_flag(3));
}

TEST_F(LogTest, ClosedChannelsStayClosedAndCostNoArguments)
{
    LOG(4, "merges both");
    log();
    velmor_hal_close_print();
    int worked_out = 0;
    EXPECT_EQ(output_of([&] {
                  LOG(1, "%d", ++worked_out);
                  LOG(8, "%d", ++worked_out);
              }),
              "");
    EXPECT_EQ(worked_out, 0);
    EXPECT_EQ(log(), Lines{});
}

TEST_F(LogTest, LinesOfSeveralThreadsDoNotTear)
{
    const std::string body(200, 'x');
    const std::string out = output_of([&] {
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] {
                for (int n = 0; n < 200; ++n) LOG(2, "%s", body.c_str());
            });
        for (std::thread& thread : threads) thread.join();
    });
    const Lines shown = lines_of(without_line_numbers(out));
    EXPECT_EQ(shown, Lines(800, "RIL[log_test.cpp:N] operator(): " + body));
    EXPECT_EQ(messages(), Lines(800, "7 [log_test.cpp:N] operator(): " + body));
}

// Registered before anything of the log has been used, so it runs after whatever that would clear away.
void say_at_exit()
{
    LOG(1, "late");
    velmor_set_property_value("persist.late", "1");
    LOG(1, "%s", velmor_utils_get_pid_name());
    velmor_print_property_value("../x");
}

TEST_F(LogTest, LogAndPropertiesAreUsableWhileTheProcessEnds)
{
    EXPECT_EXIT(
        {
            std::atexit(say_at_exit);
            LOG(1, "first");
            std::exit(0);
        },
        testing::ExitedWithCode(0), "rbk: ../x: ");
    const Lines told = messages();
    EXPECT_EQ(std::count(told.begin(), told.end(), "3 [log_test.cpp:N] say_at_exit: late"), 1);
    EXPECT_EQ(std::count(told.begin(), told.end(), "3 [log_test.cpp:N] say_at_exit: modem_api_test"), 1);
    EXPECT_EQ(read_file(home() / "properties/kept/persist.late"), "1\n");
}

}  // namespace
}  // namespace rbk::test
