// OUTPUT COMMAND ARGUMENTS...: runs one command with its output in a file and prints, on one line:
// wall ns, user us, system us, peak memory KiB, exit status. A command that runs longer than
// BENCH_TIMEOUT seconds (120) is ended.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
extern char** environ;
static pid_t pid;
static long long nanoseconds() {
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return t.tv_sec * 1000000000LL + t.tv_nsec;
}
int main(int argc, char** argv) {
    if (argc < 3)
        return 2;
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    posix_spawn_file_actions_addopen(&fa, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&fa, 1, argv[1], O_WRONLY | O_CREAT | O_TRUNC, 0600);
    long long a = nanoseconds();
    if (posix_spawnp(&pid, argv[2], &fa, nullptr, argv + 2, environ) != 0)
        return 3;
    const char* limit = getenv("BENCH_TIMEOUT");
    struct sigaction sa = {};
    sa.sa_handler = [](int) { kill(pid, SIGKILL); };
    sa.sa_flags = SA_RESTART;
    sigaction(SIGALRM, &sa, nullptr);
    alarm(limit ? atoi(limit) : 120);
    int st;
    rusage ru;
    wait4(pid, &st, 0, &ru);
    long long b = nanoseconds();
    printf("%lld %lld %lld %ld %d\n", b - a, ru.ru_utime.tv_sec * 1000000LL + ru.ru_utime.tv_usec,
           ru.ru_stime.tv_sec * 1000000LL + ru.ru_stime.tv_usec, ru.ru_maxrss,
           WIFEXITED(st) ? WEXITSTATUS(st) : 128 + WTERMSIG(st));
    return 0;
}
