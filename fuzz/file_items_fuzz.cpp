// Items that are known by a path, and the filters of listings, over paths and names of any bytes.
// The input's first byte says what the items are; then come paths and names, ended by NULs.

#include "base/PathString.hpp"
#include "base/Unicode.hpp"
#include "fileinfo/BaseFilterNestedFolders.hpp"
#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/KindFilters.hpp"
#include "fileinfo/ListingFilters.hpp"
#include "fileinfo/NameFilters.hpp"
#include "fileinfo/TavFileExtensionsFilter.hpp"
#include "fileinfo/TavWindowsPathBasedFileInfo.hpp"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using namespace tav;

void expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// An item that is a folder or a file as the input says, on the volume "/".
template <class Base>
class AnyItem : public Base {
  public:
    static std::shared_ptr<AnyItem> at(std::string_view path, bool isFolder) {
        const auto item = internal::allocateItem<AnyItem>();
        item->isFolder_ = isFolder;
        item->initWithPath(path);
        return item;
    }
    bool exists() override { return true; }
    bool isFolder() override { return isFolder_; }
    bool isFile() override { return !isFolder_; }
    bool visible() override { return !this->name().starts_with('.'); }
    FileInfoPtr aliasTarget() override { return target; }

    FileInfoPtr target;

  protected:
    AnyItem() = default;

  private:
    bool isFolder_ = false;
};

class SlashItem : public AnyItem<TavPathBasedFileInfo> {
  public:
    static std::shared_ptr<SlashItem> at(std::string_view path, bool isFolder) {
        const auto item = internal::allocateItem<SlashItem>();
        item->isFolder_ = isFolder;
        item->initWithPath(path);
        return item;
    }
    bool isFolder() override { return isFolder_; }
    bool isFile() override { return !isFolder_; }
    FileInfoPtr volume() override { return TavPathBasedFileInfo::fileInfoWithPath("/"); }

  protected:
    SlashItem() = default;

  private:
    bool isFolder_ = false;
};

/// What holds for every item, whatever its path.
void checkItem(TavBaseFileInfo& item, TavBaseFileInfo& other) {
    const std::string path = item.path();
    expect(item.isEqualTo(&item));
    expect(item.isEqualTo(&other) == other.isEqualTo(&item));
    expect(!item.isFolder() || item.contains(&item));
    expect(item.numBytesNeededForPath() >= 0);
    const std::string name = item.name();
    expect(name.empty() || item.nameWithoutExtension().size() <= name.size());
    expect(item.extension().size() <= name.size());
    static_cast<void>(item.pathComponents());
    static_cast<void>(item.standardPath());
    static_cast<void>(item.description());
    static_cast<void>(item.relativePathTo(&other));
    static_cast<void>(item.volumeRelativeStandardPath());
    if (const FileInfoPtr parent = item.parentFolder()) {
        static_cast<void>(parent->path());
    }
    static_cast<void>(item.makeValidFilename(name, true));
    static_cast<void>(item.makeValidFilename(name, false));
    expect(item.path() == path);
}

void checkFilters(TavBaseFileInfo& item, const std::string& name) {
    bool stop = false;
    BaseFilterItemsNamed named({name}, true, true);
    named.setFindOne(true);
    expect(named.includeItem(item, &stop) == equalsIgnoringCase(name, item.name()));
    expect(stop == equalsIgnoringCase(name, item.name()));
    stop = false;
    TavExcludeFilenamesFilter exclude({name}, true);
    expect(exclude.includeItem(item, &stop) != equalsIgnoringCase(name, item.name()));
    BaseFilterFilenamePrefix prefix(name);
    expect(prefix.includeItem(item, &stop) ==
           (uppercaseString(name) == uppercaseString(item.nameWithoutExtension())));
    TavFileExtensionsFilter extensions({name});
    extensions.setHideEmptyFiles(false);
    expect(extensions.includeItem(item, &stop) == equalsIgnoringCase(name, item.extension()));
    internal::FindItemFilter find(name, false, true);
    expect(find.includeItem(item, nullptr) == (name == item.name()));
    BaseFilterNestedFolders nested(name);
    static_cast<void>(nested.includeItem(item, &stop));
    expect(TavFoldersOnlyFilter().includeItem(item, &stop) == item.isFolder());
    expect(TavFilesOnlyFilter().includeItem(item, &stop) == item.isFile());
    static_cast<void>(TavVisibleItemsFilter().includeItem(item, &stop));
    expect(!stop);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    std::string_view rest(reinterpret_cast<const char*>(bytes + 1), size - 1);
    std::array<std::string, 3> texts;
    for (std::string& text : texts) {
        const std::size_t end = rest.find('\0');
        text = std::string(rest.substr(0, end));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    const auto& [first, second, name] = texts;

    const auto slash = SlashItem::at(first, (bytes[0] & 1U) != 0);
    const auto otherSlash = SlashItem::at(second, (bytes[0] & 2U) != 0);
    slash->target = otherSlash;
    checkItem(*slash, *otherSlash);
    checkFilters(*slash, name);

    using WindowsItem = AnyItem<TavWindowsPathBasedFileInfo>;
    const auto windows = WindowsItem::at(first, (bytes[0] & 4U) != 0);
    const auto otherWindows = WindowsItem::at(second, (bytes[0] & 8U) != 0);
    windows->target = otherWindows;
    checkItem(*windows, *otherWindows);
    checkFilters(*windows, name);
    expect(!windows->pathComponents().empty());

    slash->updateName(name);
    windows->updateName(name);
    static_cast<void>(slash->moveTo(windows.get()));
    expect(slash->path() == windows->path());
    return 0;
}
