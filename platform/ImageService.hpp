#pragma once

#include "platform/Seam.hpp"

#include <string>
#include <vector>

namespace tav {

class ImageService;

namespace internal {
/// What this host reads (platform/linux).
ImageService& realImageService();
} // namespace internal

/// The seam to the platform's images.
class ImageService : public Seam<ImageService, internal::realImageService> {
  public:
    virtual ~ImageService() = default;

    /// The extensions of file names, without the dot and in lower case, of what can be read as an
    /// image. Any thread.
    virtual std::vector<std::string> imageUnfilteredFileTypes() = 0;
};

} // namespace tav
