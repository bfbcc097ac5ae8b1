// The report of a validation: frames into a file, the document, the decision on each item, and the messages that go out.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <mutex>

#include "support/embedded_run.h"
#include "support/program.h"
#include "velmor_mbn_utils.h"
#include "velmor_utils_timer.h"

namespace rbk::test {
namespace {

// ---- The listeners ----

std::mutex told_mutex;
std::string told_messages;  // "index id ref|dev", an entry a line; the closing message is "end result"
std::string told_path;

void hear_message(const void* message, std::int32_t message_len)
{
    mbn_report_head head;
    std::memcpy(&head, message, sizeof head);
    const std::string rest(static_cast<const char*>(message) + sizeof head,
                           static_cast<std::size_t>(message_len) - sizeof head);
    ASSERT_EQ(rest.size(), head.id_len + head.ref_len + head.dev_len);
    const std::string entry = rest.substr(0, head.id_len) + " " + rest.substr(head.id_len, head.ref_len) + "|" +
                              rest.substr(head.id_len + head.ref_len);
    const std::lock_guard lock(told_mutex);
    EXPECT_TRUE(head.index < 0 || head.result == 0);
    told_messages += head.index < 0 && rest.empty() ? "end " + std::to_string(head.result)
                                                    : std::to_string(head.index) + " " + entry;
    told_messages += "\n";
}

void hear_path(const char* path, std::int32_t path_len)
{
    told_path.assign(path, static_cast<std::size_t>(path_len));
}

std::string take_messages()
{
    const std::lock_guard lock(told_mutex);
    return std::exchange(told_messages, {});
}

// ---- Documents ----

std::string member(const std::string& name, const std::string& value)
{
    return "<NvItemData" + name + "><Member>" + value + "</Member></NvItemData" + name + ">";
}
std::string item(const std::string& id, const std::string& ref, const std::string& dev,
                 const std::string& kind = "NvEfsItemData")
{
    return "<" + kind + " id='" + id + "'>" + member("REFERENCE", ref) + "<Other/>" + member("DEVICE", dev) + "</" +
           kind + ">\n";
}
// So many numbers from 0 on, each between these.
std::string numbered(int count, const std::string& before, const std::string& behind)
{
    std::string text;
    for (int i = 0; i < count; ++i) text += before + std::to_string(i) + behind;
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
    std::string parsed(const std::string& content, std::int32_t result) const
    {
        write_file(home() / "report.xml", content);
        EXPECT_EQ(parse_mbn_diff_result((home() / "report.xml").c_str()), result);
        return take_messages();
    }
};

struct DocumentCase {
    const char* catches;
    std::string content;  // of the document
    std::string messages;
    const char* words;
};
const std::string kTooLarge = "value too large, not display";
const DocumentCase kDocumentCases[] = {
    {"EmptyReportIsAFault", "", "end 0\n", "qcril_qmi_mbn_diff_send_unsol_msg: entry is not valid"},
    {"ItemsOfBothKinds", item("10", "1 2 ", "1 3 ", "NvItemData") + "<Else id='11'/>" + item("/nv/a", "4 ", "5 "),
     "0 10 1 2 |1 3 \n1 /nv/a 4 |5 \nend 0\n", "parse_mbn_diff_result: ref_val = 4 , dev_val = 5 "},
    {"ItemWithoutIdIsAFault", "<NvItemData/>" + item("a", "1 ", "2 "), "0 a 1 |2 \nend 0\n", "id = a"},
    {"EmptyValueDropped", item("a", "", "2 "), "0 a  |2 \nend 0\n", "ref_val = (null), dev_val = 2 "},
    {"TwoEmptyValuesAreAnEntry", item("a", "", ""), "0  |\nend 0\n", "entry is not valid"},
    {"WalkGoesOnAfterABrokenItem", item("a", "1 ", "2 ") + "<NvItemData id='b'/>" + item("c", "1 ", "2 "),
     "0 a 1 |2 \nend 2\n", "get_nv_detail: failed to find NvItemDataREFERENCE"},
    {"ReferenceWithoutMember", "<NvItemData id='b'><NvItemDataREFERENCE/></NvItemData>", "end 2\n",
     "get_nv_detail: failed to find value"},
    {"DeviceBeforeReferenceTaken",
     "<NvItemData id='b'>" + member("DEVICE", "1 ") + member("REFERENCE", "1 ") + "</NvItemData>", "end 2\n",
     "get_nv_detail: failed to find NvItemDataDEVICE"},
    {"DeviceWithoutMember", "<NvItemData id='b'>" + member("REFERENCE", "1 ") + "<NvItemDataDEVICE/></NvItemData>",
     "end 2\n", "parse_mbn_diff_result: failed to get NV detail"},
    {"LargestValuesCut", item("a", std::string(6143, '1'), "2"), "0 a " + std::string(6143, '1') + "|2\nend 0\n",
     "the total value len is 6144"},
    {"TooLargeValuesSent", item("a", std::string(6144, '1'), "2"), "0 a " + kTooLarge + "|" + kTooLarge + "\nend 0\n",
     "data is too large from item a, new lenght is 56"},
    {"LongPiecesRefused",
     "<!--" + std::string(200'000, 'c') + "--><Else a='" + std::string(200'000, 'a') + "'/><Else" +
         numbered(1000, " a", "=''") + "/>" + item("a", "<![CDATA[" + std::string(200'000, '1') + "]]>", "2 "),
     "0 a " + kTooLarge + "|" + kTooLarge + "\nend 0\n", "the total value len is 200002"},
};

TEST_F(MbnReport, DocumentIsWalkedToItsEndOrFirstFault)
{
    for (const DocumentCase& row : kDocumentCases) {
        SCOPED_TRACE(row.catches);
        const int result = row.messages.ends_with("end 0\n") ? 0 : 2;
        const std::string out = output_of([&] { EXPECT_EQ(parsed(document(row.content), result), row.messages); });
        EXPECT_NE(out.find(row.words), std::string::npos);
    }
    EXPECT_EQ(parsed("<NvDatas>" + item("a", "1 ", "2 ") + "</NvDatas>", 2), "end 2\n");
    EXPECT_EQ(log_count("document of the wrong type, root node != NvData"), 1U);
}

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
    {"VolteEnabledReported", kImsService, "9 ", "0 1 ", false, "volte_enable = 1, will not report"},
    {"VolteDisabledDropped", kImsService, "9 ", "1 0 1 ", true, "volte_enable_ret 0"},
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

// ---- Hostile documents: what goes wrong with them grows with what is read on ----

// Bytes that this process has read so far.
std::size_t bytes_read()
{
    return std::stoul(read_file("/proc/self/io").substr(std::strlen("rchar: ")));
}

TEST_F(MbnReport, OtherDocumentsAreGivenUpSoon)
{
    const std::string megabytes(4'000'000, ' ');
    struct {
        const char* catches;
        std::string content;
        std::size_t read_at_most = 64 * 1024;
    } const rows[] = {
        {"NotADocument", "rubbish" + megabytes},
        {"CutDocument", document(item("a", "1 ", "2 ")).substr(0, 90)},
        // By gzip, an empty report.
        {"Unpacked", std::string("\x1F\x8B\x08\0\0\0\0\0\2\3\xB3\xF1\x2BsI,I\xD4\xB7\3\0;\xB7\r\xD3\t\0\0", 29)},
        {"ExternalDeclarationLoaded", "<!DOCTYPE NvData SYSTEM \"file:///etc/hostname\"><NvData/>" + megabytes},
        {"EntitiesExpanded", "<!DOCTYPE NvData [<!ENTITY e \"9 \">]><NvData>" + item("&e;", "&e;", "1 ") + megabytes},
        {"DeclarationOfMegabytesRead", "<!DOCTYPE NvData [" + megabytes + "]><NvData/>"},
        {"AttributesCompared", document("<a" + numbered(40'000, " a", "=''") + "/>"), 128 * 1024},
        {"NamespacesCompared", document("<a" + numbered(40'000, " xmlns:a", "='u'") + "/>"), 128 * 1024},
        {"NamesCounted", document(numbered(200'000, "<a", "/>")), 1024 * 1024},
        {"NestingFollowed", document(numbered(500'000, "<a", ">"))},
    };
    for (const auto& row : rows) {
        const std::size_t before = bytes_read();
        EXPECT_EQ(parsed(row.content, 2), "end 2\n") << row.catches;
        EXPECT_LT(bytes_read() - before, row.read_at_most) << row.catches;
    }
    EXPECT_EQ(log_count("3 [velmor_mbn_utils.cpp:"), 2 * std::size(rows)) << "that it failed, and the closing message";
    EXPECT_EQ(log_count("parse_mbn_diff_result: failed to parse XML file "), std::size(rows));
    std::string nodes;
    for (int i = 0; i < 1'100'000; ++i) nodes += "<a/>";
    EXPECT_EQ(parsed(document(nodes), 0), "end 0\n") << "many nodes are no fault";
}

// ---- Frames ----

class MbnFrames : public MbnReport {
 public:
    MbnFrames() { setenv("RBK_TEST_DIVISOR", "1", 1); }

    // What the radio daemon does before it asks for a validation: file, flag and timer.
    void arm(int flags = O_WRONLY | O_CREAT | O_TRUNC)
    {
        std::snprintf(block.pdc_validate_dump_path, sizeof block.pdc_validate_dump_path, "%s", dump().c_str());
        block.dump_fd = ::open(dump().c_str(), flags | O_CLOEXEC, 0600);
        block.is_pdc_validate_waiting = 1;
        qmi_pdc_request_timer_start(PDC_REQ_VALIDATE);
    }
    std::string dump() const { return (home() / "dump.xml").string(); }
    // The handling of one frame of this length, whether its fields are there or not.
    static void handle(std::uint32_t index, std::uint32_t frame_len, std::uint16_t error = 0, bool has_index = true,
                       bool has_frame = true)
    {
        static pdc_validate_config_ind_v01 ind;
        ind = {error, 0, 0, has_index, index, has_frame, frame_len, {}};
        std::memset(ind.result_frame, 'f', sizeof ind.result_frame);
        qcril_qmi_pdc_validate_config_ind_hdlr_ex(&ind, sizeof ind);
    }
    decltype(g_pdc_info_ex.pdc_validate_config_req)& block = g_pdc_info_ex.pdc_validate_config_req;
};

TEST_F(MbnFrames, ReportIsStreamedJudgedAndSent)
{
    std::string content;
    std::string expected;
    const std::string same = item(kProfile, profile(1, kIms), profile(1, kIms)) + item(kImsService, "0 0 ", "0 1 ");
    for (int i = 0; content.size() < 500'000; ++i) {
        content += item("/nv/" + std::to_string(i), "1 2 3 ", std::string(2000, '4')) + same;
        expected += std::to_string(i) + " /nv/" + std::to_string(i) + " 1 2 3 |" + std::string(2000, '4') + "\n";
    }
    expected += "end 0\n";
    setenv("RBK_TRACE", "/dev/null", 1);  // the whole stream has its 5 seconds
    set_property("persist.vendor.radio.adb_log_shell", "1");
    set_property("persist.vendor.radio.adb_log_velmor", "1");
    write_file(home() / "diff.xml", document(content));
    scenario("[pdc]\nindication_ms = 0\nreport = 'diff.xml'\n[[pdc.config]]\nid = 'A1A2'\n");
    ASSERT_EQ(pdc_init_ex(), 0);
    arm();
    const pdc_config_info_req_v01 request{{PDC_CONFIG_TYPE_MODEM_SW_V01, 2, {0xA1, 0xA2}}, 0, 0};
    pdc_resp_v01 resp;
    ASSERT_EQ(pdc_request_send(PDC_VALIDATE_CONFIG_V01, &request, sizeof request, &resp), 0);
    EXPECT_TRUE(wait_until([&] {
        const std::lock_guard lock(told_mutex);
        return told_messages.size() >= expected.size();
    }));
    EXPECT_EQ(take_messages(), expected);
    EXPECT_EQ(told_path, dump());
    EXPECT_EQ(read_file(dump()), document(content));
    EXPECT_EQ(block.dump_fd, -1);
    EXPECT_EQ(block.timer_id, 0U);
    const std::uint32_t timer_id = velmor_timer_start([](sigval) {}, 3600);
    qcril_qmi_pdc_parse_diff_result({.sival_int = static_cast<int>(timer_id)});
    EXPECT_EQ(velmor_timer_stop(timer_id), 0U) << "a timer that parses is given back";
}

TEST_F(MbnFrames, FaultOfAFrameOrItsFileAbortsTheValidation)
{
    struct {
        const char* catches;
        std::function<void()> frame;
        const char* words;
        int flags = O_WRONLY | O_CREAT | O_TRUNC;
    } const rows[] = {
        {"NullTaken", [] { qcril_qmi_pdc_validate_config_ind_hdlr_ex(nullptr, 0); }, "NULL pointer for ind_data_ptr"},
        {"ErrorIgnored", [] { handle(1, 5, 3); }, "Error happen, valid_ind->error = 3"},
        {"MissingFrameTaken", [] { handle(1, 0, 0, true, false); }, "valid: 1, result_frame valid: 0, frame_len: 0"},
        {"MissingIndexTaken", [] { handle(1, 1, 0, false); }, "valid: 0, result_frame valid: 1, frame_len: 1"},
        {"BeyondTheRoomTaken", [] { handle(1, 32769); }, "valid: 1, result_frame valid: 1, frame_len: 32769"},
        {"UnwrittenIsTheLast", [] { handle(PDC_LAST_FRAME, 5); }, "Fail to write the diff result to dump", O_RDONLY},
        {"UnopenedIsTheLast", [] { handle(PDC_LAST_FRAME, 5); }, "invalid dump file", O_WRONLY | O_CREAT | O_EXCL},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.catches);
        arm(row.flags);
        if ((row.flags & O_TRUNC) != 0) handle(0, 7);
        const int fd = block.dump_fd;
        row.frame();
        EXPECT_EQ(block.is_pdc_validate_waiting, 0);
        EXPECT_EQ(block.timer_id, 0U);
        EXPECT_EQ(block.dump_fd, -1);
        EXPECT_EQ(fcntl(fd, F_GETFD), -1);
        EXPECT_EQ(take_messages(), "end -1\n");
        EXPECT_EQ(log_count(row.words), 1U);
        EXPECT_GE(log_count("error, validation abort, dump_fd = " + std::to_string(fd)), 1U);
        EXPECT_EQ(read_file(dump()), "fffffff") << "what came before";
    }
    EXPECT_EQ(told_path, "");
}

TEST_F(MbnFrames, MissingFrameEndsWithTheTimerAndWithoutAMessage)
{
    arm();
    const int fd = block.dump_fd;
    const std::uint32_t timer_id = block.timer_id;
    qmi_pdc_request_timer_timeout_proc({.sival_int = static_cast<int>(timer_id)});
    EXPECT_EQ(block.is_pdc_validate_waiting, 0);
    EXPECT_EQ(block.dump_fd, fd) << "closed, and told still";
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
    EXPECT_EQ(block.timer_id, timer_id);
    EXPECT_EQ(log_count("not find this timer_id(1)"), 2U);
    const std::string words = "ignore this indication, no pdc_validate_config_req\n";
    const std::string out = output_of([] { handle(1, 5); });  // nobody asks for it any more
    EXPECT_TRUE(out.ends_with("qcril_qmi_pdc_validate_config_ind_hdlr_ex: " + words + words)) << out;
    EXPECT_EQ(take_messages(), "");
}

TEST_F(MbnFrames, FinishedFileThatNobodyWantsIsNotParsed)
{
    g_velmor_hal_send_broadcast_for_pdc_validate_dumped_cb = nullptr;
    arm();
    handle(PDC_LAST_FRAME, 5);
    EXPECT_EQ(log_count("g_velmor_hal_send_broadcast_for_pdc_validate_dumped_cb is NULL, send_broadcast failed"), 1U);
    EXPECT_EQ(log_count("validation abort"), 0U) << "not waiting any more";
    EXPECT_EQ(calls(), (std::vector<std::string>{"timer_settime 5.000000000", "timer_settime 0.000000000"}));
    EXPECT_EQ(take_messages(), "");
}

}  // namespace
}  // namespace rbk::test
