// PNG through libpng, which is loaded when the first picture is read: most programs that link this
// show none.

#include "platform/PngReader.hpp"
#include "platform/linux/SharedLibrary.hpp"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include <png.h>

namespace tav {
namespace {

/// The functions of the library that are used here.
struct Library {
    decltype(&::png_image_begin_read_from_memory) beginRead = nullptr;
    decltype(&::png_image_finish_read) finishRead = nullptr;
    decltype(&::png_image_free) free = nullptr;
    bool isComplete = false;
};

Library load() {
    Library library;
    internal::SharedLibrary host("libpng16.so.16");
    host.find(library.beginRead, "png_image_begin_read_from_memory");
    host.find(library.finishRead, "png_image_finish_read");
    host.find(library.free, "png_image_free");
    library.isComplete = host.isComplete();
    return library;
}

const Library& library() {
    static const Library loaded = load();
    return loaded;
}

/// The library's picture, freed when the value ends.
class Picture {
  public:
    Picture() { picture_.version = PNG_IMAGE_VERSION; }
    ~Picture() { library().free(&picture_); }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    ::png_image* operator->() { return &picture_; }
    ::png_image* get() { return &picture_; }

  private:
    ::png_image picture_ = {};
};

} // namespace

std::shared_ptr<Image> imageFromPNG(BytesView bytes) {
    if (bytes.empty() || !library().isComplete) {
        return nullptr;
    }
    Picture picture;
    // It answers 0 for a failure and prints nothing.
    if (library().beginRead(picture.get(), bytes.data(), bytes.size()) == 0 ||
        picture->width > longestImageSide || picture->height > longestImageSide) {
        return nullptr;
    }
    picture->format = PNG_FORMAT_RGBA;
    std::vector<std::uint8_t> rgba(std::size_t{4} * picture->width * picture->height);
    const std::uint32_t width = picture->width;
    const std::uint32_t height = picture->height;
    if (library().finishRead(picture.get(), nullptr, rgba.data(), 0, nullptr) == 0) {
        return nullptr;
    }
    return std::make_shared<Image>(width, height, std::move(rgba));
}

} // namespace tav
