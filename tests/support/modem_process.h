// A modem of its own process, as a person starts it.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace rbk::test {

// Runs rbk-modem on a socket in `home` with its state in `home`/modem, and has it gone at the latest with itself. The
// constructor returns once clients can connect; a modem that doesn't come up fails the test.
class ModemProcess {
 public:
    explicit ModemProcess(const std::filesystem::path& home, const std::vector<std::string>& more_arguments = {});
    ~ModemProcess();
    ModemProcess(const ModemProcess&) = delete;
    ModemProcess& operator=(const ModemProcess&) = delete;

    // What RBK_MODEM has to say to reach it.
    const std::string& address() const { return address_; }
    pid_t pid() const { return pid_; }
    // Ends it with a signal; its exit status, or 128 and the signal that it died of.
    int end(int signal);

 private:
    std::string address_;
    pid_t pid_ = -1;
};

}  // namespace rbk::test
