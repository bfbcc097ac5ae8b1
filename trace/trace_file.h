// Where the lines of a trace come from: a file, standard input, a file that still grows.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "trace/trace_line.h"

namespace rbk::trace {

// Reads a file line by line. Throws std::runtime_error, whose text names the file, when it can't be read.
class TraceFile {
 public:
    explicit TraceFile(const std::string& name);  // "-" is standard input
    ~TraceFile();
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    const std::string& name() const { return name_; }

    // The next line without its end, the last one also where its end is missing. Empty: there is none now; a later call
    // finds what has come meanwhile. With `whole_lines` a line without its end waits for it.
    // A line that is longer than any message is cut there.
    std::optional<std::string> next(bool whole_lines);

    std::uint64_t number() const { return number_; }  // of the line that was read last

    // Whether somebody has begun the file anew, shorter or as another file of its name; it is read from its start then.
    bool begins_anew();

 private:
    std::string name_;
    std::FILE* file_;
    std::string partial_;  // of a line whose end hasn't come
    std::uint64_t number_ = 0;
};

}  // namespace rbk::trace
