// copy_plain MODE FILE DESTINATION: copies one file, counting its pieces of 1 MiB.
//   limit        write() of a hot buffer, as much as the file holds: no reading
//   read_write   read() and write() through one buffer
//   in_kernel    copy_file_range
//   filesystem   std::filesystem::copy_file, in one piece
// copy_plain MODE-many FOLDER DESTINATION: makes a folder and copies the files of another one.
//   read_write-many   open, open, read, write, close, close
//   careful-many      asks for the free space, writes to a temporary file, sets both dates, renames
//   filesystem-many   std::filesystem::copy
#include "measure.hpp"

#include <filesystem>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

static const size_t piece = 1 << 20;

static int copy_one(const std::string& mode, const char* source, const char* destination) {
    const double begin = now();
    struct stat status;
    if (mode == "filesystem") {
        std::filesystem::copy_file(source, destination);
        stat(destination, &status);
    } else {
        const int in = open(source, O_RDONLY | O_CLOEXEC);
        if (in < 0 || fstat(in, &status) != 0)
            return 3;
        const int out = open(destination, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        char* buffer = (char*)aligned_alloc(4096, piece);
        memset(buffer, 7, piece);
        volatile float percent = 0;
        for (off_t done = 0; done < status.st_size;) {
            ssize_t n = std::min<off_t>(piece, status.st_size - done);
            if (mode == "read_write")
                n = read(in, buffer, n);
            n = mode == "in_kernel" ? copy_file_range(in, nullptr, out, nullptr, n, 0)
                                    : write(out, buffer, n);
            if (n <= 0)
                return 4;
            done += n;
            percent = float(done) * 100 / float(status.st_size);
        }
        close(out);
        close(in);
    }
    result("copy_ms", (now() - begin) * 1e3);
    result("bytes", status.st_size);
    return 0;
}

static int copy_many(const std::string& mode, const char* source, const char* destination) {
    const double begin = now();
    long files = 0;
    if (mode == "filesystem-many") {
        std::filesystem::copy(source, destination, std::filesystem::copy_options::recursive);
        for (auto& entry : std::filesystem::directory_iterator(destination))
            keep(entry), files++;
    } else {
        const bool careful = mode == "careful-many";
        mkdir(destination, 0755);
        const int from = open(source, O_RDONLY | O_DIRECTORY);
        const int to = open(destination, O_RDONLY | O_DIRECTORY);
        DIR* const names = opendir(source);
        static char buffer[piece];
        while (const dirent* entry = readdir(names)) {
            if (entry->d_name[0] == '.')
                continue;
            const int in = openat(from, entry->d_name, O_RDONLY | O_CLOEXEC);
            struct stat status;
            fstat(in, &status);
            struct statvfs volume;
            if (careful && (fstatvfs(to, &volume) != 0 ||
                            volume.f_bavail * volume.f_frsize < uint64_t(status.st_size)))
                return 6;
            const int out = openat(to, careful ? "copy.tmp" : entry->d_name,
                                   O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
            for (off_t done = 0; done < status.st_size;) {
                const ssize_t n = read(in, buffer, sizeof buffer);
                if (n <= 0 || write(out, buffer, n) != n)
                    return 4;
                done += n;
            }
            if (careful) {
                const timespec times[2] = {status.st_atim, status.st_mtim};
                futimens(out, times);
            }
            close(out);
            close(in);
            if (careful && renameat(to, "copy.tmp", to, entry->d_name) != 0)
                return 5;
            files++;
        }
        closedir(names);
    }
    result("us_per_file", (now() - begin) * 1e6 / double(files));
    result("files", files);
    return 0;
}

int main(int, char** argv) {
    const std::string mode = argv[1];
    return mode.ends_with("-many") ? copy_many(mode, argv[2], argv[3])
                                   : copy_one(mode, argv[2], argv[3]);
}
