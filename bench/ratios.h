// What script/bench prints: one benchmark's time against another's of the same run, and the most it should be.
#pragma once

#include <string>

namespace rbk::bench {

enum class Bound {
    ratio,        // time at most `limit` times the floor's
    nanoseconds,  // time at most the floor's and `limit` ns
};

struct Ratio {
    std::string what;
    std::string benchmark;
    std::string floor;
    double limit;
    Bound bound = Bound::ratio;
};

// A row of the table; made at file scope beside its two benchmarks.
struct AddRatio {
    explicit AddRatio(const Ratio& ratio);
};

}  // namespace rbk::bench
