// NV items and EFS files through the public operations: checks and their order, chunks, locks, and answers that can't be
// believed.
#include "velmor_extend_nvefs.h"

#include <cstring>
#include <thread>

#include "hal/exchanges.h"

namespace rbk::test {
namespace {

using Call = std::function<std::int32_t()>;

const char kPath[] = "/nv/item_files/test/file";
const std::string kPath100Text = "/" + std::string(99, 'p');
const char* const kPath100 = kPath100Text.c_str();
std::uint8_t* const buf = room + 4;

class NvEfs : public ExchangeTest {
 public:
    static std::int32_t nv_write() { return velmor_nv_write_ex(1, 7232, pattern(424).data(), 424); }
    static std::int32_t nv_read(std::uint32_t* len) { return velmor_nv_read(1, 7232, buf, len); }
    static std::int32_t nv_delete() { return velmor_nv_delete(1, 7232); }
    static std::int32_t legacy_read(std::uint32_t* len) { return velmor_extend_nv_read_item(7232, 1, buf, len); }
    static std::int32_t efs_write(std::uint32_t size)
    {
        return velmor_efs_write(0, kPath, 24, pattern(size).data(), size);
    }
    static std::int32_t efs_write_1000() { return efs_write(1000); }
    static std::int32_t efs_read(std::uint32_t* len) { return velmor_efs_read(0, kPath, 24, buf, len); }
    static std::int32_t efs_delete() { return velmor_efs_delete(0, kPath, 24); }

    // A read with that much room; what it tells of the length goes before what it reads.
    static Call in_room(std::uint32_t size, std::int32_t (*read)(std::uint32_t* len))
    {
        return [=] {
            std::uint32_t len = size;
            const std::int32_t result = read(&len);
            std::memcpy(room, &len, sizeof len);
            return result;
        };
    }
    static Call file_in_room(std::uint32_t size, std::uint32_t file_size)
    {
        return [=] { return efs_write(file_size) | in_room(size, efs_read)(); };
    }
};

// One field of the EFS record in a traced request.
std::string field(const Traced& request, std::size_t offset, std::size_t size)
{
    return request.bytes.substr(2 * (17 + offset), 2 * size);
}

TEST_F(NvEfs, ChecksStandInTheirOrderAndAskNothing)
{
    static std::uint32_t len = 10, none = 0;
    // clang-format off
    expect("extended", {
        {"CustomersCaseForAnyItem", [] { return velmor_nv_read(2, 551, buf, &len); }, {}, -104, "", "nv_read: sub invalid"},
        {"CustomersCaseForAWrite",  [] { return velmor_nv_write_ex(2, 550, buf, 1); }, {}, -104, "", "nv_write_ex: sub invalid"},
        {"SubAfterItem",            [] { return velmor_nv_delete(2, 7233); }, {}, -104, "", "nv_delete: sub invalid"},
        {"ItemAfterBuffer",         [] { return velmor_nv_read(0, 7233, nullptr, &len); }, {}, -109, "", "nv_id is out range(7232)"},
        {"BufferAfterLength",       [] { return velmor_nv_read(0, 1, nullptr, nullptr); }, {}, -107, "", "nv_read: buf is null"},
        {"NullLengthRead",          [] { return velmor_nv_read(0, 1, buf, nullptr); }, {}, -108, "", "nv_read: p_buf_len is null"},
        {"NoRoomAsked",             [] { return velmor_nv_read(0, 1, buf, &none); }, {}, -108, "", "nv_read: buf_len is invalid"},
        {"WriteFromNull",           [] { return velmor_nv_write_ex(0, 1, nullptr, 1); }, {}, -107, "", "nv_write_ex: buf is null"},
        {"EmptyWrite",              [] { return velmor_nv_write_ex(0, 1, buf, 0); }, {}, -108, "", "nv_write_ex: buf_len is invalid"},
        {"PathAfterItsLength",      [] { return velmor_efs_read(0, nullptr, 0, buf, &len); }, {}, -105, "", "efs_path is null"},
        {"ReadPathBehindItsRoom",   [] { return velmor_efs_read(0, kPath100, 101, buf, &len); }, {}, -106, "", "efs_read: len invalid"},
        {"DeletePathOf100",         [] { return velmor_efs_delete(1, kPath100, 100); }, {}, -106, "", "efs_delete: len invalid"},
        {"DeleteOnTheThirdSub",     [] { return velmor_efs_delete(2, nullptr, 0); }, {}, -104, "", "efs_delete: sub invalid"},
        {"FileAboveTheLargest",     [] { return velmor_efs_write(0, "/f", 2, buf, 102411); }, {}, -108, "", "efs_write: buf_len is invalid"},
    });
    // clang-format on
    EXPECT_EQ(log_count("3 [velmor_extend_nvefs.cpp"), 0U) << "a failure is for the caller to say";
    EXPECT_EQ(log_count("function entry ------------->"), log_count("function exit <-------------"));
    velmor_nv_read(2, 550, buf, &len);
    EXPECT_EQ(field(requests().back(), 0, 4), "01022602") << "the customer's case";
    EXPECT_EQ(log_count("sub cust case for tt"), 1U);
}

TEST_F(NvEfs, ItemsAndFilesComeBackAsTheyWereWritten)
{
    const auto read = [](std::uint32_t len) { return le(len, 4) + hex(pattern(len)); };
    const auto other_sub = [](std::uint32_t* len) { return velmor_nv_read(0, 7232, buf, len); };
    const auto asks = [](std::size_t count) { return std::vector<std::string>(count); };
    // clang-format off
    expect("extended", {
        {"ItemRefused",                 nv_write, asks(1), 0},
        {"FileRefused",                 efs_write_1000, asks(3), 0},
        {"LongerItemRefused",           in_room(50, nv_read), asks(1), 0, read(50)},
        {"WholeItemCut",                in_room(424, nv_read), asks(1), 0, read(424)},
        {"FilledNotTold",               in_room(500, nv_read), asks(1), 0, read(424)},
        {"CutNotTold",                  in_room(100, legacy_read), asks(1), NVEFS_ITEM_CUT, read(100)},
        {"ReadBehindTheLegacyRecord",   in_room(424, legacy_read), asks(1), 0, read(412)},
        {"SubscriptionsMixedUp",        in_room(10, other_sub), asks(1), -2, le(10, 4)},
        {"ItemNotDeleted",              nv_delete, asks(1), 0},
        {"LengthOfNoItemTold",          in_room(10, legacy_read), asks(1), -2, le(0, 4)},
        {"WholeChunkTakenForMore",      file_in_room(500, 414), asks(1 + 1), 0, read(414)},
        {"WholeRecordTakenForMore",     file_in_room(500, 424), asks(2 + 1), 0, read(424)},
        {"OverrunInTheFirstChunk",      file_in_room(100, 1000), asks(3 + 1), 0, read(100)},
        {"OverrunInALaterChunk",        file_in_room(900, 1000), asks(3 + 3), 0, read(900)},
        {"FullBufferAsksForMore",       file_in_room(848, 1000), asks(3 + 2), 0, read(848)},
        {"LargestFileCut",              file_in_room(200000, 102410), asks(248 + 242), 0, read(102410)},
    });
    // clang-format on
    const std::vector<Traced> sent = requests();
    for (std::uint32_t i = 0, offset = 0; i < 3; ++i, offset += 414) {
        const Traced& chunk = sent[1 + i];
        const std::uint32_t size = i < 2 ? 414 : 172;
        EXPECT_EQ(field(chunk, 0, 2), "0500");
        EXPECT_EQ(field(chunk, 2, 2) == le(255, 2), i == 0) << "then the instance of the modem's answer";
        EXPECT_EQ(field(chunk, 4, 104), "18" + hex({kPath, kPath + 24}) + times(79, "00"));
        EXPECT_EQ(field(chunk, 108, 12), le(1000, 4) + le(size, 4) + le(offset, 4));
        EXPECT_EQ(field(chunk, 120, size), hex(pattern(1000)).substr(2 * offset, 2 * size));
    }
}

// While an operation waits for the modem, those of its lock wait even with their checks.
TEST_F(NvEfs, OperationsOfOneKindWaitForEachOther)
{
    scenario("[[fault]]\nservice = 'extended'\naction = 'delay'\nms = 100\n");
    const Call refused_nv = [] { return velmor_nv_delete(2, 0); };
    const Call refused_efs = [] { return velmor_efs_delete(2, nullptr, 0); };
    // What the modem is asked by the first, which the other waits for.
    const std::tuple<Call, std::size_t, Call> rows[] = {
        {nv_write, 1, refused_nv},        {in_room(10, nv_read), 1, refused_nv},   {nv_delete, 1, refused_nv},
        {efs_write_1000, 3, refused_efs}, {in_room(10, efs_read), 1, refused_efs}, {efs_delete, 1, refused_efs},
    };
    for (const auto& [first, asked, second] : rows) {
        const std::size_t before = trace().size();
        SCOPED_TRACE(before);
        std::thread other([&] { EXPECT_EQ(first(), 0); });
        EXPECT_TRUE(wait_until([&] { return trace().size() > before; }));
        EXPECT_EQ(second(), -104);
        EXPECT_EQ(trace().size(), before + 2 * asked) << "without its lock";
        other.join();
    }
}

// A response of request id 2: its record's words and data bytes, zeros behind them.
std::string answer(std::uint32_t all, std::uint32_t send, std::int32_t result, std::size_t data_len)
{
    const std::string words = le(0, 4) + le(all, 4) + le(send, 4) + le(0, 4);
    return raw(envelope(0, 444, words + le(static_cast<std::uint32_t>(result), 4) + times(data_len, "77")));
}

TEST_F(NvEfs, ForeignAnswersStayWithinTheBuffer)
{
    // The length told, the bytes that the record held, and zeros up to the length.
    const auto read = [](std::uint32_t len, std::size_t held) {
        return le(len, 4) + times(held, "77") + times(len - held, "00");
    };
    const std::string chunk = answer(5000, 100, 0, 424), error = "'error'\ncode = 3";
    const std::string nothing = raw(tlv(1, "00000000") + tlv(2, "00000000"));  // success, and nothing else
    // clang-format off
    expect("extended", {
        {"ReadBehindTheRecord",     in_room(2000, efs_read), {answer(5000, 5000, 0, 424)}, 0, read(2000, 424), "abort, buf_len <= data_len_recv"},
        {"SumWrapsInTheFirstChunk", in_room(1000, efs_read), {answer(5000, 0xFFFFFFFF, 0, 424)}, 0, read(1000, 424), "data_len_send = -1, "},
        {"SumWrapsInALaterChunk",   in_room(1000, efs_read), {chunk, answer(5000, 0xFFFFFFF0, 0, 424)}, 0, read(1000, 524), "data_len_recv = 84, "},
        {"EmptyChunkTaken",         in_room(1000, efs_read), {answer(5000, 0, 0, 424)}, -108, le(1000, 4), "abort, data_len_send <= 0"},
        {"EndlessModemAsked",       in_room(200000, efs_read), std::vector(300, answer(0x7FFFFFFF, 1, 0, 1)), 0, read(300, 300), "read_count = 299, "},
        {"ReadBeyondTheLargest",    in_room(200000, efs_read), {answer(0x7FFFFFFF, 102410, 0, 424)}, 0, read(102410, 424), "data_len_recv = 102410, "},
        {"LaterAnswerTakenForAnEmptyOne", in_room(300, efs_read), {chunk, nothing, nothing}, 0, read(300, 300),
         "data_len_all = 5000, data_len_send = 100, data_len_recv = 300, read_count = 2, "},
        {"LaterShortAnswerClears",  in_room(200, efs_read), {chunk, raw(envelope(0, 8, le(0, 4) + le(7000, 4)))}, 0, read(200, 200),
         "data_len_all = 7000, data_len_send = 100, data_len_recv = 200, "},
        {"ItemReadBehindTheRecord", in_room(1000, nv_read), {answer(5000, 0, 0, 424)}, 0, read(1000, 424), "rsp.data_len_all = 5000"},
        {"EmptyItemTaken",          in_room(4, nv_read), {answer(0, 0, 0, 424)}, -108, le(4, 4), "nv_read: rsp.data_len_all is invalid"},
        {"RefusedChunkOverlooked",  efs_write_1000, {answer(0, 0, 9, 0), answer(0, 0, -28, 0)}, -28, "", "efs_write: qmi response fail"},
        {"SyncsResultOverlooked",   velmor_nvefs_sync, {raw(envelope(0, 508, le(0, 4) + "FBFFFFFF"))}, -5, "", "ret_sync: 0, rsp.result: -5"},
        {"SyncsFailureOverlooked",  velmor_nvefs_sync, {error}, -3, "", "ret_sync: -3, rsp.result: 0"},
        {"InstanceLostOnTheWay",    efs_write_1000, {answer(0, 0, 7, 0), nothing, error}, -103, "", "rsp.result[>=0 is instance id] = 7"},
    });
    // clang-format on
    const std::vector<Traced> sent = requests();
    EXPECT_EQ(field(*(sent.end() - 2), 2, 2), le(7, 2));
    EXPECT_EQ(field(*(sent.end() - 1), 2, 2), le(7, 2)) << "the second answer left it out";
}

}  // namespace
}  // namespace rbk::test
