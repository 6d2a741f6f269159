#include "log/LogFile.hpp"

#include "base/OldStyleText.hpp"
#include "base/PathString.hpp"
#include "base/PropertyList.hpp"
#include "foundation/FileHandle.hpp"
#include "foundation/FileManager.hpp"
#include "foundation/HomePath.hpp"
#include "platform/AtomicFile.hpp"
#include "platform/FileSystem.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace tav {
namespace {

constexpr std::size_t initialCapacity = 10000;
constexpr std::uint32_t permissionsOfNewFiles = 0700; // as those of every file handle that creates
constexpr std::size_t blockSize = 65536;
/// A log that fills so many blocks gets the next ones on large pages: to have a page of the usual
/// size for every eleven records costs a tenth of each.
constexpr std::size_t mostSmallBlocks = 16;
constexpr std::size_t largeBlockSize = std::size_t{4} << 20;
constexpr std::size_t mostSpareBlocks = 4;
/// A larger packet gets a block of its own.
constexpr std::size_t largestInBlock = blockSize / 4;
/// A packet buffer that grew larger is not kept.
constexpr std::size_t largestPacketKept = std::size_t{1} << 20;
constexpr std::size_t largestPayload = std::numeric_limits<std::uint32_t>::max();

/// A copy at the beginning of some memory.
std::string_view copyTo(std::span<std::byte> memory, std::string_view text) {
    std::memcpy(memory.data(), text.data(), text.size());
    return textOf(memory.first(text.size()));
}

LargeBuffer newBlock(std::size_t size) {
    std::optional<LargeBuffer> block = LargeBuffer::withSize(size);
    if (!block) {
        throw std::bad_alloc();
    }
    return std::move(*block);
}

} // namespace

LogFile::LogFile(std::string_view path) { createOpenReadFile(path); }

void LogFile::close() {
    mFileHandle.reset();
    mRawData = {};
    mDictionaries = {};
    path_.clear();
    firstOfRun_ = 0;
    forgetEnd();
    content_ = {};
    keepOnly({});
    spareBlocks_.clear();
}

void LogFile::createOpenReadFile(std::string_view path) {
    close();
    if (!path.empty()) {
        const std::string place = stringByExpandingTildeInPath(path);
        recursivelyCreatePath(stringByDeletingLastPathComponent(place));
        FileSystem& files = FileSystem::current();
        auto file = files.open(
            place,
            {.write = true, .create = true, .append = true, .permissions = permissionsOfNewFiles});
        if (file.ok()) {
            mFileHandle = std::move(file).value();
            const auto canonical = files.canonicalPath(place);
            path_ = canonical.ok() ? canonical.value() : std::string();
        }
        parseFile();
    }
    mRawData.reserve(initialCapacity);
    mDictionaries.reserve(initialCapacity);
}

void LogFile::parseFile() {
    if (!mFileHandle) {
        return;
    }
    mRawData.clear();
    mDictionaries.clear();
    firstOfRun_ = 0;
    forgetEnd();
    const auto attributes = mFileHandle->attributes();
    if (!attributes.ok()) {
        return;
    }
    const auto size =
        static_cast<std::size_t>(std::min(attributes.value().size, FileHandle::largestRead));
    auto content = LargeBuffer::withSize(size);
    if (!content) {
        return;
    }
    // It may have become shorter since, and longer: then the rest is not looked at.
    const auto got = mFileHandle->readAt(0, content->bytes());
    if (!got.ok()) {
        return;
    }
    const auto bytes = content->bytes().first(got.value());
    const std::size_t fixed = fixLineEndings(bytes);
    LogPackets::Found found = LogPackets::find(textOf(bytes.first(fixed)));
    if (found.end == LogPackets::End::Interrupted && fixed == bytes.size()) {
        remains_ = Remains{found.endOfPackets, bytes.size()};
    } else if (found.end == LogPackets::End::WithoutTerminator) {
        sizeWithoutTerminator_ = bytes.size();
        // Readers take any byte; a line feed would make a pair behind a carriage return.
        missingTerminator_ = found.payloads.back().ends_with('\r') ? ' ' : '\n';
    }
    content_ = std::move(*content);
    mRawData = std::move(found.payloads);
    mDictionaries.resize(mRawData.size());
    firstOfRun_ = mRawData.size();
}

std::string LogFile::buildFileImage() const {
    std::size_t size = 0;
    for (const std::string_view payload : mRawData) {
        size += LogPackets::sizeOf(payload.size());
    }
    std::string image;
    image.reserve(size);
    for (const std::string_view payload : mRawData) {
        LogPackets::append(image, payload);
    }
    return image;
}

void LogFile::saveToFile(OpenFile* file) {
    if (file == nullptr) {
        return;
    }
    const std::string image = buildFileImage();
    if (!file->setPosition(0).isNone() || !file->setSize(0).isNone()) {
        return;
    }
    if (file == mFileHandle.get()) {
        forgetEnd();
    }
    if (file->write(bytesOf(image)).isNone()) {
        return;
    }
    // Of what could be written whole packets stay.
    const auto attributes = file->attributes();
    if (!attributes.ok() || attributes.value().size > image.size()) {
        return;
    }
    const auto size = static_cast<std::size_t>(attributes.value().size);
    const Remains remains{LogPackets::find(image.substr(0, size)).endOfPackets, size};
    if (remains.begin < remains.end && !cut(*file, remains) && file == mFileHandle.get()) {
        remains_ = remains;
    }
}

SystemError LogFile::saveToPath(std::string_view path) {
    const std::string image = buildFileImage();
    if (mFileHandle) {
        const auto there = FileSystem::current().targetAttributes(path);
        const auto ours = mFileHandle->attributes();
        // Ours would be nobody's file then: it goes on in the new one.
        if (there.ok() && ours.ok() && there.value().identity == ours.value().identity) {
            auto replaced = replaceFileAtomically(path, bytesOf(image), Surviving::LossOfPower);
            const SystemError error = replaced.error();
            if (error.isNone()) {
                mFileHandle = std::move(replaced).value();
                forgetEnd();
            }
            return error;
        }
    }
    return writeFileAtomically(path, bytesOf(image));
}

/// Whether our file could be replaced by another one with the image.
bool LogFile::replaceFile(std::string_view image) {
    if (path_.empty()) {
        return false;
    }
    const auto there = FileSystem::current().attributes(path_);
    const auto ours = mFileHandle->attributes();
    if (!there.ok() || !ours.ok() || there.value().identity != ours.value().identity) {
        return false;
    }
    // A record is on its way to the kernel when it is logged, and not waited for until it is on the
    // medium; no more is promised of those that a trim keeps.
    auto replaced = replaceFileAtomically(path_, bytesOf(image), Surviving::EndOfProcess);
    if (!replaced.ok()) {
        return false;
    }
    mFileHandle = std::move(replaced).value();
    forgetEnd();
    return true;
}

void LogFile::trimLines(std::size_t keep) {
    if (mRawData.size() <= keep) {
        return;
    }
    const std::size_t removed = mRawData.size() - keep;
    const auto count = static_cast<std::ptrdiff_t>(removed);
    mRawData.erase(mRawData.begin(), mRawData.begin() + count);
    mDictionaries.erase(mDictionaries.begin(), mDictionaries.begin() + count);
    firstOfRun_ -= std::min(firstOfRun_, removed);
    std::string image = buildFileImage();
    if (mFileHandle && !replaceFile(image)) {
        saveToFile(mFileHandle.get());
    }
    keepOnly(std::move(image));
}

/// Lets the records refer to the image and gives back all other memory.
void LogFile::keepOnly(std::string image) {
    image_ = std::move(image);
    const char* at = image_.data();
    for (std::string_view& payload : mRawData) {
        const std::size_t packet = LogPackets::sizeOf(payload.size());
        payload = {at + (packet - payload.size() - 1), payload.size()};
        at += packet;
    }
    content_ = {};
    // The records to come need as much memory again, and pages had anew cost each of them.
    for (LargeBuffer& block : blocks_) {
        if (block.bytes().size() == largeBlockSize && spareBlocks_.size() < mostSpareBlocks) {
            spareBlocks_.push_back(std::move(block));
        }
    }
    blocks_.clear();
    room_ = 0;
}

void LogFile::addItem(const RecordPtr& record) {
    if (!record) {
        return;
    }
    packet_.assign(LogPackets::mostHeadCharacters, ' ');
    OldStyleText::append(packet_, Value(*record));
    addPacket(record);
}

void LogFile::addFields(const LogFields& fields) {
    if (!isKeptByText(fields)) {
        addItem(std::make_shared<const Record>(recordOf(fields)));
        return;
    }
    const std::size_t most = roomForRecordText(fields);
    const std::size_t head = LogPackets::headSize(most);
    if (head + most < largestInBlock) {
        char* const payload = reinterpret_cast<char*>(freeMemory(head + most + 1).data()) + head;
        if (const char* const end = putRecordText(payload, fields)) {
            const auto size = static_cast<std::size_t>(end - payload);
            add(nullptr, use(LogPackets::wrapInPlace(payload, size)), size);
            return;
        }
    }
    packet_.assign(LogPackets::mostHeadCharacters, ' ');
    appendRecordText(packet_, fields);
    addPacket(nullptr);
}

/// Adds what has been written into `packet_`.
void LogFile::addPacket(RecordPtr record) {
    const std::size_t size = packet_.size() - LogPackets::mostHeadCharacters;
    if (size > largestPayload) {
        return;
    }
    packet_ += '\n';
    char* const payload = packet_.data() + LogPackets::mostHeadCharacters;
    add(std::move(record), keep(LogPackets::wrapInPlace(payload, size)), size);
    if (packet_.capacity() > largestPacketKept) {
        packet_ = std::string();
    }
}

/// Adds a packet whose bytes stay where they are.
void LogFile::add(RecordPtr record, std::string_view packet, std::size_t payloadSize) {
    mDictionaries.push_back(std::move(record));
    mRawData.push_back(packet.substr(packet.size() - payloadSize - 1, payloadSize));
    if (mFileHandle && isReadyToAppend()) {
        remains_ = appendPacket(*mFileHandle, packet);
    }
}

/// A copy that lives as long as the record.
std::string_view LogFile::keep(std::string_view packet) {
    if (packet.size() <= largestInBlock) {
        return use(copyTo(freeMemory(packet.size()), packet));
    }
    // A large packet gets a block of its own, in front of the one that still has room.
    LargeBuffer block = newBlock(packet.size());
    const std::span<std::byte> bytes = block.bytes();
    blocks_.insert(blocks_.empty() ? blocks_.end() : blocks_.end() - 1, std::move(block));
    return copyTo(bytes, packet);
}

/// What is free of the last block, at least so many bytes; as much as is wanted is taken by `use`.
std::span<std::byte> LogFile::freeMemory(std::size_t size) {
    if (size > room_) {
        if (spareBlocks_.empty()) {
            blocks_.push_back(
                newBlock(blocks_.size() < mostSmallBlocks ? blockSize : largeBlockSize));
        } else {
            blocks_.push_back(std::move(spareBlocks_.back()));
            spareBlocks_.pop_back();
        }
        room_ = blocks_.back().bytes().size();
    }
    return blocks_.back().bytes().last(room_);
}

/// Takes the free memory up to the end of a text that stands there.
std::string_view LogFile::use(std::string_view text) {
    const std::span<std::byte> block = blocks_.back().bytes();
    const std::byte* const end = bytesOf(text).data() + text.size();
    room_ = static_cast<std::size_t>(block.data() + block.size() - end);
    return text;
}

/// The end of the file is that of a packet again.
void LogFile::forgetEnd() {
    remains_.reset();
    sizeWithoutTerminator_.reset();
}

bool LogFile::isReadyToAppend() {
    if (remains_) {
        if (!cut(*mFileHandle, *remains_)) {
            return false;
        }
        remains_.reset();
    }
    if (sizeWithoutTerminator_) {
        const auto attributes = mFileHandle->attributes();
        if (!attributes.ok()) {
            return false;
        }
        if (attributes.value().size == *sizeWithoutTerminator_) {
            const auto written = mFileHandle->writeOnce(bytesOf({&missingTerminator_, 1}));
            if (!written.ok() || written.value() != 1) {
                return false;
            }
        }
        sizeWithoutTerminator_.reset();
    }
    return true;
}

/// Whether the remains are not at the end of the file any more: cut off, or what stands behind
/// them is somebody else's and makes them his.
bool LogFile::cut(OpenFile& file, const Remains& remains) {
    const auto attributes = file.attributes();
    return attributes.ok() &&
           (attributes.value().size != remains.end || file.setSize(remains.begin).isNone());
}

// What a failed write leaves is nothing, what a short one leaves is told by the position, which is
// behind it then; others may have appended more meanwhile.
std::optional<LogFile::Remains> LogFile::appendPacket(OpenFile& file, std::string_view packet) {
    const auto written = file.writeOnce(bytesOf(packet));
    if (!written.ok() || written.value() == packet.size() || written.value() == 0) {
        return std::nullopt;
    }
    const auto attributes = file.attributes();
    const auto position = file.position();
    if (!attributes.ok() && !position.ok()) {
        return std::nullopt;
    }
    const std::uint64_t end = position.ok() ? position.value() : attributes.value().size;
    const Remains remains{end - std::min<std::uint64_t>(end, written.value()), end};
    return cut(file, remains) ? std::nullopt : std::optional(remains);
}

RecordPtr LogFile::getItem(std::size_t index) {
    if (index >= mRawData.size()) {
        return nullptr;
    }
    RecordPtr& record = mDictionaries[index];
    if (!record) {
        record = dataToDictionary(bytesOf(mRawData[index]));
        if (record && index >= firstOfRun_) {
            record = std::make_shared<const Record>(recordOfText(*record));
        }
    }
    return record;
}

RecordPtr LogFile::dataToDictionary(std::optional<BytesView> bytes) {
    if (!bytes) {
        return nullptr;
    }
    std::optional<Value> value = PropertyList::read(*bytes, nullptr);
    if (!value || value->asDictionary() == nullptr) {
        return nullptr;
    }
    return std::make_shared<const Record>(std::move(*value->asDictionary()));
}

std::optional<Data> LogFile::dictionaryToData(const Record* record) {
    if (record == nullptr) {
        return std::nullopt;
    }
    return dataFromText(OldStyleText::write(Value(*record)));
}

Data LogFile::wrapDataIntoFilePacket(std::optional<BytesView> payload) {
    std::string packet;
    if (payload) {
        packet.reserve(payload->size() + 10);
        LogPackets::append(packet, textOf(*payload));
    }
    return dataFromText(packet);
}

void LogFile::writeOneItem(OpenFile* file, BytesView payload) {
    if (file != nullptr) {
        const Data packet = wrapDataIntoFilePacket(payload);
        static_cast<void>(appendPacket(*file, textOf(packet)));
    }
}

} // namespace tav
