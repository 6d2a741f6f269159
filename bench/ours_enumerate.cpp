// ours_enumerate FOLDER: lists a folder in all depths through a filter that lets in what ends in
// ".jpg" and then asks for its size, median of three; "once FOLDER" does so once and tells nothing.
// ours_enumerate sizes FOLDER: an item and its size for everything. ours_enumerate memory FOLDER:
// the bytes that one listed item takes.

#include "bench/Measure.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"

#include <cstdint>
#include <string>
#include <string_view>

#include <malloc.h>
#include <strings.h>

namespace {

using namespace tav;

/// Lets in what has the extension, and asks only that for its size.
class SizesOfPictures final : public TavBaseFileInfoFilter {
  public:
    bool includeItem(TavBaseFileInfo& item, bool* /*stopAccumulating*/) override {
        ++entries;
        const std::string name = item.name();
        if (name.size() <= extension.size() ||
            ::strcasecmp(name.c_str() + (name.size() - extension.size()), extension.data()) != 0) {
            return false;
        }
        bytes += item.size();
        return true;
    }

    std::uint64_t entries = 0;
    std::uint64_t bytes = 0;

  private:
    static constexpr std::string_view extension = ".jpg";
};

/// Asks everything but folders for its size.
class SizesOfAll final : public TavBaseFileInfoFilter {
  public:
    bool includeItem(TavBaseFileInfo& item, bool* /*stopAccumulating*/) override {
        ++entries;
        if (!item.isFolder()) {
            bytes += item.size();
        }
        return true;
    }

    std::uint64_t entries = 0;
    std::uint64_t bytes = 0;
};

/// All that is allocated, large blocks included.
double bytesInUse() {
    const struct mallinfo2 now = ::mallinfo2();
    return double(now.uordblks) + double(now.hblkhd);
}

template <class Filter>
void measure(std::string_view folder) {
    std::uint64_t entries = 0;
    std::size_t matched = 0;
    const double seconds = bench::medianSeconds(3, [&] {
        Filter filter;
        const auto item = TavMacFileInfo::fileInfoWithPath(folder);
        const FileInfoArray found = item->folderContentsDeepWithFilter(&filter);
        bench::keep(filter.bytes);
        entries = filter.entries;
        matched = found.size();
    });
    bench::result("pass_ms", seconds * 1e3);
    bench::result("ns_per_entry", seconds * 1e9 / double(entries));
    bench::result("entries", double(entries));
    bench::result("matched", double(matched));
}

void measureMemory(std::string_view folder) {
    const double before = bytesInUse();
    const FileInfoArray all =
        TavMacFileInfo::fileInfoWithPath(folder)->folderContentsDeepWithFilter(nullptr);
    bench::result("entries", double(all.size()));
    bench::result("bytes_per_item", (bytesInUse() - before) / double(all.size()));
}

} // namespace

int main(int count, char** arguments) {
    if (count != 2 && count != 3) {
        return 2;
    }
    const std::string_view mode = count == 3 ? arguments[1] : "deep";
    const std::string_view folder = arguments[count - 1];
    if (mode == "deep") {
        measure<SizesOfPictures>(folder);
    } else if (mode == "once") {
        SizesOfPictures filter;
        const auto item = TavMacFileInfo::fileInfoWithPath(folder);
        bench::keep(item->folderContentsDeepWithFilter(&filter));
    } else if (mode == "sizes") {
        measure<SizesOfAll>(folder);
    } else if (mode == "memory") {
        measureMemory(folder);
    } else {
        return 2;
    }
    return 0;
}
