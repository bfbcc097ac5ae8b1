// Listing in chunks and what the modem tells of one configuration, through requesters as the radio daemon has them.
#include <algorithm>

#include "hal/timer_list.h"
#include "pdc_utils.h"
#include "velmor_utils_cmn.h"

namespace rbk::test {
namespace {

// ---- The daemon's requesters ----

struct Listed {
    std::int32_t result = 1;
    std::uint32_t count = 0;
    std::vector<std::string> ids;  // from the head of the list
};

template <typename Request>
std::int32_t ask(int req_type, std::uint32_t message, const Request& request)
{
    pdc_resp_v01 resp;
    EXPECT_EQ(pdc_request_send(message, &request, sizeof request, &resp), 0);
    return pdc_request_wait(req_type);
}

// Asks for the first chunk; the handler asks for the others.
Listed list_configs(bool with_holders = true)
{
    Listed listed;
    pdc_config_list_node* head = nullptr;
    EXPECT_EQ(pdc_request_begin(PDC_REQ_LIST), 0);
    g_pdc_info_ex.pdc_list.config_list_holder = with_holders ? &head : nullptr;
    g_pdc_info_ex.pdc_list.num_of_configs = &listed.count;
    g_pdc_info_ex.pdc_list.pdc_list_ind_token = 0x1234;
    const pdc_list_configs_req_v01 request{1, 0x1234, 1, PDC_CONFIG_TYPE_MODEM_SW_V01, 0, 0};
    listed.result = ask(PDC_REQ_LIST, PDC_LIST_CONFIGS_V01, request);
    while (head != nullptr) {
        pdc_config_list_node* node = head;
        listed.ids.push_back(hex({node->config_id, node->config_id + node->config_id_len}));
        head = node->next;
        qcril_free_adv(node, __func__, __LINE__);
    }
    return listed;
}

std::int32_t get_info(pdc_config_desc_info& holder)
{
    EXPECT_EQ(pdc_request_begin(PDC_REQ_INFO), 0);
    g_pdc_info_ex.pdc_info.config_info_holder = &holder;
    return ask(PDC_REQ_INFO, PDC_GET_CONFIG_INFO_V01,
               pdc_config_info_req_v01{{PDC_CONFIG_TYPE_MODEM_SW_V01, 2, {0xA1, 0x02}}, 0, 0});
}

std::int32_t get_default_info(pdc_config_desc_info& holder)
{
    EXPECT_EQ(pdc_request_begin(PDC_REQ_DEFAULT_INFO), 0);
    g_pdc_info_ex.default_info.config_info = &holder;
    return ask(PDC_REQ_DEFAULT_INFO, PDC_GET_DEFAULT_CONFIG_INFO_V01,
               pdc_config_type_req_v01{PDC_CONFIG_TYPE_MODEM_SW_V01, 0, 0});
}

// Configurations A1 00, A1 01, ...
std::string configs(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "[[pdc.config]]\nid = 'A1" + hex({static_cast<std::uint8_t>(i)}) + "'\ndescription = 'Net " +
                std::to_string(i) + "'\nversion = " + std::to_string(100 + i) + "\nsize = 4711\n";
    return text;
}

class PdcList : public EmbeddedRun {
 public:
    PdcList() { setenv("RBK_TEST_DIVISOR", "1", 1); }
    void open(const std::string& rules, int count = 60) const
    {
        scenario("[pdc]\nindication_ms = 0\n" + configs(count) + rules);
        ASSERT_EQ(pdc_init_ex(), 0);
    }
};

std::string chunk_rule(const std::string& rest)
{
    return "[[fault]]\nservice = 'pdc'\nmessage = 36\n" + rest + "\n";
}
std::string raw_chunk(int nth, const std::string& tlvs)
{
    return chunk_rule("on = 'indication'\nnth = " + std::to_string(nth) + "\naction = 'raw'\nbytes = '" + tlvs + "'");
}

// A list of these ids B1 00, B1 01, ...
std::string entries(std::uint8_t count)
{
    std::string list = hex({count});
    for (std::uint8_t i = 0; i < count; ++i) list += "0100000002B1" + hex({i});
    return tlv(0x11, list);
}

// ---- Listing ----

TEST_F(PdcList, SixtyComeInThreeChunksTheLastOneFirst)
{
    open("");
    const TimersAreListedFirst listed_first(*this, home() / "calls");
    const Listed listed = list_configs();
    EXPECT_EQ(listed.result, 0);
    EXPECT_EQ(listed.count, 60U);
    ASSERT_EQ(listed.ids.size(), 60U);
    for (std::uint8_t i = 0; i < 60; ++i) EXPECT_EQ(listed.ids[59U - i], "A1" + hex({i}));
    const std::string first = "1004003412000011040001000000";
    std::vector<std::string> sent;
    for (const Traced& request : requests()) sent.push_back(request.bytes);
    EXPECT_EQ(sent, (std::vector<std::string>{first, first + "12010001", first + "12010001"}));
    const std::vector<std::string> timers = calls();
    EXPECT_EQ(std::ranges::count(timers, "timer_settime 0.000000001"), 2) << "a follow-up each";
    EXPECT_EQ(std::ranges::count(timers, "timer_settime 0.000000000"), std::ssize(timers) / 2) << "all given back";
    EXPECT_EQ(list_configs().count, 60U) << "the next list begins at the start";
}

struct ListCase {
    const char* catches;
    std::string rules;
    std::int32_t result;
    std::uint32_t count;
    std::size_t nodes;
    const char* words;
};
const std::string kEnd = "12010000";
const ListCase kListCases[] = {
    {"FullChunkRefused", raw_chunk(1, "0102000000" + entries(25) + kEnd), 0, 25, 25,
     "Abort to req, get_list_complete 1"},
    {"ChunkBeyondTheRoomTaken", raw_chunk(1, "0102000000" + entries(26) + kEnd), -1, 0, 0,
     "PDC_ERROR, more_available_valid 1, ind_token_valid 0, more_available 0, config_list_len 26"},
    {"LaterChunkBeyondTheRoomTaken", raw_chunk(2, "0102000000" + entries(26) + kEnd), -1, 25, 25, "config_list_len 26"},
    {"ErrorOfALaterChunkIgnored", raw_chunk(2, "0102001900"), -1, 25, 25,
     "pdc_list_configs_flag, QMI error, error code: 25"},
    {"MoreWithoutATokenAskedFor", raw_chunk(1, "0102000000" + entries(3) + "12010001"), 0, 3, 3,
     "PDC_SUCCESS, more_available_valid 1, ind_token_valid 0, more_available 1, get_list_complete 1"},
    {"EmptyListIsSuccess", raw_chunk(1, "0102000000 11010000" + kEnd), -6, 0, 0, "None MBN available in modem EFS"},
    {"MissingListIsSuccess", raw_chunk(1, "0102000000"), -6, 0, 0, "None MBN available in modem EFS"},
    {"IdBeyondTheRoomCopied", raw_chunk(1, "0102000000" + tlv(0x11, "01010000007D" + std::string(250, 'C'))), 0, 1, 1,
     ""},
    {"LostChunkAwaited", chunk_rule("on = 'indication'\nnth = 2\naction = 'silent'"), -1, 25, 25,
     "pdc_list is waiting, will stop it."},
    {"LostFollowUpAwaited", chunk_rule("nth = 2\naction = 'error'\ncode = 16"), -1, 25, 25,
     "qmi_pdc_list_configs_follow_up_request_ex: qmi send mssage error for list_configs, errno: 0 61"},
};

class PdcListChunks : public PdcList, public testing::WithParamInterface<ListCase> {};

TEST_P(PdcListChunks, KeepWhatCameBeforeTheFault)
{
    if (GetParam().rules.find("silent") != std::string::npos) setenv("RBK_TEST_DIVISOR", "25", 1);
    open(GetParam().rules);
    const Listed listed = list_configs();
    EXPECT_EQ(listed.result, GetParam().result);
    EXPECT_EQ(listed.count, GetParam().count);
    EXPECT_EQ(listed.ids.size(), GetParam().nodes);
    EXPECT_GE(log_count(GetParam().words), 1U);
}
INSTANTIATE_TEST_SUITE_P(All, PdcListChunks, testing::ValuesIn(kListCases),
                         [](const auto& row) { return row.param.catches; });

TEST_F(PdcList, MissingHolderEndsTheRequest)
{
    open("");
    EXPECT_EQ(list_configs(false).result, -1);
    EXPECT_EQ(
        log_count("NULL pointer for ind_data_ptr or  g_pdc_info_ex.num_of_configs or g_pdc_info_ex.config_list_holder"),
        1U);
}

// ---- One configuration ----

TEST_F(PdcList, InformationOfOneConfiguration)
{
    open(
        "[[fault]]\nservice = 'pdc'\nmessage = 40\non = 'indication'\nfrom = 2\naction = 'raw'\n"
        "bytes = '0102001000 11040033000000 16040044000000'\n",
        3);
    pdc_config_desc_info holder{};
    EXPECT_EQ(get_info(holder), 0);
    EXPECT_EQ(std::string(holder.config_desc, holder.config_desc + holder.config_desc_len), "Net 2");
    EXPECT_EQ(holder.config_version, 102u);
    EXPECT_EQ(holder.second_version_valid, 0);
    // An error tells nothing, and is no failure.
    EXPECT_EQ(get_info(holder), 0);
    EXPECT_EQ(holder.config_desc_valid + holder.config_version_valid, 0);
    EXPECT_EQ(holder.second_version, 0x44u);
}

TEST_F(PdcList, DefaultInformationIsTheFirstOfItsType)
{
    open("", 3);
    pdc_config_desc_info holder{};
    std::fill(std::begin(holder.config_desc), std::end(holder.config_desc), 'x');
    EXPECT_EQ(get_default_info(holder), 0);
    EXPECT_EQ(holder.config_desc_len, 5u);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(holder.config_desc)), "Net 0");  // all 255 bytes were copied
    EXPECT_EQ(holder.config_version, 100u);
    EXPECT_EQ(log_count("def_ind->config_desc_len = 5"), 1u);
}

}  // namespace
}  // namespace rbk::test
