#include "foundation/LineEndings.hpp"

#include "foundation/ReplacedText.hpp"
#include "foundation/TextEncoding.hpp"

#include <algorithm>

namespace tav {

namespace {

constexpr std::string_view paragraphSeparator = "\u2029";

std::string withCharacterReplaced(std::string_view text, char character, char by) {
    std::string changed(text);
    std::replace(changed.begin(), changed.end(), character, by);
    return changed;
}

} // namespace

std::string stringWithMacLineEndings(std::string_view text) {
    return internal::withReplaced(text, "\r\n", "\n");
}

std::string stringWithWindowsLineEndings(std::string_view text) {
    return internal::withReplaced(text, "\n", "\r\n");
}

std::string convertNewlinesToReturns(std::string_view text) {
    return withCharacterReplaced(text, '\n', '\r');
}

std::string convertReturnsToNewlines(std::string_view text) {
    return withCharacterReplaced(text, '\r', '\n');
}

std::string convertLineEndingsToParagraphSeparator(std::string_view text) {
    const std::string withoutPairs = internal::withReplaced(text, "\r\n", paragraphSeparator);
    const std::string withoutReturns =
        internal::withReplaced(withoutPairs, "\r", paragraphSeparator);
    return internal::withReplaced(withoutReturns, "\n", paragraphSeparator);
}

std::string convertParagraphSeparatorToLineEndings(std::string_view text) {
    return internal::withReplaced(text, paragraphSeparator, "\n");
}

std::optional<Data> dataWithWindowsLineEndings(std::string_view text) {
    return dataUsingEncoding(stringWithWindowsLineEndings(text), TextEncoding::Unicode, true);
}

} // namespace tav
