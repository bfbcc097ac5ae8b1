#include "wire_client.h"

#include <poll.h>

#include <algorithm>

namespace rbk::sim {

Bytes read_file(const std::filesystem::path& file)
{
    EXPECT_TRUE(std::filesystem::exists(file)) << file;
    const std::string content = test::read_file(file);
    return {content.begin(), content.end()};
}

// ---- The client's end ----

std::optional<Received> WireClient::receive(std::chrono::milliseconds wait)
{
    pollfd ready{socket_.fd(), POLLIN, 0};
    if (::poll(&ready, 1, static_cast<int>(wait.count())) <= 0) return std::nullopt;
    Bytes room(link::kLongestDatagram);
    const auto datagram = socket_.receive(room, closed_);
    if (!datagram) return std::nullopt;
    Received received;
    received.from = datagram->peer;
    const ByteView bytes = datagram->bytes;
    if (datagram->peer.port == QRTR_PORT_CTRL) {
        received.control = link::parse_control(bytes);
        return received;
    }
    if (bytes.size() < 7) {
        ADD_FAILURE() << "a message without a head";
        return std::nullopt;
    }
    received.kind = bytes[0];
    received.transaction = load_le<std::uint16_t>(&bytes[1]);
    received.message = load_le<std::uint16_t>(&bytes[3]);
    EXPECT_EQ(load_le<std::uint16_t>(&bytes[5]), bytes.size() - 7);
    received.tlvs.assign(bytes.begin() + 7, bytes.end());
    return received;
}

std::vector<link::ControlPacket> WireClient::lookup(std::uint32_t service, std::uint32_t instance)
{
    send_raw({1, QRTR_PORT_CTRL}, link::pack_control({QRTR_TYPE_NEW_LOOKUP, service, instance, {}}));
    std::vector<link::ControlPacket> rows;
    while (const std::optional<Received> received = receive()) {
        if (!received->control || received->control->type != QRTR_TYPE_NEW_SERVER) continue;
        if (received->control->service == 0) return rows;
        rows.push_back(*received->control);
    }
    ADD_FAILURE() << "no end of the rows";
    return rows;
}

link::Address WireClient::extended()
{
    if (extended_.port == 0) {
        const auto rows = lookup(0xFFE4);
        EXPECT_EQ(rows.size(), 1u);
        if (!rows.empty()) extended_ = rows.front().address;
    }
    return extended_;
}

void WireClient::send(link::Address to, std::uint16_t message, ByteView tlvs)
{
    Bytes bytes(7 + tlvs.size());  // kind 0: request
    store_le(&bytes[1], ++transaction_);
    store_le(&bytes[3], message);
    store_le(&bytes[5], static_cast<std::uint16_t>(tlvs.size()));
    std::copy(tlvs.begin(), tlvs.end(), bytes.begin() + 7);
    send_raw(to, bytes);
}

void WireClient::send_raw(link::Address to, ByteView bytes)
{
    socket_.send(to, bytes, {}, true);
}

std::optional<Received> WireClient::ask(std::uint16_t message, ByteView tlvs)
{
    send(extended(), message, tlvs);
    while (std::optional<Received> received = receive()) {
        if (received->kind != 2) continue;
        EXPECT_EQ(received->transaction, transaction_);
        EXPECT_EQ(received->message, message);
        EXPECT_EQ(received->from, extended_);
        return received;
    }
    return std::nullopt;
}

WireClient::Envelope WireClient::envelope(std::uint32_t qmi_id, ByteView data, std::uint16_t message)
{
    const auto received = ask(message, envelope_tlvs(qmi_id, static_cast<std::uint32_t>(data.size()), data));
    if (!received || received->tlvs.size() != 567) {
        ADD_FAILURE() << "no whole envelope came back";
        return {};
    }
    const Bytes& tlvs = received->tlvs;
    const Bytes heads{tlvs[0], tlvs[1], tlvs[2], tlvs[7], tlvs[8], tlvs[9], tlvs[14], tlvs[15], tlvs[16]};
    EXPECT_EQ(heads, (Bytes{0x01, 4, 0, 0x02, 4, 0, 0x10, 0x26, 0x02}));
    return {load_le<std::uint32_t>(&tlvs[3]), load_le<std::uint32_t>(&tlvs[10]), {tlvs.begin() + 17, tlvs.end()}};
}

// ---- Records ----

Bytes envelope_tlvs(std::uint32_t qmi_id, std::uint32_t data_len, ByteView data)
{
    Bytes tlvs(567);
    const Bytes heads[] = {{0x01, 4, 0}, {0x02, 4, 0}, {0x10, 0x26, 0x02}};
    std::copy(heads[0].begin(), heads[0].end(), tlvs.begin());
    store_le(&tlvs[3], qmi_id);
    std::copy(heads[1].begin(), heads[1].end(), tlvs.begin() + 7);
    store_le(&tlvs[10], data_len);
    std::copy(heads[2].begin(), heads[2].end(), tlvs.begin() + 14);
    std::copy(data.begin(), data.end(), tlvs.begin() + 17);
    return tlvs;
}

Record& Record::put_text(std::size_t offset, std::string_view text)
{
    std::copy(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    return *this;
}

Record nv_record(std::uint8_t op, std::uint8_t sub, std::uint16_t item, ByteView data)
{
    Record record(544);
    record.put(0, op).put(1, sub).put(2, item).put(108, static_cast<std::uint32_t>(data.size()));
    std::copy(data.begin(), data.end(), record.bytes.begin() + 120);
    return record;
}

Record efs_record(std::uint8_t op, std::uint8_t sub, std::string_view path)
{
    Record record(544);
    record.put(0, op).put(1, sub).put(4, static_cast<std::uint8_t>(path.size())).put_text(5, path);
    return record;
}

Record common_record(std::uint32_t cmd, std::uint32_t type, ByteView value)
{
    Record record(512);
    record.put(0, cmd).put(8, type).put(12, static_cast<std::uint32_t>(value.size()));
    std::copy(value.begin(), value.end(), record.bytes.begin() + 16);
    return record;
}

std::int32_t nvefs_result(const WireClient::Envelope& envelope)
{
    return envelope.first_word == 0 ? envelope.at<std::int32_t>(16) : 99999;
}

std::int32_t nv_write(WireClient& client, std::uint8_t sub, std::uint16_t item, ByteView data)
{
    return nvefs_result(client.envelope(2, nv_record(kNvWrite, sub, item, data).bytes));
}

std::int32_t nv_read(WireClient& client, std::uint8_t sub, std::uint16_t item, Bytes& data)
{
    const auto envelope = client.envelope(2, nv_record(kNvRead, sub, item).bytes);
    const auto size = std::min<std::size_t>(envelope.at<std::uint32_t>(4), 424);
    data.assign(envelope.data.begin() + 20, envelope.data.begin() + 20 + static_cast<std::ptrdiff_t>(size));
    return nvefs_result(envelope);
}

std::int32_t efs_write(WireClient& client, std::uint8_t sub, std::string_view path, ByteView content,
                       std::size_t chunk_size)
{
    std::int32_t result = 255;
    for (std::size_t sent = 0; sent < content.size();) {
        const ByteView chunk = content.subspan(sent, std::min(chunk_size, content.size() - sent));
        Record record = efs_record(kEfsWrite, sub, path);
        record.put(2, static_cast<std::uint16_t>(result)).put(108, static_cast<std::uint32_t>(content.size()));
        record.put(112, static_cast<std::uint32_t>(chunk.size())).put(116, static_cast<std::uint32_t>(sent));
        std::copy(chunk.begin(), chunk.end(), record.bytes.begin() + 120);
        result = nvefs_result(client.envelope(2, record.bytes));
        if (result < 0) return result;
        sent += chunk.size();
    }
    return result;
}

std::int32_t efs_read(WireClient& client, std::uint8_t sub, std::string_view path, Bytes& content)
{
    content.clear();
    while (true) {
        Record record = efs_record(kEfsRead, sub, path);
        const auto envelope = client.envelope(2, record.put(116, static_cast<std::uint32_t>(content.size())).bytes);
        const auto size = envelope.at<std::uint32_t>(8);
        if (nvefs_result(envelope) != 0 || size > 424) return nvefs_result(envelope);
        content.insert(content.end(), envelope.data.begin() + 20, envelope.data.begin() + 20 + size);
        if (size == 0 || content.size() >= envelope.at<std::uint32_t>(4)) return 0;
    }
}

std::int32_t efs_delete(WireClient& client, std::uint8_t sub, std::string_view path)
{
    return nvefs_result(client.envelope(2, efs_record(kEfsDelete, sub, path).bytes));
}

// ---- The modem's end ----

RunningModem::RunningModem(std::string_view scenario, std::optional<std::filesystem::path> state, ClientLimits limits)
    : state_(state.value_or(folder_.path() / "modem"))
{
    std::optional<std::filesystem::path> file;
    if (!scenario.empty()) write_file(*(file = folder_.path() / "scenario.toml"), scenario);
    sink_.emplace([this](const std::string& line) { complaints.push_back(line); });
    modem_.emplace(read_scenario(file), state_, *sink_, limits);
    std::string error;
    listener_ = Listener::open((folder_.path() / "socket").string(), error);
    if (listener_ == nullptr) {
        ADD_FAILURE() << error;
        return;
    }
    listener_->serve(*modem_);
    thread_ = std::thread([this] { modem_->run(); });
}

RunningModem::~RunningModem()
{
    stop();
}

WireClient RunningModem::connect()
{
    std::string error;
    link::LinkSocket socket = link::LinkSocket::connect_unix((folder_.path() / "socket").string(), error);
    EXPECT_TRUE(socket.is_open()) << error;
    return WireClient(std::move(socket));
}

void RunningModem::stop()
{
    if (!thread_.joinable()) return;
    modem_->stop();
    thread_.join();
}

}  // namespace rbk::sim
