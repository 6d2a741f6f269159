#include "testing/TemporaryFolder.hpp"

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tav {

namespace {

std::string resolved(const char* path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path, nullptr), &std::free);
    return real == nullptr ? std::string(path) : std::string(real.get());
}

void removeEntry(int folder, const char* name);

// Takes the descriptor over. Names are read before anything goes: a folder that changes while it is
// read may leave some out.
void removeContents(int folder) {
    ::DIR* const stream = ::fdopendir(folder);
    if (stream == nullptr) {
        ::close(folder);
        return;
    }
    std::vector<std::string> names;
    while (const ::dirent* entry = ::readdir(stream)) {
        const std::string_view name = static_cast<const char*>(entry->d_name);
        if (name != "." && name != "..") {
            names.emplace_back(name);
        }
    }
    for (const std::string& name : names) {
        removeEntry(::dirfd(stream), name.c_str());
    }
    ::closedir(stream);
}

void removeEntry(int folder, const char* name) {
    struct ::stat facts {};
    if (::fstatat(folder, name, &facts, AT_SYMLINK_NOFOLLOW) != 0) {
        return;
    }
    if (!S_ISDIR(facts.st_mode)) {
        ::unlinkat(folder, name, 0);
        return;
    }
    if ((facts.st_mode & S_IRWXU) != S_IRWXU) {
        // A test may have left a folder that nobody may look into.
        ::fchmodat(folder, name, S_IRWXU, 0);
    }
    const int inner = ::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (inner >= 0) {
        removeContents(inner);
    }
    ::unlinkat(folder, name, AT_REMOVEDIR);
}

} // namespace

TemporaryFolder::TemporaryFolder() {
    const char* base = std::getenv("TMPDIR");
    path_ = resolved(base == nullptr || *base == '\0' ? "/tmp" : base) + "/tav-test-XXXXXX";
    if (::mkdtemp(path_.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), path_);
    }
}

TemporaryFolder::~TemporaryFolder() { removeEntry(AT_FDCWD, path_.c_str()); }

std::string TemporaryFolder::path(std::string_view name) const {
    std::string full = path_;
    full += '/';
    full += name;
    return full;
}

} // namespace tav
