#include "wire.h"

#include <poll.h>

#include <algorithm>
#include <sstream>

#include "link/diag_frame.h"
#include "simulator/scenario/scenario_reader.h"
#include "support/embedded_run.h"
#include "support/lines.h"

namespace rbk::sim {
namespace {

constexpr std::pair<const char*, std::uint32_t> kServices[] = {
    {"extended", 0xFFE4}, {"vs", 228}, {"nas", 3}, {"uim", 11}, {"sar", 17}, {"pdc", 36}, {"diag", link::kDiagService},
};

// ---- Bytes as text ----

std::vector<std::string> words_of(const std::string& text)
{
    std::vector<std::string> words;
    for (std::size_t at = 0; (at = text.find_first_not_of(' ', at)) != std::string::npos;) {
        const bool quoted = text[at] == '"';
        const std::size_t end = std::min(quoted ? text.find('"', at + 1) + 1 : text.find(' ', at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end;
    }
    return words;
}

void append_word(Bytes& bytes, const std::string& word)
{
    const auto number = [&](std::size_t from) { return std::stoll(word.substr(from), nullptr, 0); };
    const auto byte_at = [&](std::size_t at) {
        return static_cast<std::uint8_t>(std::stoul(word.substr(at, 2), nullptr, 16));
    };
    switch (word[0]) {
    case '"': bytes.insert(bytes.end(), word.begin() + 1, word.end() - 1); return;
    case 'h': return append_le(bytes, static_cast<std::uint16_t>(number(1)));
    case 'w': return append_le(bytes, static_cast<std::uint32_t>(number(1)));
    case '@': return bytes.resize(static_cast<std::size_t>(number(1)));
    default: break;
    }
    if (word.find('*') == 2) {
        bytes.insert(bytes.end(), static_cast<std::size_t>(number(3)), byte_at(0));
    } else {
        for (std::size_t at = 0; at < word.size(); at += 2) bytes.push_back(byte_at(at));
    }
}

void append_tlv(Bytes& tlvs, std::uint8_t type, ByteView value)
{
    tlvs.push_back(type);
    append_le(tlvs, static_cast<std::uint16_t>(value.size()));
    tlvs.insert(tlvs.end(), value.begin(), value.end());
}

}  // namespace

Bytes bytes_of(const std::string& text)
{
    Bytes bytes;
    for (const std::string& word : words_of(text)) append_word(bytes, word);
    return bytes;
}

Bytes tlvs_of(const std::string& text)
{
    Bytes tlvs;
    const std::vector<std::string> words = words_of(text);
    for (std::size_t i = 0; i < words.size();) {
        const bool envelope = words[i] == "env";
        const std::string& type = words.at(envelope ? ++i : i);
        Bytes value;
        while (++i < words.size() && words[i] != "env" && !words[i].ends_with(':')) append_word(value, words[i]);
        if (!envelope) {
            append_tlv(tlvs, static_cast<std::uint8_t>(std::stoul(type, nullptr, 16)), value);
            continue;
        }
        append_tlv(tlvs, 0x01, bytes_of("w" + type.substr(0, type.size() - 1)));
        append_tlv(tlvs, 0x02, bytes_of("w" + std::to_string(value.size())));
        value.resize(550);
        append_tlv(tlvs, 0x10, value);
    }
    return tlvs;
}

std::string show_bytes(ByteView bytes)
{
    return test::with_runs(test::hex({bytes.begin(), bytes.end()}));
}

std::string show_tlvs(ByteView tlvs)
{
    if (!well_formed(tlvs)) return "broken " + show_bytes(tlvs);
    std::string text;
    while (const std::optional<Tlv> tlv = take_tlv(tlvs))
        text += (text.empty() ? "" : " ") + show_bytes(Bytes{tlv->type}) + ":" + show_bytes(tlv->value);
    return text;
}

// ---- The client's end ----

WireClient connect(const std::string& path)
{
    std::string error;
    link::LinkSocket socket = link::LinkSocket::connect_unix(path, error);
    EXPECT_TRUE(socket.is_open()) << error;
    return WireClient(std::move(socket));
}

void WireClient::send(const std::string& text)
{
    std::istringstream words(text);
    std::string service;
    std::string message;
    std::string rest;
    words >> service >> message;
    std::getline(words, rest);
    const link::Address to = address_of(service);
    if (message == "raw") return send_to(to, bytes_of(rest));
    Bytes bytes;
    if (service == "diag") {
        const auto& calls = link::kDiagCallNames;
        std::size_t dci = 0;
        const auto client = static_cast<std::int32_t>(std::stol(rest, &dci));
        const auto what = std::find(calls.begin(), calls.end(), message) - calls.begin();  // behind them: lsm_deinit
        const auto head =
            link::pack_diag({link::DiagKind::call, static_cast<std::uint8_t>(what), ++transaction_, client});
        bytes.assign(head.begin(), head.end());
        rest.erase(0, dci);
    }
    const Bytes body = service == "diag" ? bytes_of(rest) : tlvs_of(rest);
    if (service != "diag") {
        bytes = {0};
        append_le(bytes, ++transaction_);
        append_le(bytes, static_cast<std::uint16_t>(std::stoul(message, nullptr, 16)));
        append_le(bytes, static_cast<std::uint16_t>(body.size()));
    }
    bytes.insert(bytes.end(), body.begin(), body.end());
    send_to(to, bytes);
}

void WireClient::send_to(link::Address to, ByteView bytes)
{
    unanswered_.insert(peek_le<std::uint16_t>(bytes, 1));
    unanswered_.insert(peek_le<std::uint16_t>(bytes, 2));  // where diag has its sequence
    socket_.send(to, bytes, {}, true);
}

link::Address WireClient::address_of(const std::string& service)
{
    if (service == "router") return {1, QRTR_PORT_CTRL};
    if (service == "nobody") return {0, 1};
    if (!addresses_.contains(service)) {
        for (const auto& [name, id] : kServices)
            if (name == service) lookup(id);
    }
    EXPECT_TRUE(addresses_.contains(service)) << "there is no " << service;
    return addresses_[service];
}

std::string WireClient::ask(const std::string& text)
{
    send(text);
    return next();
}

std::size_t WireClient::lookup(std::uint32_t service)
{
    send_to({1, QRTR_PORT_CTRL}, link::pack_control({QRTR_TYPE_NEW_LOOKUP, service, 0, {}}));
    std::size_t rows = 0;
    while (const auto datagram = receive(std::chrono::seconds(20))) {
        const auto control =
            datagram->peer.port == QRTR_PORT_CTRL ? link::parse_control(datagram->bytes) : std::nullopt;
        const bool there = control && control->type == QRTR_TYPE_NEW_SERVER;
        if (there && control->service == 0) return rows;
        const std::string shown = show(*datagram);
        if (there && (service == 0 || control->service == service))
            ++rows;
        else
            early_.push_back(shown);
    }
    EXPECT_TRUE(closed_) << "no end of the rows";
    return rows;
}

std::string WireClient::next(milliseconds wait)
{
    if (!early_.empty()) {
        const std::string first = early_.front();
        early_.pop_front();
        return first;
    }
    const auto datagram = receive(wait);
    return datagram ? show(*datagram) : closed_ ? "closed" : "";
}

std::optional<link::Datagram> WireClient::receive(milliseconds wait)
{
    pollfd ready{socket_.fd(), POLLIN, 0};
    if (::poll(&ready, 1, static_cast<int>(wait.count())) <= 0) return std::nullopt;
    return socket_.receive(room_, closed_);
}

std::string WireClient::show_control(const link::ControlPacket& packet)
{
    if (packet.type == QRTR_TYPE_DEL_CLIENT) return "lost";
    const auto known = std::find_if(std::begin(kServices), std::end(kServices),
                                    [&](const auto& row) { return row.second == packet.service; });
    const std::string name = known == std::end(kServices) ? std::to_string(packet.service) : known->first;
    if (packet.type == QRTR_TYPE_NEW_SERVER) {
        if (addresses_.contains(name) && addresses_[name] != packet.address) addresses_["stale"] = addresses_[name];
        addresses_[name] = packet.address;
    }
    return (packet.type == QRTR_TYPE_NEW_SERVER ? "+ " : "- ") + name;
}

std::string WireClient::show(const link::Datagram& datagram)
{
    if (datagram.peer.port == QRTR_PORT_CTRL) return show_control(link::parse_control(datagram.bytes).value());
    std::string shown = "somebody ";
    for (const auto& [name, address] : addresses_)
        if (address == datagram.peer) shown = name + " ";
    if (const auto frame = link::parse_diag(datagram.bytes)) {
        if (frame->head.kind == link::DiagKind::packet) return shown + "packet " + show_bytes(frame->bytes);
        note_answer(frame->head.sequence);
        return shown + "=" + std::to_string(frame->head.code);
    }
    const auto message = link::parse_qmi(datagram.bytes);
    if (!message) return shown + "broken " + show_bytes(datagram.bytes);
    const bool response = message->head.kind == link::QmiKind::response;
    if (response) note_answer(message->head.transaction);
    EXPECT_TRUE(response || message->head.transaction == 0) << "an indication is no answer";
    char number[8];
    std::snprintf(number, sizeof number, "%c%X ", response ? 'r' : 'i', message->head.message);
    return shown + number + show_tlvs(message->tlvs);
}

void WireClient::note_answer(std::uint16_t transaction)
{
    const auto asked = unanswered_.find(transaction);
    if (asked == unanswered_.end()) FAIL() << "an answer to " << transaction << ", which nobody has asked";
    unanswered_.erase(asked);
}

// ---- The modem's end ----

RunningModem::RunningModem(const std::string& scenario, std::optional<std::filesystem::path> state, ClientLimits limits)
    : state_(state.value_or(folder_.path() / "modem"))
{
    const std::filesystem::path file = state_.parent_path() / "scenario.toml";
    write_file(file, scenario);
    modem_.emplace(read_scenario(file), state_, sink_, limits);
    std::string error;
    listener_ = Listener::open((folder_.path() / "socket").string(), error);
    if (listener_ == nullptr) throw std::runtime_error(error);
    listener_->serve(*modem_);
    thread_ = std::thread([this] { modem_->run(); });
}

void RunningModem::stop()
{
    if (!thread_.joinable()) return;
    modem_->stop();
    thread_.join();
}

std::chrono::nanoseconds processor_time(clockid_t clock)
{
    timespec spent{};
    EXPECT_EQ(::clock_gettime(clock, &spent), 0);
    return std::chrono::seconds(spent.tv_sec) + std::chrono::nanoseconds(spent.tv_nsec);
}

}  // namespace rbk::sim
