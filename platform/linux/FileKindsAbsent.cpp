// For programs that show no files but link what could: a program that has this among its own
// sources knows no kinds, and nothing of the database, the themes and the readers of pictures is
// linked into it.

#include "platform/FileKinds.hpp"

namespace tav::internal {
namespace {

class NoFileKinds final : public FileKinds {
  public:
    std::shared_ptr<Image> iconForFileType(std::string_view /*extension*/) override {
        return nullptr;
    }
    std::shared_ptr<Image> iconForFile(std::string_view /*path*/) override { return nullptr; }
    std::optional<std::string> kindOfFileType(std::string_view /*extension*/) override {
        return std::nullopt;
    }
    std::optional<std::string> kindOfFile(std::string_view /*path*/) override {
        return std::nullopt;
    }
    bool isFilePackageAtPath(std::string_view /*path*/) override { return false; }
};

} // namespace

FileKinds& realFileKinds() {
    static NoFileKinds kinds;
    return kinds;
}

} // namespace tav::internal
