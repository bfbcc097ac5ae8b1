// The statistics library: its clients, its result codes, and one exchange of parameters.
#include "modem_hydra_api.h"

#include <cstdlib>
#include <cstring>

#include "hal/exchanges.h"

namespace rbk::test {
namespace {

std::vector<std::uint32_t> told_status;

void hear_status(std::uint32_t event_id, std::uint32_t client_type)
{
    EXPECT_EQ(client_type, VS_CLIENT_TYPE);
    told_status.push_back(event_id);
}

class ModemApi : public ExchangeTest {
 public:
    static std::int32_t open()
    {
        const std::int32_t result = modem_api_init();
        return result != 0 ? result : modem_api_init_client(0, nullptr, hear_status, &client);
    }
    static std::int32_t switch_feature() { return modem_api_set_hydra_feature_status(client, 2, 1, 1, 1); }

    static inline std::int32_t client = -7;
};

TEST(ModemApiResult, FollowsTheTransportThenTheModem)
{
    // clang-format off
    struct {
        std::int32_t transport;
        qmi_response_type response;
        std::int32_t result;
    } static const rows[] = {
        // The transport's own failures hide what stands in the response; a service that refuses does not.
        {-5, {0, 0}, 12}, {-4, {0, 0}, 1}, {-3, {1, 94}, 11}, {-1, {0, 0}, 12}, {-6, {0, 0}, 1}, {1, {0, 0}, 1}, {-2, {1, 94}, 4},
        // No failure: an error beside success, none beside failure, no effect.
        {0, {0, 52}, 0}, {0, {1, 0}, 0}, {0, {1, 26}, 0},
        {0, {1, 4}, 10}, {0, {1, 17}, 5}, {0, {1, 19}, 5}, {0, {1, 48}, 5}, {0, {1, 49}, 5}, {0, {1, 24}, 4},
        {0, {1, 42}, 4}, {0, {1, 77}, 4}, {0, {1, 52}, 8}, {0, {1, 3}, 1}, {0, {2, 0}, 1},
    };
    // clang-format on
    for (const auto& row : rows)
        EXPECT_EQ(modem_api_map_qmi_error_to_modem_api(row.transport, &row.response), row.result)
            << row.transport << " " << row.response.result << " " << row.response.error;
}

// ---- Clients ----

TEST_F(ModemApi, OneClientAtATimeUntilItIsFreed)
{
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(client, 0);
    std::int32_t other = -7;
    EXPECT_EQ(modem_api_init_client(1, nullptr, nullptr, &other), 4);
    EXPECT_EQ(modem_api_init_client(0, nullptr, nullptr, &other), 15);
    EXPECT_EQ(switch_feature(), 0) << "the first one is disturbed";
    modem_api_operational_status_cb(1, 2);  // of another type
    EXPECT_EQ(g_modem_api_clients[0]->operational_status, 3U);
    modem_api_operational_status_cb(0, 4);
    EXPECT_EQ(modem_api_init_client(0, nullptr, nullptr, &other), 9);
    EXPECT_EQ(switch_feature(), 7);
    EXPECT_EQ(other, -7);
    EXPECT_EQ(told_status, (std::vector<std::uint32_t>{0x10002, 0x10001}));

    EXPECT_EQ(modem_api_free_client(-1), 7);
    EXPECT_EQ(modem_api_free_client(client), 0);
    EXPECT_EQ(log_count("client already freed"), 0U);
    EXPECT_EQ(modem_api_free_client(client), 0);
    EXPECT_EQ(log_count("client already freed"), 1U);
    EXPECT_EQ(switch_feature(), 7);
    EXPECT_EQ(modem_api_release(), 0);
    EXPECT_EQ(open(), 0);
    EXPECT_EQ(log_count("check pass, p_id: "), 1U) << "asked once for the process's life";
}

// ---- Parameters ----

TEST_F(ModemApi, RequestSaysTheSubscriptionOnceAndTheAnswerComesInOrder)
{
    ASSERT_EQ(open(), 0);
    for (const std::uint32_t number : {0U, 11U}) {
        stats_para_data data{number, {}};
        EXPECT_EQ(modem_api_get_stats_parameter(client, 0, 1, &data), 5) << number;
    }
    EXPECT_EQ(modem_api_get_stats_parameter(client, 0, 1, nullptr), 5);
    EXPECT_TRUE(requests().empty());
    stats_para_data data{2, {{9, 9, 44, 5, {0xA1, 0xA2, 0xA3, 0x00, 0xA5}}, {9, 9, 100, 0, {}}}};
    memset(data.ids[0].value + 5, 0xEE, 10);
    EXPECT_EQ(modem_api_get_stats_parameter(client, 1, 0x10203, &data), 0);
    EXPECT_EQ(requests().back().bytes,
              tlv(1, "0100") + tlv(2, "0302") +
                  tlv(3, "02" + stats_parameter(0, 0, 44, "A1A2A300A5") + stats_parameter(0, 0, 100, "")));
    EXPECT_EQ(log_count("ids[0] = 44, value_len = 5, type = 10724001, value:  A5 EE EE EE EE EE EE EE EE"), 1U);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&data);
    EXPECT_EQ(hex({bytes, bytes + 22}), le(2, 4) + le(1, 4) + le(44, 4) + le(5, 4) + "010C000000" + "EE")
        << "count, subscription, id, length, the value, and what stood behind it";
    EXPECT_EQ(data.ids[1].id, 100U);
    EXPECT_EQ(data.ids[1].value_len, 8U);
}

// ---- Asynchronous requests ----

void hear_completion(void* block, std::uint32_t len, void* told, std::int32_t status)
{
    const auto* bytes = static_cast<const std::uint8_t*>(block);
    const std::string data = block != nullptr ? hex({bytes, bytes + len}) : std::to_string(len);
    *static_cast<std::string*>(told) += data + " " + std::to_string(status) + ";";
    free(block);
}

template <typename T>
void* on_the_heap(const T& value)
{
    return std::memcpy(std::malloc(sizeof value), &value, sizeof value);
}

TEST_F(ModemApi, CompletionTellsItsReceiverAndFreesBoth)
{
    static const vs_bytes_512_rsp bytes{{0, 0}, 2, {0xA1, 0xA2}}, refused{{1, 52}, 2, {0xA1, 0xA2}},
        above{{0, 0}, 600, {}};
    const auto complete = [](std::uint32_t message, const vs_bytes_512_rsp& response, std::int32_t error) {
        std::string told;
        void* cookie = on_the_heap(modem_api_cookie{hear_completion, &told});
        vs_client_command_cb(nullptr, message, on_the_heap(response), sizeof response, cookie, error);
        return told;
    };
    EXPECT_EQ(complete(0, bytes, 0), "A1A2 0;0 2;");
    EXPECT_EQ(complete(3, bytes, 0), "0 2;");
    EXPECT_EQ(complete(0, refused, 0), "0 8;");
    EXPECT_EQ(complete(0, bytes, -3), "0 11;");
    EXPECT_EQ(complete(0, above, 0), times(512, "00") + " 0;0 2;");
    std::string told;
    modem_api_process_response(0, nullptr, 0, on_the_heap(modem_api_cookie{hear_completion, &told}), 0);
    EXPECT_EQ(told, "0 3;");
    // Nobody to tell: both are freed all the same.
    modem_api_process_response(0, on_the_heap(bytes), sizeof bytes, on_the_heap(modem_api_cookie{nullptr, &told}), 0);
    modem_api_process_response(0, on_the_heap(bytes), sizeof bytes, nullptr, 0);
}

}  // namespace
}  // namespace rbk::test
