// Listing in chunks, through a requester as the radio daemon has it.
#include "pdc_utils.h"

#include "support/embedded_run.h"
#include "velmor_utils_cmn.h"
#include "velmor_utils_timer.h"

namespace rbk::test {
namespace {

class PdcList : public EmbeddedRun {
 public:
    PdcList() { setenv("RBK_TEST_DIVISOR", "1", 1); }
    // A modem with the configurations A1 00, A1 01, ... A1 3B.
    void open(const std::string& rules = "") const
    {
        std::string configs;
        for (std::uint8_t i = 0; i < 60; ++i) configs += "[[pdc.config]]\nid = 'A1" + hex({i}) + "'\n";
        scenario("[pdc]\nindication_ms = 0\n" + configs + rules);
        ASSERT_EQ(pdc_init_ex(), 0);
    }
};

struct Listed {
    std::int32_t result = 1;
    std::uint32_t count = 0;
    std::vector<std::string> ids;  // from the head of the list
};

// Asks for the first chunk; the handler asks for the others.
Listed list_configs()
{
    Listed listed;
    pdc_config_list_node* head = nullptr;
    EXPECT_EQ(pdc_request_begin(PDC_REQ_LIST), 0);
    g_pdc_info_ex.pdc_list.config_list_holder = &head;
    g_pdc_info_ex.pdc_list.num_of_configs = &listed.count;
    g_pdc_info_ex.pdc_list.pdc_list_ind_token = 0x1234;
    const pdc_list_configs_req_v01 request{1, 0x1234, 1, PDC_CONFIG_TYPE_MODEM_SW_V01, 0, 0};
    pdc_resp_v01 resp;
    EXPECT_EQ(pdc_request_send(PDC_LIST_CONFIGS_V01, &request, sizeof request, &resp), 0);
    listed.result = pdc_request_wait(PDC_REQ_LIST);
    while (head != nullptr) {
        pdc_config_list_node* node = head;
        listed.ids.push_back(hex({node->config_id, node->config_id + node->config_id_len}));
        head = node->next;
        qcril_free_adv(node, __func__, __LINE__);
    }
    return listed;
}

TEST_F(PdcList, SixtyComeInThreeChunksTheLastOneFirst)
{
    open();
    const Listed listed = list_configs();
    EXPECT_EQ(listed.result, 0);
    EXPECT_EQ(listed.count, 60U);
    ASSERT_EQ(listed.ids.size(), 60U);
    for (std::uint8_t i = 0; i < 60; ++i) EXPECT_EQ(listed.ids[59U - i], "A1" + hex({i}));
    const std::string first = "1004003412000011040001000000";
    std::vector<std::string> sent;
    for (const Traced& request : requests()) sent.push_back(request.bytes);
    EXPECT_EQ(sent, (std::vector<std::string>{first, first + "12010001", first + "12010001"}));
    EXPECT_EQ(list_configs().count, 60U) << "the next list begins at the start";
    const std::uint32_t timer_id = velmor_timer_start([](sigval) {}, 3600);
    qmi_pdc_list_configs_follow_up_request_ex({.sival_int = static_cast<int>(timer_id)});
    EXPECT_EQ(velmor_timer_stop(timer_id), 0U) << "a follow-up gives its timer back";
}

std::string chunk_rule(int nth, const std::string& rest)
{
    return "[[fault]]\nservice = 'pdc'\nmessage = 36\nnth = " + std::to_string(nth) + "\n" + rest;
}
std::string raw_chunk(int nth, const std::string& tlvs)
{
    return chunk_rule(nth, "on = 'indication'\naction = 'raw'\nbytes = '" + tlvs + "'\n");
}
// A chunk of so many ids, the last one, or one that has more behind it.
std::string entries(std::uint8_t count, const std::string& more = "00")
{
    std::string list = hex({count});
    for (std::uint8_t i = 0; i < count; ++i) list += "0100000002B1" + hex({i});
    return "0102000000" + tlv(0x11, list) + tlv(0x12, more);
}

struct ListCase {
    const char* catches;
    std::string rule;
    std::int32_t result;
    std::uint32_t count;
    const char* words;
};
const ListCase kListCases[] = {
    {"ChunkBeyondTheRoomTaken", raw_chunk(1, entries(26)), -1, 0,
     "PDC_ERROR, more_available_valid 1, ind_token_valid 0, more_available 0, config_list_len 26"},
    {"ErrorOfALaterChunkIgnored", raw_chunk(2, "0102001900"), -1, 25, "QMI error, error code: 25"},
    {"MoreWithoutATokenAskedFor", raw_chunk(1, entries(3, "01")), 0, 3,
     "PDC_SUCCESS, more_available_valid 1, ind_token_valid 0, more_available 1, get_list_complete 1"},
    {"EmptyListIsSuccess", raw_chunk(1, entries(0)), -6, 0, "None MBN available in modem EFS"},
    {"IdBeyondTheRoomCopied", raw_chunk(1, "0102000000" + tlv(0x11, "01010000007D" + std::string(250, 'C'))), 0, 1, ""},
    {"LostFollowUpAwaited", chunk_rule(2, "action = 'error'\ncode = 16\n"), -1, 25,
     "qmi_pdc_list_configs_follow_up_request_ex: qmi send mssage error for list_configs, errno: 0 61"},
};

class PdcListChunks : public PdcList, public testing::WithParamInterface<ListCase> {};

TEST_P(PdcListChunks, KeepWhatCameBeforeTheFault)
{
    open(GetParam().rule);
    const Listed listed = list_configs();
    EXPECT_EQ(listed.result, GetParam().result);
    EXPECT_EQ(listed.count, GetParam().count);
    EXPECT_EQ(listed.ids.size(), GetParam().count);
    EXPECT_GE(log_count(GetParam().words), 1U);
}
INSTANTIATE_TEST_SUITE_P(All, PdcListChunks, testing::ValuesIn(kListCases),
                         [](const auto& row) { return row.param.catches; });

}  // namespace
}  // namespace rbk::test
