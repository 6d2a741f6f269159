#pragma once

#include "base/Data.hpp"
#include "base/KeyedCoding.hpp"
#include "base/Value.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

namespace tav {

/// The record of a class, where the class itself was archived.
struct ArchivedClass {
    std::string name;
    friend bool operator==(const ArchivedClass&, const ArchivedClass&) = default;
};

/// What an archive held: nothing (nil), a value, an object, or a class.
using Archived = std::variant<std::monostate, Value, std::shared_ptr<Coding>, ArchivedClass>;

/// Reads a keyed archive, binary or XML (docs/formats/keyed-archive.md). The keys are those of the
/// archive's top level, and inside an `ArchivedClassMaker` those of the object that is being made.
/// A missing key reads as 0, false, null or nothing. What is no archive, has a wrong shape, a class
/// that nobody knows or an object that contains itself ends in an `Exception` named
/// `invalidUnarchiveOperation`, whatever the bytes; depth, time and memory are bounded. One thread
/// at a time.
class KeyedUnarchiver {
  public:
    /// The platform's name for an archive that cannot be read.
    static constexpr std::string_view invalidUnarchiveOperation =
        "NSInvalidUnarchiveOperationException";

    explicit KeyedUnarchiver(BytesView archive);
    KeyedUnarchiver(const KeyedUnarchiver&) = delete;
    KeyedUnarchiver& operator=(const KeyedUnarchiver&) = delete;
    ~KeyedUnarchiver();

    [[nodiscard]] bool containsValue(std::string_view key) const;

    /// Whatever stands there.
    [[nodiscard]] Archived decode(std::string_view key);
    /// An object, null for nil; a reference that comes again gives the same object.
    [[nodiscard]] std::shared_ptr<Coding> decodeObject(std::string_view key);
    /// The object as one of type T; null when it is none.
    template <class T>
    [[nodiscard]] std::shared_ptr<T> decodeObjectAs(std::string_view key) {
        return std::dynamic_pointer_cast<T>(decodeObject(key));
    }
    /// The elements of an array of objects.
    [[nodiscard]] std::optional<std::vector<std::shared_ptr<Coding>>>
    decodeObjects(std::string_view key);
    /// A text, number, date, bytes, array or dictionary; nothing for nil.
    [[nodiscard]] std::optional<Value> decodeValue(std::string_view key);
    /// Nothing when it is no text.
    [[nodiscard]] std::optional<std::string> decodeText(std::string_view key);

    // Numbers stand in the object, or are objects of their own. An integer that does not fit is
    // an error.
    [[nodiscard]] bool decodeBool(std::string_view key);
    [[nodiscard]] std::int32_t decodeInt32(std::string_view key);
    [[nodiscard]] std::int64_t decodeInt64(std::string_view key);
    [[nodiscard]] float decodeFloat(std::string_view key);
    [[nodiscard]] double decodeDouble(std::string_view key);
    [[nodiscard]] std::optional<Data> decodeBytes(std::string_view key);

  private:
    enum class Kind { Text, Bytes, Array, Dictionary, Time, Null, Registered };
    struct Class {
        Kind kind = Kind::Null;
        ArchivedClassMaker maker = nullptr;
    };
    enum class State : std::uint8_t { Untouched, Open, Made };

    [[nodiscard]] const Value* find(std::string_view key) const;
    /// What a reference stands for; null for nil.
    [[nodiscard]] const Value* objectAt(Value::UID uid) const;
    [[nodiscard]] const Value& number(const Value& inner) const;
    Class classOf(const Value::Dictionary& object);
    Class classAt(Value::UID uid);
    std::shared_ptr<Coding> made(Value::UID uid);
    std::shared_ptr<Coding> make(Value::UID uid, ArchivedClassMaker maker);
    Value value(const Value& object, std::size_t level);
    Value referencedValue(const Value& reference, std::size_t level);
    Value container(const Value::Dictionary& object, Kind kind, std::size_t level);
    Value text(const Value::Dictionary& object);
    Value bytes(const Value::Dictionary& object);
    [[nodiscard]] const Value& part(const Value::Dictionary& object, std::string_view key) const;
    [[nodiscard]] const Value::Array& references(const Value::Dictionary& object,
                                                 std::string_view key) const;
    void spend(const Value& leaf);

    Value archive_;
    const Value::Array* objects_ = nullptr;
    const Value::Dictionary* current_ = nullptr;
    std::vector<State> states_;
    std::vector<std::shared_ptr<Coding>> made_;
    std::unordered_map<std::uint64_t, Class> classes_;
    std::size_t depth_ = 0;
    std::size_t valuesLeft_;
    std::size_t payloadLeft_;
};

/// What the archive holds under the key "root". Throws like `KeyedUnarchiver`, also where the key
/// is missing.
[[nodiscard]] Archived unarchiveObjectWithData(BytesView archive);

} // namespace tav
