// Runs a fuzz target over every file of the folders that are given; fails when there is none.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <dirent.h>
#include <sys/stat.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

using Folder = std::unique_ptr<DIR, decltype([](DIR* folder) { closedir(folder); })>;
using File = std::unique_ptr<FILE, decltype([](FILE* file) { fclose(file); })>;

bool replayFile(const std::string& path) {
    const File file(fopen(path.c_str(), "rbe"));
    if (!file) {
        return false;
    }
    std::vector<std::uint8_t> bytes;
    std::uint8_t buffer[4096];
    while (const std::size_t count = fread(buffer, 1, sizeof buffer, file.get())) {
        bytes.insert(bytes.end(), buffer, buffer + count);
    }
    if (ferror(file.get()) != 0) {
        return false;
    }
    // A copy of just the size, so that the address sanitizer sees reads past the end.
    bytes.shrink_to_fit();
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return true;
}

/// How many files were replayed; -1 when one could not be read.
long replayFolder(const char* path) {
    const Folder folder(opendir(path));
    if (!folder) {
        return -1;
    }
    long count = 0;
    while (const dirent* entry = readdir(folder.get())) {
        const std::string file = std::string(path) + '/' + entry->d_name;
        struct stat status = {};
        if (stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
            if (!replayFile(file)) {
                return -1;
            }
            ++count;
        }
    }
    return count;
}

} // namespace

int main(int argc, char** argv) {
    long total = 0;
    for (int i = 1; i < argc; ++i) {
        const long count = replayFolder(argv[i]);
        if (count < 0) {
            fprintf(stderr, "cannot read %s\n", argv[i]);
            return 1;
        }
        total += count;
    }
    printf("replayed %ld inputs\n", total);
    return total == 0 ? 1 : 0;
}
