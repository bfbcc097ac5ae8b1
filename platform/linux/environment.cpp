#include "platform/linux/environment.h"

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <set>
#include <system_error>
#include <vector>

#include "platform/linux/line_output.h"
#include "platform/linux/thread_safety.h"

namespace rbk::platform {
namespace {

// Before anything else of the program opens a file, which would get the number of a closed standard stream and then the
// stream's text. The wrong way round, so that a read or a write fails as it does on a closed one.
[[gnu::constructor(101)]] void fill_closed_streams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) >= 0) continue;
        const int way = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (open("/dev/null", way) < 0 && open("/", O_RDONLY | O_DIRECTORY) < 0) return;
    }
}

std::optional<std::string> variable(const char* name)
{
    const char* text = std::getenv(name);  // nothing in the process changes its environment
    if (text == nullptr || *text == 0) return std::nullopt;
    return text;
}

double timeout_scale()
{
    const std::optional<std::string> text = variable("RBK_QMI_TIMEOUT_SCALE");
    if (!text) return 1;
    char* end = nullptr;
    const double scale = std::strtod(text->c_str(), &end);
    if (*end == 0 && std::isfinite(scale) && scale > 0) return scale;
    complain("RBK_QMI_TIMEOUT_SCALE=" + *text + ": expected a number above 0; taking 1");
    return 1;
}

std::filesystem::path home_directory()
{
    if (const auto home = variable("HOME")) return *home;
    std::vector<char> room(4096);
    passwd entry{};
    passwd* found = nullptr;
    while (getpwuid_r(getuid(), &entry, room.data(), room.size(), &found) == ERANGE) room.resize(room.size() * 2);
    return found != nullptr ? found->pw_dir : "";
}

std::filesystem::path state_directory()
{
    if (const auto home = variable("RBK_HOME")) return *home;
    // A relative XDG_STATE_HOME is to be ignored, says the convention that it comes from.
    if (const auto state = variable("XDG_STATE_HOME"); state && state->front() == '/')
        return std::filesystem::path(*state) / "rbk";
    const std::filesystem::path home = home_directory();
    return home.empty() ? home : home / ".local/state/rbk";
}

}  // namespace

const Environment& environment()
{
    static const auto* const values = new Environment{variable("RBK_MODEM"), variable("RBK_SCENARIO"),
                                                      variable("RBK_TRACE"), variable("RBK_LOGCAT"), timeout_scale()};
    return *values;
}

std::filesystem::path rbk_home(std::string& problem)
{
    std::filesystem::path home = state_directory();
    // The directory as a whole is looked at here, so that its trouble is one line and not one for each thing in it.
    if (home.empty())
        problem = "no home directory for properties and the modem's state: set RBK_HOME";
    else if (access((home / ".").c_str(), F_OK) != 0 && errno != ENOENT)
        problem = home.string() + ": " + std::generic_category().message(errno);
    else
        return home;
    return {};
}

void complain(std::string_view line)
{
    static auto* const mutex = new Mutex;
    static auto* const said = new std::set<std::string>;
    const std::string text = "rbk: " + std::string(line) + "\n";
    {
        const MutexLock lock(*mutex);
        if (!said->insert(text).second) return;
    }
    // One write a line, so that lines of two threads don't tear. Nobody can be told that standard error is closed.
    write_without_signal(STDERR_FILENO, text);
}

}  // namespace rbk::platform
