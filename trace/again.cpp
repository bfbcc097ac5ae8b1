#include "trace/again.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "link/diag_frame.h"
#include "link/qmi_frame.h"
#include "simulator/scenario/scenario_reader.h"
#include "simulator/scenario/scenario_text.h"
#include "trace/fields.h"
#include "trace/names.h"

namespace rbk::trace {
namespace {

constexpr std::int64_t kLongestWaitMs = 24L * 60 * 60 * 1000;  // that a scenario takes
constexpr std::int64_t kNoDelayMs = 5;                         // an answer that took less came at once
constexpr std::size_t kWidth = 116;                            // of a line of bytes
constexpr std::size_t kLeastRun = 8;                           // equal bytes that are written once, with their number
constexpr std::size_t kFirstRequests = 5;                      // that tell the reader which command it was

std::string in_quotes(const std::string& text)
{
    return '"' + text + '"';
}

// Names come from outside: a comment has them as plain letters.
std::string plain(std::string_view text)
{
    std::string letters(text);
    std::ranges::replace_if(
        letters, [](char c) { return c < 0x20 || c > 0x7E; }, '?');
    return letters;
}

// ---- Bytes as hex text ----

// Words of hex, those of a TLV behind each other; "00*8" is eight times zero.
void append_words(std::vector<std::string>& words, ByteView bytes)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t run = equal_at_front(bytes.subspan(i));
        const bool counted = run >= kLeastRun;
        words.push_back({kDigits[bytes[i] >> 4], kDigits[bytes[i] & 0xF]});
        if (counted) words.back() += "*" + std::to_string(run);
        i += counted ? run : 1;
    }
}

// A quoted text; where it is long one of several lines, in which each TLV begins a line of its own.
std::string quoted_hex(ByteView bytes, bool has_tlvs)
{
    constexpr std::size_t kHead = 3;  // of a TLV: type and length
    std::string text;
    std::size_t width = 0;
    bool is_long = false;
    while (!bytes.empty()) {
        std::size_t size = bytes.size();
        if (has_tlvs && size >= kHead) size = std::min<std::size_t>(size, kHead + load_le<std::uint16_t>(&bytes[1]));
        std::vector<std::string> words;
        append_words(words, bytes.first(size));
        bytes = bytes.subspan(size);
        for (std::size_t i = 0; i < words.size(); ++i) {
            const bool breaks = width + 1 + words[i].size() > kWidth;
            is_long = is_long || breaks;
            // Blanks that a short text needs none of become its line ends where it is a long one.
            text += width == 0 ? "" : i == 0 ? "\t" : breaks ? "\n" : " ";
            width = width == 0 || breaks ? words[i].size() : width + 1 + words[i].size();
            text += words[i];
        }
    }
    std::ranges::replace(text, '\t', is_long ? '\n' : ' ');
    return is_long ? "\"\"\"\n" + text + "\"\"\"" : in_quotes(text);
}

// ---- One request with all that came of it ----

struct Exchange {
    const Message* request = nullptr;
    std::size_t at = 0;  // its index
    std::uint64_t nth = 0;
    std::optional<std::size_t> answer;                       // the first one
    std::int64_t answer_us = 0;                              // when that is going to come
    std::vector<std::pair<std::size_t, std::int64_t>> came;  // answers, indications, packets, each with its delay, ms
};

class Writer {
 public:
    Writer(const std::vector<Message>& messages, std::size_t run) : messages_(messages), run_(run) {}

    std::variant<std::string, NoScenario> write(std::string_view source);

 private:
    // A service and a message's number; of diag the number is 0.
    using Kind = std::pair<std::string, std::uint16_t>;

    void collect();
    void add_request(std::size_t index);
    void add_reply(std::size_t index);
    void belongs(std::size_t index, std::size_t exchange);
    void plan();
    bool check_sizes();

    void write_head(std::string_view source);
    void write_left_out();
    void write_unasked(std::size_t index);
    void write_exchange(const Exchange& exchange);
    void write_following(const Exchange& exchange, std::int64_t answer_ms);

    static std::string service_of(const TraceLine& line);
    static bool is_answer(const TraceLine& line) { return line.is_diag || line.head.kind == link::QmiKind::response; }
    std::string words_of(const TraceLine& line) const;
    std::string hex_of(std::size_t index);
    // Milliseconds from one message to a later one. What is shorter than `least` is none; where the client has asked
    // something else meanwhile, each counts.
    std::int64_t wait_ms(std::size_t from, std::size_t to, std::int64_t least) const;

    const std::vector<Message>& messages_;
    const std::size_t run_;
    std::vector<std::size_t> asked_{0};  // by index: the run's requests before that message
    std::map<Kind, std::uint64_t> counts_;
    std::map<std::string, std::size_t> last_;  // by service: the exchange of its last request
    std::vector<Exchange> exchanges_;
    std::vector<std::pair<std::size_t, std::size_t>> replies_;  // index and exchange, in their order
    std::map<std::size_t, std::size_t> exchange_of_;            // by index of the request
    std::vector<std::size_t> unasked_;                          // indications before any request to their service
    std::vector<std::size_t> left_out_;
    std::uint16_t transaction_ = 0;     // of the run's last request; each run counts from 1
    std::vector<std::uint64_t> holes_;  // lines before which requests of the run are missing
    std::string refusal_;
    std::string text_;
    std::size_t filled_ = 0;  // bytes of its texts that have "00*8"
};

// As scenario files call it; empty for one that they don't know.
std::string Writer::service_of(const TraceLine& line)
{
    if (line.is_diag) return "diag";
    return service_tables(line.service) == nullptr ? "" : service_name(line.service);
}

std::string Writer::words_of(const TraceLine& line) const
{
    if (line.is_diag) return "diag request";
    return plain(service_of(line) + " " + message_name(line.service, line.head.message));
}

std::int64_t Writer::wait_ms(std::size_t from, std::size_t to, std::int64_t least) const
{
    const std::int64_t passed_us = messages_[to].line.time_us - messages_[from].line.time_us;
    const bool is_late = messages_[to].mark == Mark::late;
    const std::int64_t ms = std::clamp<std::int64_t>((passed_us + (is_late ? 999 : 0)) / 1000, 0, kLongestWaitMs);
    const bool asked_meanwhile = asked_[to] > asked_[from + 1];
    return ms >= (asked_meanwhile ? 1 : least) ? ms : 0;
}

// ---- Who belongs to whom ----

void Writer::collect()
{
    for (std::size_t i = 0; i < messages_.size(); ++i) {
        const Message& message = messages_[i];
        const bool is_ours = message.run == run_;
        asked_.push_back(asked_.back() + (is_ours && message.line.to_modem ? 1 : 0));
        if (!is_ours) continue;
        const std::string service = service_of(message.line);
        if (service.empty()) {
            left_out_.push_back(i);
            continue;
        }
        message.line.to_modem ? add_request(i) : add_reply(i);
    }
    // A service speaks only to whoever has asked it something.
    std::erase_if(unasked_, [&](std::size_t index) {
        const bool is_heard = last_.contains(service_of(messages_[index].line)) && !messages_[index].line.is_diag;
        if (!is_heard) left_out_.push_back(index);
        return !is_heard;
    });
    std::ranges::sort(left_out_);
}

void Writer::add_request(std::size_t index)
{
    const TraceLine& line = messages_[index].line;
    const std::string service = service_of(line);
    const std::uint16_t number = line.is_diag ? std::uint16_t{0} : line.head.message;
    if (!line.is_diag) {
        if (line.head.transaction != static_cast<std::uint16_t>(transaction_ + 1)) holes_.push_back(line.number);
        transaction_ = line.head.transaction;
    }
    exchange_of_[index] = last_[service] = exchanges_.size();
    exchanges_.push_back({&messages_[index], index, ++counts_[{service, number}], {}, 0, {}});
}

// What no request tells belongs to the last one before it: it comes at the same place again.
void Writer::add_reply(std::size_t index)
{
    const Message& message = messages_[index];
    if (message.partner) {
        if (const auto found = exchange_of_.find(*message.partner); found != exchange_of_.end()) {
            belongs(index, found->second);
            return;
        }
    }
    const bool is_response = !message.line.is_diag && message.line.head.kind == link::QmiKind::response;
    const auto last = last_.find(service_of(message.line));
    if (is_response) {
        left_out_.push_back(index);
    } else if (last != last_.end()) {
        belongs(index, last->second);
    } else {
        unasked_.push_back(index);
    }
}

void Writer::belongs(std::size_t index, std::size_t exchange)
{
    replies_.emplace_back(index, exchange);
    if (!exchanges_[exchange].answer && is_answer(messages_[index].line)) exchanges_[exchange].answer = index;
}

// When each message comes again, in whole milliseconds from its request or answer. The trace has when rbk has read it: what
// came behind an answer closely together comes at once, and what closely followed a message of another exchange is kept
// behind it.
void Writer::plan()
{
    constexpr std::int64_t kApartUs = 1000;
    constexpr std::int64_t kMostMovedUs = 5000;
    struct {
        std::size_t exchange, from;
        std::int64_t ms, us;
        std::int64_t group_us;  // when the first of those that come at once was read
    } last{};
    for (const auto& [index, number] : replies_) {
        Exchange& exchange = exchanges_[number];
        const bool follows = exchange.answer && index > *exchange.answer;
        const std::size_t from = follows ? *exchange.answer : exchange.at;
        const std::int64_t from_us = follows ? exchange.answer_us : messages_[from].line.time_us;
        std::int64_t ms = wait_ms(from, index, index == exchange.answer ? kNoDelayMs : 1);
        std::int64_t group_us = messages_[index].line.time_us;
        if (index != replies_.front().first && ms > 0) {
            const std::int64_t early_us = last.us + (last.exchange == number ? 0 : kApartUs) - (from_us + ms * 1000);
            if (last.exchange == number && last.from == from && group_us - last.group_us < kNoDelayMs * 1000) {
                ms = last.ms;
                group_us = last.group_us;
            } else if (early_us > 0 && early_us <= kMostMovedUs) {
                ms = std::min(ms + (early_us + 999) / 1000, kLongestWaitMs);
            }
        }
        exchange.came.emplace_back(index, ms);
        last = {number, from, ms, from_us + ms * 1000, group_us};
        if (index == exchange.answer) exchange.answer_us = last.us;
    }
}

bool Writer::check_sizes()
{
    for (const Message& message : messages_) {
        const TraceLine& line = message.line;
        const std::size_t longest = line.is_diag ? link::kLongestDiagBytes : link::kLongestTlvs;
        if (message.run != run_ || line.to_modem || line.bytes.size() <= longest) continue;
        refusal_ = "line " + std::to_string(line.number) + " has " + std::to_string(line.bytes.size()) +
                   " bytes, and a scenario takes " + std::to_string(longest) + " of a message";
        return false;
    }
    return true;
}

// ---- The file ----

std::variant<std::string, NoScenario> Writer::write(std::string_view source)
{
    collect();
    if (!check_sizes()) return NoScenario{refusal_};
    plan();
    write_head(source);
    write_left_out();
    for (const std::size_t index : unasked_) write_unasked(index);
    for (const Exchange& exchange : exchanges_) {
        write_exchange(exchange);
        if (text_.size() > sim::kLongestScenario) break;
    }
    try {
        if (text_.size() > sim::kLongestScenario || filled_ > sim::kMostFilled) throw sim::ScenarioError("");
        sim::check_scenario_text(text_, "");
    } catch (const sim::ScenarioError&) {
        return NoScenario{"its " + std::to_string(exchanges_.size()) + " requests are more than the " +
                          std::to_string(sim::kLongestScenario) + " bytes and " +
                          std::to_string(sim::kMostScenarioValues) + " values that a scenario may have"};
    }
    return std::move(text_);
}

std::string Writer::hex_of(std::size_t index)
{
    const TraceLine& line = messages_[index].line;
    std::string text = quoted_hex(line.bytes, !line.is_diag);
    if (text.find('*') != std::string::npos) filled_ += line.bytes.size();
    return text;
}

void Writer::write_head(std::string_view source)
{
    text_ =
        "# A run of rbk, from its trace " + plain(source) +
        ": the same requests get the same answers again, others those of a built-in\n"
        "# phone. Which command it was, a trace doesn't tell; give the same one, with the same properties and "
        "variables:\n#\n"
        "#     RBK_SCENARIO=this-file rbk ...\n#\n"
        "# All bytes are those of the run, also what identifies a person or a card: EID, IMEI, phone numbers, APDUs.\n"
        "# All services are there: one that the run didn't find isn't told by a trace ([modem] services).\n";
    if (exchanges_.empty()) {
        text_ += "# There is no request in it.\n";
        return;
    }
    text_ += "# Its first requests: ";
    for (std::size_t i = 0; i < std::min(exchanges_.size(), kFirstRequests); ++i) {
        text_ += (i == 0 ? "" : ", ") + words_of(exchanges_[i].request->line);
    }
    text_ += exchanges_.size() > kFirstRequests ? ", ...\n" : ".\n";
}

void Writer::write_left_out()
{
    for (const std::uint64_t number : holes_) {
        text_ +=
            "# Before line " + std::to_string(number) +
            " a request is missing, by the transactions: one that couldn't be sent, or that isn't in the file any\n"
            "# more. In that case the numbers of the rules (nth) below are those of other requests.\n";
        if (text_.size() > sim::kLongestScenario) return;
    }
    for (const std::size_t index : left_out_) {
        const TraceLine& line = messages_[index].line;
        const std::string why = service_of(line).empty() ? "a service that scenarios don't have"
                                : is_answer(line)        ? "an answer to nothing that the trace has"
                                                         : "an indication of a service that wasn't asked anything";
        text_ += "# Left out: line " + std::to_string(line.number) + ", " + why + ".\n";
        if (text_.size() > sim::kLongestScenario) return;
    }
}

void Writer::write_unasked(std::size_t index)
{
    const TraceLine& line = messages_[index].line;
    text_ += "\n[[indication]]  # line " + std::to_string(line.number) + "\nservice = " + in_quotes(service_of(line)) +
             "\nmessage = " + std::to_string(line.head.message) + "\nbytes = " + hex_of(index) + "\n";
}

void Writer::write_exchange(const Exchange& exchange)
{
    const TraceLine& line = exchange.request->line;
    const bool is_answered = exchange.answer.has_value();
    text_ += "\n";
    if (!is_answered) {
        text_ += line.is_diag
                     ? "# No packet came. If the library's call failed, which no trace tells: call = \"send\", "
                       "action = \"error\" and its code.\n"
                     : "# No answer. If the service went away, which no trace tells: action = \"down\".\n";
    }
    text_ += "[[fault]]  # line " + std::to_string(line.number) + ": " + words_of(line) +
             "\nservice = " + in_quotes(service_of(line)) + "\n";
    if (!line.is_diag) text_ += "message = " + std::to_string(line.head.message) + "\n";
    text_ += "nth = " + std::to_string(exchange.nth) + "\naction = " + (is_answered ? "\"raw\"\n" : "\"silent\"\n");
    std::int64_t answer_ms = 0;
    for (const auto& [index, ms] : exchange.came) {
        if (index != exchange.answer) continue;
        answer_ms = ms;
        if (ms > 0) text_ += "ms = " + std::to_string(ms) + "\n";
        text_ += "bytes = " + hex_of(index) + "\n";
    }
    write_following(exchange, answer_ms);
}

void Writer::write_following(const Exchange& exchange, std::int64_t answer_ms)
{
    std::string list;
    for (const auto& [index, ms] : exchange.came) {
        if (index == exchange.answer) continue;
        const TraceLine& line = messages_[index].line;
        const bool is_early = exchange.answer && index < *exchange.answer;
        const std::int64_t after_ms = is_early ? std::min(ms, answer_ms) : ms;
        list += "  { ";
        if (!is_answer(line)) list += "indication = " + std::to_string(line.head.message) + ", ";
        if (is_early) list += "early = true, ";
        if (after_ms > 0) list += "after_ms = " + std::to_string(after_ms) + ", ";
        list += "bytes = " + hex_of(index) + " },\n";
    }
    if (!list.empty()) text_ += "then = [\n" + list + "]\n";
}

}  // namespace

std::variant<std::string, NoScenario> scenario_of(const std::vector<Message>& messages, std::size_t run,
                                                  std::string_view source)
{
    return Writer(messages, run).write(source);
}

}  // namespace rbk::trace
