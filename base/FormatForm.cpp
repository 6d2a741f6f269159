#include "base/FormatForm.hpp"

#include <algorithm>

namespace tav::internal {

namespace {

// Reads from the front of what is left of a form.
class Reader {
  public:
    explicit Reader(std::string_view form) : form_(form) {}

    [[nodiscard]] bool isAtEnd() const { return at_ == form_.size(); }
    [[nodiscard]] std::size_t position() const { return at_; }
    void goBackTo(std::size_t position) { at_ = position; }

    // 0 at the end.
    [[nodiscard]] char next() const { return isAtEnd() ? '\0' : form_[at_]; }
    char take() { return form_[at_++]; }
    bool takeIf(char wanted) {
        const bool found = !isAtEnd() && form_[at_] == wanted;
        at_ += found ? 1 : 0;
        return found;
    }

    std::size_t takeNumber() {
        std::size_t number = 0;
        while (next() >= '0' && next() <= '9') {
            number =
                std::min(number * 10 + static_cast<std::size_t>(take() - '0'), largestFormatNumber);
        }
        return number;
    }

    // "12$" is 12; otherwise 0, and nothing is read.
    std::size_t takePosition() {
        const std::size_t start = at_;
        const std::size_t number = takeNumber();
        if (number > 0 && takeIf('$')) {
            return number;
        }
        goBackTo(start);
        return 0;
    }

  private:
    std::string_view form_;
    std::size_t at_ = 0;
};

void readFlags(Reader& reader, FormatConversion& conversion) {
    for (;; reader.take()) {
        switch (reader.next()) {
        case '-':
            conversion.leftAligned = true;
            break;
        case '+':
            conversion.plusSign = true;
            break;
        case ' ':
            conversion.blankSign = true;
            break;
        case '#':
            conversion.alternative = true;
            break;
        case '0':
            conversion.zeroPadded = true;
            break;
        case '\'': // groups of thousands, which the C locale has not
            break;
        default:
            return;
        }
    }
}

FormatCount readCount(Reader& reader) {
    if (reader.takeIf('*')) {
        const std::size_t position = reader.takePosition();
        return {position == 0 ? FormatCount::Kind::NextArgument : FormatCount::Kind::Argument,
                position};
    }
    const std::size_t start = reader.position();
    const std::size_t number = reader.takeNumber();
    return {reader.position() == start ? FormatCount::Kind::None : FormatCount::Kind::Number,
            number};
}

int readBits(Reader& reader) {
    if (reader.takeIf('h')) {
        return reader.takeIf('h') ? 8 : 16;
    }
    int bits = 32;
    while (!reader.isAtEnd() &&
           std::string_view("lqjztL").find(reader.next()) != std::string_view::npos) {
        reader.take();
        bits = 64;
    }
    return bits;
}

} // namespace

std::optional<FormatConversion> readFormatConversion(std::string_view form) {
    Reader reader(form);
    FormatConversion conversion;
    reader.takeIf('%');
    conversion.position = reader.takePosition();
    readFlags(reader, conversion);
    conversion.width = readCount(reader);
    if (reader.takeIf('.')) {
        conversion.precision = readCount(reader);
        if (conversion.precision.kind == FormatCount::Kind::None) {
            conversion.precision.kind = FormatCount::Kind::Number;
        }
    }
    conversion.bits = readBits(reader);
    if (reader.isAtEnd()) {
        return std::nullopt;
    }
    conversion.letter = reader.take();
    conversion.length = reader.position();
    return conversion;
}

} // namespace tav::internal
