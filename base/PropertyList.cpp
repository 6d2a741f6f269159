#include "base/PropertyList.hpp"

#include "base/BinaryPropertyListWriter.hpp"
#include "base/OldStyleText.hpp"
#include "base/XMLPropertyListWriter.hpp"

#include <algorithm>
#include <string_view>

namespace tav::PropertyList {
namespace {

using namespace std::string_view_literals;

/// Whether the first character is the "<" of an element or a declaration. Old-style data, the other
/// thing that begins so, hold hexadecimal digits only. NULs are stepped over: those are the other
/// halves of such characters in UTF-16.
bool isXML(std::string_view text) {
    constexpr std::string_view space = "\0 \t\n\v\f\r"sv;
    constexpr std::string_view dataCharacters = "\0 \t\n\v\f\r0123456789abcdefABCDEF"sv;
    for (const std::string_view mark : {"\xEF\xBB\xBF"sv, "\xFE\xFF"sv, "\xFF\xFE"sv}) {
        if (text.starts_with(mark)) {
            text.remove_prefix(mark.size());
            break;
        }
    }
    const std::size_t start = text.find_first_not_of(space);
    if (start == std::string_view::npos || text[start] != '<') {
        return false;
    }
    const std::size_t other = text.find_first_not_of(dataCharacters, start + 1);
    return other == std::string_view::npos || text[other] != '>';
}

bool isTooDeep(const Value& value, std::size_t level) {
    const auto hasDeep = [level](const auto& elements, const auto& valueOf) {
        return level >= maximumDepth ||
               std::any_of(elements.begin(), elements.end(), [&](const auto& element) {
                   return isTooDeep(valueOf(element), level + 1);
               });
    };
    if (const Value::Array* array = value.asArray()) {
        return hasDeep(*array, [](const Value& element) -> const Value& { return element; });
    }
    if (const Value::Dictionary* dictionary = value.asDictionary()) {
        return hasDeep(*dictionary, [](const auto& entry) -> const Value& { return entry.second; });
    }
    return false;
}

std::optional<Data> writeOldStyle(const Value& value, Error& error) {
    if (isTooDeep(value, 0)) {
        error.reason = "nested too deep";
        return std::nullopt;
    }
    return dataFromText(OldStyleText::write(value));
}

std::optional<Data> written(const Value& value, Form form, Error& error) {
    switch (form) {
    case Form::Binary:
        return internal::writeBinary(value, error);
    case Form::OldStyle:
        return writeOldStyle(value, error);
    default:
        return internal::writeXML(value, error);
    }
}

} // namespace

std::optional<Value> read(BytesView bytes, Error* outError) {
    const std::string_view text = textOf(bytes);
    // A piece of the mark is a binary list that was cut off, not a word.
    constexpr std::string_view mark = "bplist";
    if (!text.empty() && text.substr(0, mark.size()) == mark.substr(0, text.size())) {
        return readBinary(bytes, outError);
    }
    return isXML(text) ? readXML(bytes, outError) : readOldStyle(bytes, outError);
}

std::optional<Value> readOldStyle(BytesView bytes, Error* outError) {
    return OldStyleText::read(bytes, outError);
}

std::optional<Data> write(const Value& value, Form form, Error* outError) {
    Error error;
    std::optional<Data> bytes = written(value, form, error);
    if (!bytes && outError != nullptr) {
        *outError = std::move(error);
    }
    return bytes;
}

} // namespace tav::PropertyList
