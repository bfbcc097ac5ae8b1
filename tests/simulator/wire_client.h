// A modem and its clients for the tests: real sockets, and messages put together by hand.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/link/link_socket.h"
#include "simulator/listener.h"
#include "simulator/modem.h"
#include "support/home.h"

namespace rbk::sim {

using test::TempDir;
using test::write_file;

// The bytes of a file; one that isn't there fails the test.
Bytes read_file(const std::filesystem::path& file);

// What came over the link: a message, or the router's words.
struct Received {
    link::Address from;
    std::uint8_t kind = 0;  // of QMI: 2 response, 4 indication
    std::uint16_t transaction = 0;
    std::uint16_t message = 0;
    Bytes tlvs;
    std::optional<link::ControlPacket> control;
};

class WireClient {
 public:
    explicit WireClient(link::LinkSocket socket) : socket_(std::move(socket)) {}

    const link::LinkSocket& socket() const { return socket_; }
    // The next datagram; nothing within `wait`, or after the far end has closed.
    std::optional<Received> receive(std::chrono::milliseconds wait = std::chrono::seconds(5));
    bool closed() const { return closed_; }

    // Asks the router, and takes its rows up to the zero row.
    std::vector<link::ControlPacket> lookup(std::uint32_t service, std::uint32_t instance = 0);
    // The extended service's address; fails the test when it isn't there.
    link::Address extended();

    void send(link::Address to, std::uint16_t message, ByteView tlvs);
    void send_raw(link::Address to, ByteView bytes);
    // Sends to the extended service and waits for the answer.
    std::optional<Received> ask(std::uint16_t message, ByteView tlvs);

    // One envelope; the answer's first word, data_len and whole data.
    struct Envelope {
        std::uint32_t first_word = 0xDEAD;
        std::uint32_t data_len = 0;
        Bytes data;
        template <typename Number>
        Number at(std::size_t offset) const
        {
            return peek_le<Number>(data, offset);
        }
    };
    Envelope envelope(std::uint32_t qmi_id, ByteView data, std::uint16_t message = 2);

 private:
    link::LinkSocket socket_;
    link::Address extended_;
    std::uint16_t transaction_ = 0;
    bool closed_ = false;
};

// The TLVs of an envelope request.
Bytes envelope_tlvs(std::uint32_t qmi_id, std::uint32_t data_len, ByteView data);

// A record of the requests ids 2 and 4, by offsets.
class Record {
 public:
    explicit Record(std::size_t size) : bytes(size) {}
    template <typename Number>
    Record& put(std::size_t offset, Number number)
    {
        store_le(&bytes[offset], number);
        return *this;
    }
    Record& put_text(std::size_t offset, std::string_view text);
    Bytes bytes;
};

enum : std::uint8_t { kNvRead = 1, kNvWrite = 2, kNvDelete = 3, kEfsRead = 4, kEfsWrite = 5, kEfsDelete = 6 };
Record nv_record(std::uint8_t op, std::uint8_t sub, std::uint16_t item, ByteView data = {});
Record efs_record(std::uint8_t op, std::uint8_t sub, std::string_view path);
Record common_record(std::uint32_t cmd, std::uint32_t type = 0, ByteView value = {});

// Results of record 2, as the modem gave them. A first word other than 0 comes back as 99999.
std::int32_t nv_write(WireClient& client, std::uint8_t sub, std::uint16_t item, ByteView data);
std::int32_t nv_read(WireClient& client, std::uint8_t sub, std::uint16_t item, Bytes& data);
std::int32_t efs_write(WireClient& client, std::uint8_t sub, std::string_view path, ByteView content,
                       std::size_t chunk_size = 414);
std::int32_t efs_read(WireClient& client, std::uint8_t sub, std::string_view path, Bytes& content);
std::int32_t efs_delete(WireClient& client, std::uint8_t sub, std::string_view path);

// A modem on a thread of its own, with a state directory of its own unless one is given.
class RunningModem {
 public:
    explicit RunningModem(std::string_view scenario = "", std::optional<std::filesystem::path> state = std::nullopt,
                          ClientLimits limits = {});
    ~RunningModem();

    WireClient connect();
    void stop();
    const std::filesystem::path& state() const { return state_; }
    Modem& modem() { return *modem_; }    // not while it runs
    std::vector<std::string> complaints;  // to be read after stop()

 private:
    TempDir folder_;
    std::filesystem::path state_;
    std::optional<Complaints> sink_;
    std::optional<Modem> modem_;
    std::unique_ptr<Listener> listener_;
    std::thread thread_;
};

}  // namespace rbk::sim
