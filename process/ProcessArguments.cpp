#include "process/ProcessArguments.hpp"

#include "base/PathString.hpp"
#include "base/Unicode.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace tav {
namespace {

/// Takes the texts of an area one by one.
class TextWalk {
  public:
    explicit TextWalk(std::string_view bytes) : rest_(bytes) {}

    /// The next text that has a NUL behind it, also an empty one.
    std::optional<std::string_view> next() {
        const std::size_t length = rest_.find('\0');
        if (length == std::string_view::npos) {
            return std::nullopt;
        }
        const std::string_view text = rest_.substr(0, length);
        rest_.remove_prefix(length + 1);
        return text;
    }

    /// Whether anything but NULs is left, having skipped those before it.
    bool skipNULs() {
        rest_.remove_prefix(std::min(rest_.find_first_not_of('\0'), rest_.size()));
        return !rest_.empty();
    }

  private:
    std::string_view rest_;
};

/// Sorts the texts behind the executable path into command, annotation and the rest.
class ArgumentCollector {
  public:
    ArgumentCollector(ProcessArguments& result, std::optional<std::int64_t> count)
        : result_(result), count_(count) {}

    void take(std::string_view text) {
        const std::string_view last = lastPathComponent(text);
        if (last.empty() || last == "LaunchCFMApp") {
            drop();
            return;
        }
        const bool isCommand = !result_.command;
        if (isCommand) {
            result_.command.emplace(last);
        }
        searchesAnnotation_ = searchesAnnotation_ || last == "DashboardClient" ||
                              result_.command == "Konfabulator" || result_.command == "java";
        if (isCommand) {
            return;
        }
        if (!text.starts_with("_=") && last == *result_.command) {
            drop();
        } else {
            texts_.push_back(text);
        }
        if (searchesAnnotation_ && !result_.annotation) {
            annotate(text, last);
        }
    }

    /// Splits the environment off what has been collected; the block is what the texts are views
    /// of.
    void finish(std::shared_ptr<const void> block) {
        if (count_ && *count_ >= 0) {
            splitAtCount(*count_);
        } else {
            splitAtLastWithoutEquals();
        }
        result_.arguments.assign(texts_.begin(), texts_.end());
        // Entered from the last to the first, so that of two with one name the first holds.
        std::reverse(entered_.begin(), entered_.end());
        result_.environment = ProcessEnvironment(std::move(block), std::move(entered_));
    }

  private:
    void drop() {
        if (count_) {
            --*count_;
        }
    }

    void annotate(std::string_view text, std::string_view last) {
        const std::string_view extension = pathExtension(text);
        if (extension == "wdgt" || extension == "widget") {
            result_.annotation = stringByDeletingPathExtension(last);
        } else if (extension == "jar") {
            result_.annotation.emplace(last);
        }
    }

    /// Enters "KEY=value"; false for a text without "=".
    bool enter(std::string_view text) {
        const std::size_t equals = text.find('=');
        if (equals == std::string_view::npos) {
            return false;
        }
        entered_.emplace_back(text.substr(0, equals), text.substr(equals + 1));
        return true;
    }

    void splitAtCount(std::int64_t count) {
        const std::int64_t kept = count - 1;
        for (auto i = static_cast<std::int64_t>(texts_.size()) - 1; i >= 0 && i >= kept; --i) {
            enter(texts_[static_cast<std::size_t>(i)]);
        }
        if (kept >= 0 && static_cast<std::uint64_t>(kept) < texts_.size()) {
            texts_.resize(static_cast<std::size_t>(kept));
        }
    }

    void splitAtLastWithoutEquals() {
        while (!texts_.empty() && enter(texts_.back())) {
            texts_.pop_back();
        }
    }

    ProcessArguments& result_;
    std::optional<std::int64_t> count_;
    /// What stands behind the command, views of the area.
    std::vector<std::string_view> texts_;
    std::vector<ProcessEnvironment::Entry> entered_;
    bool searchesAnnotation_ = false;
};

} // namespace

ProcessArguments parseArgumentArea(ArgumentArea area) {
    ProcessArguments result;
    const auto block = std::make_shared<const Data>(std::move(area.bytes));
    std::string_view bytes = textOf(*block);
    std::optional<std::int64_t> count;
    if (area.layout == ArgumentArea::Layout::Counted) {
        std::int32_t counted = 0;
        if (bytes.size() < sizeof counted) {
            return result;
        }
        std::memcpy(&counted, bytes.data(), sizeof counted);
        count = counted;
        bytes.remove_prefix(sizeof counted);
    }

    TextWalk walk(bytes);
    const std::optional<std::string_view> path = walk.next();
    if (!path) {
        return result;
    }
    if (!path->empty() && isValidUTF8(*path)) {
        result.executablePath.emplace(*path);
    }
    if (!walk.skipNULs()) {
        return result;
    }
    ArgumentCollector collector(result, count);
    while (const std::optional<std::string_view> text = walk.next()) {
        if (!text->empty() && isValidUTF8(*text)) {
            collector.take(*text);
        }
    }
    collector.finish(block);
    return result;
}

} // namespace tav
