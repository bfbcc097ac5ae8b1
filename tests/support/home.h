// Where a test keeps what the shell would keep in a person's home: a directory of its own, gone afterwards.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace rbk::test {

class TempDir {
 public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::filesystem::path& path() const { return path_; }

 private:
    std::filesystem::path path_;
};

// The whole file; empty when it isn't there.
std::string read_file(const std::filesystem::path& file);
void write_file(const std::filesystem::path& file, std::string_view content);
std::vector<std::string> lines_of(std::string_view text);

// A fixture whose case has its own RBK_HOME, its log in a file, and the calls of wrapped waits in another. The rest of
// the system's variables is unset. For this process and the programs that it runs.
class HomeTest : public testing::Test {
 protected:
    HomeTest();

    const std::filesystem::path& home() const { return dir_.path(); }
    // Writes a property as rbk-prop would.
    void set_property(const std::string& name, const std::string& value) const;
    // The lines of the log ("7 text") and of the wrapped waits ("sleep 3") since the last look.
    std::vector<std::string> log() { return new_lines(home() / "log", log_seen_); }
    std::vector<std::string> calls() { return new_lines(home() / "calls", calls_seen_); }

 private:
    static std::vector<std::string> new_lines(const std::filesystem::path& file, std::size_t& seen);

    TempDir dir_;
    std::size_t log_seen_ = 0;  // bytes
    std::size_t calls_seen_ = 0;
};

}  // namespace rbk::test
