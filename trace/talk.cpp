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
    judge_outcomes();
}

void Talk::judge_outcomes()
{
    for (std::size_t i = 0; i < messages_.size(); ++i) {
        Message& message = messages_[i];
        // Of a request that was never answered nothing has come before the answer.
        if (message.mark == Mark::early && !messages_[*message.partner].partner) message.mark = Mark::none;
        const TraceLine& line = message.line;
        if (!line.is_request() || line.is_diag || !message.partner || message.mark != Mark::none) continue;
        if (!tells_outcomes(line.service) || told_.contains(i)) continue;
        // Nobody waits for what comes of an activation: a run that ends with it may have ended too soon.
        const bool may_have_ended =
            runs_[message.run].open.at(line.service) == i && !waits_for_outcome(line.head.message);
        if (!may_have_ended) message.mark = Mark::no_outcome;
    }
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
    // A clock that was set back in between, by a start of the machine, tells nothing.
    const std::int64_t took_us = messages_[answer].line.time_us - messages_[request].line.time_us;
    if (took_us >= 0) messages_[answer].took_us = took_us;
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
    asked_[{message.line.service, message.line.head.message}].push_back(index);
}

// ---- Answers and indications ----

// The oldest one with this number that still waits, where processes write into the file at once: the modem answers them in
// order. Where nobody waits, the latest.
std::optional<std::size_t> Talk::request_of(const TraceLine& line, bool& is_guess) const
{
    constexpr std::size_t kProcessesAtOnce = 16;
    const auto asked = requests_.find({line.service, line.head.transaction});
    if (asked == requests_.end()) return std::nullopt;
    const std::vector<std::size_t>& requests = asked->second;
    std::optional<std::size_t> latest;
    std::optional<std::size_t> oldest;
    for (std::size_t i = requests.size(); i > 0 && i + kProcessesAtOnce > requests.size(); --i) {
        const std::size_t each = requests[i - 1];
        const Message& request = messages_[each];
        if (request.line.head.message != line.head.message) continue;
        if (!latest) latest = each;
        const bool waits = line.time_us - request.line.time_us <= waits_us(line.service);
        if (request.partner || request.mark != Mark::none || !waits) continue;
        is_guess = is_guess || (oldest && messages_[*oldest].line.bytes != request.line.bytes);
        oldest = each;
    }
    return oldest ? oldest : latest;
}

void Talk::add_answer(std::size_t index)
{
    Message& message = messages_[index];
    const std::optional<std::size_t> request = request_of(message.line, message.is_guess);
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
    if (asker.mark == Mark::unanswered || message.took_us.value_or(0) > waits_us(message.line.service))
        message.mark = asker.mark = Mark::late;
}

// The latest request that an outcome with this token may belong to: one that it wasn't told of, else one that it was.
std::optional<std::size_t> Talk::asker_of(const TraceLine& indication) const
{
    constexpr std::size_t kBack = 64;  // requests of one kind without an outcome
    const auto asked = asked_.find({indication.service, indication.head.message});
    if (asked == asked_.end()) return std::nullopt;
    const auto token = token_of(indication.bytes);
    std::optional<std::size_t> found;
    const std::vector<std::size_t>& requests = asked->second;
    for (std::size_t i = requests.size(); i > 0 && i + kBack > requests.size(); --i) {
        const std::size_t each = requests[i - 1];
        if (token_of(messages_[each].line.bytes) != token) continue;
        if (!found) found = each;
        if (!told_.contains(each)) return each;
    }
    return found;
}

void Talk::add_indication(std::size_t index)
{
    Message& message = messages_[index];
    const std::optional<std::size_t> request = asker_of(message.line);
    if (!request) return;
    answered(*request, index);
    const bool is_first = told_.insert(*request).second;
    if (!is_first && !tells_in_parts(message.line.service, message.line.head.message))
        message.mark = Mark::doubled;
    else if (!messages_[*request].partner)
        message.mark = Mark::early;
    else if (tells_outcomes(message.line.service) && message.took_us.value_or(0) > kOutcomeWait_us)
        message.mark = Mark::late;
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
