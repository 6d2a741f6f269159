#pragma once

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tav {

/// The variables that a process was started with: texts by names, in the order of the names' bytes.
/// A value that never changes; copies share the texts, which live as long as any of them.
class ProcessEnvironment {
  public:
    using Entry = std::pair<std::string_view, std::string_view>;

    ProcessEnvironment() = default;
    /// Copies the texts. The first of several entries with one name holds.
    ProcessEnvironment(std::initializer_list<Entry> entries);
    /// Takes entries that are views of the block. The first of several with one name holds.
    ProcessEnvironment(std::shared_ptr<const void> block, std::vector<Entry> entries);

    [[nodiscard]] std::size_t size() const { return entries_.size(); }
    [[nodiscard]] bool empty() const { return entries_.empty(); }
    /// Nothing when there is no such variable.
    [[nodiscard]] std::optional<std::string_view> find(std::string_view name) const;

    [[nodiscard]] std::vector<Entry>::const_iterator begin() const { return entries_.begin(); }
    [[nodiscard]] std::vector<Entry>::const_iterator end() const { return entries_.end(); }

    friend bool operator==(const ProcessEnvironment& a, const ProcessEnvironment& b) {
        return a.entries_ == b.entries_;
    }

  private:
    std::shared_ptr<const void> block_;
    std::vector<Entry> entries_;
};

} // namespace tav
