#pragma once

#include "platform/SystemLog.hpp"

#include <mutex>
#include <string>
#include <vector>

namespace tav {

/// A system log that keeps the lines as they were written, whole. Any thread.
class MemorySystemLog final : public SystemLog {
  public:
    void write(std::string_view line) override {
        const std::lock_guard lock(mutex_);
        lines_.emplace_back(line);
    }

    [[nodiscard]] std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }
    void clear() {
        const std::lock_guard lock(mutex_);
        lines_.clear();
    }

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

} // namespace tav
