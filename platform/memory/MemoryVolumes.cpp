#include "platform/memory/MemoryVolumes.hpp"

#include <cerrno>
#include <system_error>
#include <utility>

namespace tav {

void MemoryVolumes::add(VolumeInfo volume) {
    const auto root = files_.targetAttributes(volume.rootPath);
    if (!root.ok()) {
        throw std::system_error(root.error().number(), std::generic_category(), volume.rootPath);
    }
    volume.identifier = root.value().mount;
    volumes_.insert_or_assign(volume.identifier, std::move(volume));
}

Result<VolumeInfo> MemoryVolumes::volumeOfPath(std::string_view path) {
    const auto attributes = files_.targetAttributes(path);
    if (!attributes.ok()) {
        return attributes.error();
    }
    const auto found = volumes_.find(attributes.value().mount);
    return found == volumes_.end() ? Result<VolumeInfo>(SystemError(ENODEV))
                                   : Result(found->second);
}

bool MemoryVolumes::isVolumeRoot(std::string_view path) {
    const auto attributes = files_.attributes(path);
    const auto volume = attributes.ok() ? volumes_.find(attributes.value().mount) : volumes_.end();
    if (volume == volumes_.end()) {
        return false;
    }
    const auto root = files_.targetAttributes(volume->second.rootPath);
    return root.ok() && root.value().identity == attributes.value().identity;
}

} // namespace tav
