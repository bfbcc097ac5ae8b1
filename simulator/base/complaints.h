// What a person must hear of while the modem runs: one line for each trouble, and each line once.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <utility>

namespace rbk::sim {

class Complaints {
 public:
    using Sink = std::function<void(const std::string& line)>;
    using Clock = std::chrono::steady_clock;

    // A client chooses the paths that some lines name, and could flood the screen: past so many lines the rest of a period
    // is left out, and counted.
    static constexpr std::size_t kLinesOfAPeriod = 100;

    explicit Complaints(Sink sink, Clock::duration period = std::chrono::minutes(1))
        : sink_(std::move(sink)), period_(period)
    {
    }

    void say(const std::string& line)
    {
        if (Clock::now() - begun_ >= period_) begin_period();
        if (said_.contains(line)) return;
        if (lines_ == kLinesOfAPeriod) {
            if (left_out_++ == 0) sink_("more than can be told: further lines are left out for now");
            return;
        }
        ++lines_;
        if (said_.size() == kRemembered) said_.clear();
        said_.insert(line);
        sink_(line);
    }
    // From now on lines go here.
    void turn_to(Sink sink) { sink_ = std::move(sink); }

 private:
    static constexpr std::size_t kRemembered = 1000;  // lines; then each may be said once more

    void begin_period()
    {
        begun_ = Clock::now();
        lines_ = 0;
        if (left_out_ > 0) sink_(std::to_string(left_out_) + " lines were left out");
        left_out_ = 0;
    }

    Sink sink_;
    Clock::duration period_;
    Clock::time_point begun_ = Clock::now();
    std::size_t lines_ = 0;     // said in this period
    std::size_t left_out_ = 0;  // in this period
    std::set<std::string> said_;
};

}  // namespace rbk::sim
