// What the lines of a trace have to do with each other: whose they are, and which answers belong to which requests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "trace/trace_line.h"

namespace rbk::trace {

enum class Mark {
    none,
    unanswered,  // a request: its caller has stopped waiting, or the trace ends
    late,        // an answer and its request, or an outcome: the caller had stopped waiting
    doubled,     // an answer or an outcome: the request had one before
    unmatched,   // an answer to nothing that the trace has
    early,       // an indication: it came before the answer to the request whose outcome it tells
    no_outcome,  // a request: it was answered, and what came of it wasn't told
};

// A message with its place in the talk.
struct Message {
    TraceLine line;
    std::size_t run = 0;  // of rbk, from 0: each process that has written into the file
    // Index: of a request its first answer, of an answer its request, of an indication the request whose outcome it tells.
    std::optional<std::size_t> partner;
    bool is_guess = false;                // several processes wait for this answer, and what they asked isn't the same
    std::optional<std::int64_t> took_us;  // of an answer or an outcome, counted from its request
    Mark mark = Mark::none;
};

// Takes lines in the order of the file. Threads: one at a time.
class Talk {
 public:
    // Adds a line, and gives the index of its message. Messages before it learn of their answers.
    std::size_t add(TraceLine line);

    // No more lines come: what is open stays unanswered.
    void end();

    // So late is it now, by the trace's clock: whoever has waited for longer than callers do has stopped.
    void give_up_at(std::int64_t now_us);

    const std::vector<Message>& messages() const { return messages_; }
    std::size_t runs() const { return runs_.size(); }

    // Requests that have been found unanswered since the last call. A late answer may still come.
    std::vector<std::size_t> take_unanswered() { return std::exchange(unanswered_, {}); }

 private:
    // A process of rbk counts its transactions from 1, over all services.
    struct Run {
        std::uint16_t last_transaction = 0;
        std::map<std::uint32_t, std::size_t> open;  // by service: the request that was sent last
    };

    void add_request(std::size_t index);
    void add_answer(std::size_t index);
    void add_indication(std::size_t index);
    void add_packet(std::size_t index);
    std::size_t run_of_request(const TraceLine& line);
    std::optional<std::size_t> request_of(const TraceLine& line, bool& is_guess) const;
    std::optional<std::size_t> asker_of(const TraceLine& indication) const;
    void judge_outcomes();
    void answered(std::size_t request, std::size_t answer);
    void give_up(std::size_t index);

    std::vector<Message> messages_;
    std::vector<Run> runs_;
    std::vector<std::size_t> unanswered_;
    std::vector<std::size_t> waiting_;  // requests that may get their answer yet
    std::map<std::pair<std::uint32_t, std::uint16_t>, std::vector<std::size_t>> requests_;  // by service, transaction
    std::map<std::pair<std::uint32_t, std::uint16_t>, std::vector<std::size_t>> asked_;     // by service, message
    std::set<std::size_t> told_;                        // requests whose outcome has come
    std::map<std::uint8_t, std::size_t> open_packets_;  // diag, by the first byte
};

}  // namespace rbk::trace
