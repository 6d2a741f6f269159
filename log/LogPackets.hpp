#pragma once

#include "base/Data.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The form of a log file: packets, each the length of its payload in decimal digits, a blank, the
/// payload and a line feed. `docs/formats/log.md` describes it for readers.
namespace tav::LogPackets {

/// The most characters in front of a payload: the digits of a length and the blank.
inline constexpr std::size_t mostHeadCharacters = 11;

/// Turns each carriage return with a line feed behind it into the line feed, in place, and answers
/// how many bytes are left. Only a buffer whose first pair begins within its first 20000 bytes is
/// changed, then all of it.
[[nodiscard]] std::size_t fixLineEndings(std::span<std::byte> buffer);

/// What stands behind the last packet that was found.
enum class End : std::uint8_t {
    Whole,             ///< Nothing.
    WithoutTerminator, ///< Nothing, not even the line feed of the last packet.
    Interrupted,       ///< The beginning of a packet such as `LogFile` writes, and no more of it.
    Garbage,           ///< Anything else.
};

struct Found {
    std::vector<std::string_view> payloads;
    End end = End::Whole;
    std::size_t endOfPackets = 0; ///< Behind the last one's terminator.
};

/// The payloads of a file from its beginning to the first packet that is malformed, as views.
[[nodiscard]] Found find(std::string_view file);

/// Makes the packet around a payload: its head goes into the characters in front, of which there
/// are as many as `headSize` says or more, and the line feed behind it.
std::string_view wrapInPlace(char* payload, std::size_t payloadSize);
/// The characters in front of a payload: those of its length, and the blank.
[[nodiscard]] std::size_t headSize(std::size_t payloadSize);

/// One packet at the end of a buffer.
void append(std::string& out, std::string_view payload);
/// The length of one packet.
[[nodiscard]] std::size_t sizeOf(std::size_t payloadSize);

} // namespace tav::LogPackets
