// Where lines go that a person has asked for beside the command's own output: a file, a pipe, a terminal.
#pragma once

#include <atomic>
#include <string>
#include <string_view>

namespace rbk::platform {

// Writes all of `text`, and waits for a slow reader. 0, or the error number: a pipe's reader that has gone is EPIPE, a
// file as long as the process may make one is EFBIG, and neither is a signal.
int write_without_signal(int fd, std::string_view text);

// Given up with one complaint when it can't be opened or written to: the command goes on without it. Has no lock and
// nothing to destroy. Threads: any; a line is one write where its other end takes it whole.
class LineOutput {
 public:
    // `path` is opened for appending; empty: no output. A named pipe is given a second to find a reader. `variable` named
    // it, and lives on; it stands in complaints.
    LineOutput(const char* variable, const std::string& path);
    // Through a descriptor that is open for as long as the process.
    LineOutput(const char* variable, int fd) : variable_(variable), fd_(fd) {}
    LineOutput(const LineOutput&) = delete;
    LineOutput& operator=(const LineOutput&) = delete;

    bool is_open() const { return fd_.load(std::memory_order_relaxed) >= 0; }
    // `line` ends with its line feed.
    void write(std::string_view line);

 private:
    const char* variable_;
    std::atomic<int> fd_ = -1;  // stays open when it is given up: another thread may be writing
};

}  // namespace rbk::platform
