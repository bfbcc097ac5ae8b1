// The terminal that speaks QMUX: frames as a host writes them, and those that come back.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "simulator/carriers/qmux_terminal.h"
#include "wire.h"

namespace rbk::sim {
namespace {

constexpr char kScenario[] = R"(
[modem]
services = ["extended", "sar", "nas"]
client_ids = 3
restart_ms = 60000
[[fault]]
service = "sar"
message = 1
prefix = "01 04 00 07"
action = "down"
)";

class QmuxTest : public testing::Test {
 protected:
    void SetUp() override
    {
        if (!Fd(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)).is_open())
            GTEST_SKIP() << "this machine has no pseudo terminals: " << std::strerror(errno);
    }
    void TearDown() override
    {
        if (!modem_) return;
        modem_->stop();
        thread_.join();
    }

    void start(milliseconds patience, ClientLimits limits = {.unsent_age = std::chrono::minutes(2)},
               const std::string& scenario = kScenario)
    {
        const std::string path = (folder_.path() / "qmi").string();
        write_file(folder_.path() / "s.toml", scenario);
        std::string error;
        carrier_ = QmuxTerminal::open(path, error, patience);
        ASSERT_NE(carrier_, nullptr) << error;
        modem_.emplace(read_scenario(folder_.path() / "s.toml"), folder_.path() / "modem", complaints_, limits);
        carrier_->serve(*modem_);
        thread_ = std::thread([this] { modem_->run(); });
        host_ = Fd(::open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    }
    void write(const Bytes& bytes) const
    {
        EXPECT_EQ(::write(host_.get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    // The next frame without its marker and length, which are looked at; empty when none comes.
    Bytes read_frame() const
    {
        const Bytes head = read(3);
        if (head.size() < 3) return {};
        EXPECT_EQ(head[0], 1);
        return read(load_le<std::uint16_t>(&head[1]) - 2UL);
    }

    TempDir folder_;

 private:
    Bytes read(std::size_t size) const
    {
        Bytes bytes(size);
        std::size_t done = 0;
        pollfd ready{host_.get(), POLLIN, 0};
        while (done<size&& ::poll(&ready, 1, 20000)> 0)
            done += static_cast<std::size_t>(std::max<ssize_t>(::read(host_.get(), &bytes[done], size - done), 0));
        EXPECT_EQ(done, size);
        bytes.resize(done);
        return bytes;
    }

    Complaints complaints_{[](const std::string& line) { ADD_FAILURE() << line; }};
    std::unique_ptr<QmuxTerminal> carrier_;
    std::optional<Modem> modem_;
    std::thread thread_;
    Fd host_;
};

// What the host writes, as it is, and what it reads then: frames behind their lengths.
struct Exchange {
    const char* catches;
    const char* written;
    std::vector<const char*> read;
};
const Exchange kExchanges[] = {
    {"Versions of services that no frame has room for",
     "01 0B00 00 0000 00 A1 2100 0000",
     {"80 0000 01 A1 2100 1A00 02 0400 00000000 01 1000 03 00 0100 0500 03 0100 0000 11 0100 0000"}},
    {"Rubbish, a longer frame than any, own frames and a message that disagrees with its frame hold up the next one",
     "FF 01 01 01 FFFF 01 0B00 80 0000 00 A1 2100 0000 01 0B00 00 0000 00 A2 2100 0100 01 0B00 00 0000 00 A3 2700 0000",
     {"80 0000 01 A3 2700 0700 02 0400 00000000"}},
    {"A frame that nobody finishes swallows the next one",
     "01 2000 00 0000 00 A1 0100 1500 01 0400 01 0B00 00 0000 00 A2 2700 0000",
     {"80 0000 01 A2 2700 0700 02 0400 00000000"}},
    {"Anything but a request is answered", "01 0B00 00 0000 01 A1 2700 0000 01 0B00 00 0000 02 A2 2700 0000", {}},
    {"Wrong error numbers",
     "01 0B00 00 0000 00 A1 7777 0000   01 0B00 00 0000 00 A2 2200 0000   01 1000 00 0000 00 A3 2200 0500 01 0200 1100"
     "01 0E00 00 0000 00 A4 2200 0300 01 0100   01 0F00 00 0000 00 A5 2200 0400 01 0100 E4"
     "01 1000 00 0000 00 A6 2300 0500 01 0200 1101   01 0B00 00 0001 00 A7 2700 0000"
     "01 0C00 00 1101 00 A8A9 0200 0000",
     {"80 0000 01 A1 7777 0700 02 0400 01004700", "80 0000 01 A2 2200 0700 02 0400 01001100",
      "80 0000 01 A3 2200 0700 02 0400 01000100", "80 0000 01 A4 2200 0700 02 0400 01000100",
      "80 0000 01 A5 2200 0700 02 0400 01001F00", "80 0000 01 A6 2300 0700 02 0400 01000700",
      "80 0001 01 A7 2700 0700 02 0400 01000700", "80 1101 02 A8A9 0200 0700 02 0400 01000700"}},
    {"Instance and data format",
     "01 0F00 00 0000 00 A1 2000 0400 01 0100 07   01 1400 00 0000 00 A2 2600 0900 01 0100 00 10 0200 0100",
     {"80 0000 01 A1 2000 0C00 02 0400 00000000 01 0200 0700",
      "80 0000 01 A2 2600 0C00 02 0400 00000000 10 0200 0100"}},
    {"Ids that aren't the lowest, more than there are, or that don't come back",
     "01 0F00 00 0000 00 A1 2200 0400 01 0100 11   01 0F00 00 0000 00 A2 2200 0400 01 0100 11"
     "01 0F00 00 0000 00 A3 2200 0400 01 0100 03   01 0F00 00 0000 00 A4 2200 0400 01 0100 03"
     "01 1000 00 0000 00 A5 2300 0500 01 0200 1101   01 0F00 00 0000 00 A6 2200 0400 01 0100 11",
     {"80 0000 01 A1 2200 0C00 02 0400 00000000 01 0200 1101", "80 0000 01 A2 2200 0C00 02 0400 00000000 01 0200 1102",
      "80 0000 01 A3 2200 0C00 02 0400 00000000 01 0200 0301", "80 0000 01 A4 2200 0700 02 0400 01000500",
      "80 0000 01 A5 2300 0C00 02 0400 00000000 01 0200 1101",
      "80 0000 01 A6 2200 0C00 02 0400 00000000 01 0200 1101"}},
    {"Answers to another id",
     "01 0C00 00 1102 00 A8A9 0200 0000",
     {"80 1102 02 A8A9 0200 0E00 02 0400 00000000 10 0400 00000000"}},
    {"Ids that outlive their service, or go unheard, or take others with them",
     "01 1300 00 1102 00 A8A9 0100 0700 01 0400 07000000   01 0F00 00 0000 00 A1 2200 0400 01 0100 11"
     "01 0C00 00 0301 00 A8A9 2100 0000",
     {"80 0000 02 00 2400 0500 01 0200 1101", "80 0000 02 00 2400 0500 01 0200 1102",
      "80 0000 01 A1 2200 0700 02 0400 01001F00",
      "80 0301 02 A8A9 2100 4B00 02 0400 00000000 10 1C00 0200 0601 0100 02 07 \"Net One\" 3601 9A01 02 07 \"Net Two\""
      "11 0C00 0200 0601 0100 08 3601 9A01 0C 12 0C00 0200 0601 0100 00 3601 9A01 01 13 0400 00000000"}},
    {"A sync that leaves ids",
     "01 0B00 00 0000 00 A1 2700 0000   01 0C00 00 0301 00 A8A9 2100 0000",
     {"80 0000 01 A1 2700 0700 02 0400 00000000", "80 0301 02 A8A9 2100 0700 02 0400 01000700"}},
};

TEST_F(QmuxTest, ComesAsItIsWritten)
{
    start(milliseconds(20));
    for (const Exchange& exchange : kExchanges) {
        SCOPED_TRACE(exchange.catches);
        write(bytes_of(exchange.written));
        for (const char* frame : exchange.read) EXPECT_EQ(show_bytes(read_frame()), show_bytes(bytes_of(frame)));
    }
}

TEST_F(QmuxTest, AnswersWaitForRoom)
{
    start(milliseconds(20));
    write(bytes_of("01 0F00 00 0000 00 A1 2200 0400 01 0100 03"));
    for (int i = 0; i < 2000; ++i) write(bytes_of("01 0C00 00 0301 00 A8A9 2100 0000"));
    EXPECT_EQ(read_frame().size(), 21u);
    for (int i = 0; i < 2000; ++i) ASSERT_EQ(read_frame().size(), 85u) << i;
}

// A frame longer than any, another one of two writes, and a client id whose answers are read late.
TEST_F(QmuxTest, TakesPiecesAndKeepsFramesWholeForWhoReadsLate)
{
    start(std::chrono::minutes(1), {.unsent_age = milliseconds(300)});
    write(bytes_of("01 FFFF 00 0000 00 A1 2100 F4FF 01 0F00 00 0000 00 A1 2200 04"));
    ::usleep(20000);
    write(bytes_of("00 01 0100 03"));
    EXPECT_EQ(read_frame().size(), 21u);
    const Bytes scan = bytes_of("01 0C00 00 0301 00 A8A9 2100 0000");
    for (int i = 0; i < 2000; ++i) write(scan);
    ::usleep(600000);
    std::size_t answers = 0;
    Bytes frame;
    while ((frame = read_frame()).size() == 85) ++answers;
    EXPECT_EQ(show_bytes(frame), show_bytes(bytes_of("80 0000 02 00 2400 0500 01 0200 0301")));
    EXPECT_GT(answers, 20u);
    EXPECT_LT(answers, 2000u);
    write(scan);
    EXPECT_EQ(show_bytes(read_frame()), show_bytes(bytes_of("80 0301 02 A8A9 2100 0700 02 0400 01000700")));
}

}  // namespace
}  // namespace rbk::sim
