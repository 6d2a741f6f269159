#pragma once

#include <atomic>

namespace tav {

/// What every seam to the host has: a current instance, the real one unless something stands in.
///
/// `class FileSystem : public Seam<FileSystem, internal::realFileSystem>`. Replacing is for tests
/// and for programs that wrap a seam: it is process-wide, and replacements end in the reverse order
/// of their making.
template <class Interface, Interface& (*real)()>
class Seam {
  public:
    /// The instance that the library uses. May be called from any thread.
    [[nodiscard]] static Interface& current() {
        Interface* standIn = standIn_.load(std::memory_order_acquire);
        return standIn != nullptr ? *standIn : real();
    }

    /// Puts an instance in place for as long as the replacement lives. The instance must outlive
    /// it.
    class Replacement {
      public:
        explicit Replacement(Interface& instance) : previous_(standIn_.exchange(&instance)) {}
        ~Replacement() { standIn_.store(previous_); }
        Replacement(const Replacement&) = delete;
        Replacement& operator=(const Replacement&) = delete;

      private:
        Interface* previous_;
    };

  protected:
    Seam() = default;
    ~Seam() = default;
    Seam(const Seam&) = default;
    Seam& operator=(const Seam&) = default;

  private:
    static inline std::atomic<Interface*> standIn_ = nullptr;
};

} // namespace tav
