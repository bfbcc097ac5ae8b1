// A modem of its own process, as a person starts it.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace rbk::test {

// Runs rbk-modem on a socket in `home` with its state in `home`/modem, and has it gone at the latest with itself. The
// constructor returns once clients can connect; a modem that doesn't come up fails the test, unless it may.
class ModemProcess {
 public:
    enum class Start { succeeds, may_fail };
    explicit ModemProcess(const std::filesystem::path& home, const std::vector<std::string>& more_arguments = {},
                          Start start = Start::succeeds);
    ~ModemProcess();
    ModemProcess(const ModemProcess&) = delete;
    ModemProcess& operator=(const ModemProcess&) = delete;

    // What RBK_MODEM has to say to reach it.
    const std::string& address() const { return address_; }
    pid_t pid() const { return pid_; }
    bool is_ready() const { return is_ready_; }
    // What it has said on standard error so far.
    std::string errors() const;
    // Ends it with a signal; its exit status, or 128 and the signal that it died of.
    int end(int signal);

 private:
    std::string address_;
    pid_t pid_ = -1;
    bool is_ready_ = false;
    std::filesystem::path errors_;
};

}  // namespace rbk::test
