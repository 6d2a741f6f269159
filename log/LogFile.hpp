#pragma once

#include "base/Data.hpp"
#include "base/Result.hpp"
#include "log/LogPackets.hpp"
#include "log/LogRecord.hpp"
#include "platform/LargeBuffer.hpp"
#include "platform/OpenFile.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// A list of records in memory, oldest first, and the file that mirrors it: packets of old-style
/// text (`docs/formats/log.md`). Each record is kept as the bytes that stand in the file, and as a
/// dictionary from when it is first asked for.
///
/// A record that is added is in the file, by one write, when the call returns; no failure of the
/// file is told, the record is in the list in any case. A write that the disk has no room for is
/// cut back, so that the file keeps whole packets only; when even that fails, nothing more is
/// written until it succeeds. Every file is that of `FileSystem::current()`. One thread at a time.
class LogFile {
  public:
    /// Opens the log at a path, as `createOpenReadFile`.
    explicit LogFile(std::string_view path);
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Opens another log in the place of this one: expands a leading tilde, makes missing folders
    /// (as `recursivelyCreatePath`, with all that it removes), opens the file or makes it, for its
    /// owner alone to read, write and execute (0700), and parses it. The empty path, or a file that
    /// cannot be opened, is a log in memory only.
    void createOpenReadFile(std::string_view path);
    /// Gives the file and the records back.
    void close();

    /// The packets of the file, in place of the records so far, up to the first that is malformed:
    /// a length that is missing, 0 or more than is left. What stands behind stays in the file, new
    /// packets come after it. Reads at most `FileHandle::largestRead` bytes.
    ///
    /// One thing behind the packets is not left there: what an append of ours that was killed
    /// leaves, the beginning of a packet and nothing else. A packet after it would be read as the
    /// rest of it. So the next append cuts it off first, unless the file has changed since; nobody
    /// was ever told that it was written.
    void parseFile();

    /// All packets in their order.
    [[nodiscard]] std::string buildFileImage() const;
    /// Rewrites an open file in place: cuts it to nothing, then writes the image. Nothing for null.
    /// Whoever is killed in between leaves a part; `trimLines` knows better.
    void saveToFile(OpenFile* file);
    /// Puts the image at a path as `writeFileAtomically` does.
    SystemError saveToPath(std::string_view path);
    /// Keeps only the newest records and rewrites the file; nothing when there are no more.
    ///
    /// The image goes to a sibling that takes the file's name, so that whoever is killed leaves the
    /// old file or the new one. Where there can be no sibling, or somebody has moved our file away
    /// from its name, it is rewritten in place.
    void trimLines(std::size_t keep);
    /// `trimLines(0)`.
    void clear() { trimLines(0); }

    /// Adds a record to the list and its packet to the file. Nothing for null, and for a record
    /// whose text has more than 2^32 - 1 bytes.
    void addItem(const RecordPtr& record);
    /// The same for `recordOf(fields)`, which is not made before somebody asks for it.
    void addFields(const LogFields& fields);
    /// The same object at every call. Null at and past the count, and for bytes that are no
    /// dictionary.
    [[nodiscard]] RecordPtr getItem(std::size_t index);
    [[nodiscard]] std::size_t getItemCount() const { return mRawData.size(); }

    /// Turns CR LF into LF; answers the bytes that are left. See `LogPackets::fixLineEndings`.
    [[nodiscard]] static std::size_t fixLineEndings(std::span<std::byte> buffer) {
        return LogPackets::fixLineEndings(buffer);
    }
    /// What a payload holds, in any form of a property list; null when that is no dictionary.
    [[nodiscard]] static RecordPtr dataToDictionary(std::optional<BytesView> bytes);
    /// A record's description in UTF-8; nothing for null.
    [[nodiscard]] static std::optional<Data> dictionaryToData(const Record* record);
    /// One packet; empty for nothing.
    [[nodiscard]] static Data wrapDataIntoFilePacket(std::optional<BytesView> payload);
    /// Appends one packet to a file that was opened to append, whole or not at all where that can
    /// be had. Nothing for null.
    static void writeOneItem(OpenFile* file, BytesView payload);

  private:
    /// Bytes at the end of the file that have to go before the next append.
    struct Remains {
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
    };

    static std::optional<Remains> appendPacket(OpenFile& file, std::string_view packet);
    static bool cut(OpenFile& file, const Remains& remains);
    void forgetEnd();
    bool isReadyToAppend();
    void addPacket(RecordPtr record);
    void add(RecordPtr record, std::string_view packet, std::size_t payloadSize);
    std::string_view keep(std::string_view packet);
    std::span<std::byte> freeMemory(std::size_t size);
    std::string_view use(std::string_view text);
    bool replaceFile(std::string_view image);
    void keepOnly(std::string image);

    std::unique_ptr<OpenFile> mFileHandle; ///< Open to append; null for a log in memory only.
    std::vector<std::string_view> mRawData;
    std::vector<RecordPtr> mDictionaries; ///< As many; null until asked for.

    std::string path_;           ///< Of the open file, without links; empty when it cannot be told.
    std::size_t firstOfRun_ = 0; ///< From this index on, records were added here.
    std::optional<Remains> remains_;
    /// The file has that size and lacks the line feed of its last packet.
    std::optional<std::uint64_t> sizeWithoutTerminator_;
    char missingTerminator_ = '\n';

    std::string packet_;  ///< A packet that is being made elsewhere, behind room for its head.
    LargeBuffer content_; ///< What was read.
    std::string image_;   ///< What was written last as a whole.
    std::vector<LargeBuffer> blocks_;      ///< What was added since.
    std::vector<LargeBuffer> spareBlocks_; ///< Of records that are gone.
    std::size_t room_ = 0;                 ///< Bytes that are free at the end of the last block.
};

} // namespace tav
