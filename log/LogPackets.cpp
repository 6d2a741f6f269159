#include "log/LogPackets.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace tav::LogPackets {
namespace {

/// Where the first pair has to begin for a buffer to be changed: here at the latest.
constexpr std::size_t lastBeginOfFirstPair = 20000;
/// What every record begins with, in the form that we write.
constexpr std::string_view beginOfRecord = "{\n    ";
constexpr std::size_t mostDigits = mostHeadCharacters - 1;
/// After so many packets their number in the file is estimated.
constexpr std::size_t sample = 64;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::size_t countDigits(std::string_view text) {
    const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
    return static_cast<std::size_t>(end - text.begin());
}

/// Whether bytes behind the last packet can only come from an append of ours that did not get
/// further.
bool isInterrupted(std::string_view tail) {
    const std::size_t digits = countDigits(tail);
    if (digits == 0 || digits > mostDigits || tail.front() == '0') {
        return false;
    }
    tail.remove_prefix(digits);
    if (tail.empty()) {
        return true;
    }
    const std::size_t compared = std::min(tail.size() - 1, beginOfRecord.size());
    return tail.front() == ' ' && tail.substr(1, compared) == beginOfRecord.substr(0, compared);
}

} // namespace

std::size_t fixLineEndings(std::span<std::byte> buffer) {
    const auto text = textOf(buffer);
    std::size_t read = text.substr(0, lastBeginOfFirstPair + 2).find("\r\n");
    if (read == std::string_view::npos) {
        return buffer.size();
    }
    std::size_t written = read;
    while (read < text.size()) {
        if (text[read] == '\r' && read + 1 < text.size() && text[read + 1] == '\n') {
            ++read;
        }
        buffer[written++] = buffer[read++];
    }
    return written;
}

Found find(std::string_view file) {
    Found found;
    const char* const begin = file.data();
    const char* const end = begin + file.size();
    const char* at = begin;
    while (at != end) {
        found.endOfPackets = static_cast<std::size_t>(at - begin);
        at = std::find_if(at, end, isDigit);
        std::size_t length = 0;
        for (; at != end && isDigit(*at); ++at) {
            // Beyond the file's size it does not matter by how much.
            length = std::min(length * 10 + static_cast<std::size_t>(*at - '0'), file.size() + 1);
        }
        if (at != end && *at == ' ') {
            ++at; // any other byte belongs to the payload
        }
        if (length < 1 || length > static_cast<std::size_t>(end - at)) {
            const bool isOurs = isInterrupted(file.substr(found.endOfPackets));
            found.end = isOurs ? End::Interrupted : End::Garbage;
            return found;
        }
        found.payloads.emplace_back(at, length);
        at += length;
        if (found.payloads.size() == sample) {
            const auto average = static_cast<std::size_t>(at - begin) / sample;
            found.payloads.reserve(file.size() / average + sample);
        }
        if (at == end) {
            found.end = End::WithoutTerminator;
        } else {
            ++at; // whatever it is
        }
    }
    found.endOfPackets = file.size();
    return found;
}

std::string_view wrapInPlace(char* payload, std::size_t payloadSize) {
    char* begin = payload;
    *--begin = ' ';
    std::size_t left = payloadSize;
    do {
        *--begin = static_cast<char>('0' + left % 10);
        left /= 10;
    } while (left != 0);
    char* end = payload + payloadSize;
    *end++ = '\n';
    return {begin, static_cast<std::size_t>(end - begin)};
}

void append(std::string& out, std::string_view payload) {
    std::array<char, 24> head = {};
    char* end = std::to_chars(head.data(), head.data() + head.size(), payload.size()).ptr;
    *end++ = ' ';
    out.append(head.data(), static_cast<std::size_t>(end - head.data()));
    out += payload;
    out += '\n';
}

std::size_t headSize(std::size_t payloadSize) {
    std::size_t size = 2;
    for (; payloadSize >= 10; payloadSize /= 10) {
        ++size;
    }
    return size;
}

std::size_t sizeOf(std::size_t payloadSize) { return headSize(payloadSize) + payloadSize + 1; }

} // namespace tav::LogPackets
