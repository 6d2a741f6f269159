#pragma once

#include "base/Data.hpp"
#include "base/Result.hpp"
#include "platform/OpenFile.hpp"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

struct FileAttributes;

/// What a name in a folder stands for.
enum class FileKind : std::uint8_t { Regular, Folder, Link, Pipe, Socket, Device, Unknown };

/// The names in a folder, in the order in which they were added. All names lie in one block: a
/// folder of 100 000 costs a dozen allocations. Any thread may read.
class FolderListing {
  public:
    struct Entry {
        std::string_view name;             ///< As long as the listing; a NUL stands behind it.
        FileKind kind = FileKind::Unknown; ///< `Unknown` where the listing does not tell it.
        /// That of `FileIdentity`, of the name itself and not of what a link leads to; of a folder
        /// on which a volume is mounted the number of the folder below.
        std::uint64_t number = 0;
    };

    /// Random access by position; `*` answers an entry by value.
    class Iterator {
      public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Entry;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = Entry;

        Iterator(const FolderListing& listing, std::size_t index)
            : listing_(&listing), index_(index) {}
        Entry operator*() const { return (*listing_)[index_]; }
        Iterator& operator++() {
            ++index_;
            return *this;
        }
        Iterator operator++(int) { return {*listing_, index_++}; }
        friend bool operator==(const Iterator&, const Iterator&) = default;

      private:
        const FolderListing* listing_;
        std::size_t index_;
    };

    [[nodiscard]] std::size_t size() const { return records_.size(); }
    [[nodiscard]] bool empty() const { return records_.empty(); }
    [[nodiscard]] Entry operator[](std::size_t index) const {
        const Record& record = records_[index];
        const std::size_t end =
            index + 1 < records_.size() ? records_[index + 1].nameStart() : names_.size();
        const std::size_t start = record.nameStart();
        return {{names_.data() + start, end - start - 1}, record.kind(), record.number};
    }
    [[nodiscard]] Iterator begin() const { return {*this, 0}; }
    [[nodiscard]] Iterator end() const { return {*this, size()}; }

    /// Adds a name without a NUL in it. Names handed out before are not valid any more.
    void add(std::string_view name, FileKind kind, std::uint64_t number) {
        records_.emplace_back(names_.size(), kind, number);
        names_.append(name);
        names_.push_back('\0');
    }

  private:
    /// Where the name begins, with the kind in the lowest byte.
    struct Record {
        Record(std::size_t nameStart, FileKind kind, std::uint64_t fileNumber)
            : packed(std::uint64_t{nameStart} << 8U | static_cast<std::uint8_t>(kind)),
              number(fileNumber) {}
        [[nodiscard]] std::size_t nameStart() const {
            return static_cast<std::size_t>(packed >> 8U);
        }
        [[nodiscard]] FileKind kind() const { return static_cast<FileKind>(packed & 0xFFU); }

        std::uint64_t packed;
        std::uint64_t number;
    };

    std::vector<Record> records_;
    std::string names_; ///< One behind the other, each with a NUL.
};

/// A folder held open. It is the same folder also when it is moved or something else takes its
/// path; in a removed one nothing can be found or made any more (ENOENT), and its own attributes
/// stay known. Closed with the object.
///
/// Names are those of single entries: EINVAL for an empty one, "." and "..", one with "/" or a NUL
/// in it. Nothing raises; failures are the host's error numbers. An interrupted call is taken up
/// again. One thread at a time.
class OpenFolder {
  public:
    OpenFolder() = default;
    OpenFolder(const OpenFolder&) = delete;
    OpenFolder& operator=(const OpenFolder&) = delete;
    virtual ~OpenFolder() = default;

    /// Of the folder itself.
    virtual Result<FileAttributes> attributes() = 0;
    /// The names in it but "." and "..", in the file system's order; each call begins anew.
    virtual Result<FolderListing> entries() = 0;

    /// Of what stands under the name, when it is a link of the link.
    virtual Result<FileAttributes> attributes(std::string_view name) = 0;
    /// Of what the name leads to through links.
    virtual Result<FileAttributes> targetAttributes(std::string_view name) = 0;
    /// The text of a link.
    virtual Result<std::string> linkTarget(std::string_view name) = 0;

    /// Opens a folder in this one, never through a link: ENOTDIR for one, as for a file.
    virtual Result<std::unique_ptr<OpenFolder>> openFolder(std::string_view name) = 0;
    /// Opens the folder that the name leads to through links.
    virtual Result<std::unique_ptr<OpenFolder>> openTargetFolder(std::string_view name) = 0;
    /// Opens a regular file (through links, unless it must be new). See `OpenOptions`.
    virtual Result<std::unique_ptr<OpenFile>> open(std::string_view name,
                                                   const OpenOptions& options) = 0;

    /// The mask of the process takes away from the permissions.
    virtual SystemError createFolder(std::string_view name, std::uint32_t permissions) = 0;
    /// Anything but a folder.
    virtual SystemError removeFile(std::string_view name) = 0;
    /// An empty folder.
    virtual SystemError removeFolder(std::string_view name) = 0;
};

/// Whether a text can be the name of an entry for `OpenFolder`.
[[nodiscard]] inline bool isEntryName(std::string_view name) {
    constexpr std::string_view neverInNames("/\0", 2);
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of(neverInNames) == std::string_view::npos;
}

} // namespace tav
