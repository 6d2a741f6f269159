#pragma once

#include "base/Data.hpp"

#include <cstdint>
#include <functional>

namespace tav {

class TavBaseFileInfo;

/// What an operation on contents tells its caller on the way. An empty function is one that the
/// caller does not answer; it is never called. An answer of true asks the operation to stop. The
/// user pointer is the one that was given with the request. Called on the thread that does the
/// work.
struct ProgressDelegate {
    /// While a file is copied; percent from 0 to 100.
    std::function<bool(TavBaseFileInfo& copyingFile, TavBaseFileInfo& toFile, float percentComplete,
                       void* userData)>
        copyingFile;
    /// While a file is read whole; `dataSoFar` is as long as the file, with what was read in front.
    std::function<bool(TavBaseFileInfo& file, BytesView dataSoFar, std::uint32_t numBytesRead,
                       std::uint32_t totalBytes, void* userData)>
        readingContentsForFile;
    /// While a file is written whole.
    std::function<bool(TavBaseFileInfo& file, std::uint32_t numBytesWritten,
                       std::uint32_t totalBytes, void* userData)>
        writingContentsForFile;
};

} // namespace tav
