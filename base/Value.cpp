#include "base/Value.hpp"

#include "base/NumberText.hpp"
#include "base/OldStyleText.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <type_traits>

namespace tav {
namespace {

constexpr double twoTo63 = 9223372036854775808.0;
constexpr double twoTo64 = 18446744073709551616.0;

std::int64_t cutTowardsZero(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= twoTo63) {
        return std::numeric_limits<std::int64_t>::max();
    }
    return value < -twoTo63 ? std::numeric_limits<std::int64_t>::min()
                            : static_cast<std::int64_t>(value);
}

/// "2009-12-31 23:59:59 +0000"
std::string descriptionOfDate(Date date) {
    std::string text;
    if (const std::optional<std::string> iso = date.iso8601()) {
        text = *iso;
        text.pop_back();
        text[text.rfind('T')] = ' ';
        text += " +0000";
    } else {
        appendReal(text, date.secondsSinceReferenceDate());
    }
    return text;
}

} // namespace

Value::Value() : content_(std::string()) {}
Value::Value(const char* text) : content_(std::string(text)) {}
Value::Value(std::string_view text) : content_(std::string(text)) {}
Value::Value(std::string text) : content_(std::move(text)) {}
Value::Value(Data bytes) : content_(std::move(bytes)) {}
Value::Value(Date date) : content_(date) {}
Value::Value(UID uid) : content_(uid) {}
Value::Value(Array elements) : content_(std::move(elements)) {}
Value::Value(Dictionary entries) : content_(std::make_unique<Dictionary>(std::move(entries))) {}

Value::Value(const Value& other)
    : content_(std::visit(
          [](const auto& content) -> Content {
              if constexpr (std::is_same_v<decltype(content), const std::unique_ptr<Dictionary>&>) {
                  return std::make_unique<Dictionary>(content ? *content : Dictionary());
              } else {
                  return content;
              }
          },
          other.content_)) {}

// What was moved from is empty, but never without a content.
Value::Value(Value&& other) noexcept : content_(std::move(other.content_)) {
    if (std::holds_alternative<std::unique_ptr<Dictionary>>(content_)) {
        other.content_.emplace<std::string>();
    }
}

Value& Value::operator=(const Value& other) {
    Value copy(other);
    content_.swap(copy.content_);
    return *this;
}

Value& Value::operator=(Value&& other) noexcept {
    // The old content goes last: what is moved in may be a part of it.
    Value moved(std::move(other));
    content_.swap(moved.content_);
    return *this;
}

Value::~Value() = default;

Value::Type Value::type() const {
    constexpr Type types[] = {Type::Boolean, Type::Integer,   Type::Integer, Type::Real,
                              Type::String,  Type::Bytes,     Type::Date,    Type::UID,
                              Type::Array,   Type::Dictionary};
    static_assert(std::size(types) == std::variant_size_v<Content>);
    return types[content_.index()];
}

const std::string* Value::asString() const { return std::get_if<std::string>(&content_); }
const Data* Value::asData() const { return std::get_if<tav::Data>(&content_); }
const Date* Value::asDate() const { return std::get_if<tav::Date>(&content_); }
const Value::UID* Value::asUID() const { return std::get_if<UID>(&content_); }
const Value::Array* Value::asArray() const { return std::get_if<Array>(&content_); }
Value::Array* Value::asArray() { return std::get_if<Array>(&content_); }

const Value::Dictionary* Value::asDictionary() const {
    const auto* dictionary = std::get_if<std::unique_ptr<Dictionary>>(&content_);
    return dictionary == nullptr ? nullptr : dictionary->get();
}

Value::Dictionary* Value::asDictionary() {
    auto* dictionary = std::get_if<std::unique_ptr<Dictionary>>(&content_);
    return dictionary == nullptr ? nullptr : dictionary->get();
}

bool Value::isNumber() const {
    return type() == Type::Boolean || type() == Type::Integer || type() == Type::Real;
}

std::optional<std::int64_t> Value::asSigned() const {
    if (const auto* flag = std::get_if<bool>(&content_)) {
        return *flag ? 1 : 0;
    }
    if (const auto* integer = std::get_if<std::int64_t>(&content_)) {
        return *integer;
    }
    if (const auto* integer = std::get_if<std::uint64_t>(&content_);
        integer != nullptr && std::in_range<std::int64_t>(*integer)) {
        return static_cast<std::int64_t>(*integer);
    }
    if (const auto* real = std::get_if<double>(&content_);
        real != nullptr && *real >= -twoTo63 && *real < twoTo63 && std::trunc(*real) == *real) {
        return static_cast<std::int64_t>(*real);
    }
    return std::nullopt;
}

std::optional<std::uint64_t> Value::asUnsigned() const {
    if (const auto* integer = std::get_if<std::uint64_t>(&content_)) {
        return *integer;
    }
    if (const auto* real = std::get_if<double>(&content_);
        real != nullptr && *real >= 0 && *real < twoTo64 && std::trunc(*real) == *real) {
        return static_cast<std::uint64_t>(*real);
    }
    const std::optional<std::int64_t> integer = asSigned();
    return integer && *integer >= 0 ? std::optional<std::uint64_t>(*integer) : std::nullopt;
}

bool Value::boolValue() const {
    if (const auto* real = std::get_if<double>(&content_)) {
        return *real != 0;
    }
    if (const std::string* text = asString()) {
        // "YES" and "true" count as well as numbers do.
        const std::size_t start = text->find_first_not_of(" \t\n\v\f\r");
        if (start == std::string::npos) {
            return false;
        }
        const bool isSigned = (*text)[start] == '-' || (*text)[start] == '+';
        const std::size_t at = text->find_first_not_of('0', start + (isSigned ? 1 : 0));
        return at != std::string::npos &&
               std::string_view("YyTt123456789").find((*text)[at]) != std::string_view::npos;
    }
    return unsignedLongLongValue() != 0;
}

std::int32_t Value::intValue() const {
    if (const std::string* text = asString()) {
        const std::int64_t value = leadingInteger(*text);
        constexpr std::int64_t least = std::numeric_limits<std::int32_t>::min();
        constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
        return static_cast<std::int32_t>(std::min(std::max(value, least), most));
    }
    // The low 32 bits, on purpose.
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(unsignedLongLongValue()));
}

std::int64_t Value::longLongValue() const {
    if (const auto* real = std::get_if<double>(&content_)) {
        return cutTowardsZero(*real);
    }
    if (const auto* integer = std::get_if<std::uint64_t>(&content_)) {
        return static_cast<std::int64_t>(*integer);
    }
    if (const std::string* text = asString()) {
        return leadingInteger(*text);
    }
    return asSigned().value_or(0);
}

std::uint64_t Value::unsignedLongLongValue() const {
    if (const auto* real = std::get_if<double>(&content_); real != nullptr && *real >= twoTo63) {
        return *real < twoTo64 ? static_cast<std::uint64_t>(*real)
                               : std::numeric_limits<std::uint64_t>::max();
    }
    return static_cast<std::uint64_t>(longLongValue());
}

double Value::doubleValue() const {
    if (const auto* real = std::get_if<double>(&content_)) {
        return *real;
    }
    if (const auto* integer = std::get_if<std::uint64_t>(&content_)) {
        return static_cast<double>(*integer);
    }
    if (const std::string* text = asString()) {
        return leadingReal(*text);
    }
    return static_cast<double>(asSigned().value_or(0));
}

std::string Value::description() const {
    switch (type()) {
    case Type::String:
        return *asString();
    case Type::Boolean:
    case Type::Integer:
        if (const auto* integer = std::get_if<std::uint64_t>(&content_)) {
            return std::to_string(*integer);
        }
        return std::to_string(longLongValue());
    case Type::Real: {
        std::string text;
        appendReal(text, doubleValue());
        return text;
    }
    case Type::Date:
        return descriptionOfDate(*asDate());
    case Type::UID:
        return std::to_string(asUID()->value);
    default:
        return OldStyleText::write(*this);
    }
}

bool operator==(const Value& a, const Value& b) {
    if (a.isNumber() && b.isNumber()) {
        // Whatever has an integer value is compared as one: nothing is rounded.
        if (const auto left = a.asSigned()) {
            return left == b.asSigned();
        }
        if (const auto left = a.asUnsigned()) {
            return left == b.asUnsigned();
        }
        if (b.asSigned() || b.asUnsigned()) {
            return false;
        }
        const double left = a.doubleValue();
        const double right = b.doubleValue();
        return left == right || (std::isnan(left) && std::isnan(right));
    }
    if (a.type() != b.type()) {
        return false;
    }
    if (const Value::Dictionary* left = a.asDictionary()) {
        return *left == *b.asDictionary();
    }
    if (const Date* left = a.asDate()) {
        const double right = b.asDate()->secondsSinceReferenceDate();
        return *left == *b.asDate() ||
               (std::isnan(left->secondsSinceReferenceDate()) && std::isnan(right));
    }
    return a.content_ == b.content_;
}

} // namespace tav
