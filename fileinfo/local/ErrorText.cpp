#include "fileinfo/local/ErrorText.hpp"

#include "base/Format.hpp"

#include <cstring>

namespace tav {

std::string internal::errorText(SystemError error) {
    const char* const text = ::strerrordesc_np(error.number());
    return text != nullptr ? std::string(text) : format("Error %d", error.number());
}

} // namespace tav
