// What of the groups isn't a session (golden/*.t): entries called by another than main, threads that speak at once, the
// shell's tests of its own mechanisms.
#include <fcntl.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <set>
#include <thread>

#include "support/embedded_run.h"
#include "support/no_threads.h"
#include "support/program.h"
#include "velmor_mbn_utils.h"
#include "velmor_rbk_groups.h"
#include "velmor_rbk_smart_test.h"
#include "velmor_rbk_test_cmn.h"
#include "velmor_utils_cmn.h"

// Nothing opens the AT channel, so what is read from it is seen only from within.
namespace opened {
#include "modem/hal/rbk/velmor_rbk_at_cmd.cpp"
}

namespace rbk::test {
namespace {

using Words = std::vector<std::string>;
using Entry = int (*)(int argc, char* argv[]);

class ShellTest : public EmbeddedRun {
 protected:
    ShellTest() { set_property("persist.vendor.radio.adb_log_shell", "11"); }

    // What a run of the shell prints.
    static std::string shown(const Words& words)
    {
        const RunResult result = run_rbk(words);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        return without_line_numbers(result.out);
    }
    // What the entry says to these words on the screen, a line each: "7 operation: text\n", 7 being the priority in the
    // log. A thread that receives comes last.
    std::string said(Entry entry, Words words)
    {
        words.insert(words.begin(), "rbk");
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        screen_ = output_of([&] { EXPECT_EQ(entry(static_cast<int>(words.size()), arguments.data()), 0); });
        std::string lines, received;
        for (const std::string& line : log()) {
            if (screen_.find("RIL" + line.substr(2) + "\n") == std::string::npos) continue;
            const std::string text = line.substr(0, 2) + line.substr(line.find("] ") + 2) + "\n";
            (text.find("receive: ") == std::string::npos ? lines : received) += text;
        }
        return lines + received;
    }
    std::string screen_;  // as it was
};

TEST_F(ShellTest, EachEntryChecksTheGroupThatItIsCalledWith)
{
    // From group 3 on.
    // clang-format off
    const Entry entries[] = {
        velmor_test_rf_do, velmor_test_nvefs_do, velmor_test_cmn_do, velmor_test_qmi_send_data_do, velmor_test_modem_stats_do,
        velmor_test_at_cmd_do, velmor_test_qmi_modem_stats_do, velmor_test_mbn_do, velmor_smart_test_do, velmor_test_qmi_do};
    // clang-format on
    for (int group = 3; group <= 12; ++group) {
        const std::string text = said(entries[group - 3], group == 8 ? Words{"13", "1"} : Words{"13", "1", "0"});
        const std::string note = "_do: note: the first parameters should be " + std::to_string(group) +
                                 ", Pls refer to the following cmd:\n";
        EXPECT_TRUE(text.starts_with("3 velmor_") && text.find(note) + note.size() == text.size()) << text;
        EXPECT_TRUE(screen_.ends_with(help_of(group))) << group;
    }
    EXPECT_TRUE(trace().empty());
}

TEST_F(ShellTest, HelpOfOneGroupStandsBetweenTheBanners)
{
    for (const int group : {1, 2, 7, 9}) EXPECT_EQ(output_of([&] { show_help(group); }), help_of(group)) << group;
    EXPECT_EQ(log_count("] velmor_test_qmi_modem_stats_show_help: 7: "), 1U) << "the names cross over";
    EXPECT_EQ(log_count("] velmor_test_modem_stats_show_help: 9: "), 1U);
}

// ---- AT commands: the main thread sends while another receives ----

const std::string kDo = " velmor_test_at_cmd_do: ", kSend = " velmor_test_at_cmd_send: ";
const std::string kReceive = " velmor_test_at_cmd_receive: ";
const std::string kStarted = "7" + kReceive + "The thread to receive data from serial is started\n";

TEST_F(ShellTest, AtCommandGoesToTheDeviceBesideAThreadThatReceives)
{
    const struct {
        const char* catches;
        std::string word, scanned, answer;  // of the system's shell
    } rows[] = {
        {"limit not inclusive", std::string(100, 'A'), "sscanf(1), len (100), ", "0"},
        {"blank doesn't end the command", "AT+X Y", "sscanf(1), len (4), ", "0"},
        {"empty command refused", "", "sscanf(-1), len (0), ", "0"},
        {"shell's characters quoted", "AT+`$X`", "sscanf(1), len (7), ", "0"},
        {"failed send overlooked, or followed by the help", "AT", "sscanf(1), len (2), ", "512"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.catches);
        setenv("RBK_TEST_SYSTEM", row.answer.c_str(), 1);
        const std::string command = row.word.substr(0, row.word.find(' '));
        const std::string line = "echo \"" + command + "\r\" > /dev/smd8";
        EXPECT_EQ(said(velmor_test_at_cmd_do, {"8", row.word}),
                  "7" + kDo + "At cmd you input: " + row.scanned + command + "\n7" + kDo +
                      "Will create a thread to receive data from serial\n7" + kSend + "at shell cmd: " + line + "\n7" +
                      kSend + "echo, ret_sys: " + row.answer + "\n" +
                      (row.answer == "0" ? "7" + kSend + "Success" : "3" + kSend + "Fail") + " to send at shell cmd\n" +
                      kStarted + "3" + kReceive + "The at channel is not opened, g_at_serial_fd 0\n");
        EXPECT_FALSE(screen_.ends_with(help_of(8)));
        Words made = calls();
        std::erase(made, "sleep 1");  // the poll, when the other thread is late
        EXPECT_EQ(made, Words{"system " + line});
    }
}

TEST_F(ShellTest, AtCommandIsNotSentWithoutAThreadThatReceives)
{
    const NoThreads no_threads;
    EXPECT_TRUE(said(velmor_test_at_cmd_do, {"8", "AT"}).ends_with("3" + kDo + "Fail to create a thread\n"));
    EXPECT_TRUE(screen_.ends_with(help_of(8)));
    EXPECT_TRUE(calls().empty());
}

TEST_F(ShellTest, AtAnswerIsReadOnceUpToItsRoomAndTheChannelClosed)
{
    const std::string full(511, 'x');
    const std::pair<std::string, std::string> rows[] = {
        {full + "y", "7" + kReceive + "Receive the AT reponse: len(511)\n7" + kReceive + full + "\n"},
        {"", "3" + kReceive + "Failed to receive bytes from server\n"},
    };
    for (const auto& [answer, received] : rows) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        ASSERT_EQ(write(ends[1], answer.data(), answer.size()), static_cast<ssize_t>(answer.size()));
        close(ends[1]);
        opened::g_at_serial_fd = ends[0];
        const std::string text = said(opened::velmor_test_at_cmd_do, {"8", "AT"});
        EXPECT_TRUE(text.ends_with("7" + kDo + "Will close channel: /dev/smd8\n" + kStarted + received)) << text;
        EXPECT_EQ(opened::g_at_serial_fd, 0);
        EXPECT_EQ(fcntl(ends[0], F_GETFD), -1);
    }
}

// ---- Group 5 ----

TEST_F(ShellTest, DiagWithoutResultWaitsInDciModeAlone)
{
    shown({"5", "0", "1", "1", "500", "0x7c"});
    shown({"5", "0", "0", "1", "700", "0x7c"});
    const Words made = calls();
    EXPECT_EQ(std::count(made.begin(), made.end(), "usleep 500000"), 1);
    EXPECT_EQ(std::count(made.begin(), made.end(), "usleep 700000"), 0);
}

TEST_F(ShellTest, EidIsSavedOnceInAProcess)
{
    const std::uint8_t first[16] = {0x89, 1}, second[16] = {0x89, 2};
    save_eid_to_efs(first);
    save_eid_to_efs(second);
    EXPECT_EQ(requests().size(), 2U) << "read and written for the first alone";
    EXPECT_EQ(log_count("save_eid_to_efs: EID already saved, skip"), 1U);
}

// ---- Group 10 ----

TEST_F(ShellTest, OtherTypesOfConfigurationsReachNobody)
{
    EXPECT_EQ(velmor_refresh_mbn(1, 2), 0);
    EXPECT_EQ(velmor_reactivate_mbn(1, 2), -1);
    velmor_mbn_deactivate_config(2, PDC_CONFIG_TYPE_MODEM_SW_V01);
    velmor_mbn_deactivate_config(1, static_cast<pdc_config_type_enum_v01>(2));
    for (const char* words :
         {"velmor_refresh_mbn: config_type is invalid\n", "velmor_reactivate_mbn: config_type is invalid\n",
          "sub is invalid, sub: 2\n", "config_type is invalid, config_type: 2\n"})
        EXPECT_EQ(log_count(words), 1U) << words;
    EXPECT_EQ(log_count("3 [velmor_mbn_utils.cpp"), 2U) << "the operations of this group alone complain aloud";
    EXPECT_TRUE(trace().empty());
}

TEST_F(ShellTest, PdcNotifyWithoutAWaiterIsLostAndTheNextOneFreesIt)
{
    void* params = qcril_malloc_adv(8);
    *static_cast<std::int32_t*>(params) = 1;
    std::thread waiter([params] { velmor_qcril_pdc_test_thread_proc(params); });
    EXPECT_TRUE(wait_until([&] { return log_count("velmor_pdc_test_req: pdc_test, wait ...") == 1; }));
    g_pdc_info_ex.mutex.lock();  // has been given up by the sleeper
    g_pdc_info_ex.mutex.unlock();
    EXPECT_EQ(log_count("velmor_pdc_test_rsp: pdc_test, notify_one"), 1U);
    EXPECT_EQ(log_count("velmor_pdc_test_req: pdc_test, wait end"), 0U);
    velmor_pdc_test_rsp(1);
    waiter.join();
    EXPECT_EQ(log_count("velmor_pdc_test_req: pdc_test, wait end"), 1U);
    EXPECT_EQ(calls(), Words{"sleep 3"});
}

// Shortened so that the whole of the thousand seconds is one. The first flag notifies from the main side too.
TEST_F(ShellTest, PdcMainSideNotifiesAfterTenSecondsAndStaysForAThousand)
{
    setenv("RBK_TEST_DIVISOR", "1000", 1);
    const std::string notified = "velmor_pdc_test_rsp: pdc_test, notify_one";
    EXPECT_EQ(shown({"10", "31", "1"}), "");
    const std::string told = read_file(home() / "log");
    EXPECT_LT(told.find("velmor_modem_wait_s: wait-end(10s)"), told.rfind(notified));
    EXPECT_LT(told.rfind(notified), told.find("velmor_modem_wait_s: wait-end(1000s)"));
    EXPECT_EQ(log_count(notified), 2U) << "the thread's own came before";

    calls();  // the thread's own may be missing: a notify that comes before it waits is lost
    EXPECT_EQ(shown({"10", "31", "0"}),
              "RIL[velmor_mbn_utils.cpp:N] velmor_qcril_pdc_test_thread_proc: flag is invalid, do nothing\n");
    const Words waits = calls();
    EXPECT_EQ(std::multiset(waits.begin(), waits.end()),
              (std::multiset<std::string>{"sleep 10", "sleep 1000", "sleep 3"}));
    EXPECT_EQ(log_count(notified), 2U) << "no other flag notifies";
    EXPECT_EQ(velmor_qcril_pdc_test_thread_proc(nullptr), nullptr);
    EXPECT_TRUE(trace().empty());
}

// ---- Group 11: tests of the shell's own mechanisms ----

TEST_F(ShellTest, SharedMemoryShowsWhatLiesThere)
{
    EXPECT_STREQ(g_share_memory_file_path, "/data/vendor/modem/share_memory");
    EXPECT_EQ(g_share_memory_size, 100);
    const std::string file = home() / "share_memory";
    write_file(file, "\x01\xFF\x03");
    const std::tuple<std::string, int, std::string> rows[] = {
        {file, 100,
         "7 ftruncate, ret: 0\n7 data_ptr[0]: 1\n7 data_ptr[1]: 255\n7 data_ptr[2]: 3\n7 data_ptr[3]: 0\n"
         "7 data_ptr[4]: 0\n7 munmap, ret: 0\n3 close fd\n"},
        {"/dev/null", 100, "7 ftruncate, ret: -1\n3 ftruncate error\n3 close fd\n"},
        {file, 0, "7 ftruncate, ret: 0\n3 mmap error\n3 close fd\n"},
        {home() / "absent/file", 0, "3 shm_open error\n"},
    };
    for (const auto& [path, size, expected] : rows) {
        g_share_memory_file_path = path.c_str();
        g_share_memory_size = size;
        std::string told;
        for (const std::string& line : lines_of(said(velmor_smart_test_do, {"11", "7"}))) {
            const std::string words = line.substr(line.find(": ") + 2);
            if (!words.starts_with("open, fd: ") && !words.starts_with("mmap, data_ptr: "))  // other each time
                told += line.substr(0, 2) + words + "\n";
        }
        EXPECT_EQ(told, "7 share_memory\n7 g_share_memory_file_path: " + path + "\n" + expected);
        EXPECT_EQ(read_file(file).size(), size == 0 ? 0U : 100U);
    }
}

TEST_F(ShellTest, TimerTestEndsWithItsTimer)
{
    setenv("RBK_TEST_DIVISOR", "20", 1);
    const std::string test = "7 velmor_smart_test_velmor_timer: ";
    const std::string text = said(velmor_smart_test_do, {"11", "8", "10"});
    EXPECT_TRUE(text.starts_with(test + "Timer test start, timeout_s = 10\n" + test +
                                 "Start one timer(timer_id 1), will pause until this timer is expired ...\n" + test +
                                 "1 second has passed\n" + test + "2 seconds have passed\n"))
        << text;
    EXPECT_NE(text.find("7 velmor_rbk_delay_timer_cb: The timer expired with ID 1\n"), std::string::npos);
    EXPECT_TRUE(text.ends_with(" passed\n" + test + "Timer test done\n")) << text;
    const Words made = calls();
    EXPECT_EQ(made.front(), "timer_settime 10.000000000");
    EXPECT_EQ(std::count(made.begin(), made.end(), "timer_settime 0.000000000"), 1) << "its callback stops it";
}

}  // namespace
}  // namespace rbk::test
