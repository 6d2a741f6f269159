#include "base/PropertyList.hpp"

#include "base/BinaryPropertyListWriter.hpp"
#include "base/XMLPropertyListWriter.hpp"

#include <string_view>

namespace tav::PropertyList {

std::optional<Value> read(BytesView bytes, Error* outError) {
    return textOf(bytes).starts_with("bplist") ? readBinary(bytes, outError)
                                               : readXML(bytes, outError);
}

std::optional<Data> write(const Value& value, Form form, Error* outError) {
    Error error;
    std::optional<Data> bytes =
        form == Form::XML ? internal::writeXML(value, error) : internal::writeBinary(value, error);
    if (!bytes && outError != nullptr) {
        *outError = std::move(error);
    }
    return bytes;
}

} // namespace tav::PropertyList
