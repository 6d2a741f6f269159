#include "foundation/ImageExtensions.hpp"

#include "base/PathString.hpp"
#include "base/Unicode.hpp"
#include "platform/ImageService.hpp"
#include "platform/MainThread.hpp"
#include "platform/NeverDestroyed.hpp"

#include <vector>

namespace tav {
namespace internal {

void ImageExtensionsSet::allocate() {
    const std::lock_guard lock(mutex_);
    if (exists()) {
        return;
    }
    const std::vector<std::string> types = ImageService::current().imageUnfilteredFileTypes();
    extensions_.reserve(types.size());
    for (const std::string& type : types) {
        extensions_.insert(uppercaseString(type));
    }
    exists_.store(true, std::memory_order_release);
}

bool ImageExtensionsSet::contains(const std::string& extension) const {
    return extensions_.contains(extension);
}

std::string stringByDeletingImageExtension(std::string_view text, ImageExtensionsSet& extensions) {
    if (!extensions.exists()) {
        MainThread::current().runAndWait([&extensions] { extensions.allocate(); });
    }
    const std::string_view extension = pathExtension(text);
    if (extension.empty() || !extensions.contains(uppercaseString(extension))) {
        return std::string(text);
    }
    return stringByDeletingPathExtension(text);
}

} // namespace internal

internal::ImageExtensionsSet& gImageExtensionsSet() {
    return internal::neverDestroyed<internal::ImageExtensionsSet>();
}

void allocateImageExtensionsSetOnMainThread() { gImageExtensionsSet().allocate(); }

std::string stringByDeletingImageExtension(std::string_view text) {
    return internal::stringByDeletingImageExtension(text, gImageExtensionsSet());
}

} // namespace tav
