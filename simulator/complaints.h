// What a person must hear of while the modem runs: one line for each trouble, and each line once.
#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <utility>

namespace rbk::sim {

class Complaints {
 public:
    using Sink = std::function<void(const std::string& line)>;

    explicit Complaints(Sink sink) : sink_(std::move(sink)) {}

    void say(const std::string& line)
    {
        // A client chooses the paths that some lines name: past the bound it could only flood the screen.
        if (said_.size() < kDistinctLines && said_.insert(line).second) sink_(line);
    }
    // From now on lines go here.
    void turn_to(Sink sink) { sink_ = std::move(sink); }

 private:
    static constexpr std::size_t kDistinctLines = 100;
    Sink sink_;
    std::set<std::string> said_;
};

}  // namespace rbk::sim
