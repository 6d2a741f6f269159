#include "fileinfo/GenericIcons.hpp"

#include "platform/LibraryResources.hpp"
#include "platform/NeverDestroyed.hpp"

#include <mutex>
#include <string_view>

namespace tav {
namespace {

/// A picture of the library's own, shared by all.
class SharedIcon {
  public:
    std::shared_ptr<Image> named(std::string_view name) {
        const std::scoped_lock lock(mutex_);
        if (!image_) {
            image_ = libraryImage(name);
        }
        return image_;
    }

  private:
    std::mutex mutex_;
    std::shared_ptr<Image> image_;
};

struct FolderIcon : SharedIcon {};
struct FileIcon : SharedIcon {};

} // namespace

std::shared_ptr<Image> genericFolderIcon() {
    return internal::neverDestroyed<FolderIcon>().named("icons/genericfolder");
}

std::shared_ptr<Image> genericFileIcon() {
    return internal::neverDestroyed<FileIcon>().named("icons/genericfile");
}

} // namespace tav
