#pragma once

#include "base/Data.hpp"
#include "base/KeyedCoding.hpp"
#include "base/Value.hpp"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tav {

/// Writes a keyed archive, the platform's own form for graphs of objects
/// (docs/formats/keyed-archive.md). What is encoded before `finishEncoding` stands under the
/// archive's top-level keys; an object's `encode` writes the keys of that object. Objects are
/// encoded one after the other and not within one another, so a graph may have any number of them
/// in linear time. Failures are `Exception`s named `invalidArchiveOperation`. One thread at a time.
class KeyedArchiver {
  public:
    /// The platform's name for an object that cannot be archived.
    static constexpr std::string_view invalidArchiveOperation =
        "NSInvalidArchiveOperationException";
    /// How many objects may nest. Making objects from an archive nests calls as deep.
    static constexpr std::size_t maximumDepth = 1024;

    KeyedArchiver();
    KeyedArchiver(const KeyedArchiver&) = delete;
    KeyedArchiver& operator=(const KeyedArchiver&) = delete;
    ~KeyedArchiver();

    /// An object, null for nil; one that comes again is the same object in the archive. It is asked
    /// to encode itself later, so it has to live until `finishEncoding`.
    void encodeObject(std::string_view key, const Coding* object);
    /// The same for an object that the archiver keeps alive.
    void encodeSharedObject(std::string_view key, std::shared_ptr<const Coding> object);
    /// An array of objects, which live as long.
    void encodeObjects(std::string_view key, std::span<const Coding* const> objects);
    /// The same for a vector of pointers of any kind.
    template <class Pointer>
    void encodeObjects(std::string_view key, const std::vector<Pointer>& objects) {
        std::vector<const Coding*> pointers;
        pointers.reserve(objects.size());
        for (const Pointer& object : objects) {
            pointers.push_back(std::to_address(object));
        }
        encodeObjects(key, std::span<const Coding* const>(pointers));
    }
    /// A value as an object: a text, a number, a date, bytes, an array or a dictionary.
    void encodeValue(std::string_view key, const Value& value);
    void encodeText(std::string_view key, std::string_view text);
    /// The class itself, by its name record.
    void encodeClass(std::string_view key, const std::string& name,
                     const std::vector<std::string>& superclassNames);

    // Plain numbers and bytes stand in the object itself.
    void encodeBool(std::string_view key, bool value);
    void encodeInt32(std::string_view key, std::int32_t value);
    void encodeInt64(std::string_view key, std::int64_t value);
    void encodeFloat(std::string_view key, float value);
    void encodeDouble(std::string_view key, double value);
    void encodeBytes(std::string_view key, BytesView bytes);

    /// The archive as a binary property list. Nothing may be encoded afterwards.
    [[nodiscard]] Data finishEncoding();

  private:
    struct Pending {
        const Coding* object = nullptr;
        std::uint64_t uid = 0;
        std::size_t depth = 0;
    };

    void set(std::string_view key, Value value);
    std::uint64_t place();
    Value::UID objectUID(const Coding* object);
    Value::UID valueUID(const Value& value, std::size_t level);
    Value::UID textUID(const std::string& text);
    Value::UID classUID(const std::string& name, const std::vector<std::string>& superclassNames);
    Value::UID foundationClassUID(const char* name);

    Value::Dictionary top_;
    Value::Dictionary* current_ = &top_;
    std::size_t depth_ = 0;
    Value::Array objects_;
    Value::Dictionary texts_;   ///< UIDs by text.
    Value::Dictionary classes_; ///< UIDs by class name.
    std::unordered_map<const Coding*, std::uint64_t> uids_;
    std::deque<Pending> pending_;
    std::vector<std::shared_ptr<const Coding>> kept_;
};

/// The archive with the object, the value or the class under the key "root". A null object makes
/// the archive of nil.
[[nodiscard]] Data archivedDataWithRootObject(const Coding* object);
[[nodiscard]] Data archivedDataWithRootObject(const Value& value);
[[nodiscard]] Data archivedDataWithRootClass(const std::string& name,
                                             const std::vector<std::string>& superclassNames);

} // namespace tav
