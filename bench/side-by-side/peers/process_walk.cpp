// MODE [IDENTIFIER]: plain walks over /proc, without a class or a check.
//   links         : the listing and one link read per process (the lower limit)
//   full          : arguments, environment, parent and users of every process as well
//   memory        : the same facts with fewer calls: one status line, whose fields tell where the
//                   arguments and the environment lie, and one read of the process's memory
//   find          : the first process whose bundle has the identifier; looks only at executables
//                   that lie in a folder Contents/MacOS
//   find-existing : the same, but asks first of each executable whether it exists
#include "measure.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>
static char big[1 << 17], dbuf[1 << 15];
template <class F>
static int each_pid(int pfd, F f) {
    lseek(pfd, 0, SEEK_SET);
    int n = 0;
    for (;;) {
        long r = syscall(SYS_getdents64, pfd, dbuf, sizeof dbuf);
        if (r <= 0)
            break;
        for (long o = 0; o < r;) {
            auto* p = dbuf + o;
            unsigned short len = *(unsigned short*)(p + 16);
            char* name = p + 19;
            if (name[0] >= '1' && name[0] <= '9') {
                n++;
                if (f(name))
                    return n;
            }
            o += len;
        }
    }
    return n;
}
struct Rec {
    int pid, ppid, ruid, euid;
    std::string exe, args, env;
};
static ssize_t slurp(int pfd, const char* pid, const char* leaf) {
    char p[64];
    char* e = stpcpy(p, pid);
    stpcpy(e, leaf);
    int fd = openat(pfd, p, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return -1;
    ssize_t r = read(fd, big, sizeof big - 1);
    close(fd);
    if (r >= 0)
        big[r] = 0;
    return r;
}
static ssize_t exe_of(int pfd, const char* pid, char* out, size_t cap) {
    char p[64];
    stpcpy(stpcpy(p, pid), "/exe");
    return readlinkat(pfd, p, out, cap - 1);
}
int main(int argc, char** argv) {
    std::string mode = argv[1], want = argc > 2 ? argv[2] : "";
    double start = now();
    int pfd = open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    int count = 0, found = -1;
    auto once = [&] {
        char exe[4096];
        if (mode == "links") {
            count = each_pid(pfd, [&](char* pid) {
                keep(exe_of(pfd, pid, exe, sizeof exe));
                return false;
            });
        } else if (mode == "full") {
            std::vector<Rec> v;
            v.reserve(512);
            count = each_pid(pfd, [&](char* pid) {
                Rec& r = v.emplace_back();
                r.pid = atoi(pid);
                ssize_t k = exe_of(pfd, pid, exe, sizeof exe);
                if (k > 0)
                    r.exe.assign(exe, k);
                if ((k = slurp(pfd, pid, "/cmdline")) > 0)
                    r.args.assign(big, k);
                if ((k = slurp(pfd, pid, "/environ")) > 0)
                    r.env.assign(big, k);
                if ((k = slurp(pfd, pid, "/stat")) > 0) {
                    char* q = strrchr(big, ')');
                    if (q)
                        r.ppid = atoi(q + 4);
                }
                char p[64];
                stpcpy(p, pid);
                struct stat st;
                if (fstatat(pfd, p, &st, 0) == 0)
                    r.euid = st.st_uid;
                return false;
            });
            size_t bytes = 0;
            for (auto& r : v)
                bytes += r.args.size() + r.env.size();
            static bool told;
            if (!told) {
                told = true;
                result("argument_bytes", bytes);
            }
        } else if (mode == "memory") {
            std::vector<Rec> v;
            v.reserve(512);
            count = each_pid(pfd, [&](char* pid) {
                Rec& r = v.emplace_back();
                r.pid = atoi(pid);
                ssize_t k = exe_of(pfd, pid, exe, sizeof exe);
                if (k > 0)
                    r.exe.assign(exe, k);
                if (slurp(pfd, pid, "/stat") <= 0)
                    return false;
                char* q = strrchr(big, ')');
                if (!q)
                    return false;
                r.ppid = atoi(q + 4);
                unsigned long f[53] = {};
                int i = 3;
                for (q += 4; *q && i < 50;)
                    f[++i] = strtoul(q, &q, 10);
                unsigned long as = f[48], ae = f[49], es = f[50], ee = strtoul(q, nullptr, 10);
                char p[64];
                stpcpy(p, pid);
                struct stat st;
                if (fstatat(pfd, p, &st, 0) == 0)
                    r.euid = st.st_uid;
                if (ae <= as || ee - as > sizeof big)
                    return false;
                if (es != ae && ee > es)
                    es = ae;
                iovec l{big, ee - as}, m{(void*)as, ee - as};
                k = process_vm_readv(r.pid, &l, 1, &m, 1, 0);
                if (k > 0) {
                    r.args.assign(big, std::min<size_t>(k, ae - as));
                    if ((size_t)k > ae - as)
                        r.env.assign(big + (ae - as), k - (ae - as));
                }
                return false;
            });
            size_t bytes = 0;
            for (auto& r : v)
                bytes += r.args.size() + r.env.size();
            static bool told;
            if (!told) {
                told = true;
                result("argument_bytes", bytes);
            }
        } else {
            found = -1;
            count = each_pid(pfd, [&](char* pid) {
                ssize_t k = exe_of(pfd, pid, exe, sizeof exe);
                if (k <= 0)
                    return false;
                exe[k] = 0;
                if (mode == "find-existing" && access(exe, F_OK) != 0)
                    return false;
                char* s = strrchr(exe, '/');
                if (!s || s - exe < 15 || strncasecmp(s - 15, "/Contents/MacOS", 15) != 0)
                    return false;
                strcpy(s - 6, "/Info.plist");
                int fd = open(exe, O_RDONLY | O_CLOEXEC);
                if (fd < 0)
                    return false;
                ssize_t r = read(fd, big, sizeof big - 1);
                close(fd);
                big[r > 0 ? r : 0] = 0;
                char* q = strstr(big, "<key>CFBundleIdentifier</key>");
                if (q && (q = strstr(q, "<string>")) &&
                    !strncmp(q + 8, want.c_str(), want.size()) && q[8 + want.size()] == '<') {
                    found = atoi(pid);
                    return true;
                }
                return false;
            });
        }
    };
    once();
    double first = now() - start;
    double m = median_of(9, once);
    result("first_us", first * 1e6);
    result("pass_us", m * 1e6);
    result("processes", count);
    if (mode.starts_with("find"))
        result("found", found > 0);
}
