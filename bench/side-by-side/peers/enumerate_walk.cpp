// enumerate_walk names|eager|lazy FOLDER: a folder in all depths by getdents64 and calls that count
// from the open folder, median of three.
//   names  names and kinds alone
//   eager  the size of everything
//   lazy   the size of what ends in ".jpg"
#include "measure.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

static long entries, matched;
static uint64_t bytes;
static std::string mode;

static void walk(int folder) {
    std::vector<char> buffer(65536);
    for (;;) {
        const ssize_t got = getdents64(folder, buffer.data(), buffer.size());
        if (got <= 0) {
            break;
        }
        for (ssize_t at = 0; at < got;) {
            const dirent64* const entry = reinterpret_cast<dirent64*>(buffer.data() + at);
            at += entry->d_reclen;
            const char* const name = entry->d_name;
            if (!strcmp(name, ".") || !strcmp(name, "..")) {
                continue;
            }
            entries++;
            const size_t length = strlen(name);
            const bool hit = length > 4 && !strcasecmp(name + length - 4, ".jpg");
            matched += hit;
            if (mode == "eager" || (mode == "lazy" && hit)) {
                struct statx found;
                if (!statx(folder, name, AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC,
                           STATX_TYPE | STATX_SIZE, &found)) {
                    bytes += found.stx_size;
                }
            }
            if (entry->d_type == DT_DIR) {
                const int inner =
                    openat(folder, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
                if (inner >= 0) {
                    walk(inner);
                    close(inner);
                }
            }
        }
    }
}

int main(int, char** arguments) {
    mode = arguments[1];
    const double seconds = median_of(3, [&] {
        entries = matched = 0;
        bytes = 0;
        const int folder = open(arguments[2], O_RDONLY | O_DIRECTORY);
        walk(folder);
        close(folder);
    });
    keep(bytes);
    result("pass_ms", seconds * 1e3);
    result("ns_per_entry", seconds * 1e9 / double(entries));
    result("entries", double(entries));
    result("matched", double(matched));
}
