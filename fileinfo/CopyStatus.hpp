#pragma once

#include "base/Status.hpp"

/// How a copy in chunks ended, beside `Status::Success` and the statuses of the back-end's writes,
/// which are handed on as they are (`Status::NotSupported` where it cannot write ranges).
namespace tav::CopyStatus {

inline constexpr Status sourceMissing{-200};
inline constexpr Status sourceIsNoFile{-201};
/// The temporary file does not exist after it was made.
inline constexpr Status noTemporaryFile{-202};
inline constexpr Status sourceNotOpened{-203};
inline constexpr Status temporaryFileNotOpened{-204};
/// A read of a chunk answered nothing; with options also fewer bytes, or what the file carries
/// could not be read.
inline constexpr Status chunkNotRead{-205};
/// An exception ended the copy and nothing else had.
inline constexpr Status raised{-206};
inline constexpr Status noRoom{-209};
inline constexpr Status cancelled{-210};

// Only with options (`CopyOptions`).

/// What was read back is not what the source holds.
inline constexpr Status notVerified{-211};
/// The file or its folder could not be synced: it may be there, but need not survive a power cut.
inline constexpr Status notDurable{-212};
/// The whole new file could not be put in its place, where with `keepsDestination` the old one
/// still stands.
inline constexpr Status notReplaced{-213};

} // namespace tav::CopyStatus
