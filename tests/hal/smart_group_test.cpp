// Group 11 as people run it: restarts, dumps and switches with what later commands see of them, and the self-tests.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "support/group_test.h"
#include "velmor_rbk_groups.h"
#include "velmor_rbk_smart_test.h"

extern char** environ;

namespace rbk::test {
namespace {

const std::string kSmart = "RIL[velmor_rbk_smart_test.cpp:N] ";
const std::string kEntry = kSmart + "velmor_smart_test_do: ";

std::string line(const std::string& operation, const std::string& words)
{
    return kSmart + "velmor_smart_test_" + operation + ": " + words + "\n";
}

class SmartGroup : public GroupTest {
 public:
    static std::string property(const std::string& name)
    {
        const std::string out = run_rbk_prop({"get", name, "absent"}).out;
        return out.substr(0, out.find('\n'));
    }
    std::string efs(const std::string& path) const
    {
        const std::string content = read_file(home() / ("modem/efs/0" + path));
        return hex({content.begin(), content.end()});
    }
};

// ---- Restart, sync and dump ----

TEST_F(SmartGroup, RestartIsCountedBeforeItIsAskedFor)
{
    EXPECT_EQ(shown({"11", "0"}), line("modem_ssr", "Will trigger SSR of modem"));
    EXPECT_EQ(sent(0, 20),
              "0200000000000000"
              "1F000000"
              "04000000"
              "00100000");
    EXPECT_EQ(property("persist.radio.ssr_count_0x00001000"), "1");
    EXPECT_EQ(read_file(home() / "modem/marks/restart").substr(0, 9), "type 4096");
    scenario("[[fault]]\nservice = 'extended'\naction = 'error'\ncode = 3\n");
    shown({"11", "0"});
    EXPECT_EQ(property("persist.radio.ssr_count_0x00001000"), "2");
    EXPECT_EQ(shown({"11", "2", "more"}).substr(0, line("nv_sync", "Will trigger NV SYNC").size()),
              line("nv_sync", "Will trigger NV SYNC"));
    EXPECT_EQ(sent(0, 16),
              "0200000000000000"
              "23000000"
              "00000000");
}

std::string closing(int old_count, const std::string& wait)
{
    const std::string path = "EFS_PATH_MODEM_SSR_UPDATE_COUNT ";
    return line("full_dump", "need to close ssr") +
           line("read_ssr_update_flag", path + "read ret: " + (old_count == 0 ? "-2" : "0") +
                                            ", old update_cnt: " + std::to_string(old_count) + ", len: 4") +
           (old_count == 0 ? line("read_ssr_update_flag", "velmor_efs_read failed, maybe empty") : "") +
           line("save_ssr_update_flag", path + "write ret: 0, new update_cnt: " + std::to_string(old_count + 1)) + wait;
}
std::string state(const std::string& current, const std::string& backup)
{
    return line("full_dump",
                "Will trigger Full Dump, the current state: " + current + ", the default state: " + backup);
}
const std::string kSave = line("full_dump", "need to save ssr state");

TEST_F(SmartGroup, DumpWaitsAfterClosingRestarts)
{
    EXPECT_EQ(shown({"11", "1"}),
              kSave + state("ALL_ENABLE", "") +
                  closing(0, line("ssr_wait_s", "ssr wait_s = 5") + line("ssr_wait_s", "wait-start(5s) ...") +
                                 line("ssr_wait_s", "wait-end(5s)")));
    EXPECT_EQ(calls(), std::vector<std::string>{"sleep 5"});
    EXPECT_EQ(sent(0, 20),
              "0200000000000000"
              "63000000"
              "04000000"
              "00200000");
    EXPECT_EQ(property("persist.vendor.ssr.restart_level"), "ALL_DISABLE");
    EXPECT_EQ(property("persist.vendor.ssr.restart_level_bak"), "ALL_ENABLE");
    EXPECT_EQ(property("persist.radio.ssr_count_0x00002000"), "1");
    EXPECT_EQ(efs("/nv/item_files/modem/velmor/ssr_update_count"), "01000000");
    EXPECT_EQ(read_file(home() / "modem/dump/full_dump.txt").substr(0, 9), "full dump");

    EXPECT_EQ(shown({"11", "1"}), state("ALL_DISABLE", "ALL_ENABLE")) << "closed already: at once";
    EXPECT_EQ(property("persist.radio.ssr_count_0x00002000"), "2");
    EXPECT_EQ(efs("/nv/item_files/modem/velmor/ssr_update_count"), "01000000");
    EXPECT_TRUE(calls().empty());
}

TEST_F(SmartGroup, DumpWithoutAWaitGoesStraightOn)
{
    scenario("[efs]\n'0:/nv/item_files/modem/velmor/ssr_update_count' = 'FF 00 00 00'\n");
    set_property("persist.radio.ssr_wait_s", "0");
    set_property("persist.vendor.ssr.restart_level", "RELATED");
    set_property("persist.vendor.ssr.restart_level_bak", "FIRST");
    EXPECT_EQ(shown({"11", "1"}),
              state("RELATED", "FIRST") +
                  closing(255, line("ssr_wait_s", "ssr wait_s = 0") + line("ssr_wait_s", "modem ssr will not wait")));
    EXPECT_EQ(property("persist.vendor.ssr.restart_level_bak"), "FIRST") << "written once";
    EXPECT_EQ(efs("/nv/item_files/modem/velmor/ssr_update_count"), "00010000");
    EXPECT_EQ(property("persist.radio.ssr_count_0x00002000"), "1");
}

TEST_F(SmartGroup, NegativeWaitStopsTheDump)
{
    set_property("persist.radio.ssr_wait_s", "-1");
    EXPECT_EQ(shown({"11", "1"}),
              kSave + state("ALL_ENABLE", "") +
                  closing(0, line("ssr_wait_s", "ssr wait_s = -1") + line("ssr_wait_s", "modem ssr will not wait") +
                                 line("full_dump", "wait_s < 0, ssr is stoped")));
    EXPECT_EQ(property("persist.vendor.ssr.restart_level"), "ALL_DISABLE");
    EXPECT_EQ(property("persist.radio.ssr_count_0x00002000"), "absent");
    EXPECT_FALSE(std::filesystem::exists(home() / "modem/dump"));
}

TEST_F(SmartGroup, ClosedLevelIsSavedAsItStands)
{
    set_property("persist.vendor.ssr.restart_level", "ALL_DISABLE");
    EXPECT_EQ(shown({"11", "1"}), kSave + state("ALL_DISABLE", ""));
    EXPECT_EQ(property("persist.vendor.ssr.restart_level_bak"), "ALL_DISABLE");
}

// ---- Switches ----

struct Switch {
    const char* catches;
    const char* sub;
    std::string operation;
    std::string path;
    const char* content;
};
const Switch kSwitches[] = {
    {"HydraMask", "4", "bp_hydra_print", "/hydra/hydra_print_mask", "1F000000"},
    {"QmiFlag", "5", "bp_qmi_print", "/nv/item_files/modem/velmor/qmi_print_flag", "01000000"},
    {"RfMask", "6", "bp_rf_print", "/nv/item_files/modem/velmor/rf_print_mask", "0F000000"},
};

class SmartSwitch : public SmartGroup, public testing::WithParamInterface<Switch> {};

TEST_P(SmartSwitch, WritesDeletesAndRestarts)
{
    const Switch& row = GetParam();
    const std::string name = row.operation + "_switch";
    const std::string restarted = line("nv_sync", "Will trigger NV SYNC") +
                                  line("modem_ssr", "Will trigger SSR of modem") +
                                  line(name, "success, pls wait 10 seconds ");
    EXPECT_EQ(shown({"11", row.sub, "1"}), line(name, row.operation + ", opt = 1") + restarted);
    EXPECT_EQ(efs(row.path), row.content);
    EXPECT_EQ(requests()[0].bytes.substr(2 * (17 + 4), 2), le(row.path.size(), 1)) << "the path's length, bare";
    EXPECT_EQ(shown({"11", row.sub, "0"}), line(name, row.operation + ", opt = 0") + restarted);
    EXPECT_FALSE(std::filesystem::exists(home() / ("modem/efs/0" + row.path)));
    EXPECT_EQ(property("persist.radio.ssr_count_0x00001000"), "2");

    EXPECT_EQ(shown({"11", row.sub, "0"}),
              line(name, row.operation + ", opt = 0") + line(name, "velmor_efs_delete failed"));
    scenario("[[fault]]\nservice = 'extended'\nqmi_id = 2\naction = 'result'\ncode = -28\n");
    EXPECT_EQ(shown({"11", row.sub, "1"}),
              line(name, row.operation + ", opt = 1") + line(name, "velmor_efs_write failed"));
    EXPECT_EQ(property("persist.radio.ssr_count_0x00001000"), "2") << "no restart after a failure";
}
INSTANTIATE_TEST_SUITE_P(All, SmartSwitch, testing::ValuesIn(kSwitches),
                         [](const auto& row) { return row.param.catches; });

TEST_F(SmartGroup, OwnPrintIsOneOrTwo)
{
    EXPECT_EQ(shown({"11", "3", "0"}),
              line("ap_hydra_switch", "ap_hydra_print, opt = 0") + line("ap_hydra_switch", "success, need to reboot"));
    EXPECT_EQ(property("persist.vendor.radio.print_stats"), "2");
    shown({"11", "3", "1"});
    EXPECT_EQ(property("persist.vendor.radio.print_stats"), "1");
    EXPECT_TRUE(trace().empty());
}

// ---- Self-tests ----

// The group's entry in this process.
std::string run_here(std::vector<std::string> words)
{
    words.insert(words.begin(), "rbk");
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    return without_line_numbers(
        output_of([&] { velmor_smart_test_do(static_cast<int>(words.size()), arguments.data()); }));
}

TEST_F(SmartGroup, SharedMemoryShowsWhatLiesThere)
{
    EXPECT_STREQ(g_share_memory_file_path, "/data/vendor/modem/share_memory");
    const std::string path = home() / "share_memory";
    g_share_memory_file_path = path.c_str();
    const std::string text = run_here({"11", "7"});
    for (const char* words : {"data_ptr[0]: 0\n", "data_ptr[4]: 0\n", "ftruncate, ret: 0\n", "munmap, ret: 0\n"})
        EXPECT_NE(text.find(words), std::string::npos) << words;
    EXPECT_EQ(text.find("data_ptr[5]"), std::string::npos);
    EXPECT_TRUE(text.ends_with(line("sh_test_read", "close fd")));
    EXPECT_EQ(read_file(path), std::string(100, '\0'));

    write_file(path, "\x01\xFF\x03");
    EXPECT_NE(run_here({"11", "7"}).find("data_ptr[1]: 255\n"), std::string::npos);
    EXPECT_EQ(read_file(path).size(), 100U);

    const std::string nowhere = home() / "absent/share_memory";
    g_share_memory_file_path = nowhere.c_str();
    EXPECT_TRUE(
        run_here({"11", "7"}).ends_with(line("sh_test_read", "open, fd: -1") + line("sh_test_read", "shm_open error")));
}

TEST_F(SmartGroup, TimerTestEndsWithItsTimer)
{
    setenv("RBK_TEST_DIVISOR", "20", 1);
    const std::string text = shown({"11", "8", "10"});
    const std::string timer = line("velmor_timer", "Timer test start, timeout_s = 10") +
                              line("velmor_timer",
                                   "Start one timer(timer_id 1), will pause until this timer is "
                                   "expired ...") +
                              line("velmor_timer", "1 second has passed");
    EXPECT_TRUE(text.starts_with(timer)) << text;
    EXPECT_NE(text.find(line("velmor_timer", "2 seconds have passed")), std::string::npos);
    EXPECT_NE(text.find(kSmart + "velmor_rbk_delay_timer_cb: The timer expired with ID 1\n"), std::string::npos);
    EXPECT_TRUE(text.ends_with(line("velmor_timer", "Timer test done"))) << text;
}

TEST_F(SmartGroup, DeadCycleSpinsOneProcessorForEver)
{
    setenv("RBK_TEST_DIVISOR", "1000", 1);
    pid_t child = -1;
    std::string program = rbk_path();
    char group[] = "11", sub[] = "9", more[] = "5";
    char* arguments[] = {program.data(), group, sub, more, nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    ASSERT_EQ(posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ), 0);
    posix_spawn_file_actions_destroy(&actions);

    // Processor time goes up, and no sleep is asked for.
    clockid_t clock;
    ASSERT_EQ(clock_getcpuclockid(child, &clock), 0);
    timespec used{};
    for (int i = 0; i < 20000 && used.tv_sec == 0 && used.tv_nsec < 300'000'000; ++i) {
        usleep(1'000'000);  // shortened
        clock_gettime(clock, &used);
    }
    EXPECT_GE(used.tv_sec * 1'000'000'000 + used.tv_nsec, 300'000'000);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, WNOHANG), 0);
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    EXPECT_EQ(log_count("velmor_smart_test_dead_cycle_test_do start"), 1U);
    EXPECT_EQ(log_count("velmor_smart_test_dead_cycle_test_do end"), 0U);
    EXPECT_EQ(log_count("Will wait 1s"), 0U);
}

// ---- Refusals ----

struct Refusal {
    const char* catches;
    Words words;
    std::string words_shown;
};
const Refusal kRefusals[] = {
    {"NoSubCommand", {"11"}, "note: Too few parameters, Pls refer to the following cmd:"},
    {"SwitchWithoutOpt", {"11", "3"}, "note: Too few parameters, Pls refer to the following cmd:"},
    {"LastSwitchWithoutOpt", {"11", "6"}, "note: Too few parameters, Pls refer to the following cmd:"},
    {"TimerWithoutSeconds", {"11", "8"}, "note: Too few parameters, Pls refer to the following cmd:"},
    {"OptOutOfRange", {"11", "4", "2"}, "note: opt(2) is invalid:"},
    {"NegativeOptTakenForOn", {"11", "5", "-1"}, "note: opt(-1) is invalid:"},
    {"SubCommandBehindTheLastRun", {"11", "10"}, "invalid par_i = 10"},
    {"NegativeSubCommandRun", {"11", "-1", "1"}, "invalid par_i = -1"},
};

class SmartRefusal : public SmartGroup, public testing::WithParamInterface<Refusal> {};

TEST_P(SmartRefusal, EndsInItsNoteAndTheHelp)
{
    EXPECT_EQ(shown(GetParam().words), kEntry + GetParam().words_shown + "\n" + help_of(11));
    EXPECT_TRUE(trace().empty());
}
INSTANTIATE_TEST_SUITE_P(All, SmartRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return row.param.catches; });

}  // namespace
}  // namespace rbk::test
