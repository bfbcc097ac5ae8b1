// NV items and EFS files: limits, error numbers, transfers in chunks.
#include <gtest/gtest.h>

#include <numeric>

#include "wire_client.h"

namespace rbk::sim {
namespace {

Bytes counting(std::size_t size, std::uint8_t first = 1)
{
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

TEST(Nv, ItemsAreWrittenReadAndDeletedAsFiles)
{
    RunningModem modem;
    WireClient client = modem.connect();
    const Bytes longest = counting(424);
    Bytes read;
    EXPECT_EQ(nv_read(client, 1, 7232, read), -2);
    EXPECT_EQ(nv_write(client, 1, 7232, longest), 0);
    EXPECT_EQ(read_file(modem.state() / "nv/1/7232"), longest);
    EXPECT_EQ(nv_read(client, 1, 7232, read), 0);
    EXPECT_EQ(read, longest);
    EXPECT_EQ(nv_read(client, 0, 7232, read), -2) << "the subscriptions share their items";
    EXPECT_EQ(nv_write(client, 1, 7232, counting(3, 9)), 0);
    EXPECT_EQ(nv_read(client, 1, 7232, read), 0);
    EXPECT_EQ(read, counting(3, 9));
    write_file(modem.state() / "nv/1/7232", "put in by hand");
    EXPECT_EQ(nv_read(client, 1, 7232, read), 0);
    EXPECT_EQ(std::string(read.begin(), read.end()), "put in by hand");
    EXPECT_EQ(client.envelope(2, nv_record(kNvDelete, 1, 7232).bytes).at<std::int32_t>(16), 0);
    EXPECT_EQ(client.envelope(2, nv_record(kNvDelete, 1, 7232).bytes).at<std::int32_t>(16), -2);
}

TEST(Efs, AFileIsStoredWithItsLastChunkOnly)
{
    RunningModem modem;
    WireClient client = modem.connect();
    const Bytes content = counting(1000);
    Record chunk = efs_record(kEfsWrite, 0, "/new/folder/file");
    chunk.put<std::uint16_t>(2, 255).put<std::uint32_t>(108, 1000).put<std::uint32_t>(112, 414);
    EXPECT_GE(client.envelope(2, chunk.bytes).at<std::int32_t>(16), 0);
    EXPECT_FALSE(std::filesystem::exists(modem.state() / "efs/0/new"));
    EXPECT_GE(efs_write(client, 0, "/new/folder/file", content), 0);
    EXPECT_EQ(read_file(modem.state() / "efs/0/new/folder/file"), content);
    Bytes read;
    EXPECT_EQ(efs_read(client, 0, "new//./folder/file", read), 0);
    EXPECT_EQ(read, content);
    EXPECT_EQ(efs_delete(client, 0, "/new/folder/file"), 0);
    EXPECT_EQ(efs_delete(client, 0, "/new/folder/file"), -2);
}

}  // namespace
}  // namespace rbk::sim
