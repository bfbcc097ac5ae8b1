#include "trace/talk.h"

#include <algorithm>

#include "trace/names.h"

namespace rbk::trace {
namespace {

// A request that tells its outcome later carries a number in this TLV, which the outcome repeats.
constexpr std::uint8_t kTokenTlv = 0x10;

std::optional<std::uint32_t> token_of(ByteView tlvs)
{
    while (tlvs.size() >= 3) {
        const std::size_t length = load_le<std::uint16_t>(&tlvs[1]);
        if (length > tlvs.size() - 3) break;
        if (tlvs[0] == kTokenTlv && length == 4) return load_le<std::uint32_t>(&tlvs[3]);
        tlvs = tlvs.subspan(3 + length);
    }
    return std::nullopt;
}

// Of a diag packet: the first byte of the request that it answers. A refusal repeats the request behind its own code.
std::uint8_t diag_command(ByteView packet)
{
    const bool is_refusal = packet.size() > 1 && packet[0] >= 0x13 && packet[0] <= 0x18;
    return packet.empty() ? 0 : packet[is_refusal ? 1 : 0];
}

}  // namespace

std::size_t Talk::add(TraceLine line)
{
    const std::size_t index = messages_.size();
    messages_.emplace_back().line = std::move(line);
    Message& message = messages_.back();
    if (runs_.empty()) runs_.emplace_back();
    if (message.line.is_request()) waiting_.push_back(index);
    message.run = runs_.size() - 1;
    if (message.line.is_diag) {
        add_packet(index);
    } else {
        switch (message.line.head.kind) {
        case link::QmiKind::request: add_request(index); break;
        case link::QmiKind::response: add_answer(index); break;
        case link::QmiKind::indication: add_indication(index); break;
        }
    }
    return index;
}

void Talk::end()
{
    for (const std::size_t each : std::exchange(waiting_, {})) give_up(each);
}

void Talk::give_up_at(std::int64_t now_us)
{
    std::erase_if(waiting_, [&](std::size_t each) {
        const Message& message = messages_[each];
        const bool waits = !message.partner && now_us - message.line.time_us <= waits_us(message.line.service);
        if (!waits) give_up(each);
        return !waits;
    });
}

void Talk::give_up(std::size_t index)
{
    Message& message = messages_[index];
    if (!message.line.is_request() || message.partner || message.mark != Mark::none) return;
    message.mark = Mark::unanswered;
    unanswered_.push_back(index);
}

void Talk::answered(std::size_t request, std::size_t answer)
{
    messages_[answer].partner = request;
    messages_[answer].run = messages_[request].run;
    messages_[answer].took_us = messages_[answer].line.time_us - messages_[request].line.time_us;
}

// ---- Requests ----

// Each process counts from 1. Where the file begins in the middle of a run, the number goes on from wherever it is.
std::size_t Talk::run_of_request(const TraceLine& line)
{
    const std::uint16_t transaction = line.head.transaction;
    for (std::size_t i = runs_.size(); i-- > 0;) {
        const std::uint16_t last = runs_[i].last_transaction;
        if (last == 0 || transaction == last + 1 || (last == UINT16_MAX && transaction == 1)) return i;
    }
    if (transaction > runs_.back().last_transaction) return runs_.size() - 1;
    runs_.emplace_back();
    return runs_.size() - 1;
}

void Talk::add_request(std::size_t index)
{
    Message& message = messages_[index];
    message.run = run_of_request(message.line);
    Run& run = runs_[message.run];
    run.last_transaction = message.line.head.transaction;
    // Whoever asks the next question has stopped waiting for the answer to the last one.
    const auto [waiting, is_first] = run.open.try_emplace(message.line.service, index);
    if (!is_first) {
        if (asks_one_at_a_time(message.line.service)) give_up(waiting->second);
        waiting->second = index;
    }
    requests_[{message.line.service, message.line.head.transaction}].push_back(index);
    latest_[{message.run, message.line.service, message.line.head.message}] = index;
}

// ---- Answers and indications ----

// The latest one with this number; or, where that has its answer, an earlier one that still waits: two processes write into
// the file at once.
std::optional<std::size_t> Talk::request_of(const TraceLine& line) const
{
    constexpr std::size_t kProcessesAtOnce = 16;
    const auto asked = requests_.find({line.service, line.head.transaction});
    if (asked == requests_.end()) return std::nullopt;
    std::optional<std::size_t> latest;
    const std::vector<std::size_t>& requests = asked->second;
    for (std::size_t i = requests.size(); i > 0 && i + kProcessesAtOnce > requests.size(); --i) {
        const std::size_t each = requests[i - 1];
        const Message& request = messages_[each];
        if (request.line.head.message != line.head.message) continue;
        if (!latest) latest = each;
        if (!messages_[*latest].partner) return latest;
        const bool waits = line.time_us - request.line.time_us <= waits_us(line.service);
        if (!request.partner && request.mark == Mark::none && waits) return each;
    }
    return latest;
}

void Talk::add_answer(std::size_t index)
{
    Message& message = messages_[index];
    const std::optional<std::size_t> request = request_of(message.line);
    if (!request) {
        message.mark = Mark::unmatched;
        return;
    }
    answered(*request, index);
    Message& asker = messages_[*request];
    if (asker.partner) {
        message.mark = Mark::doubled;
        return;
    }
    asker.partner = index;
    if (asker.mark == Mark::unanswered || *message.took_us > waits_us(message.line.service))
        message.mark = asker.mark = Mark::late;
}

void Talk::add_indication(std::size_t index)
{
    Message& message = messages_[index];
    for (std::size_t run = runs_.size(); run-- > 0;) {
        const auto asked = latest_.find({run, message.line.service, message.line.head.message});
        if (asked == latest_.end()) continue;
        std::optional<std::size_t> request = asked->second;
        const auto token = token_of(message.line.bytes);
        if (token != token_of(messages_[*request].line.bytes)) continue;
        answered(*request, index);
        if (!messages_[*request].partner) message.mark = Mark::early;
        return;
    }
}

// ---- Diag: packets have no numbers ----

void Talk::add_packet(std::size_t index)
{
    Message& message = messages_[index];
    const std::uint8_t command = diag_command(message.line.bytes);
    if (message.line.to_modem) {
        open_packets_[command] = index;
        return;
    }
    const auto asked = open_packets_.find(command);
    if (asked == open_packets_.end()) return;  // a log, an event, a message: it comes unasked
    answered(asked->second, index);
    if (!messages_[asked->second].partner) messages_[asked->second].partner = index;
}

}  // namespace rbk::trace
