#pragma once

#include "base/Data.hpp"

#include <string>

namespace tav {

/// A file as it is put into a document: its name and the bytes that it had then.
struct FileWrapper {
    std::string name;
    Data contents;
};

} // namespace tav
