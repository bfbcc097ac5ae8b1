// The statistics library: its clients, its result codes, and one exchange of parameters.
#include "modem_hydra_api.h"

#include <cstdlib>
#include <cstring>

#include "support/embedded_run.h"

namespace rbk::test {
namespace {

std::vector<std::pair<std::uint32_t, std::uint32_t>> told_status;

void hear_status(std::uint32_t event_id, std::uint32_t client_type)
{
    told_status.emplace_back(event_id, client_type);
}

class ModemApi : public EmbeddedRun {
 public:
    void open()
    {
        ASSERT_EQ(modem_api_init(), 0);
        ASSERT_EQ(modem_api_init_client(0, nullptr, hear_status, &client), 0);
    }
    std::int32_t client = -7;
    stats_para_data data{};
};

TEST(ModemApiResult, FollowsTheTransportThenTheModem)
{
    struct {
        const char* catches;
        std::int32_t transport;
        qmi_response_type response;
        std::int32_t result;
    } static const cases[] = {
        {"Minus5", -5, {0, 0}, 12},
        {"Minus4", -4, {0, 0}, 1},
        {"TimeoutLooksAtTheResponse", -3, {1, 94}, 11},
        {"Minus1", -1, {0, 0}, 12},
        {"UnknownTransportCode", -6, {0, 0}, 1},
        {"PositiveTransportCode", 1, {0, 0}, 1},
        {"RefusedServiceLosesItsReason", -2, {1, 94}, 4},
        {"ErrorBelievedBesideSuccess", 0, {0, 52}, 0},
        {"NoErrorTakenForOne", 0, {1, 0}, 0},
        {"NoEffectTakenForAFailure", 0, {1, 26}, 0},
        {"Aborted", 0, {1, 4}, 10},
        {"Error17", 0, {1, 17}, 5},
        {"Error19", 0, {1, 19}, 5},
        {"Error48", 0, {1, 48}, 5},
        {"Error49", 0, {1, 49}, 5},
        {"Error24", 0, {1, 24}, 4},
        {"Error42", 0, {1, 42}, 4},
        {"Error77", 0, {1, 77}, 4},
        {"NotReady", 0, {1, 52}, 8},
        {"AnyOtherError", 0, {1, 3}, 1},
        {"UnknownResultWord", 0, {2, 0}, 1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(modem_api_map_qmi_error_to_modem_api(c.transport, &c.response), c.result) << c.catches;
}

// ---- Clients ----

TEST_F(ModemApi, SecondClientIsRefusedAndTheFirstStays)
{
    open();
    EXPECT_EQ(client, 0);
    EXPECT_EQ(told_status, (std::vector<std::pair<std::uint32_t, std::uint32_t>>{{0x10002, 0}}));
    std::int32_t other = -7;
    EXPECT_EQ(modem_api_init_client(1, nullptr, nullptr, &other), 4);
    EXPECT_EQ(modem_api_init_client(0, nullptr, nullptr, &other), 15);
    EXPECT_EQ(modem_api_set_hydra_feature_status(client, 2, 1, 1, 1), 0);

    modem_api_operational_status_cb(1, 2);  // of another type
    EXPECT_EQ(g_modem_api_clients[0]->operational_status, 3U);
    modem_api_operational_status_cb(0, 4);
    EXPECT_EQ(told_status.back(), (std::pair<std::uint32_t, std::uint32_t>{0x10001, 0}));
    EXPECT_EQ(modem_api_init_client(0, nullptr, nullptr, &other), 9);
    EXPECT_EQ(modem_api_set_hydra_feature_status(client, 2, 1, 1, 1), 7);
    EXPECT_EQ(other, -7);
    EXPECT_EQ(told_status.size(), 2U);
}

TEST_F(ModemApi, FreedClientIsGone)
{
    open();
    EXPECT_EQ(modem_api_free_client(-1), 7);
    EXPECT_EQ(modem_api_free_client(client), 0);
    EXPECT_EQ(log_count("client already freed"), 0U);
    EXPECT_EQ(modem_api_free_client(client), 0);
    EXPECT_EQ(log_count("client already freed"), 1U);
    EXPECT_EQ(modem_api_get_stats_parameter(client, 0, 1, &data), 7);
    EXPECT_EQ(modem_api_release(), 0);
    EXPECT_EQ(log_count("check pass, p_id: "), 1U);  // asked once for the process's life
    open();
}

TEST_F(ModemApi, FailedOpenLeavesTheTableEmpty)
{
    scenario("[modem]\nservices = ['extended']\n");
    ASSERT_EQ(modem_api_init(), 0);
    EXPECT_EQ(modem_api_init_client(0, nullptr, hear_status, &client), 1);
    EXPECT_EQ(client, -7);
    EXPECT_EQ(g_modem_api_clients[0], nullptr);
    EXPECT_TRUE(told_status.empty());
}

// ---- Parameters ----

TEST_F(ModemApi, BadRequestsStayAtHome)
{
    open();
    for (const std::uint32_t number : {0U, 11U}) {
        data.para_num = number;
        EXPECT_EQ(modem_api_get_stats_parameter(client, 0, 1, &data), 5) << number;
    }
    EXPECT_EQ(modem_api_get_stats_parameter(client, 0, 1, nullptr), 5);
    data.para_num = 1;
    EXPECT_EQ(modem_api_get_stats_parameter(-1, 0, 1, &data), 7);
    EXPECT_TRUE(requests().empty());
}

TEST_F(ModemApi, RequestSaysTheSubscriptionOnceAndTheAnswerComesInOrder)
{
    open();
    data.para_num = 2;
    data.ids[0] = {9, 9, 44, 5, {0xA1, 0xA2, 0xA3, 0x00, 0xA5}};
    data.ids[1] = {9, 9, 100, 0, {}};
    memset(data.ids[0].value + 5, 0xEE, 10);
    EXPECT_EQ(modem_api_get_stats_parameter(client, 1, 0x10203, &data), 0);
    EXPECT_EQ(requests().back().bytes,
              tlv(1, "0100") + tlv(2, "0302") +
                  tlv(3, "02" + stats_parameter(0, 0, 44, "A1A2A300A5") + stats_parameter(0, 0, 100, "")));
    EXPECT_EQ(log_count("ids[0] = 44, value_len = 5, type = 10724001, value:  A5 EE EE EE EE EE EE EE EE"), 1U);
    EXPECT_EQ(data.para_num, 2U);
    EXPECT_EQ(data.ids[0].sub, 1U);
    EXPECT_EQ(data.ids[0].second_word, 0U);
    EXPECT_EQ(data.ids[0].value_len, 5U);
    EXPECT_EQ(hex({data.ids[0].value, data.ids[0].value + 6}), "010C000000EE");  // behind the length it stays
    EXPECT_EQ(data.ids[1].id, 100U);
    EXPECT_EQ(data.ids[1].value_len, 8U);
}

struct AnswerCase {
    const char* catches;
    std::string rule;
    std::int32_t result;
    std::uint32_t para_num;
    std::uint32_t value_len;  // of the last entry answered
};

std::string answered(const std::string& tlvs)
{
    return "action = 'raw'\nbytes = '" + tlvs + "'\n";
}

// As many values, each a byte longer than the one before.
std::string values(int count)
{
    std::string text = le(static_cast<std::uint64_t>(count), 1);
    for (int i = 0; i < count; ++i) text += stats_parameter(1, 2, 44, std::string(2U * (i + 1U), 'A'));
    return text;
}

const std::string kSuccess = tlv(2, "0000000000000000");
const AnswerCase kAnswers[] = {
    {"AnswersBeyondTheRoomCopied", answered(kSuccess + tlv(0x10, values(12))), 0, 10, 10},
    {"EmptyAnswerTakenForNone", answered(kSuccess + tlv(0x10, "00")), 0, 0, 0xEE},
    {"MissingAnswerTakenForAnEmptyOne", answered(kSuccess), 1, 1, 0xEE},
    {"ValueBeyondTheRoomCopied",
     answered(kSuccess + tlv(0x10, "01" + stats_parameter(1, 2, 44, std::string(2 * 701, 'A')))), 0, 1, 700},
    {"ResultWordsReadAsHalves",
     answered(tlv(2,
                  "01000000"
                  "5E000000") +
              tlv(0x10, values(1))),
     4, 1, 0xEE},
    {"RefusalOverlooked", "action = 'error'\ncode = 52\n", 8, 1, 0xEE},
    {"SilenceOverlooked", "action = 'silent'\n", 11, 1, 0xEE},
    {"RubbishBelieved", answered("FFFFFF"), 12, 1, 0xEE},
    {"LostServiceAnswered", "action = 'down'\n", 1, 1, 0xEE},
};

class ModemApiAnswer : public ModemApi, public testing::WithParamInterface<AnswerCase> {};

TEST_P(ModemApiAnswer, IsCutToTheRoomOrBecomesACode)
{
    scenario("[[fault]]\nservice = 'vs'\nmessage = 0x0207\n" + GetParam().rule);
    if (GetParam().result == 11) scale_timeouts("0.01");
    open();
    data.para_num = 1;
    for (stats_para_entry& entry : data.ids) entry.value_len = 0;
    data.ids[0].id = 44;
    data.ids[0].value_len = 0xEE;
    EXPECT_EQ(modem_api_get_stats_parameter(client, 1, 1, &data), GetParam().result);
    EXPECT_EQ(data.para_num, GetParam().para_num);
    EXPECT_EQ(data.ids[data.para_num > 0 ? data.para_num - 1 : 0].value_len, GetParam().value_len);
}
INSTANTIATE_TEST_SUITE_P(All, ModemApiAnswer, testing::ValuesIn(kAnswers),
                         [](const auto& row) { return row.param.catches; });

// ---- Asynchronous requests ----

struct Completion {
    std::string data;
    std::uint32_t len;
    std::int32_t status;
    bool operator==(const Completion&) const = default;
};

void hear_completion(void* block, std::uint32_t len, void* user, std::int32_t status)
{
    const auto* bytes = static_cast<const std::uint8_t*>(block);
    static_cast<std::vector<Completion>*>(user)->push_back(
        {block != nullptr ? hex({bytes, bytes + len}) : "null", len, status});
    free(block);
}

template <typename T>
void* on_the_heap(const T& value)
{
    void* block = std::malloc(sizeof value);
    std::memcpy(block, &value, sizeof value);
    return block;
}

TEST_F(ModemApi, CompletionTellsItsReceiverAndFreesBoth)
{
    std::vector<Completion> told;
    const auto complete = [&](std::uint32_t message, const vs_bytes_512_rsp* response, std::int32_t error) {
        told.clear();
        vs_client_command_cb(nullptr, message, response != nullptr ? on_the_heap(*response) : nullptr,
                             response != nullptr ? sizeof *response : 0,
                             on_the_heap(modem_api_cookie{hear_completion, &told}), error);
        return told;
    };
    using Told = std::vector<Completion>;
    static const vs_bytes_512_rsp bytes{{0, 0}, 2, {0xA1, 0xA2}};
    static const vs_bytes_512_rsp refused{{1, 52}, 2, {0xA1, 0xA2}};
    static const vs_bytes_512_rsp long_count{{0, 0}, 600, {}};
    EXPECT_EQ(complete(0, &bytes, 0), (Told{{"A1A2", 2, 0}, {"null", 0, 2}}));
    EXPECT_EQ(complete(3, &bytes, 0), (Told{{"null", 0, 2}}));
    EXPECT_EQ(complete(0, &refused, 0), (Told{{"null", 0, 8}}));
    EXPECT_EQ(complete(0, &bytes, -3), (Told{{"null", 0, 11}}));
    EXPECT_EQ(complete(0, nullptr, 0), (Told{{"null", 0, 3}}));
    EXPECT_EQ(complete(0, &long_count, 0).at(0).len, 512U);
    // Nobody to tell: both are freed all the same.
    modem_api_process_response(0, on_the_heap(bytes), sizeof bytes, on_the_heap(modem_api_cookie{nullptr, &told}), 0);
    modem_api_process_response(0, on_the_heap(bytes), sizeof bytes, nullptr, 0);
}

}  // namespace
}  // namespace rbk::test
