#include "support/program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "support/home.h"

namespace rbk::test {
namespace {

std::vector<std::string> with_program(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<std::string> command{program};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

// Ended by a null, as exec has them.
std::vector<char*> pointers_to(std::vector<std::string>& words)
{
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

pid_t start(const std::vector<std::string>& command, const RunOptions& options, const std::string& out,
            const std::string& err)
{
    std::vector<std::string> variables;
    for (char** each = environ; *each != nullptr; ++each) {
        const std::string variable = *each;
        if (!options.variables.contains(variable.substr(0, variable.find('=')))) variables.push_back(variable);
    }
    for (const auto& [name, value] : options.variables)
        if (!value.empty()) variables.push_back(name + "=" + value);
    std::vector<std::string> words = command;
    if (!options.name.empty()) {
        words[0] = options.name;
        variables.push_back("QEMU_ARGV0=" + options.name);  // where an emulator stands between
    }
    const std::vector<char*> arguments = pointers_to(words);
    const std::vector<char*> environment = pointers_to(variables);

    if (const pid_t child = fork(); child != 0) return child;
    // Nothing here may take memory: the fork may have caught another thread with the allocator's lock.
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // it ends at the latest with the thread that has started it
    signal(SIGHUP, SIG_DFL);           // also where the tests themselves run under nohup
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
    dup2(open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600), STDERR_FILENO);
    execve(command[0].c_str(), arguments.data(), environment.data());
    _exit(127);
}

int status_of(int waited)
{
    return WIFSIGNALED(waited) ? 128 + WTERMSIG(waited) : WEXITSTATUS(waited);
}

int end_of(pid_t program, std::chrono::seconds limit)
{
    pollfd ended{static_cast<int>(syscall(SYS_pidfd_open, program, 0)), POLLIN, 0};
    if (poll(&ended, 1, static_cast<int>(std::chrono::milliseconds(limit).count())) != 1) {
        ADD_FAILURE() << read_file("/proc/" + std::to_string(program) + "/cmdline").c_str() << " didn't end in time";
        kill(program, SIGKILL);
    }
    close(ended.fd);
    int status = 0;
    waitpid(program, &status, 0);
    return status_of(status);
}

RunResult run(const std::vector<std::string>& command, const RunOptions& options)
{
    const TempDir dir;
    const std::string out = dir.path() / "out";
    const std::string err = dir.path() / "err";
    const int status = end_of(start(command, options, out, err), options.limit);
    return {status, read_file(out), read_file(err)};
}

RunResult run_rbk(const std::vector<std::string>& arguments, const RunOptions& options)
{
    return run(with_program(rbk_path(), arguments), options);
}

RunResult run_rbk_prop(const std::vector<std::string>& arguments, const RunOptions& options)
{
    return run(with_program(bin_path("rbk-prop"), arguments), options);
}

std::string rbk_path()
{
    return RBK_SHELL;
}

std::string bin_path(const std::string& program)
{
    return std::string(RBK_BIN "/") + program;
}

std::string data_path(const std::string& file)
{
    return std::string(RBK_TEST_DATA "/") + file;
}

std::string without_line_numbers(const std::string& text)
{
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        out += text[at++];
        if (!out.ends_with(".cpp:")) continue;
        const std::size_t end = text.find_first_not_of("0123456789", at);
        if (end == at || end == std::string::npos || text[end] != ']') continue;
        out += 'N';
        at = end;
    }
    return out;
}

std::string help_of(int group)
{
    const std::string all = read_file(data_path("golden/help.txt"));
    if (group == 0) return all;
    const auto head = [&](int number) { return all.find("\n" + std::to_string(number) + ": ") + 1; };
    const std::size_t closing = all.find("=========== above");
    const std::size_t end = group == 12 ? closing : head(group + 1);
    return all.substr(0, head(1)) + all.substr(head(group), end - head(group)) + all.substr(closing);
}

}  // namespace rbk::test
