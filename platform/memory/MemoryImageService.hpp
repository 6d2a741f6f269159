#pragma once

#include "platform/ImageService.hpp"

#include <functional>

namespace tav {

/// Images of a test: it says which types are readable, and what happens when it is asked.
class MemoryImageService final : public ImageService {
  public:
    std::vector<std::string> types;
    /// How often the types were asked for.
    int asked = 0;
    /// Called first when set; it may throw.
    std::function<void()> whenAsked;

    std::vector<std::string> imageUnfilteredFileTypes() override {
        ++asked;
        if (whenAsked) {
            whenAsked();
        }
        return types;
    }
};

} // namespace tav
