#include "fileinfo/local/FolderNames.hpp"

namespace tav {

FolderListing internal::namesIn(std::string_view path) {
    const Result<std::unique_ptr<OpenFolder>> folder = FileSystem::current().openFolder(path);
    if (!folder.ok()) {
        return {};
    }
    Result<FolderListing> names = folder.value()->entries();
    return names.ok() ? std::move(names).value() : FolderListing();
}

} // namespace tav
