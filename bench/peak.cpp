// rbk-peak PROGRAM [ARGUMENT ...]: runs a program to its end with its output thrown away, and prints its peak memory in KiB.
//
// A program of its own because a process that has been started by fork begins its peak with its parent's memory: this
// parent is smaller than whatever it measures.
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char** argv)
{
    if (argc < 2) return 2;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid;
    if (::posix_spawn(&pid, argv[1], &actions, nullptr, argv + 1, environ) != 0) return 1;
    rusage usage{};
    int status = 0;
    if (::wait4(pid, &status, 0, &usage) != pid || status != 0) return 1;
    ::printf("%ld\n", usage.ru_maxrss);
    return 0;
}
