#include "simulator/carriers/linked_terminal.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace rbk::sim {
namespace {

std::string last_error()
{
    return std::generic_category().message(errno);
}

// Bytes as they are: no echo, which would come back as the next command, and no line editing.
bool set_raw(int terminal)
{
    termios settings{};
    if (::tcgetattr(terminal, &settings) != 0) return false;
    const termios before = settings;
    ::cfmakeraw(&settings);
    const bool is_raw = settings.c_iflag == before.c_iflag && settings.c_oflag == before.c_oflag &&
                        settings.c_lflag == before.c_lflag && settings.c_cflag == before.c_cflag;
    return is_raw || ::tcsetattr(terminal, TCSANOW, &settings) == 0;
}

bool is_terminals_name(const std::string& name)
{
    constexpr std::string_view kFolder = "/dev/pts/";
    return name.starts_with(kFolder) && name.find_first_not_of("0123456789", kFolder.size()) == std::string::npos;
}

// Whether a link to a terminal may be made at the path: nothing lies there, or a link that an ended server has left. With
// the claim no living server has it. The number of an ended terminal is soon another's, so that the link alone tells
// nothing: the claim's file has what was made.
bool is_free(const std::string& path, const PathClaim& claim, std::string& error)
{
    std::error_code failed;
    const auto there = std::filesystem::symlink_status(path, failed);
    if (there.type() == std::filesystem::file_type::not_found) return true;
    if (!std::filesystem::is_symlink(there)) {
        error = path + ": " + (failed ? failed.message() : "something that isn't a link lies there");
        return false;
    }
    const std::string target = std::filesystem::read_symlink(path, failed).string();
    if (is_terminals_name(target) && (target == claim.made() || !std::filesystem::exists(target, failed))) return true;
    error = path + ": a link to " + target + " lies there, which isn't this program's to replace";
    return false;
}

}  // namespace

std::unique_ptr<LinkedTerminal> LinkedTerminal::open(const std::string& path, std::string& error)
{
    std::optional<PathClaim> claim = PathClaim::take(path, error);
    if (!claim || !is_free(path, *claim, error)) return nullptr;

    Fd master(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    char device[64];
    if (!master.is_open() || ::grantpt(master.get()) != 0 || ::unlockpt(master.get()) != 0 ||
        ::ptsname_r(master.get(), device, sizeof device) != 0) {
        error = "no terminal: " + last_error();
        return nullptr;
    }
    Fd slave(::open(device, O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!slave.is_open() || !set_raw(slave.get())) {
        error = std::string(device) + ": " + last_error();
        return nullptr;
    }
    if (!claim->set_made(device) || (::unlink(path.c_str()) != 0 && errno != ENOENT) ||
        ::symlink(device, path.c_str()) != 0) {
        error = path + ": " + last_error();
        return nullptr;
    }
    return std::unique_ptr<LinkedTerminal>(
        new LinkedTerminal(path, std::move(*claim), device, std::move(master), std::move(slave)));
}

LinkedTerminal::LinkedTerminal(std::string path, PathClaim claim, std::string device, Fd master, Fd slave)
    : path_(std::move(path)),
      claim_(std::move(claim)),
      device_(std::move(device)),
      master_(std::move(master)),
      slave_(std::move(slave))
{
}

LinkedTerminal::~LinkedTerminal()
{
    std::error_code none;
    if (std::filesystem::read_symlink(path_, none) == device_) ::unlink(path_.c_str());
}

void LinkedTerminal::switch_echo_off() const
{
    termios settings{};
    if (::tcgetattr(slave_.get(), &settings) != 0 || (settings.c_lflag & (ECHO | ECHONL)) == 0) return;
    settings.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
    ::tcsetattr(slave_.get(), TCSANOW, &settings);
}

void LinkedTerminal::keep_raw() const
{
    set_raw(slave_.get());
}

}  // namespace rbk::sim
