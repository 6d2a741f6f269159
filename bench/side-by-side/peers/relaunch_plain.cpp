// LIST FOLDER: the whole relaunch pass with as little as possible: reads the four keys, looks for
// the crash reporter, the main and the background application by bundle identifier in ONE walk over
// /proc, and looks whether the background application is installed. FOLDER stands for
// /Applications.
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <sys/syscall.h>
#include <unistd.h>
static char cfg[8192], big[8192], dbuf[32768];
static bool key(const char* name, char* out, size_t cap) {
    char tag[64];
    snprintf(tag, sizeof tag, "<key>%s</key>", name);
    char* p = strstr(cfg, tag);
    if (!p || !(p = strstr(p, "<string>")))
        return false;
    p += 8;
    char* e = strstr(p, "</string>");
    if (!e || (size_t)(e - p) >= cap)
        return false;
    memcpy(out, p, e - p);
    out[e - p] = 0;
    return true;
}
int main(int argc, char** argv) {
    int fd = open(argv[1], O_RDONLY);
    ssize_t n = fd < 0 ? -1 : read(fd, cfg, sizeof cfg - 1);
    close(fd);
    if (n <= 0)
        return 0;
    char id[3][256], name[256], path[4096];
    if (!key("kCrashReporterID", id[0], 256) || !key("kMainAppName", name, 256) ||
        !key("kMainAppID", id[1], 256) || !key("kBackgroundAppID", id[2], 256))
        return 0;
    snprintf(path, sizeof path, "%s/%s/%s.app/Contents/SharedSupport/%s Background.app", argv[2],
             name, name, name);
    bool there = access(path, F_OK) == 0;
    int pid[3] = {0, 0, 0};
    int pfd = open("/proc", O_RDONLY | O_DIRECTORY);
    for (long r; (r = syscall(SYS_getdents64, pfd, dbuf, sizeof dbuf)) > 0;)
        for (long o = 0; o < r; o += *(unsigned short*)(dbuf + o + 16)) {
            char* nm = dbuf + o + 19;
            if (*nm < '1' || *nm > '9')
                continue;
            char p[64], exe[4096];
            stpcpy(stpcpy(p, nm), "/exe");
            ssize_t k = readlinkat(pfd, p, exe, sizeof exe - 1);
            if (k <= 0)
                continue;
            exe[k] = 0;
            char* s = strrchr(exe, '/');
            if (!s || s - exe < 15 || strncasecmp(s - 15, "/Contents/MacOS", 15))
                continue;
            strcpy(s - 6, "/Info.plist");
            int f = open(exe, O_RDONLY);
            if (f < 0)
                continue;
            ssize_t m = read(f, big, sizeof big - 1);
            close(f);
            big[m > 0 ? m : 0] = 0;
            char* q = strstr(big, "<key>CFBundleIdentifier</key>");
            if (!q || !(q = strstr(q, "<string>")))
                continue;
            for (int i = 0; i < 3; i++) {
                size_t l = strlen(id[i]);
                if (!pid[i] && !strncmp(q + 8, id[i], l) && q[8 + l] == '<')
                    pid[i] = atoi(nm);
            }
        }
    return there && pid[0] < 0 && argc < 0;
}
