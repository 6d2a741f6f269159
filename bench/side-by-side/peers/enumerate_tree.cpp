// enumerate_tree FOLDER FILES FOLDERS: makes so many files of at most 255 bytes, every fourth a
// ".jpg", in one folder, or spread over folders of which each lies in that of a tenth its number.
#include "measure.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

static void make_file(const std::string& folder, long number) {
    static const char* const extensions[] = {"jpg", "mp3", "txt", "mov"};
    static const char zeros[256] = {};
    char name[64];
    snprintf(name, sizeof name, "/IMG_%06ld_item.%s", number, extensions[number & 3]);
    const int file = open((folder + name).c_str(), O_CREAT | O_WRONLY, 0644);
    const size_t size = number % 16 == 0 ? 0 : size_t(number * 37 % 255 + 1);
    if (file < 0 || write(file, zeros, size) != ssize_t(size)) {
        perror(name);
        exit(1);
    }
    close(file);
}

int main(int, char** arguments) {
    const long files = atol(arguments[2]), folders = atol(arguments[3]);
    std::vector<std::string> paths(size_t(folders), arguments[1]);
    for (long i = 0; i < folders; i++) {
        if (i > 0) {
            paths[size_t(i)] = paths[size_t((i - 1) / 10)] + "/Folder " + std::to_string(i);
        }
        mkdir(paths[size_t(i)].c_str(), 0755);
        for (long file = i * files / folders; file < (i + 1) * files / folders; file++) {
            make_file(paths[size_t(i)], file);
        }
    }
}
