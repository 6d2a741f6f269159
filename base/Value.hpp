#pragma once

#include "base/Data.hpp"
#include "base/Date.hpp"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace tav {

/// A tree of property-list values: booleans, integers, reals, texts, bytes, dates, arrays and
/// dictionaries. Values are copied deep and belong to whoever holds them; distinct values may be
/// used from distinct threads.
class Value {
  public:
    enum class Type { Boolean, Integer, Real, String, Bytes, Date, UID, Array, Dictionary };

    /// A reference inside a keyed archive. Only binary property lists hold it as such.
    struct UID {
        std::uint64_t value = 0;
        friend bool operator==(UID, UID) = default;
    };

    /// An array of one array is written `Array{Value(inner)}`: compilers disagree whether
    /// `Array{inner}` is that or a copy.
    using Array = std::vector<Value>;
    class Dictionary;

    /// The empty text.
    Value();
    template <std::same_as<bool> T>
    Value(T value) : content_(value) {}
    template <std::signed_integral T>
    Value(T value) : content_(std::int64_t{value}) {}
    template <std::unsigned_integral T>
    requires(!std::same_as<T, bool>) Value(T value) : content_(std::uint64_t{value}) {}
    template <std::floating_point T>
    Value(T value) : content_(double(value)) {}
    Value(const char* text);
    Value(std::string_view text);
    Value(std::string text);
    Value(Data bytes);
    Value(Date date);
    Value(UID uid);
    Value(Array elements);
    Value(Dictionary entries);
    Value(std::nullptr_t) = delete;

    Value(const Value& other);
    Value(Value&& other) noexcept;
    Value& operator=(const Value& other);
    Value& operator=(Value&& other) noexcept;
    ~Value();

    [[nodiscard]] Type type() const;

    /// The content when it is of that type, otherwise null.
    [[nodiscard]] const std::string* asString() const;
    [[nodiscard]] const Data* asData() const;
    [[nodiscard]] const Date* asDate() const;
    [[nodiscard]] const UID* asUID() const;
    [[nodiscard]] const Array* asArray() const;
    [[nodiscard]] Array* asArray();
    [[nodiscard]] const Dictionary* asDictionary() const;
    [[nodiscard]] Dictionary* asDictionary();

    /// Whether the value is a boolean, an integer or a real.
    [[nodiscard]] bool isNumber() const;
    /// Whether a number's value is a signed (or unsigned) 64-bit integer, and which.
    [[nodiscard]] std::optional<std::int64_t> asSigned() const;
    [[nodiscard]] std::optional<std::uint64_t> asUnsigned() const;

    /// A number, or a text that begins with one, as the type asked for; 0 for anything else.
    /// Integers wrap to the width that is asked for; a real is cut towards 0 and kept within 64
    /// bits, a text's number within the type. As a truth value, texts that begin with "Y" or "T"
    /// count as true too.
    [[nodiscard]] bool boolValue() const;
    [[nodiscard]] std::int32_t intValue() const;
    [[nodiscard]] std::int64_t longLongValue() const;
    [[nodiscard]] std::uint64_t unsignedLongLongValue() const;
    [[nodiscard]] double doubleValue() const;

    /// The text that "%@" shows: a text as it is, a number in decimal, containers as old-style
    /// text.
    [[nodiscard]] std::string description() const;

    /// Numbers are equal by value, whatever their types (true is 1); not-a-number equals itself.
    /// Dictionaries are equal whatever their order.
    friend bool operator==(const Value& a, const Value& b);

  private:
    using Content = std::variant<bool, std::int64_t, std::uint64_t, double, std::string, tav::Data,
                                 tav::Date, UID, Array, std::unique_ptr<Dictionary>>;
    Content content_;
};

/// Texts to values. Entries keep the order in which their keys first came; a key stands once.
class Value::Dictionary {
  public:
    using Entry = std::pair<std::string, Value>;

    Dictionary();
    Dictionary(std::initializer_list<Entry> entries);
    Dictionary(const Dictionary& other);
    Dictionary(Dictionary&& other) noexcept;
    Dictionary& operator=(const Dictionary& other);
    Dictionary& operator=(Dictionary&& other) noexcept;
    ~Dictionary();

    [[nodiscard]] std::size_t size() const;
    [[nodiscard]] bool empty() const;
    /// Makes room for so many entries at once.
    void reserve(std::size_t count);

    /// Null when there is no such key. The answer holds until the dictionary is changed.
    [[nodiscard]] const Value* find(std::string_view key) const;
    [[nodiscard]] Value* find(std::string_view key);
    /// The text under a key; null when there is none or it is no text.
    [[nodiscard]] const std::string* findString(std::string_view key) const;

    /// Enters the value, in the place of one that has the key already.
    Value& set(std::string key, Value value);
    /// Whether there was one. Takes time in proportion to the entries.
    bool remove(std::string_view key);

    /// In the order of entering. Keys must not be changed through these.
    [[nodiscard]] std::vector<Entry>::const_iterator begin() const;
    [[nodiscard]] std::vector<Entry>::const_iterator end() const;

    /// The entries by ascending bytes of their keys.
    [[nodiscard]] std::vector<const Entry*> sorted() const;

    friend bool operator==(const Dictionary& a, const Dictionary& b);

  private:
    class Index;
    [[nodiscard]] std::size_t positionOf(std::string_view key) const;

    std::vector<Entry> entries_;
    std::unique_ptr<Index> index_;
};

} // namespace tav
