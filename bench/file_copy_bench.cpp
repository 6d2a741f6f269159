// What it costs to copy a large file and to lose the source of it, beside `cp` and a plain loop.
//
// The folder to work in is the environment's TMPDIR, /tmp without it: a memory file system and a
// disk tell different stories.

#include "foundation/FileManager.hpp"
#include "platform/FileSystem.hpp"

#include <cstdlib>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tav {
namespace {

constexpr std::size_t fileSize = std::size_t{256} << 20U;
constexpr std::size_t bufferSize = std::size_t{1} << 20U;

/// A folder with a source that is made anew for each copy, untimed.
class Place {
  public:
    Place() {
        const char* temporary = std::getenv("TMPDIR");
        folder_ = std::string(temporary == nullptr ? "/tmp" : temporary) + "/file-copy-XXXXXX";
        if (::mkdtemp(folder_.data()) == nullptr) {
            std::abort();
        }
    }
    ~Place() {
        removeFiles();
        ::rmdir(folder_.c_str());
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    void makeSource() const {
        removeFiles();
        const std::vector<char> content(bufferSize, 'x');
        const int file = ::open(source().c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        for (std::size_t size = 0; size < fileSize; size += bufferSize) {
            if (::write(file, content.data(), bufferSize) != static_cast<::ssize_t>(bufferSize)) {
                std::abort();
            }
        }
        // So that what the medium takes later does not disturb the copy.
        ::fsync(file);
        ::close(file);
    }
    void removeFiles() const {
        ::unlink(source().c_str());
        ::unlink(destination().c_str());
    }
    [[nodiscard]] std::string source() const { return folder_ + "/source"; }
    [[nodiscard]] std::string destination() const { return folder_ + "/destination"; }

  private:
    std::string folder_;
};

template <class Copy>
void measure(benchmark::State& state, Copy copy) {
    const Place place;
    for ([[maybe_unused]] auto step : state) {
        state.PauseTiming();
        place.makeSource();
        state.ResumeTiming();
        if (!copy(place)) {
            state.SkipWithError("The copy failed.");
            return;
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fileSize));
}

bool cp(const Place& place) {
    std::string program = "cp";
    std::string from = place.source();
    std::string to = place.destination();
    char* arguments[] = {program.data(), from.data(), to.data(), nullptr};
    ::pid_t process = 0;
    int status = 1;
    return ::posix_spawnp(&process, "cp", nullptr, nullptr, arguments, environ) == 0 &&
           ::waitpid(process, &status, 0) == process && status == 0;
}

/// Read and write through one buffer. The source goes first or stays.
bool plainLoop(const Place& place, bool removesSource) {
    const int from = ::open(place.source().c_str(), O_RDONLY | O_CLOEXEC);
    if (removesSource) {
        ::unlink(place.source().c_str());
    }
    const int to = ::open(place.destination().c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    std::vector<char> buffer(bufferSize);
    ::ssize_t got = 0;
    bool isWritten = true;
    while (isWritten && (got = ::read(from, buffer.data(), buffer.size())) > 0) {
        isWritten = ::write(to, buffer.data(), static_cast<std::size_t>(got)) == got;
    }
    ::close(from);
    ::close(to);
    return isWritten && got == 0;
}

int goOn(void* calls, std::uint64_t, std::uint64_t, std::uint64_t) {
    ++*static_cast<int*>(calls);
    return 0;
}

void copyOfTheLibrary(benchmark::State& state) {
    measure(state, [](const Place& place) {
        int calls = 0;
        return copyFile(place.source(), place.destination(), goOn, &calls) == Status::Success;
    });
}
void copyByCp(benchmark::State& state) { measure(state, cp); }
void copyByCpAndRemoval(benchmark::State& state) {
    measure(state,
            [](const Place& place) { return cp(place) && ::unlink(place.source().c_str()) == 0; });
}
void copyByAPlainLoop(benchmark::State& state) {
    measure(state, [](const Place& place) { return plainLoop(place, false); });
}
void copyByAPlainLoopAndRemoval(benchmark::State& state) {
    measure(state, [](const Place& place) { return plainLoop(place, true); });
}
BENCHMARK(copyOfTheLibrary)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(copyByCpAndRemoval)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(copyByAPlainLoopAndRemoval)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(copyByCp)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(copyByAPlainLoop)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
} // namespace tav
