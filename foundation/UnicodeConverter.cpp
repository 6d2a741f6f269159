#include "foundation/UnicodeConverter.hpp"

#include "base/UnicodeBuffer.hpp"

#include <cstddef>
#include <cstdint>

#include <unicode/ucnv.h>

namespace tav::internal {

namespace {

// ICU's own callbacks that stop would pass over characters that may be ignored, such as the soft
// hyphen: these stop at everything, since the error stands when they are called.
void stopEncoding(const void* /*context*/, UConverterFromUnicodeArgs* /*arguments*/,
                  const char16_t* /*units*/, std::int32_t /*length*/, UChar32 /*character*/,
                  UConverterCallbackReason /*reason*/, UErrorCode* /*error*/) {}

void stopDecoding(const void* /*context*/, UConverterToUnicodeArgs* /*arguments*/,
                  const char* /*bytes*/, std::int32_t /*length*/,
                  UConverterCallbackReason /*reason*/, UErrorCode* /*error*/) {}

// What `operation(target, capacity, error)` writes; asked again where the first guess was too
// small.
template <class Buffer, class Operation>
std::optional<Buffer> converted(std::size_t guess, Operation operation) {
    Buffer buffer(guess, typename Buffer::value_type{});
    UErrorCode error = U_ZERO_ERROR;
    std::int32_t length = operation(buffer.data(), icuLength(buffer.size()), &error);
    if (error == U_BUFFER_OVERFLOW_ERROR && length > 0) {
        buffer.resize(static_cast<std::size_t>(length));
        error = U_ZERO_ERROR;
        length = operation(buffer.data(), length, &error);
    }
    if (U_FAILURE(error)) {
        return std::nullopt;
    }
    buffer.resize(static_cast<std::size_t>(length));
    return buffer;
}

} // namespace

void UnicodeConverter::Closing::operator()(UConverter* converter) const { ucnv_close(converter); }

UnicodeConverter::UnicodeConverter(const char* name) {
    UErrorCode error = U_ZERO_ERROR;
    converter_.reset(ucnv_open(name, &error));
    if (U_SUCCESS(error)) {
        ucnv_setFromUCallBack(converter_.get(), &stopEncoding, nullptr, nullptr, nullptr, &error);
        ucnv_setToUCallBack(converter_.get(), &stopDecoding, nullptr, nullptr, nullptr, &error);
    }
    if (U_FAILURE(error)) {
        converter_.reset();
    }
}

std::optional<Data> UnicodeConverter::encode(std::u16string_view units) const {
    if (converter_ == nullptr) {
        return std::nullopt;
    }
    return converted<Data>(units.size() + units.size() / 2 + 8,
                           [&](std::byte* bytes, std::int32_t capacity, UErrorCode* error) {
                               return ucnv_fromUChars(converter_.get(),
                                                      reinterpret_cast<char*>(bytes), capacity,
                                                      units.data(), icuLength(units.size()), error);
                           });
}

std::optional<std::u16string> UnicodeConverter::decode(BytesView bytes) const {
    if (converter_ == nullptr) {
        return std::nullopt;
    }
    const std::string_view text = textOf(bytes);
    return converted<std::u16string>(
        bytes.size() + 1, [&](char16_t* units, std::int32_t capacity, UErrorCode* error) {
            return ucnv_toUChars(converter_.get(), units, capacity, text.data(),
                                 icuLength(text.size()), error);
        });
}

} // namespace tav::internal
