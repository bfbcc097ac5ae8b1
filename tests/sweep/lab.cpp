#include "sweep/lab.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <regex>
#include <sstream>
#include <system_error>

#include "support/program.h"

extern char** environ;

namespace rbk::test {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kHangs_ms = 100'000;

// "svc=0x0024" as scenarios name it.
std::string service_name(const std::string& word)
{
    static const std::map<std::string, std::string> names{{"svc=0xFFE4", "extended"}, {"svc=0x00E4", "vs"},
                                                          {"svc=0x0003", "nas"},      {"svc=0x000B", "uim"},
                                                          {"svc=0x0011", "sar"},      {"svc=0x0024", "pdc"}};
    return names.at(word);
}

Message parse_message(const std::string& line)
{
    std::istringstream words(line);
    std::string time, way, service, kind, number, length;
    Message message;
    words >> time >> way >> service;
    message.to_modem = way == ">";
    if (service == "diag") {
        words >> length >> message.bytes;
        message.what = message.to_modem ? "diag" : "diag indication";
        return message;
    }
    words >> kind >> message.transaction >> number >> length >> message.bytes;
    const bool is_envelope = message.to_modem && service == "svc=0xFFE4" && number == "msg=0x0002";
    number = is_envelope ? message.bytes.substr(7, 1) : number.substr(4);  // an id below 16, in TLV 0x01
    message.what = service_name(service) + (kind == "ind" ? " indication " : " ") + number;
    return message;
}

std::vector<char*> pointers_to(Lines& lines)
{
    std::vector<char*> list;
    for (std::string& line : lines) list.push_back(line.data());
    list.push_back(nullptr);
    return list;
}

// What a line of the wrapped calls asks for.
double seconds_of(const std::string& call)
{
    std::istringstream words(call);
    std::string name;
    double time = 0;
    words >> name >> time;
    return name == "usleep" ? time / 1e6 : time;
}

// Status as a Run has it. A process that hangs is killed.
int wait_for_end(pid_t process)
{
    const int fd = static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
    pollfd ended{fd, POLLIN, 0};
    if (::poll(&ended, 1, kHangs_ms) != 1) ::kill(process, SIGKILL);
    ::close(fd);
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

Phone::Phone(const std::string& scenario, const State& properties)
{
    for (const auto& [name, value] : properties) write_file(home_ / "properties/kept" / name, value + "\n");
    start(scenario);
}

void Phone::start(const std::string& scenario)
{
    modem_.reset();
    fs::remove(home_ / "ledger");
    write_file(home_ / "scenario.toml", scenario);
    modem_ = std::make_unique<ModemProcess>(home_,
                                            Lines{"--scenario", home_ / "scenario.toml", "--ledger", home_ / "ledger"});
}

Lines Phone::ledger() const
{
    Lines lines;
    for (const std::string& line : lines_of(read_file(home_ / "ledger"))) {
        const std::string client = "client " + std::to_string(lines.size() + 1) + ": ";
        lines.push_back(line.starts_with(client) ? line.substr(client.size()) : "out of order: " + line);
    }
    return lines;
}

State Phone::state() const
{
    static const std::regex time("20\\d\\d-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ");
    State state;
    for (const fs::path& folder : {home_ / "modem", home_ / "properties"}) {
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (!entry.is_regular_file()) continue;
            state[entry.path().lexically_relative(home_)] = std::regex_replace(read_file(entry.path()), time, "T");
        }
    }
    return state;
}

void Phone::restore(const State& wanted) const
{
    const State is = state();
    for (const auto& [name, content] : is) {
        if (!wanted.contains(name)) fs::remove(home_ / name);
    }
    for (const auto& [name, content] : wanted) {
        if (!is.contains(name) || is.at(name) != content) write_file(home_ / name, content);
    }
}

std::vector<Message> Phone::trace() const
{
    std::vector<Message> messages;
    for (const std::string& line : lines_of(read_file(home_ / "trace"))) messages.push_back(parse_message(line));
    return messages;
}

pid_t Phone::start_shell(const Lines& words, Pace pace) const
{
    for (const char* name : {"out", "err", "log", "trace", "calls"}) fs::remove(home_ / name);
    Lines variables{"RBK_HOME=" + home_.string(),
                    "RBK_MODEM=" + modem_->address(),
                    "RBK_TRACE=" + (home_ / "trace").string(),
                    "RBK_LOGCAT=" + (home_ / "log").string(),
                    "RBK_TEST_CALLS=" + (home_ / "calls").string(),
                    "RBK_TEST_DIVISOR=" + std::to_string(pace.waits),
                    "RBK_QMI_TIMEOUT_SCALE=" + std::to_string(pace.timeouts)};
    for (char** each = environ; *each != nullptr; ++each) variables.emplace_back(*each);
    Lines command{rbk_path()};
    command.insert(command.end(), words.begin(), words.end());

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, (home_ / "out").c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, (home_ / "err").c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t shell = -1;
    const int error = ::posix_spawn(&shell, command[0].c_str(), &actions, nullptr, pointers_to(command).data(),
                                    pointers_to(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::system_error(error, std::generic_category(), command[0]);
    return shell;
}

Run Phone::run(const Lines& words, Pace pace, int signal, const std::function<void()>& wait) const
{
    const auto begun = Clock::now();
    const pid_t shell = start_shell(words, pace);
    if (wait) wait();
    if (signal != 0) ::kill(shell, signal);
    Run run;
    run.status = wait_for_end(shell);
    run.took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begun);
    run.out = read_file(home_ / "out");
    run.err = read_file(home_ / "err");
    run.log = lines_of(read_file(home_ / "log"));
    run.trace = trace();
    for (const std::string& call : lines_of(read_file(home_ / "calls"))) run.waits_s += seconds_of(call);
    run.state = state();
    return run;
}

}  // namespace rbk::test
