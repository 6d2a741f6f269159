#include "platform/MessageCatalogue.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace tav {
namespace {

constexpr std::size_t headerSize = 28;
constexpr std::size_t entrySize = 8;
constexpr std::uint32_t magic = 0x950412de;

/// The numbers and texts of a catalogue, each looked at before it is followed.
class Fields {
  public:
    explicit Fields(BytesView bytes) : bytes_(bytes), isBigEndian_(littleEndian(0) != magic) {}

    /// The 32-bit number at an offset that lies inside.
    [[nodiscard]] std::uint32_t number(std::size_t offset) const {
        const std::uint32_t value = littleEndian(offset);
        return isBigEndian_ ? (value >> 24U) | ((value >> 8U) & 0xff00U) |
                                  ((value << 8U) & 0xff0000U) | (value << 24U)
                            : value;
    }

    /// The text that the entry of a table names, up to its first NUL; nothing when it reaches
    /// beyond the end.
    [[nodiscard]] std::optional<std::string_view> text(std::size_t entry) const {
        const std::size_t length = number(entry);
        const std::size_t offset = number(entry + 4);
        if (offset > bytes_.size() || length > bytes_.size() - offset) {
            return std::nullopt;
        }
        const std::string_view whole = textOf(bytes_.subspan(offset, length));
        return whole.substr(0, whole.find('\0'));
    }

  private:
    [[nodiscard]] std::uint32_t littleEndian(std::size_t offset) const {
        const auto byte = [&](std::size_t i) {
            return std::to_integer<std::uint32_t>(bytes_[offset + i]);
        };
        return byte(0) | (byte(1) << 8U) | (byte(2) << 16U) | (byte(3) << 24U);
    }

    BytesView bytes_;
    bool isBigEndian_;
};

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return lower;
}

/// Whether the description of a catalogue names UTF-8, a part of it, or no encoding.
bool isUTF8(std::string_view description) {
    const std::string text = lowerCase(description);
    constexpr std::string_view label = "charset=";
    const std::size_t found = text.find(label);
    if (found == std::string::npos) {
        return true;
    }
    const std::size_t start = found + label.size();
    const std::string name = text.substr(start, text.find_first_of(" \t\r\n;", start) - start);
    return name == "utf-8" || name == "utf8" || name == "us-ascii" || name == "ascii";
}

} // namespace

std::optional<MessageCatalogue> MessageCatalogue::read(Data bytes) {
    if (bytes.size() < headerSize) {
        return std::nullopt;
    }
    MessageCatalogue catalogue;
    catalogue.bytes_ = std::move(bytes);
    const std::size_t size = catalogue.bytes_.size();
    const Fields fields(catalogue.bytes_);
    // The upper half of the revision changes where the format does.
    if (fields.number(0) != magic || fields.number(4) >> 16U > 1) {
        return std::nullopt;
    }
    const std::size_t count = fields.number(8);
    const std::size_t texts = fields.number(12);
    const std::size_t translations = fields.number(16);
    const auto fits = [&](std::size_t table) {
        return table <= size && count <= (size - table) / entrySize;
    };
    if (!fits(texts) || !fits(translations)) {
        return std::nullopt;
    }
    catalogue.messages_.reserve(count);
    std::string_view previous;
    for (std::size_t i = 0; i < count; ++i) {
        const auto text = fields.text(texts + i * entrySize);
        const auto translation = fields.text(translations + i * entrySize);
        if (!text || !translation || *text < previous || (text->empty() && !isUTF8(*translation))) {
            return std::nullopt;
        }
        previous = *text;
        if (!text->empty() && !translation->empty()) {
            catalogue.messages_.emplace_back(*text, *translation);
        }
    }
    return catalogue;
}

std::optional<std::string_view> MessageCatalogue::find(std::string_view key) const {
    const auto found =
        std::lower_bound(messages_.begin(), messages_.end(), key,
                         [](const auto& message, std::string_view k) { return message.first < k; });
    return found != messages_.end() && found->first == key ? std::optional(found->second)
                                                           : std::nullopt;
}

} // namespace tav
