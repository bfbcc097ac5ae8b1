// Masks, the two forms of LOG, and what each channel gets.
#include <cstdlib>
#include <thread>

#include "support/home.h"
#include "support/program.h"
#include "velmor_utils_cmn.h"

namespace rbk::test {
namespace {

using Lines = std::vector<std::string>;

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

void say_all_levels()
{
    LOG(1, "one");
    LOG(2, "two");
    LOG(4, "four");
    LOG(8, "eight");
}
// The sum of the levels whose lines stand in a text.
unsigned levels_in(const std::vector<std::string>& lines)
{
    unsigned levels = 0;
    for (const std::string& line : lines) {
        const std::string body = line.substr(line.rfind(' ') + 1);
        levels += body == "one" ? 1 : body == "two" ? 2 : body == "four" ? 4 : body == "eight" ? 8 : 0;
    }
    return levels;
}

TEST_F(LogTest, ChannelsShowTheLevelsOfTheirProperties)
{
    const std::pair<const char*, unsigned> rows[] = {{"", 15},     {"9", 9},    {"0", 0},
                                                     {"65536", 0}, {"none", 0}, {"6 l", 6}};
    for (const auto& [property, mask] : rows) {
        for (const bool shell : {true, false}) {
            SCOPED_TRACE(property);
            std::filesystem::remove_all(home() / "properties");
            g_velmor_shell_print_mask = g_velmor_logcat_print_mask = 0xffff;  // as in a new process
            g_shell_mask_merged = g_logcat_mask_merged = 0;
            set_property(shell ? "persist.vendor.radio.adb_log_shell" : "persist.vendor.radio.adb_log_velmor",
                         property);
            log();
            EXPECT_EQ(levels_in(lines_of(output_of(say_all_levels))), shell ? mask : 15U);
            EXPECT_EQ(levels_in(log()), shell ? 15U : mask);
        }
    }
}

TEST_F(LogTest, ProcessInstanceChoosesThePrefixOfTheLogAlone)
{
    const auto fail = [] { LOG_FROM("card_status", 1, "item %d: %s", 6853, "gone"); };
    const std::string body = "[log_test.cpp:" + std::to_string(__LINE__ - 1) + "] card_status: item 6853: gone";
    const std::pair<uint32_t, std::string> rows[] = {
        {255, ""}, {168, "[modem_api_test]"}, {0, "SUB[0]"}, {1, "SUB[1]"}};
    for (const auto& [instance, prefix] : rows) {
        g_ril_process_instance_id = instance;
        EXPECT_EQ(output_of(fail), "RIL" + body + "\n");
        EXPECT_NE(read_file(home() / "log").find("\n3 " + prefix + body + "\n"), std::string::npos);
    }
    EXPECT_EQ(velmor_get_ril_process_instance_id(), 1U);
}

TEST_F(LogTest, ChangesOfAMaskAreToldInTheLog)
{
    set_property("persist.vendor.radio.adb_log_velmor", "3");
    set_property("persist.vendor.radio.adb_log_shell", "9");
    for (int i = 0; i < 2; ++i) EXPECT_EQ(levels_in(lines_of(output_of(say_all_levels))), 9U);
    velmor_hal_set_shell_print_mask(11);
    EXPECT_EQ(levels_in(lines_of(output_of(say_all_levels))), 11U);
    velmor_hal_remove_shell_print_mask(3);
    EXPECT_EQ(levels_in(lines_of(output_of(say_all_levels))), 8U);
    EXPECT_TRUE(velmor_hal_get_shell_print_flag(8));
    EXPECT_FALSE(velmor_hal_get_shell_print_flag(9)) << "every bit is asked for";
    Lines told = log();
    std::erase_if(told, [](const std::string& line) { return line.find("_print_mask 0x") == std::string::npos; });
    EXPECT_EQ(
        told,
        (Lines{"7 merge, old velmor_hal_set_logcat_print_mask 0xffff, merge_mask 0x3",
               "7 new velmor_hal_set_logcat_print_mask 0x3",
               "7 logcat print is started, g_velmor_logcat_print_mask 0x3",
               "7 merge, old g_velmor_shell_print_mask 0xffff, merge_mask 0x9", "7 new g_velmor_shell_print_mask 0x9",
               "7 shell print is started, g_velmor_shell_print_mask 0x9",
               "7 set, old g_velmor_shell_print_mask 0x9, dst_mask 0xb", "7 new g_velmor_shell_print_mask 0xb",
               "7 remove, old g_velmor_shell_print_mask 0xb, rm_mask 0x3", "7 new g_velmor_shell_print_mask 0x8"}));
}

TEST_F(LogTest, ClosedChannelsStayClosedAndCostNoArguments)
{
    set_property("persist.vendor.radio.adb_log_shell", "0");
    LOG(4, "merges both");
    const Lines merged = log();
    EXPECT_EQ(std::count(merged.begin(), merged.end(), "7 shell print is stoped, g_velmor_shell_print_mask 0x0"), 1);
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
    EXPECT_EQ(lines_of(without_line_numbers(out)), Lines(800, "RIL[log_test.cpp:N] operator(): " + body));
    EXPECT_EQ(messages(), Lines(800, "7 [log_test.cpp:N] operator(): " + body));
}

// Registered before anything of the log has been used, so it runs after whatever that would clear away.
void say_at_exit()
{
    LOG(1, "late of %s", velmor_utils_get_pid_name());
    velmor_set_property_value("persist.late", "1");
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
    EXPECT_EQ(std::count(told.begin(), told.end(), "3 [log_test.cpp:N] say_at_exit: late of modem_api_test"), 1);
    EXPECT_EQ(read_file(home() / "properties/kept/persist.late"), "1\n");
}

}  // namespace
}  // namespace rbk::test
