#include "base/Format.hpp"

#include "base/FormatContent.hpp"
#include "base/FormatForm.hpp"
#include "base/FormatNumber.hpp"
#include "base/Unicode.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tav {

namespace {

using internal::FormatConversion;
using internal::FormatCount;
using internal::FormatLayout;
using internal::FormattedNumber;
using internal::integerOf;

// All the blanks and zeros that the widths and precisions of one form may ask for together: forms
// come from tables of translations too, and a slip there must not exhaust the memory.
constexpr std::size_t mostPadding = std::size_t{1} << 20;

std::int64_t signExtended(std::int64_t value, int bits) {
    switch (bits) {
    case 8:
        return static_cast<std::int8_t>(value);
    case 16:
        return static_cast<std::int16_t>(value);
    case 32:
        return static_cast<std::int32_t>(value);
    default:
        return value;
    }
}

std::uint64_t zeroExtended(std::int64_t value, int bits) {
    const auto all = static_cast<std::uint64_t>(value);
    return bits == 64 ? all : all & ((std::uint64_t{1} << bits) - 1);
}

// Writes one form out.
class Writer {
  public:
    Writer(std::string_view form, std::span<const FormatArgument> arguments)
        : form_(form), arguments_(arguments) {}

    std::string write() && {
        out_.reserve(form_.size() + lengthOfArguments());
        while (!form_.empty()) {
            const std::size_t percent = std::min(form_.find('%'), form_.size());
            append(form_.substr(0, percent));
            form_.remove_prefix(percent);
            if (!form_.empty()) {
                const std::size_t length = convert();
                form_.remove_prefix(length);
            }
        }
        endUnits();
        return std::move(out_);
    }

  private:
    // About how long the arguments are as texts.
    std::size_t lengthOfArguments() const {
        std::size_t length = 0;
        for (const FormatArgument& argument : arguments_) {
            const auto* text = std::get_if<std::string_view>(&argument.content());
            length += text == nullptr ? 16 : text->size();
        }
        return length;
    }

    // Converts what the form begins with and answers its length.
    std::size_t convert() {
        const std::optional<FormatConversion> conversion = internal::readFormatConversion(form_);
        if (!conversion) {
            append(form_);
            return form_.size();
        }
        constexpr std::string_view known = "@diuxXocCsfFeEgGaAp";
        if (conversion->letter == '%') {
            append("%");
        } else if (known.find(conversion->letter) == std::string_view::npos) {
            append(form_.substr(0, conversion->length));
        } else {
            const FormatLayout layout = layoutOf(*conversion);
            const FormatArgument* const argument =
                conversion->position == 0 ? nextArgument() : argumentAt(conversion->position);
            if (argument == nullptr) {
                appendText(layout, internal::nilText, internal::nilText.size());
            } else {
                appendConverted(*conversion, layout, *argument);
            }
        }
        return conversion->length;
    }

    const FormatArgument* argumentAt(std::size_t position) const {
        return position <= arguments_.size() ? &arguments_[position - 1] : nullptr;
    }
    const FormatArgument* nextArgument() { return argumentAt(++lastPosition_); }

    // A number of the form or of its arguments; negative only from an argument.
    std::optional<std::int64_t> countOf(const FormatCount& count) {
        if (count.kind == FormatCount::Kind::None) {
            return std::nullopt;
        }
        if (count.kind == FormatCount::Kind::Number) {
            return static_cast<std::int64_t>(count.number);
        }
        const FormatArgument* const argument =
            count.kind == FormatCount::Kind::Argument ? argumentAt(count.number) : nextArgument();
        if (argument == nullptr) {
            return std::nullopt;
        }
        constexpr auto limit = static_cast<std::int64_t>(internal::largestFormatNumber);
        return std::clamp(signExtended(integerOf(*argument), 32), -limit, limit);
    }

    FormatLayout layoutOf(const FormatConversion& conversion) {
        FormatLayout layout;
        layout.leftAligned = conversion.leftAligned;
        layout.plusSign = conversion.plusSign;
        layout.blankSign = conversion.blankSign;
        layout.alternative = conversion.alternative;
        layout.zeroPadded = conversion.zeroPadded;
        layout.letter = conversion.letter;
        const std::int64_t width = countOf(conversion.width).value_or(0);
        layout.leftAligned = layout.leftAligned || width < 0;
        layout.width = static_cast<std::size_t>(width < 0 ? -width : width);
        const std::optional<std::int64_t> precision = countOf(conversion.precision);
        if (precision && *precision >= 0) {
            layout.precision = static_cast<std::size_t>(*precision);
        }
        return layout;
    }

    void appendConverted(const FormatConversion& conversion, const FormatLayout& layout,
                         const FormatArgument& argument) {
        switch (conversion.letter) {
        case '@':
            appendObject(layout, argument);
            break;
        case 's':
            appendCharacters(layout, argument);
            break;
        case 'c': {
            const char character = static_cast<char>(integerOf(argument) & 0xFF);
            appendText(layout, {&character, 1}, 1);
            break;
        }
        case 'C':
            appendUnit(layout, static_cast<char16_t>(integerOf(argument) & 0xFFFF));
            break;
        case 'd':
        case 'i':
            appendNumber(layout, internal::formattedSigned(
                                     layout, signExtended(integerOf(argument), conversion.bits)));
            break;
        case 'u':
        case 'x':
        case 'X':
        case 'o':
            appendNumber(layout, internal::formattedUnsigned(
                                     layout, zeroExtended(integerOf(argument), conversion.bits)));
            break;
        case 'p': {
            const std::string text = internal::pointerText(internal::addressOf(argument));
            appendText(layout, text, text.size());
            break;
        }
        default:
            appendNumber(layout, internal::formattedReal(layout, internal::realOf(argument)));
            break;
        }
    }

    // Width and precision count bytes, as in C.
    void appendCharacters(const FormatLayout& layout, const FormatArgument& argument) {
        std::string storage;
        std::string_view text = internal::objectText(argument, storage);
        text = text.substr(0, layout.precision.value_or(text.size()));
        appendText(layout, text, text.size());
    }

    // Width and precision count units of UTF-16.
    void appendObject(const FormatLayout& layout, const FormatArgument& argument) {
        std::string storage;
        std::string_view text = internal::objectText(argument, storage);
        if (layout.width == 0 && !layout.precision) {
            append(text);
            return;
        }
        std::size_t length = utf16Length(text);
        if (layout.precision && *layout.precision < length) {
            length = *layout.precision;
            storage = bytesFromUTF16(utf16FromBytes(text).substr(0, length));
            text = storage;
        }
        appendText(layout, text, length);
    }

    // `length` is that of the text in what the width counts.
    void appendText(const FormatLayout& layout, std::string_view text, std::size_t length) {
        const std::size_t missing = layout.width - std::min(layout.width, length);
        endUnits();
        pad(layout.leftAligned ? 0 : missing, ' ');
        append(text);
        pad(layout.leftAligned ? missing : 0, ' ');
    }

    void appendNumber(const FormatLayout& layout, const FormattedNumber& number) {
        const std::size_t length = number.prefix.size() + number.leadingZeros + number.head.size() +
                                   number.innerZeros + number.tail.size();
        const std::size_t missing = layout.width - std::min(layout.width, length);
        const bool byZeros = layout.zeroPadded && !layout.leftAligned && number.mayBeZeroPadded;
        endUnits();
        pad(layout.leftAligned || byZeros ? 0 : missing, ' ');
        append(number.prefix);
        pad(number.leadingZeros + (byZeros ? missing : 0), '0');
        append(number.head);
        pad(number.innerZeros, '0');
        append(number.tail);
        pad(layout.leftAligned ? missing : 0, ' ');
    }

    // Two halves of a pair that follow each other are one character.
    void appendUnit(const FormatLayout& layout, char16_t unit) {
        const std::size_t missing = layout.width - std::min<std::size_t>(layout.width, 1);
        if (missing > 0 && !layout.leftAligned) {
            endUnits();
            pad(missing, ' ');
        }
        units_ += unit;
        if (missing > 0 && layout.leftAligned) {
            endUnits();
            pad(missing, ' ');
        }
    }

    void endUnits() {
        if (!units_.empty()) {
            out_ += bytesFromUTF16(units_);
            units_.clear();
        }
    }

    void append(std::string_view text) {
        if (!text.empty()) {
            endUnits();
            out_ += text;
        }
    }

    void pad(std::size_t count, char with) {
        const std::size_t granted = std::min(count, paddingLeft_);
        paddingLeft_ -= granted;
        out_.append(granted, with);
    }

    std::string_view form_;
    std::span<const FormatArgument> arguments_;
    std::size_t lastPosition_ = 0;
    std::size_t paddingLeft_ = mostPadding;
    std::u16string units_; // of "%C", until something else follows
    std::string out_;
};

} // namespace

std::string formatWithArguments(std::string_view form, std::span<const FormatArgument> arguments) {
    std::string storage;
    const std::string_view text = formatWithArguments(form, arguments, storage);
    return storage.empty() ? std::string(text) : storage;
}

std::string_view formatWithArguments(std::string_view form,
                                     std::span<const FormatArgument> arguments,
                                     std::string& storage) {
    storage.clear();
    if (form == "%@" && arguments.size() == 1) {
        return internal::objectText(arguments.front(), storage);
    }
    return storage = Writer(form, arguments).write();
}

} // namespace tav
