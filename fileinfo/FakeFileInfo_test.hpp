#pragma once

#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/TavPathBasedFileInfo.hpp"
#include "fileinfo/TavWindowsPathBasedFileInfo.hpp"

#include <algorithm>

namespace tav {

/// What a test says of an item that no file stands behind.
struct FakeFacts {
    bool exists = true;
    bool isFolder = false;
    bool isVisible = true;
    bool canBeRemoved = true;
    std::uint64_t size = 0;
    FileInfoPtr volume;
    FileInfoPtr aliasTarget;
    FileInfoArray children;
    int refreshes = 0;
};

/// An item over the facts of a test, on top of one of the classes that know paths.
template <class Base>
class FakeOver : public Base {
  public:
    [[nodiscard]] static std::shared_ptr<FakeOver> fileInfoWithPath(std::string_view path) {
        const auto item = internal::allocateItem<FakeOver>();
        item->initWithPath(path);
        return item;
    }
    [[nodiscard]] static std::shared_ptr<FakeOver> folder(std::string_view path) {
        const auto item = fileInfoWithPath(path);
        item->facts.isFolder = true;
        return item;
    }

    bool exists() override { return facts.exists && !facts.wasRemoved; }
    bool isFolder() override { return exists() && facts.isFolder; }
    bool isFile() override { return exists() && !facts.isFolder; }
    bool visible() override { return facts.isVisible; }
    std::uint64_t size() override { return isFolder() ? Base::size() : facts.size; }
    FileInfoPtr volume() override { return facts.volume ? facts.volume : Base::volume(); }
    FileInfoPtr aliasTarget() override { return facts.aliasTarget; }
    void refresh() override { ++facts.refreshes; }

    bool remove() override {
        facts.wasRemoved = facts.canBeRemoved;
        ++facts.removals;
        return facts.canBeRemoved;
    }

    FileInfoPtr find(std::string_view name) override {
        for (const FileInfoPtr& child : facts.children) {
            if (child->name() == name) {
                return child;
            }
        }
        return Base::find(name);
    }

    using Base::folderContentsWithFilter;
    void folderContentsWithFilter(TavBaseFileInfoFilter* filter, FileInfoArray* withArray,
                                  bool* stopAccumulating, std::string_view rootNodePath) override {
        facts.rootPaths.emplace_back(rootNodePath);
        for (const FileInfoPtr& child : facts.children) {
            bool stop = false;
            if (filter == nullptr || filter->includeItem(*child, &stop)) {
                withArray->push_back(child);
            }
            if (stop) {
                *stopAccumulating = true;
                return;
            }
        }
    }

    struct Facts : FakeFacts {
        bool wasRemoved = false;
        int removals = 0;
        std::vector<std::string> rootPaths;
    };
    Facts facts;

  protected:
    FakeOver() = default;
};

using FakeFileInfo = FakeOver<TavPathBasedFileInfo>;
using FakeWindowsFileInfo = FakeOver<TavWindowsPathBasedFileInfo>;

/// The names of items, for comparing whole listings.
[[nodiscard]] inline std::vector<std::string> namesOf(const FileInfoArray& items) {
    std::vector<std::string> names;
    std::ranges::transform(items, std::back_inserter(names),
                           [](const FileInfoPtr& item) { return item->name(); });
    return names;
}

} // namespace tav
