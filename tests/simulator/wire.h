// A modem and its clients for the tests: real sockets, and messages as text.
//
// Bytes are words with blanks between them:
//   A1B2   in hex                   h255  a half of 16 bits, little-endian    11*400  a byte, this many times
//   "/nv"  letters                  w-22  a word of 32 bits                   @120    zeros up to this offset
// TLVs begin with their type: 01: w5 10: "text". `env 2: ...` stands for the three TLVs of an envelope with this first
// word: its data_len is as long as what follows, its data is filled up to 550 bytes.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "link/link_socket.h"
#include "simulator/carriers/listener.h"
#include "simulator/modem/modem.h"
#include "support/home.h"

namespace rbk::sim {

using std::chrono::milliseconds;
using test::read_file;
using test::TempDir;
using test::write_file;

Bytes bytes_of(const std::string& text);
Bytes tlvs_of(const std::string& text);
// Both as failures show them, and as they are compared.
std::string show_bytes(ByteView bytes);
std::string show_tlvs(ByteView tlvs);

class WireClient {
 public:
    explicit WireClient(link::LinkSocket socket) : socket_(std::move(socket)) {}

    // A service, the message in hex, and TLVs: "uim 2F 10: 01". Bytes as they are: "uim raw 00 h7", also to the "router",
    // to "nobody" and to where a service was before ("stale"). Diag has calls of a DCI client: "diag send 0 4B12".
    void send(const std::string& text);
    // What comes next: "uim r2F 02: ..." a response, "uim i32 ..." an indication, "diag =0" and "diag packet ..." an
    // answer and a packet, "+ uim" and "- uim" a service that comes and goes, "lost" a message that met nobody, "closed".
    // Empty when nothing does in time.
    std::string next(milliseconds wait = std::chrono::seconds(20));
    std::string ask(const std::string& text);

    // Asks the router, and counts its rows up to the zero row; what else comes meanwhile is kept for next(). A modem that
    // has answered has handled all that this client sent before.
    std::size_t lookup(std::uint32_t service);
    const link::LinkSocket& socket() const { return socket_; }

 private:
    void send_to(link::Address to, ByteView bytes);
    link::Address address_of(const std::string& service);
    std::optional<link::Datagram> receive(milliseconds wait);
    std::string show(const link::Datagram& datagram);
    void note_answer(std::uint16_t transaction);
    std::string show_control(const link::ControlPacket& packet);

    link::LinkSocket socket_;
    Bytes room_ = Bytes(link::kLongestDatagram);
    std::map<std::string, link::Address> addresses_;  // the latest that it was told of
    std::deque<std::string> early_;
    std::uint16_t transaction_ = 0;
    std::multiset<std::uint16_t> unanswered_;
    bool closed_ = false;
};

// What such a clock says of a thread or a process.
std::chrono::nanoseconds processor_time(clockid_t clock);

// A client of the server at this path.
WireClient connect(const std::string& path);

// A modem on a thread of its own, with a state directory of its own unless one is given; its scenario lies beside that.
class RunningModem {
 public:
    explicit RunningModem(const std::string& scenario = "", std::optional<std::filesystem::path> state = std::nullopt,
                          ClientLimits limits = {});
    ~RunningModem() { stop(); }

    WireClient connect() const { return sim::connect((folder_.path() / "socket").string()); }
    void stop();
    const std::filesystem::path& state() const { return state_; }
    pthread_t thread() { return thread_.native_handle(); }
    Modem& modem() { return *modem_; }    // not while it runs
    std::vector<std::string> complaints;  // to be read after stop()

 private:
    TempDir folder_;
    std::filesystem::path state_;
    Complaints sink_{[this](const std::string& line) { complaints.push_back(line); }};
    std::unique_ptr<Listener> listener_;
    std::optional<Modem> modem_;
    std::thread thread_;
};

}  // namespace rbk::sim
