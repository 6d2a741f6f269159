#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_set>

namespace tav {

namespace internal {

/// The extensions of image files in upper case, built once from `ImageService` and then only read.
/// Any thread.
class ImageExtensionsSet {
  public:
    [[nodiscard]] bool exists() const { return exists_.load(std::memory_order_acquire); }
    /// Builds the set unless it exists. What the service throws passes, and nothing is built.
    void allocate();
    /// Whether it has the extension, in upper case. Only once it exists.
    [[nodiscard]] bool contains(const std::string& extension) const;

  private:
    std::mutex mutex_;
    std::atomic<bool> exists_ = false;
    std::unordered_set<std::string> extensions_;
};

/// With a set of one's own.
[[nodiscard]] std::string stringByDeletingImageExtension(std::string_view text,
                                                         ImageExtensionsSet& extensions);

} // namespace internal

/// The set of the process. Made when it is first asked for, kept until the process ends.
[[nodiscard]] internal::ImageExtensionsSet& gImageExtensionsSet();

/// Builds the set of the process unless it exists. On the main thread.
void allocateImageExtensionsSetOnMainThread();

/// The path without its extension when that is one of an image, in whatever case: one extension,
/// so "a.jpg.png" gives "a.jpg".
///
/// The first call has the set built on the main thread and waits: not to be called while that waits
/// for the calling thread.
[[nodiscard]] std::string stringByDeletingImageExtension(std::string_view text);

} // namespace tav
