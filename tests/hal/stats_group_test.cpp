// Groups 7 and 9 where a session can't tell: lines of two threads without an order, many shells at once, and records of
// all versions, whose lines are counted.
#include <algorithm>
#include <thread>

#include "support/group_test.h"
#include "support/modem_process.h"

namespace rbk::test {
namespace {

class StatsGroup : public GroupTest {};

// The service's end is told by the library's thread, before or after any other line; but told, before the client goes.
TEST_F(StatsGroup, ServiceThatGoesIsTold)
{
    scenario("[[fault]]\nservice = 'vs'\nmessage = 0x0207\naction = 'down'\n");
    const std::vector<std::string> lines = lines_of(shown({"9", "21", "0"}));
    EXPECT_EQ(lines.size(), 5U);
    for (const char* line : {"RIL[vs_client.cpp:N] vs_client_service_down_event: service down with error -2",
                             "RIL[modem_hydra_mgr.cpp:N] modem_hydra_data_get: Fail to get data fail, number = 1, "
                             "ret = 1, sub = 0, id = 111"})
        EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 1) << line;
}

TEST_F(StatsGroup, TwentySideBySideAreAllAnswered)
{
    const ModemProcess modem(home());
    const RunOptions options = {.variables = {{"RBK_MODEM", modem.address()}}};
    std::vector<std::string> texts(20);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < texts.size(); ++i)
        threads.emplace_back([&, i] { texts[i] = run_rbk({"9", "31", i % 2 == 0 ? "0" : "1"}, options).out; });
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < texts.size(); ++i)
        EXPECT_TRUE(texts[i].ends_with(i % 2 == 0 ? "tx_power = 13\n" : "tx_power = 17\n")) << texts[i];
}

// A record with the statistics on and one version unknown; all bytes behind these are alike.
std::string debug_record(int version)
{
    return le(static_cast<std::uint64_t>(version), 1) + "01" + le(1, 8) + std::string(2 * 300, '1');
}

TEST_F(StatsGroup, RecordHasTheFieldsOfItsVersion)
{
    struct {
        int version;
        std::size_t lines;
        int main_end, diag_end;  // bytes read so far
        const char* last_of_main;
        const char* last_of_diag;
    } static const rows[] = {
        {0, 45, 26, 69, "UNPK[size:8], g_modem_stats_cmd_fail_count", "UNPK[size:4], poll_update_parse_num"},
        {1, 49, 26, 93, "UNPK[size:8], g_modem_stats_cmd_fail_count", "UNPK[size:4], nr5g_cell_id_invalid_num"},
        {2, 58, 50, 137, "UNPK[size:4], modem_statsi_cmd_free_q_count", "UNPK[size:4], debug_parse_num"},
        {3, 60, 50, 145, "UNPK[size:4], modem_statsi_cmd_free_q_count", "UNPK[size:4], cust_event_parse_num"},
        {4, 62, 58, 153, "UNPK[size:4], g_hydra_log_stats_mask", "UNPK[size:4], cust_event_parse_num"},
        {200, 62, 58, 153, "UNPK[size:4], g_hydra_log_stats_mask", "UNPK[size:4], cust_event_parse_num"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.version);
        scenario("[debug_info]\nrecord = '" + debug_record(row.version) + "'\n");
        const std::vector<std::string> lines = lines_of(shown({"7", "1", "1"}));
        EXPECT_EQ(lines.size(), row.lines);
        const auto expect_end = [&](const std::string& section, int count, const std::string& last) {
            const std::string words =
                "-------- stats " + section + " info end, cnt(" + std::to_string(count) + ") --------";
            const auto end = std::find(lines.begin(), lines.end(), words);
            ASSERT_NE(end, lines.end()) << words;
            EXPECT_TRUE(end[-1] == last + " = 286331153" || end[-1] == last + " = 1229782938247303441") << end[-1];
        };
        expect_end("main", row.main_end, row.last_of_main);
        expect_end("diag", row.diag_end, row.last_of_diag);
        expect_end("cm", row.diag_end + 58, "UNPK[size:4], poll_update_nr5g_parse_num");
        expect_end("uim", row.diag_end + 68, "UNPK[size:4], listener_event_parse_num");
    }
}

TEST_F(StatsGroup, NumberOfLogsIsBelievedAndWhatLiesPastTheAnswerIsZero)
{
    scenario("[debug_info]\nrecord = '" + debug_record(1) + "'\n" +
             "[[fault]]\nservice = 'extended'\nprefix = '1B'\naction = 'raw'\nbytes = '" +
             envelope(0, 508, std::string(2 * 8, '0') + "FFFF" + std::string(2 * 540, 'E')) + "'\n");
    const std::vector<std::string> lines = lines_of(shown({"7", "1", "0"}));
    ASSERT_GT(lines.size(), 65535U);
    const auto log = lines.end() - 65535;
    EXPECT_EQ(log[-1], "Diag logs to be upgraded[num:65535]:");
    EXPECT_EQ(log[248], "log_id[248]: 0xEEEE");
    EXPECT_EQ(log[249], "log_id[249]: 0x0000");
    EXPECT_EQ(log[65534], "log_id[65534]: 0x0000");
}

}  // namespace
}  // namespace rbk::test
