#pragma once

#include "base/Data.hpp"
#include "base/Value.hpp"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tav {

/// One message of the log with what is known of it: a dictionary, shared and never changed. Those
/// of the facility have the keys of `LogFields`.
using Record = Value::Dictionary;
using RecordPtr = std::shared_ptr<const Record>;

/// What the facility makes a record of. Each field is there under its condition and becomes the
/// entry of the same name, in this order. Refers to the caller's texts and values.
struct LogFields {
    int type = 0;                                 ///< Always; an integer.
    std::optional<std::string_view> message = {}; ///< When a format was given.
    const Value* message2 = nullptr;              ///< As it is.
    std::string_view sourceFile = {};             ///< Unless empty.
    int sourceLine = 0;                           ///< From 1 on; an integer.
    std::string_view function = {};               ///< Unless empty.
    std::string_view module = {};                 ///< Unless empty.
    std::optional<std::string_view> extra = {};   ///< A description.
    const Data* data = nullptr;                   ///< A copy of it.
    std::string_view date = {};                   ///< Unless empty.
};

/// The dictionary, entries in the order of the fields.
[[nodiscard]] Record recordOf(const LogFields& fields);

/// Whether the record can be had again from its text: texts come back as they were, `type` and
/// `sourceLine` are known to be integers, but other types have no form of their own.
[[nodiscard]] bool isKeptByText(const LogFields& fields);
/// Appends the old-style text of `recordOf(fields)`. Only when `isKeptByText`.
void appendRecordText(std::string& out, const LogFields& fields);
/// The same into memory with room for it, of which the end is answered. Null, with some of it
/// written, when a text has to be escaped.
[[nodiscard]] char* putRecordText(char* at, const LogFields& fields);
/// More than `putRecordText` takes. Only when `isKeptByText`.
[[nodiscard]] std::size_t roomForRecordText(const LogFields& fields);
/// The way back, from what the text was read as. Only when `isKeptByText` was so.
[[nodiscard]] Record recordOfText(const Record& read);

} // namespace tav
