// The extended client: lengths that can't be believed, a service that isn't there, and what becomes of indications.
#include "velmor_extend_api.h"

#include <chrono>
#include <cstring>
#include <thread>

#include "hal/exchanges.h"

namespace rbk::test {
namespace {

class ExtendClient : public ExchangeTest {};

// Has the modem give back the pattern's first bytes. In the room: the answer's length as told, then the answer.
std::function<std::int32_t()> echo(std::int32_t req_len, std::uint32_t rsp_len)
{
    return [=] {
        std::uint32_t len = rsp_len;
        const std::int32_t result = velmor_extend_qmi_send_sync(0, pattern(600).data(), req_len, room + 4, &len);
        std::memcpy(room, &len, 4);
        return result;
    };
}
const auto kEcho = echo(4, 8);

TEST_F(ExtendClient, LengthsAreNotBelieved)
{
    const auto filled = [](std::uint32_t len) { return le(len, 4) + hex(pattern(len)); };
    const std::string error = "3 [velmor_extend_api.cpp:", sevens = times(550, "77");
    static std::uint32_t len = 8;
    // clang-format off
    expect("extended", {
        {"LongestRequestRefused",           echo(550, 550), {""}, 0, filled(550)},
        {"AnswerWrittenBehindTheRoom",      echo(100, 16),  {""}, 0, filled(16)},
        {"RoomTakenForTheAnswersLength",    echo(100, 200), {""}, 0, filled(100)},
        {"EmptyRoomRefused",                echo(100, 0),   {""}, 0, filled(0)},
        {"EmptyRequestRefused",             echo(0, 10),    {""}, 0, filled(0)},
        {"RequestAboveTheEnvelopeSent",     echo(551, 10),  {}, -1, le(10, 4), error},
        {"RoomAboveTheEnvelopeTaken",       echo(10, 551),  {}, -1, le(551, 4), error},
        {"NegativeLengthCopied",            echo(-1, 10),   {}, -1, le(10, 4), "send_sync: put data_len -1 > max 550"},
        {"NullRead",       [] { return velmor_extend_qmi_send_sync(0, nullptr, 1, room, &len); }, {}, -1, "", "send_sync: 0,  put Invalid param"},
        {"NullWritten",    [] { return velmor_extend_qmi_send_sync(0, room, 1, nullptr, &len); }, {}, -1, "", error},
        {"NullLengthRead", [] { return velmor_extend_qmi_send_sync(0, room, 1, room, nullptr); }, {}, -1, "", error},
        {"DataReadWithoutItsFlag",          echo(4, 550), {raw(tlv(1, "00000000") + tlv(2, "04000000"))}, 0, filled(0)},
        {"LengthBeyondTheEnvelopeBelieved", echo(4, 550), {raw(envelope(0, 0xFFFFFFFF, sevens))}, 0, le(550, 4) + sevens},
    });
    // clang-format on
    EXPECT_EQ(requests()[1].bytes, envelope(0, 100, hex(pattern(100)))) << "not zero behind the data";
}

// ---- Opening ----

TEST_F(ExtendClient, AbsentServiceCostsItsSecondUntilItIsThere)
{
    scenario("[modem]\nboot_ms = 3000\n");
    g_extend_log_on = 0;  // leaves nothing but the failed open its words
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(kEcho(), -2);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(990));
    EXPECT_EQ(echo(551, 8)(), -1);
    std::size_t failures = 1;
    while (failures < 20 && kEcho() == -2) ++failures;
    EXPECT_LT(failures, 20U) << "the failed open is kept";
    EXPECT_EQ(log_count("velmor_extend_api.cpp"), failures);
}

TEST_F(ExtendClient, FirstRequestsOfManyThreadsShareOneClient)
{
    std::vector<std::thread> threads;
    for (std::uint8_t sent = 0; sent < 8; ++sent) {
        threads.emplace_back([sent] {
            for (int i = 0; i < 20; ++i) {
                std::uint8_t answer = 99;
                std::uint32_t len = 1;
                EXPECT_EQ(velmor_extend_qmi_send_sync(0, &sent, 1, &answer, &len), 0);
                EXPECT_EQ(answer, sent);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(log_count("QMI client inited"), 1U);
}

// ---- Indications ----

std::string told;  // to a slot: its name, the id, the payload's length and its first bytes
std::atomic<int> told_count{0};

template <char slot>
void hear(std::uint32_t id, const void* payload, std::uint32_t payload_len)
{
    const auto* bytes = static_cast<const std::uint8_t*>(payload);
    told += std::string{slot, ' '} + std::to_string(id) + " " + std::to_string(payload_len) + " " +
            hex({bytes, bytes + std::min(payload_len, 4U)});
    ++told_count;
}

TEST_F(ExtendClient, IndicationsGoToTheirSlots)
{
    g_extend_ind_handlers[0] = hear<'0'>;
    g_extend_ind_handlers[2] = hear<'2'>;
    g_extend_stat_handler = hear<'s'>;
    g_extend_ind13_handler = hear<'e'>;
    expect("extended", {{"",
                         kEcho,
                         {"'indicate'\nindication = 3\nbytes = '" + envelope(2, 1, "C1") + "'"},
                         0,
                         "04000000" + hex(pattern(4))}});
    ASSERT_TRUE(wait_until([] { return told_count > 0; })) << "the service has no listener";
    EXPECT_EQ(told, "2 2 1 C1");

    const std::string words = tlv(1, "A1A2A3A4") + tlv(2, "B1B2B3B4");
    const auto zeros = [](std::uint8_t type, std::size_t size) { return tlv(type, times(size, "00")); };
    // clang-format off
    expect_told({
        {"PayloadLost",                      3, envelope(2, 3, "C1C2C3"), "2 2 3 C1C2C3"},
        {"DataReadWithoutItsFlag",           3, tlv(1, "02000000") + tlv(2, "03000000"), "2 2 0 "},
        {"LengthBeyondTheEnvelopeBelieved",  3, envelope(2, 0xFFFFFFFF, "C1C2C3C4"), "2 2 550 C1C2C3C4"},
        {"EmptySlotCalled",                  3, envelope(3, 3, ""), ""},
        {"IdBehindTheSlotsUsed",             3, envelope(7, 3, ""), ""},
        {"BrokenEnvelopeLost",               3, "FF", "0 0 0 "},
        {"RecordsLost",                      5, words + zeros(3, 1120), "s 5 1128 A1A2A3A4"},
        {"GroupsLost",                       6, words + zeros(3, 10), "s 6 1288 A1A2A3A4"},
        {"WordsLost",                        7, words, "s 7 8 A1A2A3A4"},
        {"ValueLost",                        8, tlv(1, "A1A2A3A4") + zeros(2, 24), "s 8 32 A1A2A3A4"},
        {"LongsLost",                        9, words + zeros(3, 400), "s 9 408 A1A2A3A4"},
        {"FiveWordsLost",                   11, words + zeros(3, 4) + zeros(4, 4) + zeros(5, 4), "s 11 20 A1A2A3A4"},
        {"EventToldElsewhere",              13, words + zeros(3, 8) + zeros(4, 4), "e 13 24 A1A2A3A4"},
        {"BrokenOneHandedOn",                7, tlv(1, "A1A2A3A4"), ""},
        {"OtherMessageTold",                12, words, ""},
    }, velmor_extend_qmi_ind_cb, velmor_extend_qmi_client_open(), told);
    // clang-format on
    EXPECT_EQ(log_count("No function defined to handle indication: 3"), 1U);
    EXPECT_EQ(log_count("Indicaion: 7 greater than maximum known indication."), 1U);
}

TEST_F(ExtendClient, OnlyTheClientsOwnResultsAreMapped)
{
    static const std::int32_t rows[][2] = {{0, 0}, {-1, -101}, {-2, -102}, {-3, -103}, {-4, -4}, {7, 7}};
    for (const auto& [result, mapped] : rows) EXPECT_EQ(velmor_qmi_result_map(result), mapped);
}

}  // namespace
}  // namespace rbk::test
