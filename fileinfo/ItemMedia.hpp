#pragma once

#include "base/Value.hpp"
#include "platform/Seam.hpp"

#include <optional>
#include <string_view>

namespace tav {

class ItemMedia;

namespace internal {
/// Knows nothing: no file is protected, none has metadata.
ItemMedia& absentItemMedia();
} // namespace internal

/// What items ask about the media in files. The media room, which stands above the items, puts
/// itself in place; without it the answers are those of items that know no media. Paths are
/// absolute. One thread at a time.
class ItemMedia : public Seam<ItemMedia, internal::absentItemMedia> {
  public:
    virtual ~ItemMedia() = default;

    /// Whether the content is protected and must not be copied to a device.
    virtual bool isProtectedFile(std::string_view path) = 0;
    virtual std::optional<Value> metadataForFile(std::string_view path) = 0;
    virtual void setMetadata(const Value& metadata, std::string_view forFile) = 0;
};

} // namespace tav
