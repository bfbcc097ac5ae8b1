// Running the project's programs as a person does.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace rbk::test {

struct RunResult {
    int status = -1;  // exit status; 128 and the signal's number when a signal ended it
    std::string out;
    std::string err;
};

struct RunOptions {
    std::map<std::string, std::string> variables{};  // beside those of this process; empty values are unset
    std::chrono::seconds limit{60};                  // it is killed then
    std::string name{};                              // as which it runs; else its path
};

// Starts a program as from a terminal, its output into files; `command` begins with its path.
pid_t start(const std::vector<std::string>& command, const RunOptions& options, const std::string& out,
            const std::string& err);
// An exit status as RunResult has it, out of what waitpid gives.
int status_of(int waited);
// Waits for the program's end; its status. One that hangs fails the test, and is killed.
int end_of(pid_t program, std::chrono::seconds limit = std::chrono::seconds(60));
// Runs a program to its end.
RunResult run(const std::vector<std::string>& command, const RunOptions& options = {});
// The shell in which waits are wrapped, and the others as they are shipped.
RunResult run_rbk(const std::vector<std::string>& arguments, const RunOptions& options = {});
RunResult run_rbk_prop(const std::vector<std::string>& arguments, const RunOptions& options = {});
// Paths of both, for tests that start them in another way.
std::string rbk_path();
std::string bin_path(const std::string& program);
// A file that stands beside the tests, such as "golden/help.txt".
std::string data_path(const std::string& file);

// What the case's own process prints while `action` runs: everything of standard output, flushed before and after.
template <typename Action>
std::string output_of(Action action)
{
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

// The same text with each "name.cpp:108]" as "name.cpp:N]".
std::string without_line_numbers(const std::string& text);

// What show_help(group) prints: that group's lines between the two banners, or all of it for 0.
std::string help_of(int group);

}  // namespace rbk::test
