// ours_copy one FILE DESTINATION [OPTION]...: copies a file in pieces, telling a delegate each.
// ours_copy each FOLDER DESTINATION [OPTION]...: makes a folder and copies the files of another one
// into it, each by itself.
// ours_copy many FOLDER DESTINATION: the same by copyFiles.
// Options are the fields of CopyOptions; without any it is the plain copy.

#include "bench/Measure.hpp"
#include "fileinfo/CopyFiles.hpp"
#include "fileinfo/CopyOptions.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <span>
#include <string>
#include <string_view>

namespace {

using namespace tav;

struct Order {
    bool isPlain = true;
    CopyOptions options;
};

bool take(Order& order, std::string_view option) {
    struct Named {
        std::string_view name;
        bool CopyOptions::*field;
    };
    static constexpr Named all[] = {
        {"keepsDestination", &CopyOptions::keepsDestination},
        {"isDurable", &CopyOptions::isDurable},
        {"verifies", &CopyOptions::verifies},
        {"carriesPermissions", &CopyOptions::carriesPermissions},
        {"carriesExtendedAttributes", &CopyOptions::carriesExtendedAttributes},
        {"carriesHoles", &CopyOptions::carriesHoles},
        {"isWhole", &CopyOptions::isWhole},
    };
    for (const Named& one : all) {
        if (one.name == option) {
            order.options.*one.field = true;
            order.isPlain = false;
            return true;
        }
    }
    return false;
}

/// The most memory that the process has had so far.
double peakMegabytes() {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word && word != "VmHWM:") {
    }
    double kilobytes = 0;
    status >> kilobytes;
    return kilobytes / 1024;
}

class Copies {
  public:
    explicit Copies(const Order& order) : order_(order) {
        delegate_.copyingFile = [this](TavBaseFileInfo& /*file*/, TavBaseFileInfo& /*to*/,
                                       float percent, void* /*userData*/) {
            bench::keep(percent);
            ++reports_;
            return false;
        };
    }

    bool copy(TavBaseFileInfo& file, TavBaseFileInfo& destination) {
        FileInfoPtr made;
        const Status status =
            order_.isPlain
                ? file.copyTo(&destination, false, &delegate_, nullptr, &made)
                : file.copyTo(&destination, false, &delegate_, nullptr, &made, order_.options);
        return note(file, status, made);
    }

    bool copyAll(const FileInfoArray& files, TavBaseFileInfo& folder) {
        bool isDone = true;
        copyFiles(files, folder, false, &delegate_, nullptr,
                  [&](TavBaseFileInfo& file, Status status, const FileInfoPtr& made) {
                      isDone = note(file, status, made);
                      file.refresh(); // forgets what it has learned
                      return isDone;
                  });
        return isDone;
    }

    [[nodiscard]] double reports() const { return double(reports_); }
    [[nodiscard]] double bytes() const { return double(bytes_); }
    [[nodiscard]] double files() const { return double(files_); }

  private:
    bool note(TavBaseFileInfo& file, Status status, const FileInfoPtr& made) {
        if (status != Status::Success || made == nullptr) {
            std::fprintf(stderr, "status %d\n", static_cast<int>(status));
            return false;
        }
        bytes_ += file.size();
        ++files_;
        return true;
    }

    Order order_;
    ProgressDelegate delegate_;
    std::uint64_t reports_ = 0;
    std::uint64_t bytes_ = 0;
    std::uint64_t files_ = 0;
};

bool copyOne(Copies& copies, std::string_view source, std::string_view destination) {
    return copies.copy(*TavMacFileInfo::fileInfoWithPath(source),
                       *TavMacFileInfo::fileInfoWithPath(destination));
}

bool copyMany(Copies& copies, std::string_view source, std::string_view destination) {
    const FileInfoPtr folder = TavMacFileInfo::fileInfoCreateFolderWithFullPath(destination);
    return folder != nullptr &&
           copies.copyAll(TavMacFileInfo::fileInfoWithPath(source)->folderContents(), *folder);
}

bool copyEach(Copies& copies, std::string_view source, std::string_view destination) {
    const FileInfoPtr folder = TavMacFileInfo::fileInfoCreateFolderWithFullPath(destination);
    if (folder == nullptr) {
        return false;
    }
    FileInfoArray files = TavMacFileInfo::fileInfoWithPath(source)->folderContents();
    for (FileInfoPtr& file : files) {
        if (!copies.copy(*file, *folder)) {
            return false;
        }
        file.reset(); // with what it has learned
    }
    return true;
}

} // namespace

int main(int count, char** arguments) {
    const std::string_view mode = count >= 4 ? arguments[1] : "";
    Order order;
    bool isUnderstood = mode == "one" || mode == "each" || (mode == "many" && count == 4);
    for (int i = 4; i < count; ++i) {
        isUnderstood = take(order, arguments[i]) && isUnderstood;
    }
    if (!isUnderstood) {
        std::fprintf(stderr, "one|each|many SOURCE DESTINATION [OPTION]...\n");
        return 2;
    }
    Copies copies(order);
    const double before = peakMegabytes();
    bool isDone = false;
    const double seconds = bench::secondsOf([&] {
        const auto work = mode == "one" ? copyOne : mode == "each" ? copyEach : copyMany;
        isDone = work(copies, arguments[2], arguments[3]);
    });
    if (!isDone) {
        return 1;
    }
    if (mode == "one") {
        bench::result("copy_ms", seconds * 1e3);
    } else {
        bench::result("us_per_file", seconds * 1e6 / copies.files());
    }
    bench::result("files", copies.files());
    bench::result("bytes", copies.bytes());
    bench::result("reports", copies.reports());
    bench::result("memory_growth_mb", peakMegabytes() - before);
    return 0;
}
