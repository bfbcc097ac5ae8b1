// NV items and EFS files through the public operations: checks and their order, chunks on the wire, and answers whose
// lengths can't be believed.
#include "velmor_extend_nvefs.h"

#include <functional>

#include "support/embedded_run.h"
#include "velmor_utils_cmn.h"

namespace rbk::test {
namespace {

class NvEfs : public EmbeddedRun {};

const std::string kPath = "/nv/item_files/test/file";
const std::string kPath99(99, 'p');
const std::string kPath100 = "/" + std::string(99, 'q');

std::uint32_t length(const std::string& path)
{
    return static_cast<std::uint32_t>(path.size());
}

std::int32_t efs_write(const std::string& path, const std::vector<std::uint8_t>& bytes)
{
    return velmor_efs_write(0, path.c_str(), length(path), bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

// One field of the EFS record in a traced request.
std::string field(const Traced& request, std::size_t offset, std::size_t size)
{
    return request.bytes.substr(2 * (17 + offset), 2 * size);
}

// ---- Checks ----

TEST_F(NvEfs, ChecksStandInTheirOrderAndAskNothing)
{
    static std::uint8_t buf[102411];
    static std::uint32_t len = 10;
    static std::uint32_t none = 0;
    struct {
        const char* catches;
        std::function<std::int32_t()> call;
        std::int32_t result;
        const char* words;
    } const cases[] = {
        {"CustomersCaseForAnyItem", [] { return velmor_nv_read(2, 551, buf, &len); }, -104, "nv_read: sub invalid"},
        {"CustomersCaseForAWrite", [] { return velmor_nv_write_ex(2, 550, buf, 1); }, -104, "nv_write_ex: sub invalid"},
        {"SubAfterItem", [] { return velmor_nv_delete(2, 7233); }, -104, "nv_delete: sub invalid"},
        {"ItemBehindTheLast", [] { return velmor_nv_read(0, 7233, buf, &len); }, -109, "nv_id is out range(7232)"},
        {"ItemAfterBuffer", [] { return velmor_nv_read(0, 7233, nullptr, &len); }, -109, "nv_id is out range(7232)"},
        {"BufferAfterLength", [] { return velmor_nv_read(0, 1, nullptr, nullptr); }, -107, "nv_read: buf is null"},
        {"NullLengthRead", [] { return velmor_nv_read(0, 1, buf, nullptr); }, -108, "nv_read: p_buf_len is null"},
        {"NoRoomAsked", [] { return velmor_nv_read(0, 1, buf, &none); }, -108, "nv_read: buf_len is invalid"},
        {"WriteFromNull", [] { return velmor_nv_write_ex(0, 1, nullptr, 1); }, -107, "nv_write_ex: buf is null"},
        {"EmptyWrite", [] { return velmor_nv_write_ex(0, 1, buf, 0); }, -108, "nv_write_ex: buf_len is invalid"},
        {"WriteBehindTheRecord", [] { return velmor_nv_write_ex(0, 1, buf, 425); }, -108,
         "nv_write_ex: buf_len is invalid"},
        {"PathAfterItsLength", [] { return velmor_efs_read(0, nullptr, 0, buf, &len); }, -105, "efs_path is null"},
        {"EmptyPath", [] { return velmor_efs_read(0, "", 0, buf, &len); }, -106, "efs_read: len invalid"},
        {"ReadPathBehindItsRoom", [] { return velmor_efs_read(0, kPath100.c_str(), 101, buf, &len); }, -106,
         "efs_read: len invalid"},
        {"WritePathOf100", [] { return velmor_efs_write(0, kPath100.c_str(), 100, buf, 1); }, -106,
         "efs_write: len invalid"},
        {"DeletePathOf100", [] { return velmor_efs_delete(1, kPath100.c_str(), 100); }, -106,
         "efs_delete: len invalid"},
        {"DeleteOnTheThirdSub", [] { return velmor_efs_delete(2, nullptr, 0); }, -104, "efs_delete: sub invalid"},
        {"FileAboveTheLargest", [] { return velmor_efs_write(0, "/f", 2, buf, 102411); }, -108,
         "efs_write: buf_len is invalid"},
    };
    for (const auto& c : cases) {
        const std::size_t before = log_count(c.words);
        EXPECT_EQ(c.call(), c.result) << c.catches;
        EXPECT_EQ(log_count(c.words), before + 1) << c.catches;
    }
    EXPECT_TRUE(trace().empty());
    EXPECT_EQ(log_count("3 [velmor_extend_nvefs.cpp"), 0U) << "a failure is for the caller to say";
    EXPECT_EQ(log_count("function entry ------------->"), log_count("function exit <-------------"));
}

TEST_F(NvEfs, CustomersCaseReachesTheModem)
{
    std::uint8_t buf[16];
    std::uint32_t len = sizeof(buf);
    velmor_nv_read(2, 550, buf, &len);
    ASSERT_EQ(requests().size(), 1U);
    EXPECT_EQ(field(requests()[0], 0, 4), "01022602");
    EXPECT_EQ(log_count("sub cust case for tt"), 1U);
}

// ---- NV items ----

TEST_F(NvEfs, ItemComesBackAsItWasWritten)
{
    const std::vector<std::uint8_t> bytes = pattern(424);
    ASSERT_EQ(velmor_nv_write_ex(1, 7232, bytes.data(), 424), 0);
    const Traced write = requests().back();
    EXPECT_EQ(write.bytes.substr(0, 2 * 17), envelope(2, 544, "").substr(0, 2 * 17));
    EXPECT_EQ(field(write, 0, 120),
              "0201" + le(7232, 2) + std::string(2 * 104, '0') + le(424, 4) + std::string(16, '0'));
    EXPECT_EQ(field(write, 120, 424), hex(bytes));

    struct {
        const char* catches;
        std::uint32_t room;
        std::uint32_t filled;
    } const cases[] = {{"LongerItemRefused", 50, 50}, {"FilledNotTold", 500, 424}, {"WholeItemCut", 424, 424}};
    for (const auto& c : cases) {
        std::vector<std::uint8_t> buf(600, 0xEE);
        std::uint32_t len = c.room;
        EXPECT_EQ(velmor_nv_read(1, 7232, buf.data(), &len), 0) << c.catches;
        EXPECT_EQ(len, c.filled) << c.catches;
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.begin() + c.filled, buf.begin())) << c.catches;
        EXPECT_EQ(buf[c.filled], 0xEE) << c.catches;
    }
    std::uint32_t len = 100;
    std::vector<std::uint8_t> buf(424);
    EXPECT_EQ(velmor_extend_nv_read_item(7232, 1, buf.data(), &len), NVEFS_ITEM_CUT);
    EXPECT_EQ(len, 100U);
    len = 424;
    EXPECT_EQ(velmor_extend_nv_read_item(7232, 1, buf.data(), &len), 0);
    EXPECT_EQ(len, 412U);  // what its record holds

    EXPECT_EQ(velmor_nv_read(0, 7232, buf.data(), &len), -2);  // the other subscription has its own
    EXPECT_EQ(velmor_nv_delete(1, 7232), 0);
    EXPECT_EQ(velmor_nv_read(1, 7232, buf.data(), &len), -2);
    EXPECT_EQ(velmor_extend_nv_read_item(7232, 1, buf.data(), &len), -2);
    EXPECT_EQ(len, 0U);
}

// ---- Files ----

TEST_F(NvEfs, FileIsWrittenInChunksOfOneInstance)
{
    const std::vector<std::uint8_t> bytes = pattern(1000);
    ASSERT_EQ(efs_write(kPath, bytes), 0);
    const std::vector<Traced> chunks = requests();
    ASSERT_EQ(chunks.size(), 3U);
    const std::string instance = field(chunks[1], 2, 2);
    EXPECT_NE(instance, le(255, 2));
    static const std::uint32_t sizes[] = {414, 414, 172};
    std::uint32_t offset = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(field(chunks[i], 0, 2), "0500");
        EXPECT_EQ(field(chunks[i], 2, 2), i == 0 ? le(255, 2) : instance);
        EXPECT_EQ(field(chunks[i], 4, 1), le(kPath.size(), 1));
        EXPECT_EQ(field(chunks[i], 5, kPath.size()), hex({kPath.begin(), kPath.end()}));
        EXPECT_EQ(field(chunks[i], 108, 12), le(1000, 4) + le(sizes[i], 4) + le(offset, 4));
        EXPECT_EQ(field(chunks[i], 120, sizes[i]), hex({bytes.begin() + offset, bytes.begin() + offset + sizes[i]}));
        offset += sizes[i];
    }
}

TEST_F(NvEfs, FileComesBackAsItWasWritten)
{
    struct {
        const char* catches;
        std::size_t size;
        std::uint32_t room;
        std::uint32_t filled;
        std::size_t chunks;  // written and read
    } const cases[] = {
        {"OneByteLost", 1, 10, 1, 1 + 1},
        {"WholeChunkTakenForMore", 414, 500, 414, 1 + 1},
        {"WholeRecordTakenForMore", 424, 500, 424, 2 + 1},
        {"BufferOverrunInTheFirstChunk", 1000, 100, 100, 3 + 1},
        {"BufferOverrunInALaterChunk", 1000, 900, 900, 3 + 3},
        {"FullBufferAsksForMore", 1000, 848, 848, 3 + 2},
        {"LargestFileCut", 102410, 200000, 102410, 248 + 242},
    };
    std::size_t sent = 0;
    for (const auto& c : cases) {
        const std::vector<std::uint8_t> bytes = pattern(c.size);
        ASSERT_EQ(efs_write(kPath, bytes), 0) << c.catches;
        std::vector<std::uint8_t> buf(c.room + 1, 0xEE);
        std::uint32_t len = c.room;
        EXPECT_EQ(velmor_efs_read(0, kPath.c_str(), length(kPath), buf.data(), &len), 0) << c.catches;
        EXPECT_EQ(len, c.filled) << c.catches;
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.begin() + c.filled, buf.begin())) << c.catches;
        EXPECT_EQ(buf[c.filled], 0xEE) << c.catches;
        EXPECT_EQ(requests().size(), sent += c.chunks) << c.catches;
    }
    EXPECT_EQ(velmor_efs_delete(0, kPath.c_str(), length(kPath)), 0);
    EXPECT_EQ(velmor_efs_delete(0, kPath.c_str(), length(kPath)), -2);
}

TEST_F(NvEfs, TransfersOfTwoThreadsDontMix)
{
    const auto transfer = [](const char* path) { EXPECT_EQ(efs_write(path, pattern(240 * 414)), 0); };
    std::thread other(transfer, "/a");
    transfer("/b");
    other.join();
    std::string order;  // of the chunks, by the second byte of their path
    for (const Traced& chunk : requests()) order += field(chunk, 6, 1) == "61" ? 'a' : 'b';
    EXPECT_TRUE(order == std::string(240, 'a') + std::string(240, 'b') ||
                order == std::string(240, 'b') + std::string(240, 'a'))
        << order;
}

TEST_F(NvEfs, PathOf100BytesGoesOutWithoutItsLast)
{
    std::uint8_t buf[10];
    std::uint32_t len = sizeof(buf);
    velmor_efs_read(0, kPath100.c_str(), 100, buf, &len);
    ASSERT_EQ(requests().size(), 1U);
    EXPECT_EQ(field(requests()[0], 4, 104), "642F" + hex(std::vector<std::uint8_t>(98, 'q')) + "00" + "000000");
    EXPECT_EQ(efs_write(kPath99, {1}), 0);
}

// ---- Answers that can't be believed ----

// A response of request id 2: its record's words and the first data bytes, zeros behind them.
std::string answer(std::uint32_t all, std::uint32_t send, std::int32_t result, const std::string& data)
{
    return envelope(0, 444,
                    le(0, 4) + le(all, 4) + le(send, 4) + le(0, 4) + le(static_cast<std::uint32_t>(result), 4) + data);
}

struct ForeignCase {
    const char* catches;
    std::string rules;
    std::uint32_t room;
    std::int32_t result;
    std::uint32_t filled;
    std::size_t chunks;
    const char* words;
};
const std::string kData424(2 * 424, '5');
const std::string kNoData = tlv(0x01, le(0, 4)) + tlv(0x02, le(0, 4));  // success, and nothing else
const ForeignCase kForeignReads[] = {
    {"ReadBehindTheRecord", raw_answer(answer(5000, 5000, 0, kData424)), 2000, 0, 2000, 1,
     "abort, buf_len <= data_len_recv"},
    {"SumWrapsInTheFirstChunk", raw_answer(answer(5000, 0xFFFFFFFF, 0, kData424)), 1000, 0, 1000, 1,
     "data_len_send = -1, "},
    {"SumWrapsInALaterChunk",
     raw_answer(answer(5000, 100, 0, kData424), 1) + raw_answer(answer(5000, 0xFFFFFFF0, 0, kData424)), 1000, 0, 1000,
     2, "abort, buf_len <= data_len_recv"},
    {"EmptyChunkTaken", raw_answer(answer(5000, 0, 0, kData424)), 1000, -108, 1000, 1, "abort, data_len_send <= 0"},
    {"ResultOverlooked", raw_answer(answer(5000, 100, -5, kData424)), 1000, -5, 1000, 1,
     "velmor_efs_read: qmi response fail"},
    {"ModemThatNeverEndsAsked", raw_answer(answer(0x7FFFFFFF, 1, 0, "AB")), 200000, 0, 300, 300, "read_count = 299, "},
    {"ReadBeyondTheLargestFile", raw_answer(answer(0x7FFFFFFF, 102410, 0, kData424)), 200000, 0, 102410, 1,
     "read_count = 0, "},
    {"LaterAnswerWithoutDataTakenForAnEmptyOne", raw_answer(answer(5000, 100, 0, kData424), 1) + raw_answer(kNoData),
     300, 0, 300, 3, "data_len_all = 5000, data_len_send = 100, data_len_recv = 300, read_count = 2, "},
    {"LaterShortAnswerClearsWhatItLeavesOut",
     raw_answer(answer(5000, 100, 0, kData424), 1) + raw_answer(envelope(0, 8, le(0, 4) + le(7000, 4))), 200, 0, 200, 2,
     "data_len_all = 7000, data_len_send = 100, data_len_recv = 200, "},
    {"ServicesErrorTakenForSuccess", "[[fault]]\nservice = 'extended'\naction = 'error'\ncode = 3\n", 10, -103, 10, 1,
     "velmor_efs_read: velmor_extend_qmi_send_sync fail, ABORT"},
};

class ForeignRead : public EmbeddedRun, public testing::WithParamInterface<ForeignCase> {};

TEST_P(ForeignRead, StaysWithinTheBuffer)
{
    const ForeignCase& c = GetParam();
    scenario(c.rules);
    std::vector<std::uint8_t> buf(c.room + 1, 0xEE);
    std::uint32_t len = c.room;
    EXPECT_EQ(velmor_efs_read(0, "/f", 2, buf.data(), &len), c.result);
    EXPECT_EQ(len, c.filled);
    EXPECT_EQ(buf[c.room], 0xEE);
    EXPECT_EQ(requests().size(), c.chunks);
    EXPECT_GE(log_count(c.words), 1U);
    const std::uint8_t first = buf[0];
    EXPECT_EQ(first == 0xEE, c.result != 0);  // nothing is delivered by a read that failed at once
}
INSTANTIATE_TEST_SUITE_P(All, ForeignRead, testing::ValuesIn(kForeignReads),
                         [](const auto& row) { return row.param.catches; });

TEST_F(NvEfs, ItemLongerThanTheRecordIsFilledWithZeros)
{
    scenario(raw_answer(answer(5000, 0, 0, kData424)));
    std::vector<std::uint8_t> buf(1001, 0xEE);
    std::uint32_t len = 1000;
    EXPECT_EQ(velmor_nv_read(0, 1, buf.data(), &len), 0);
    EXPECT_EQ(len, 1000U);
    EXPECT_EQ(buf[423], 0x55);
    EXPECT_EQ(buf[424], 0x00);
    EXPECT_EQ(buf[999], 0x00);
    EXPECT_EQ(buf[1000], 0xEE);
    EXPECT_EQ(log_count("rsp.data_len_all = 5000"), 1U);
}

TEST_F(NvEfs, EmptyItemIsNone)
{
    scenario(raw_answer(answer(0, 0, 0, "")));
    std::uint8_t buf[4];
    std::uint32_t len = sizeof(buf);
    EXPECT_EQ(velmor_nv_read(0, 1, buf, &len), -108);
    EXPECT_EQ(log_count("velmor_nv_read: rsp.data_len_all is invalid"), 1U);
}

TEST_F(NvEfs, LaterChunkFindsTheInstanceOfTheAnswerBefore)
{
    scenario(raw_answer(answer(0, 0, 7, ""), 1) + raw_answer(kNoData, 2) +
             "[[fault]]\nservice = 'extended'\nnth = 3\naction = 'error'\ncode = 3\n");
    EXPECT_EQ(efs_write(kPath, pattern(1000)), -103);
    ASSERT_EQ(requests().size(), 3U);
    EXPECT_EQ(field(requests()[1], 2, 2), le(7, 2));
    EXPECT_EQ(field(requests()[2], 2, 2), le(7, 2));  // the second answer left it out
    EXPECT_EQ(log_count("result = -103, rsp.result[>=0 is instance id] = 7"), 1U);
}

TEST_F(NvEfs, RefusedChunkEndsTheWrite)
{
    scenario("[[fault]]\nservice = 'extended'\nqmi_id = 2\nnth = 2\naction = 'result'\ncode = -28\n");
    EXPECT_EQ(efs_write(kPath, pattern(1000)), -28);
    EXPECT_EQ(requests().size(), 2U);
    EXPECT_EQ(log_count("rsp.result[>=0 is instance id] = -28"), 1U);
    EXPECT_EQ(log_count("velmor_efs_write: qmi response fail"), 1U);
}

TEST_F(NvEfs, SyncTellsBothResults)
{
    scenario(
        "[[fault]]\nservice = 'extended'\nqmi_id = 4\nnth = 2\naction = 'result'\ncode = -5\n"
        "[[fault]]\nservice = 'extended'\nqmi_id = 4\nnth = 3\naction = 'error'\ncode = 3\n");
    EXPECT_EQ(velmor_nvefs_sync(), 0);
    EXPECT_EQ(velmor_nvefs_sync(), -5);
    EXPECT_EQ(velmor_nvefs_sync(), -3);
    EXPECT_EQ(log_count("velmor_send_common_qmi_msg, ret_sync: 0, rsp.result: -5"), 1U);
}

}  // namespace
}  // namespace rbk::test
