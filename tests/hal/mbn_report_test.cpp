// The report of a validation: frames into a file, the document, the decision on each item, and the messages that go out.
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <thread>

#include "support/embedded_run.h"
#include "support/program.h"
#include "velmor_mbn_utils.h"

namespace rbk::test {
namespace {

// ---- The listeners ----

struct Told {
    mbn_report_head head{};
    std::string id, ref, dev;
};

std::mutex told_mutex;
std::vector<Told> told_messages;
std::string told_path;

void hear_message(const void* message, std::int32_t message_len)
{
    Told told;
    std::memcpy(&told.head, message, sizeof told.head);
    const std::string rest(static_cast<const char*>(message) + sizeof told.head,
                           static_cast<std::size_t>(message_len) - sizeof told.head);
    told.id = rest.substr(0, told.head.id_len);
    told.ref = rest.substr(told.head.id_len, told.head.ref_len);
    told.dev = rest.substr(told.head.id_len + told.head.ref_len);
    EXPECT_EQ(told.dev.size(), told.head.dev_len);
    const std::lock_guard lock(told_mutex);
    told_messages.push_back(told);
}

void hear_path(const char* path, std::int32_t path_len)
{
    const std::lock_guard lock(told_mutex);
    told_path.assign(path, static_cast<std::size_t>(path_len));
}

std::vector<Told> take_messages()
{
    const std::lock_guard lock(told_mutex);
    return std::exchange(told_messages, {});
}

// "index id ref|dev", an entry a line; the closing message is "end result".
std::string summary(const std::vector<Told>& messages)
{
    std::string text;
    for (const Told& told : messages) {
        if (told.head.index < 0) {
            EXPECT_EQ(told.head.id_len + told.head.ref_len + told.head.dev_len, 0u);
            text += "end " + std::to_string(told.head.result) + "\n";
        } else {
            EXPECT_EQ(told.head.result, 0);
            text += std::to_string(told.head.index) + " " + told.id + " " + told.ref + "|" + told.dev + "\n";
        }
    }
    return text;
}

// ---- Documents ----

std::string member(const std::string& name, const std::string& value)
{
    return "<NvItemData" + name + "><Member>" + value + "</Member></NvItemData" + name + ">";
}
std::string item(const std::string& id, const std::string& ref, const std::string& dev,
                 const std::string& kind = "NvEfsItemData")
{
    return "<" + kind + " id=\"" + id + "\">" + member("REFERENCE", ref) + "<Other/>" + member("DEVICE", dev) + "</" +
           kind + ">\n";
}
// " a0='' a1=''"
std::string attributes(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i) text += " a" + std::to_string(i) + "=''";
    return text;
}
std::string document(const std::string& content)
{
    return "<?xml version=\"1.0\"?>\n<NvData>\n" + content + "</NvData>\n";
}

// A profile's value: a header of 32 bytes whose byte 8 is the count of records, then these bytes.
std::string profile(int count, const std::string& records, int first = 1)
{
    std::string text;
    for (int i = 0; i < 32; ++i) text += (i == 0 ? std::to_string(first) : i == 8 ? std::to_string(count) : "0") + " ";
    return text + records;
}
const std::string kIms = "1 16 3 0 73 109 83 ";  // type 0x1001, three bytes: "ImS"
const std::string kOtherRecord = "2 16 2 0 9 9 ";

class MbnReport : public EmbeddedRun {
 public:
    MbnReport()
    {
        g_velmor_hal_send_broadcast_for_pdc_validate_dumped_cb = hear_path;
        g_velmor_hal_send_broadcast_for_pdc_configs_validation_cb = hear_message;
    }
    std::string parsed(const std::string& content, std::int32_t result)
    {
        write_file(home() / "report.xml", content);
        EXPECT_EQ(parse_mbn_diff_result((home() / "report.xml").c_str()), result);
        return summary(take_messages());
    }
};

struct DocumentCase {
    const char* catches;
    std::string content;
    std::int32_t result;
    std::string messages;
    const char* words;  // in the log
};

const DocumentCase kDocumentCases[] = {
    {"EmptyReportIsAFault", document(""), 0, "end 0\n", "qcril_qmi_mbn_diff_send_unsol_msg: entry is not valid"},
    {"ItemsOfBothKinds",
     document(item("10", "1 2 ", "1 3 ", "NvItemData") + "<Else id=\"11\"/>" + item("/nv/a", "4 ", "5 ")), 0,
     "0 10 1 2 |1 3 \n1 /nv/a 4 |5 \nend 0\n", "parse_mbn_diff_result: ref_val = 4 , dev_val = 5 "},
    {"ItemWithoutIdIsAFault", document("<NvItemData/>" + item("a", "1 ", "2 ")), 0, "0 a 1 |2 \nend 0\n", "id = a"},
    {"EmptyValueDropped", document(item("a", "", "2 ")), 0, "0 a  |2 \nend 0\n", "ref_val = (null), dev_val = 2 "},
    {"TwoEmptyValuesAreAnEntry",
     document("<NvItemData id=\"a\">" + member("REFERENCE", "") + member("DEVICE", "") + "</NvItemData>"), 0,
     "0  |\nend 0\n", "entry is not valid"},
    {"NoDocument", "rubbish", 2, "end 2\n", "parse_mbn_diff_result: failed to parse XML file "},
    {"EmptyFile", "", 2, "end 2\n", "failed to parse XML file "},
    {"CutDocument", document(item("a", "1 ", "2 ")).substr(0, 90), 2, "end 2\n", "failed to parse XML file "},
    {"OtherRootWalked", "<NvDatas>" + item("a", "1 ", "2 ") + "</NvDatas>", 2, "end 2\n",
     "document of the wrong type, root node != NvData"},
    {"WalkGoesOnAfterABrokenItem", document(item("a", "1 ", "2 ") + "<NvItemData id=\"b\"/>" + item("c", "1 ", "2 ")),
     2, "0 a 1 |2 \nend 2\n", "get_nv_detail: failed to find NvItemDataREFERENCE"},
    {"ReferenceWithoutMember", document("<NvItemData id=\"b\"><NvItemDataREFERENCE/></NvItemData>"), 2, "end 2\n",
     "get_nv_detail: failed to find value"},
    {"DeviceBeforeReferenceTaken",
     document("<NvItemData id=\"b\">" + member("DEVICE", "1 ") + member("REFERENCE", "1 ") + "</NvItemData>"), 2,
     "end 2\n", "get_nv_detail: failed to find NvItemDataDEVICE"},
    {"DeviceWithoutMember",
     document("<NvItemData id=\"b\">" + member("REFERENCE", "1 ") + "<NvItemDataDEVICE/></NvItemData>"), 2, "end 2\n",
     "parse_mbn_diff_result: failed to get NV detail"},
    {"DeclarationAllowed", "<!DOCTYPE NvData [<!ENTITY e \"9 \">]><NvData>" + item("a", "&e;", "2 ") + "</NvData>", 2,
     "end 2\n", "failed to parse XML file "},
    {"ExternalDeclarationLoaded", "<!DOCTYPE NvData SYSTEM \"file:///etc/hostname\"><NvData/>", 2, "end 2\n",
     "failed to parse XML file "},
    {"DeclarationBehindACommentMissed", "<!-- c --><?p i?><!DOCTYPE NvData><NvData/>", 2, "end 2\n",
     "failed to parse XML file "},
    {"LargestValuesCut", document(item("a", std::string(6143, '1'), "2")), 0,
     "0 a " + std::string(6143, '1') + "|2\nend 0\n", "the total value len is 6144"},
    {"LongPiecesRefused",
     document("<!--" + std::string(200'000, 'c') + "-->" + "<Else a='" + std::string(200'000, 'a') + "'/><Else" +
              attributes(1000) + "/>" + item("a", "<![CDATA[" + std::string(200'000, '1') + "]]>", "2 ")),
     0, "0 a value too large, not display|value too large, not display\nend 0\n", "the total value len is 200002"},
    {"CompressedReportUnpacked",  // by gzip, an empty report
     std::string("\x1F\x8B\x08\0\0\0\0\0\2\3\xB3\xF1\x2BsI,I\xD4\xB7\3\0;\xB7\r\xD3\t\0\0", 29), 2, "end 2\n",
     "failed to parse XML file "},
    {"TooLargeValuesSent", document(item("a", std::string(6144, '1'), "2")), 0,
     "0 a value too large, not display|value too large, not display\nend 0\n",
     "data is too large from item a, new lenght is 56"},
};

class MbnDocument : public MbnReport, public testing::WithParamInterface<DocumentCase> {};

TEST_P(MbnDocument, IsWalkedToItsEndOrFirstFault)
{
    EXPECT_EQ(parsed(GetParam().content, GetParam().result), GetParam().messages);
    EXPECT_GE(log_count(GetParam().words), 1u);
}
INSTANTIATE_TEST_SUITE_P(All, MbnDocument, testing::ValuesIn(kDocumentCases),
                         [](const auto& row) { return row.param.catches; });

// ---- Which items matter ----

struct DecisionCase {
    const char* catches;
    const char* id;
    std::string ref, dev;
    bool reported;
    const char* words;
};
const char kProfile[] = "/Data_Profiles/Profile3";
const char kImsService[] = "/nv/item_files/ims/qp_ims_service_enablement_config";
const DecisionCase kDecisionCases[] = {
    {"OrdinaryItemKept", "/nv/x", "1 ", "1 ", true, ""},
    {"OtherApnReported", kProfile, profile(1, "1 16 3 0 119 101 98 "), "1 ", false, "apn_name = web, will not report"},
    {"CaseOfTheNameCounts", kProfile, profile(2, kOtherRecord + kIms), profile(2, kOtherRecord + kIms + "1 "), true,
     "apn_name ImS"},
    {"SameProfileReported", kProfile, profile(2, kOtherRecord + kIms), profile(2, kOtherRecord + kIms, 99), false,
     "ims profile same, will not report"},
    {"ProfileOfThe32BytesAlone", kProfile, profile(1, ""), "1 ", false, "apn_name = , will not report"},
    {"ShortProfileRead", kProfile, "1 2 3 ", "1 ", false, "velmor_get_profile_apn_name: Invalid data len"},
    {"CountIgnored", kProfile, profile(1, kOtherRecord + kIms), "1 ", false, "apn_name = , will not report"},
    {"RecordPastTheEndRead", kProfile, profile(5, "1 16 255 255 105 109 115 "), "1 ", true, "apn_name ims"},
    {"HeadPastTheEndRead", kProfile, profile(5, "1 16 3 "), "1 ", false, "velmor_get_profile_apn_name: apn_name "},
    {"SkipPastTheEndRead", kProfile, profile(5, "2 16 255 255 1 16 3 0 105 109 115 "), "1 ", false,
     "apn_name = , will not report"},
    {"ImsAgainstAShortDevice", kProfile, profile(1, kIms), profile(1, ""), true,
     "velmor_compare_profile_content: Invalid data len"},
    {"LengthsIgnored", kProfile, profile(1, kIms), profile(1, kIms + "0 "), true, ""},
    {"VolteEnabledReported", kImsService, "9 ", "0 1 ", false, "volte_enable = 1, will not report"},
    {"VolteDisabledDropped", kImsService, "9 ", "1 0 1 ", true, "volte_enable_ret 0"},
    {"NumberWithoutItsBlankTaken", kImsService, "9 ", "0 1", true, "return_len: 1"},
    {"LowByteOfANumber", kImsService, "9 ", "0 257 ", false, "volte_enable_ret 1"},
    {"LongerPathTaken", "/nv/item_files/ims/qp_ims_service_enablement_config2", "9 ", "0 1 ", true, ""},
};

TEST_F(MbnReport, DecisionFollowsThePathAndTheValues)
{
    const auto bytes = [](const std::string& text) { return reinterpret_cast<const unsigned char*>(text.c_str()); };
    for (const DecisionCase& c : kDecisionCases) {
        const std::string out = output_of([&] {
            EXPECT_EQ(velmor_need_report(reinterpret_cast<const unsigned char*>(c.id), bytes(c.ref), bytes(c.dev)),
                      c.reported)
                << c.catches;
        });
        EXPECT_NE(out.find(c.words), std::string::npos) << c.catches << out;
    }
    EXPECT_TRUE(velmor_need_report(nullptr, nullptr, nullptr));
    EXPECT_FALSE(velmor_need_report(reinterpret_cast<const unsigned char*>(kProfile), nullptr, nullptr));
    EXPECT_TRUE(velmor_need_report(reinterpret_cast<const unsigned char*>(kImsService), nullptr, nullptr));
    EXPECT_EQ(velmor_compare_profile_content(nullptr, "1 "), 0);
    EXPECT_EQ(log_count("ref_val null or dev_val null") + log_count("id or ref_val null") + log_count("dev_val null"),
              4u);
}

TEST_F(MbnReport, NameIsCutToItsRoom)
{
    std::string letters;
    for (int i = 0; i < 200; ++i) letters += "97 ";
    char name[MBN_APN_NAME_SIZE + 8] = {};
    velmor_get_profile_apn_name(profile(1, "1 16 200 0 " + letters).c_str(), name);
    EXPECT_EQ(std::string(name), std::string(MBN_APN_NAME_SIZE - 1, 'a'));
    EXPECT_EQ(name[MBN_APN_NAME_SIZE], '\0');
}

TEST_F(MbnReport, NumbersOfAValueBecomeBytes)
{
    struct {
        const char* catches;
        const char* text;
        std::vector<std::uint8_t> bytes;
    } const cases[] = {
        {"LastNumberTakenWithoutItsBlank", "1 2 3", {1, 2}},
        {"SecondBlankSkipped", "1  3 ", {1, 0, 3}},
        {"EmptyTextRefused", "", {}},
        {"LowByteLost", "256 300 -1 ", {0, 44, 255}},
        {"WordsReadOtherwise", "x 3y +4 \t5 6- ", {0, 3, 4, 5, 6}},
        {"TokenLeftBehind", "255 7 ", {255, 7}},
        {"LongTokenWrittenBeyondItsRoom", "0000000000000000000000009 5 ", {0, 5}},
    };
    for (const auto& c : cases) {
        char* bytes = nullptr;
        const std::int32_t count = velmor_convert_nv_string_to_bytes(c.text, &bytes);
        ASSERT_EQ(count, static_cast<std::int32_t>(c.bytes.size())) << c.catches;
        EXPECT_EQ(std::vector<std::uint8_t>(bytes, bytes + count), c.bytes) << c.catches;
        std::free(bytes);
    }
    EXPECT_EQ(velmor_convert_nv_string_to_bytes(nullptr, nullptr), -1);
}

// ---- Hostile documents ----

TEST_F(MbnReport, HostileDocumentsCostBoundedMemoryAndTime)
{
    std::string laughs = "<!DOCTYPE NvData [<!ENTITY e0 \"hahahahaha\">";
    for (int i = 1; i < 30; ++i) {
        const std::string before = "&e" + std::to_string(i - 1) + ";";
        laughs += "<!ENTITY e" + std::to_string(i) + " \"" + before + before + before + before + "\">";
    }
    std::string nested;
    for (int i = 0; i < 500'000; ++i) nested += "<a>";
    std::string utf16 = "\xFF\xFE";
    for (const char c : std::string("<!DOCTYPE NvData [<!ENTITY e \"1 \">]><NvData/>")) utf16 += {c, '\0'};
    std::string nodes;
    for (int i = 0; i < 1'100'000; ++i) nodes += "<a/>";
    std::string namespaces;
    for (int i = 0; i < 400'000; ++i) namespaces += " xmlns:a" + std::to_string(i) + "='u'";
    EXPECT_EQ(parsed(document(nodes), 0), "end 0\n") << "many nodes are no fault";
    struct {
        const char* catches;
        std::string content;
    } const cases[] = {
        {"AttributesCompared", document("<a" + attributes(400'000) + "/>")},
        {"NamespacesCompared", document("<a" + namespaces + "/>")},
        {"EntitiesExpanded", laughs + "]><NvData>" + item("&e29;", "&e29;", "1 ") + "</NvData>"},
        {"DeclarationOfMegabytesRead", "<!DOCTYPE NvData [" + std::string(4'000'000, ' ') + "]><NvData/>"},
        {"UnclosedDeclarationRead", "<!DOCTYPE NvData [<!ENTITY a \"" + std::string(4'000'000, '&')},
        {"OtherEncodingMissed", utf16},
        {"NestingFollowed", document(nested)},
        {"TextWithoutEnd", document("<NvItemData id=\"a\">" + std::string(12'000'000, 'x') + "</NvItemData>")},
        {"CommentWithoutEnd", "<!--" + std::string(4'000'000, '-')},
        {"ZeroBytesRead", document("<a>" + std::string(4'000'000, '\0') + "</a>")},
        {"InvalidBytesTaken", document("<a>\xC3</a>")},
    };
    for (const auto& c : cases) {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(parsed(c.content, 2), "end 2\n") << c.catches;
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5)) << c.catches;
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(usage.ru_maxrss, 256 * 1024);  // KiB
#endif
}

// ---- Frames ----

class MbnFrames : public MbnReport {
 public:
    MbnFrames() { setenv("RBK_TEST_DIVISOR", "2", 1); }  // the timer of a validation lasts 2500 ms

    // As the radio daemon asks for a validation: file, flag and timer, then the request.
    void validate(const std::string& content, const std::string& rules = "")
    {
        write_file(home() / "diff.xml", content);
        scenario("[pdc]\nindication_ms = 0\nreport = 'diff.xml'\n[[pdc.config]]\nid = 'A1A2'\n" + rules);
        ASSERT_EQ(pdc_init_ex(), 0);
        arm();
        const pdc_config_info_req_v01 req{{PDC_CONFIG_TYPE_MODEM_SW_V01, 2, {0xA1, 0xA2}}, 0, 0};
        pdc_resp_v01 resp;
        ASSERT_EQ(pdc_request_send(PDC_VALIDATE_CONFIG_V01, &req, sizeof req, &resp), 0);
        EXPECT_EQ(resp.resp.result, 0u);
    }
    void arm()
    {
        auto& block = g_pdc_info_ex.pdc_validate_config_req;
        g_pdc_info_ex.mutex.lock();
        std::snprintf(block.pdc_validate_dump_path, sizeof block.pdc_validate_dump_path, "%s", dump().c_str());
        block.dump_fd = ::open(dump().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        block.is_pdc_validate_waiting = 1;
        qmi_pdc_request_timer_start(PDC_REQ_VALIDATE);
        g_pdc_info_ex.mutex.unlock();
    }
    std::string dump() const { return (home() / "dump.xml").string(); }
    // All messages up to the closing one.
    static std::string summary_at_the_end()
    {
        std::vector<Told> messages;
        for (int i = 0; i < 20000 && (messages.empty() || messages.back().head.index != -1); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            for (Told& told : take_messages()) messages.push_back(std::move(told));
        }
        return summary(messages);
    }
    static std::int32_t handle(const pdc_validate_config_ind_v01& ind)
    {
        qcril_qmi_pdc_validate_config_ind_hdlr_ex(const_cast<pdc_validate_config_ind_v01*>(&ind), sizeof ind);
        return g_pdc_info_ex.pdc_validate_config_req.is_pdc_validate_waiting;
    }
};

TEST_F(MbnFrames, ReportOfTenMegabytesIsStreamedJudgedAndSent)
{
    std::string content;
    std::string expected;
    const std::string same = item(kProfile, profile(1, kIms), profile(1, kIms)) + item(kImsService, "0 0 ", "0 1 ");
    for (int i = 0; content.size() < 10'000'000; ++i) {
        content += item("/nv/" + std::to_string(i), "1 2 3 ", std::string(2000, '4')) + same;
        expected += std::to_string(i) + " /nv/" + std::to_string(i) + " 1 2 3 |" + std::string(2000, '4') + "\n";
    }
    setenv("RBK_TEST_DIVISOR", "1", 1);  // the whole stream has its 5 seconds
    setenv("RBK_TRACE", "/dev/null", 1);
    set_property("persist.vendor.radio.adb_log_shell", "1");  // the values are traced
    set_property("persist.vendor.radio.adb_log_velmor", "1");
    validate(document(content));
    EXPECT_EQ(summary_at_the_end(), expected + "end 0\n");
    EXPECT_EQ(told_path, dump());
    EXPECT_EQ(read_file(dump()), document(content));
    EXPECT_EQ(g_pdc_info_ex.pdc_validate_config_req.dump_fd, -1);
    EXPECT_EQ(g_pdc_info_ex.pdc_validate_config_req.timer_id, 0u);
}

std::string frame_fault(const std::string& rest)
{
    return "[[fault]]\nservice = 'pdc'\nmessage = 44\non = 'indication'\nnth = 2\n" + rest + "\n";
}

struct FrameCase {
    const char* catches;
    std::string rules;
    const char* words;
};
const FrameCase kFrameCases[] = {
    {"ErrorIgnored", frame_fault("action = 'raw'\nbytes = '0102000300'"), "Error happen, valid_ind->error = 3"},
    {"MissingFrameTaken", frame_fault("action = 'raw'\nbytes = '0102000000 11040001000000'"),
     "Error, frame_index valid: 1, result_frame valid: 0, frame_len: 0"},
    {"MissingIndexTaken", frame_fault("action = 'raw'\nbytes = '0102000000 12030001 00 41'"),
     "Error, frame_index valid: 0, result_frame valid: 1, frame_len: 1"},
    {"FrameBeyondTheRoomTaken",
     frame_fault("action = 'raw'\nbytes = '0102000000 11040001000000 120380 0180" + std::string(2 * 32769, '4') + "'"),
     "Error, frame_index valid: 1, result_frame valid: 1, frame_len: 32769"},
};

class MbnFrameFaults : public MbnFrames, public testing::WithParamInterface<FrameCase> {};

TEST_P(MbnFrameFaults, AbortTheValidation)
{
    validate(document(std::string(100'000, ' ')), GetParam().rules);
    EXPECT_EQ(summary_at_the_end(), "end -1\n");
    EXPECT_EQ(log_count(GetParam().words), 1u);
    EXPECT_EQ(log_count("error, validation abort, dump_fd = "), 1u);
    g_pdc_info_ex.mutex.lock();  // the message goes out before the file is closed
    EXPECT_EQ(g_pdc_info_ex.pdc_validate_config_req.dump_fd, -1);
    g_pdc_info_ex.mutex.unlock();
    EXPECT_EQ(std::filesystem::file_size(dump()), 32768u);  // the longest frame before it
    EXPECT_EQ(told_path, "");
}
INSTANTIATE_TEST_SUITE_P(All, MbnFrameFaults, testing::ValuesIn(kFrameCases),
                         [](const auto& row) { return row.param.catches; });

TEST_F(MbnFrames, MissingFrameEndsWithTheTimerAndWithoutAMessage)
{
    validate(document(std::string(100'000, ' ')),
             "[[fault]]\nservice = 'pdc'\nmessage = 44\non = 'indication'\nnth = 4\naction = 'silent'\n");
    const int fd = g_pdc_info_ex.pdc_validate_config_req.dump_fd;
    EXPECT_TRUE(wait_until([] { return g_pdc_info_ex.pdc_validate_config_req.is_pdc_validate_waiting == 0; }));
    g_pdc_info_ex.mutex.lock();                                    // the time-out has done its work
    EXPECT_EQ(g_pdc_info_ex.pdc_validate_config_req.dump_fd, fd);  // closed, and told still
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
    EXPECT_NE(g_pdc_info_ex.pdc_validate_config_req.timer_id, 0u);
    g_pdc_info_ex.mutex.unlock();
    EXPECT_EQ(log_count("not find this timer_id(1)"), 2u);
    EXPECT_EQ(take_messages().size(), 0u);
}

TEST_F(MbnFrames, FrameThatNobodyAskedForIsToldAndIgnored)
{
    qmi_pdc_init_pdc_info();
    static pdc_validate_config_ind_v01 ind{};
    const std::string words = "ignore this indication, no pdc_validate_config_req\n";
    const std::string out = output_of([] { handle(ind); });
    EXPECT_TRUE(out.ends_with("qcril_qmi_pdc_validate_config_ind_hdlr_ex: " + words + words)) << out;
    EXPECT_EQ(take_messages().size(), 0u);
}

TEST_F(MbnFrames, UnwritableFileAbortsEvenTheLastFrame)
{
    qmi_pdc_init_pdc_info();
    static pdc_validate_config_ind_v01 ind{};
    ind.frame_index_valid = ind.result_frame_valid = 1;
    ind.frame_index = PDC_LAST_FRAME;
    ind.result_frame_len = 5;
    auto& block = g_pdc_info_ex.pdc_validate_config_req;
    arm();
    ::close(block.dump_fd);
    block.dump_fd = ::open("/dev/null", O_RDONLY | O_CLOEXEC);  // can't be written
    EXPECT_EQ(handle(ind), 0);
    arm();
    ::close(block.dump_fd);
    block.dump_fd = -1;
    EXPECT_EQ(handle(ind), 0);
    EXPECT_EQ(summary(take_messages()), "end -1\nend -1\n");
    EXPECT_EQ(log_count("Fail to write the diff result to dump file: " + dump()), 1u);
    EXPECT_EQ(log_count("invalid dump file: " + dump()), 1u);
    EXPECT_EQ(told_path, "");
}

TEST_F(MbnFrames, FinishedFileThatNobodyWantsIsNotParsed)
{
    g_velmor_hal_send_broadcast_for_pdc_validate_dumped_cb = nullptr;
    validate(document(""));
    const std::string words = "g_velmor_hal_send_broadcast_for_pdc_validate_dumped_cb is NULL, send_broadcast failed";
    EXPECT_TRUE(wait_until([&] { return log_count(words) == 1; }));
    EXPECT_EQ(log_count("validation abort"), 0u);  // not waiting any more
    EXPECT_EQ(take_messages().size(), 0u);
}

}  // namespace
}  // namespace rbk::test
