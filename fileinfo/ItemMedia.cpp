#include "fileinfo/ItemMedia.hpp"

#include "platform/NeverDestroyed.hpp"

namespace tav {

namespace {

class AbsentItemMedia final : public ItemMedia {
  public:
    bool isProtectedFile(std::string_view /*path*/) override { return false; }
    std::optional<Value> metadataForFile(std::string_view /*path*/) override {
        return std::nullopt;
    }
    void setMetadata(const Value& /*metadata*/, std::string_view /*forFile*/) override {}
};

} // namespace

ItemMedia& internal::absentItemMedia() { return neverDestroyed<AbsentItemMedia>(); }

} // namespace tav
