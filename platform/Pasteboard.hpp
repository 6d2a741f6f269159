#pragma once

#include "base/Data.hpp"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// What was copied or is dragged: bytes by the name of their type, filled by the application from
/// its toolkit. A value.
class Pasteboard {
  public:
    /// A property list of paths.
    static constexpr std::string_view filenamesType = "NSFilenamesPboardType";
    /// Files that the source of a drag will make when it is asked to.
    static constexpr std::string_view filesPromiseType = "NSFilesPromisePboardType";
    /// Lines of URLs, as desktops hand files around.
    static constexpr std::string_view uriListType = "text/uri-list";

    void setData(std::string_view type, Data bytes) {
        contents_.insert_or_assign(std::string(type), std::move(bytes));
    }
    /// Null when it has none of that type.
    [[nodiscard]] const Data* dataForType(std::string_view type) const {
        const auto found = contents_.find(type);
        return found != contents_.end() ? &found->second : nullptr;
    }

  private:
    std::map<std::string, Data, std::less<>> contents_;
};

/// A drag that promises files: the toolkit's side of it.
class DragInfo {
  public:
    virtual ~DragInfo() = default;

    /// Has the promised files made in a folder, given by its file URL; their names.
    virtual std::vector<std::string>
    namesOfPromisedFilesDroppedAtDestination(std::string_view folderURL) = 0;
};

} // namespace tav
