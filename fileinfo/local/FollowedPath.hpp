#pragma once

#include "platform/FileSystem.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tav::internal {

/// The numbers that a file is known by. Those of a listed item come with its name: its time of
/// birth is 0 until it is learned with the first question.
struct FileNumbers {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::int64_t birthNanoseconds = 0;
    std::uint64_t mount = 0;
};

[[nodiscard]] FileNumbers numbersOf(const FileAttributes& attributes);

/// Whether the attributes are those of the file; a time of birth that was not known yet is entered.
/// A listing tells the folder below a mounted volume: a folder known from a listing that turns out
/// to be on another device takes the numbers over.
[[nodiscard]] bool isSameFile(FileNumbers& file, const FileAttributes& attributes);

/// Where the file is now: where it was seen last, or under another name in the same folder, or
/// nothing. On a volume that makes its numbers up as it goes (FAT, FUSE) whatever stands at the
/// path is the file.
[[nodiscard]] std::optional<std::string> pathOfFile(FileNumbers& file, std::string_view lastSeen);

} // namespace tav::internal
