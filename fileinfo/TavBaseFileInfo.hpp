#pragma once

#include "base/Data.hpp"
#include "base/Date.hpp"
#include "base/Image.hpp"
#include "base/KeyedCoding.hpp"
#include "base/KeyedUnarchiver.hpp"
#include "base/OptionalText.hpp"
#include "base/Status.hpp"
#include "base/Value.hpp"
#include "fileinfo/CopyOptions.hpp"
#include "fileinfo/CopySupport.hpp"
#include "fileinfo/OpenFileToken.hpp"
#include "fileinfo/ProgressDelegate.hpp"
#include "fileinfo/TavBaseFileInfoFilter.hpp"

#include <atomic>
#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

class TavBaseFileInfo;

namespace internal {
class ItemCopy;
}

/// An item, null for nil.
using FileInfoPtr = std::shared_ptr<TavBaseFileInfo>;
using FileInfoArray = std::vector<FileInfoPtr>;

/// The file item: one object stands for one file, folder or volume, wherever it lives. All of the
/// library handles files through this interface alone.
///
/// The class itself stores almost nothing. It gives every question a safe answer (null, false, 0,
/// an empty text or list, or a fixed status) and builds what can be built from the others: names
/// from the path, sizes of folders by summing, unique names, searches, listings through filters,
/// the plain copies, icons, archiving. A back-end overrides the primitives and inherits the rest.
///
/// Nothing here raises unless it says so; asking a missing item answers nothing. Changes answer a
/// status or whether they were made. Operations that a back-end has to supply log that it does
/// not, when log type 4 is switched on. Items are made by static functions only and shared
/// by `FileInfoPtr`. They fill caches when asked, so an item serves one thread at a time; only
/// `cancelCopy` may come from another one.
class TavBaseFileInfo : public Coding, public std::enable_shared_from_this<TavBaseFileInfo> {
  public:
    TavBaseFileInfo(const TavBaseFileInfo&) = delete;
    TavBaseFileInfo& operator=(const TavBaseFileInfo&) = delete;
    ~TavBaseFileInfo() override;

    // Making items

    /// Null: an item of this class cannot be made from a path. Every back-end has its own.
    [[nodiscard]] static FileInfoPtr fileInfoWithPath(std::string_view path);
    /// An item that does not exist, with the empty path.
    [[nodiscard]] static FileInfoPtr fileInfo();

    // Archiving

    /// What is archived under the root of a keyed archive, whatever it is. Throws what the
    /// unarchiver throws for bytes that are no archive.
    [[nodiscard]] static Archived unarchiveFromData(BytesView data);
    /// An archive whose root is the record of the class itself, not of an item: the interface has
    /// it so. Items are archived by `archivedDataWithRootObject`.
    [[nodiscard]] static Data archiveToData();
    /// The dates and the size of now, for `old...` of the item that is made from the archive.
    virtual void encodeWithCoder(KeyedArchiver& coder);
    /// Fills the old values from an archive, once the item is made.
    virtual void initWithCoder(KeyedUnarchiver& coder);
    void encode(KeyedArchiver& archiver) const final;
    [[nodiscard]] std::string className() const override;

    /// The size and the dates that the item had when it was archived; nothing for an item that does
    /// not come from an archive. They are never filled from the live item, so that a caller can
    /// tell whether it has changed since.
    virtual void setOldFileSize(std::uint64_t size);
    [[nodiscard]] virtual std::optional<std::uint64_t> oldFileSize();
    virtual void setOldModificationDate(std::optional<Date> date);
    [[nodiscard]] virtual std::optional<Date> oldModificationDate();
    virtual void setOldCreationDate(std::optional<Date> date);
    [[nodiscard]] virtual std::optional<Date> oldCreationDate();

    // Saved state

    /// Where the item is, and what it looks like, as values to be kept between runs; nothing here.
    [[nodiscard]] virtual std::optional<Value::Dictionary> savedInfo();
    [[nodiscard]] virtual std::optional<Value::Dictionary> syncCriteria();
    /// Whether two records of `savedInfo` name the same item; never, as none are made here.
    [[nodiscard]] static bool savedFileInfoIsSimilarToSavedInfo(const Value::Dictionary* first,
                                                                const Value::Dictionary* second);
    /// The lasting identifier of the device volume that the item is on; nothing here. Without an
    /// argument it is not made when it is missing. Only a `bool` serves as the argument.
    [[nodiscard]] std::optional<std::string> UDID() { return udidCreating(false); }
    template <std::same_as<bool> Flag>
    [[nodiscard]] std::optional<std::string> UDID(Flag create) {
        return udidCreating(create);
    }

    // Archives (zip); nothing here

    /// The bytes of an archive with the item under its whole path.
    [[nodiscard]] virtual std::optional<Data> zip();
    /// The same with the item under its name alone.
    [[nodiscard]] virtual std::optional<Data> ditto();
    /// An archive of the item, made in the folder under its name with the extension "zip".
    [[nodiscard]] virtual FileInfoPtr zipToFolder(TavBaseFileInfo* folder);
    /// Unpacks this archive into a temporary folder: what is at its top level.
    [[nodiscard]] virtual std::optional<FileInfoArray> unzip();

    // Capabilities and volume

    [[nodiscard]] virtual bool supportsModificationDate(); ///< true
    [[nodiscard]] virtual bool supportsCreationDate();     ///< true
    [[nodiscard]] virtual bool supportsTimezones();        ///< true
    /// The path that leads from this item to the other one.
    [[nodiscard]] virtual std::optional<std::string> relativePathTo(TavBaseFileInfo* other);
    /// The slash path of the item inside its volume.
    [[nodiscard]] virtual std::optional<std::string> volumeRelativeStandardPath();
    [[nodiscard]] virtual bool isVolume();
    [[nodiscard]] virtual FileInfoPtr volume();
    [[nodiscard]] virtual std::uint64_t freeSpaceOnVolume(); ///< Bytes.
    /// The stable identifier of the item's volume.
    [[nodiscard]] virtual std::optional<std::string> uuid();

    // Paths and names

    [[nodiscard]] virtual std::string path();         ///< The empty text here.
    [[nodiscard]] virtual std::string standardPath(); ///< The path in slash form; `path` here.
    [[nodiscard]] virtual std::vector<std::string> pathComponents();
    [[nodiscard]] virtual std::string humanFriendlyPath(); ///< `path` here.
    [[nodiscard]] virtual std::string humanFriendlyName(); ///< `name` here.
    [[nodiscard]] virtual std::string name();              ///< The last component of `path`.
    [[nodiscard]] virtual std::string extension();         ///< Of `name`, without its dot.
    [[nodiscard]] virtual std::string nameWithoutExtension();
    /// Gives the file another name.
    virtual void setName(std::string_view name);
    /// The same with the extension that it has put behind the name.
    virtual void setNameKeepingExtension(std::string_view name);
    /// Takes note of a new name that somebody else has given the file.
    virtual void updateName(std::string_view name);
    /// Bytes of `path` in UTF-16: two for each unit, no terminator.
    [[nodiscard]] virtual std::int32_t numBytesNeededForPath();
    [[nodiscard]] virtual std::int32_t maxPathLength();
    /// The name as the item's file system can take it. The flag says the opposite of its name, and
    /// callers rely on it: true gives `windowsValidFilename`, false the form that spells out what
    /// is not ASCII.
    [[nodiscard]] virtual std::string makeValidFilename(std::string_view filename,
                                                        bool encodeNonASCII);
    /// What the item is called in texts.
    [[nodiscard]] virtual std::string description();

    // Kinds and attributes

    [[nodiscard]] virtual bool exists();
    [[nodiscard]] virtual bool isFolder();
    [[nodiscard]] virtual bool isFile();
    [[nodiscard]] virtual bool isBundle();
    [[nodiscard]] virtual bool visible(); ///< true
    [[nodiscard]] virtual bool isLocked();
    virtual void setLocked(bool locked);
    virtual void setHideExtension(bool hide);
    [[nodiscard]] virtual bool hasDRM();
    /// Whether both name the same file.
    [[nodiscard]] virtual bool isEqualTo(TavBaseFileInfo* other);
    /// Whether the other item lies inside this folder.
    [[nodiscard]] virtual bool contains(TavBaseFileInfo* other);
    /// The kind of file in the user's words.
    [[nodiscard]] virtual std::string kindString();
    [[nodiscard]] virtual std::optional<Value> metadata();
    virtual void setMetadata(const Value& metadata);

    /// The icon of a folder, or that of the file's extension. The generic icons are shared: every
    /// item answers the same object. To be asked first on the main thread.
    [[nodiscard]] virtual std::shared_ptr<Image> icon();
    /// `icon`, set to 16 by 16 points. The shared object itself is resized, so that `icon` of every
    /// item that shares it has that size from then on.
    [[nodiscard]] virtual std::shared_ptr<Image> smallIcon();

    // Dates and size

    /// Bytes of the file; for a folder the sum over all that is in it, hidden items included.
    [[nodiscard]] virtual std::uint64_t size();
    /// The low 32 bits of `size`: 5 GiB read as 1 GiB.
    [[nodiscard]] virtual std::uint32_t resolvedSize();
    [[nodiscard]] virtual std::optional<Date> modificationDate();
    [[nodiscard]] virtual std::optional<Date> creationDate();
    virtual void setModificationDate(std::optional<Date> date);
    virtual void setCreationDate(std::optional<Date> date);

    // Aliases

    /// What the item leads to when it is an alias, otherwise the item itself.
    [[nodiscard]] virtual FileInfoPtr resolvedFileInfo();
    /// Makes the item stand for what it leads to; whether it changed.
    virtual bool resolveAlias();
    /// Null for what is no alias.
    [[nodiscard]] virtual FileInfoPtr aliasTarget();
    /// Forgets what was learned, so that it is asked for again.
    virtual void refresh();

    // Searching

    /// Null where there is none.
    [[nodiscard]] virtual FileInfoPtr parentFolder();
    /// The item of that name in the folder, never null here: one that is missing does not exist.
    [[nodiscard]] virtual FileInfoPtr find(std::string_view name);
    /// The first item of that name ignoring case, at any depth of the folder; null for none.
    [[nodiscard]] virtual FileInfoPtr findFirstDeep(std::string_view name);
    /// All of them.
    [[nodiscard]] virtual FileInfoArray findDeep(std::string_view name);
    /// The child whose name, once made valid on Windows, is the one that is sought (ignoring case).
    /// A child of that very name goes before one that only becomes it.
    [[nodiscard]] virtual FileInfoPtr findWithWindowsName(std::string_view name, bool useASCIIOnly);
    [[nodiscard]] virtual FileInfoPtr findWithWindowsName(std::string_view name);
    /// The children that are folders of that name ignoring case, in the listing's order.
    [[nodiscard]] virtual FileInfoArray findAllFoldersWithName(std::string_view name);
    /// The name when it is free in the folder (its own or the parent), otherwise "name-1.ext",
    /// "name-2.ext", ...
    [[nodiscard]] virtual std::string uniqueFilename(std::string_view name);

    // Listing; what raises is the back-end's primitive

    [[nodiscard]] virtual FileInfoArray folderContents();
    /// The children that the filter lets in (all for null), in the file system's order.
    [[nodiscard]] virtual FileInfoArray folderContentsWithFilter(TavBaseFileInfoFilter* filter);
    /// The same, told where the listing of the whole tree began: links that lead back there are
    /// left out.
    [[nodiscard]] virtual FileInfoArray folderContentsWithFilter(TavBaseFileInfoFilter* filter,
                                                                 std::string_view withRootPath);
    /// All that the filter lets in at any depth. What is inside a folder stands before it; a folder
    /// that is not let in is searched all the same.
    [[nodiscard]] virtual FileInfoArray folderContentsDeepWithFilter(TavBaseFileInfoFilter* filter);
    /// The primitive behind every listing: appends to the array. The flag may be null.
    virtual void folderContentsWithFilter(TavBaseFileInfoFilter* filter, FileInfoArray* withArray,
                                          bool* stopAccumulating, std::string_view rootNodePath);

    // Creating, in the folder (its own or the parent); null where it fails, and here

    /// A new folder by the name that `uniqueFilename` answers.
    [[nodiscard]] virtual FileInfoPtr createUniqueFolder(std::string_view name);
    /// Goes down by `createFolder` from the folder (its own or the parent); null as soon as one is
    /// not there, those before it stay.
    [[nodiscard]] virtual FileInfoPtr
    createFolderWithPathComponents(const std::vector<std::string>& names);
    /// The folder of that name, made when it is missing.
    [[nodiscard]] virtual FileInfoPtr createFolder(std::string_view name);
    /// A file with a content and, where they are not null, attributes by the platform's names
    /// ("NSFilePosixPermissions", ...): by a name that is free, or in the place of the file that
    /// has it. Ask the item whether it exists. The short forms tell no progress.
    [[nodiscard]] virtual FileInfoPtr
    createFile(std::string_view name, BytesView contents, const Value::Dictionary* attributes,
               bool ensureUniqueName, const ProgressDelegate* withProgress, void* userData);
    [[nodiscard]] virtual FileInfoPtr createFile(std::string_view name, BytesView contents,
                                                 const Value::Dictionary* attributes,
                                                 bool ensureUniqueName);
    [[nodiscard]] virtual FileInfoPtr createFile(std::string_view name, BytesView contents,
                                                 const Value::Dictionary* attributes);
    /// The folder for temporary files.
    [[nodiscard]] virtual FileInfoPtr tempFolder();

    // Removing and moving

    /// Removes the file, or the folder with everything in it; whether that went. Never here.
    virtual bool remove();
    /// Removes every child; true when all went. A failure does not stop it.
    virtual bool removeContents();
    /// Removes the folders directly in this one that hold nothing visible (with what is invisible).
    virtual void removeEmptySubfolders();
    /// Gives the file the path of the destination and replaces nothing there; -220 here.
    virtual Status moveTo(TavBaseFileInfo* destination);

    // Copying

    // The short forms ask for no unique name and no progress.
    virtual Status copyTo(TavBaseFileInfo* destination);
    virtual Status copyTo(TavBaseFileInfo* destination, FileInfoPtr* outNewItem);
    /// Copies the whole file through memory, under a name that may be taken: -50 unless this is a
    /// file and the destination a file or folder, -208 when something that is no file has the name
    /// (it is written to all the same), -207 when that write fails.
    virtual Status copyTo(TavBaseFileInfo* destination, std::string_view withName,
                          FileInfoPtr* outNewItem);
    /// Copies this file in chunks, between any two back-ends, to a destination that names a folder
    /// to copy into, a file to be replaced or one to be made; see docs/copying.md. Statuses are
    /// those of `CopyStatus`. The delegate hears of every chunk, on this thread, and its answer
    /// becomes the flag that `cancelCopy` sets, which is looked at before each chunk. The out item,
    /// when it is not null, becomes the new file, or the destination where there is none; after
    /// -200 and -201, and after an exception outside the chunks, it is left as it was.
    ///
    /// What it does not promise, and `CopyOptions` do:
    /// - The destination is removed first, gone after a failure; in a folder it is emptied before,
    ///   THROUGH LINKS, TOO. A FILE COPIED ONTO ITSELF or into its folder under its name IS LOST.
    /// - What a read or write failure leaves is moved into place all the same, under the status of
    ///   the failure, and a source that has become shorter is copied as it is, with 0.
    /// - Whether the whole file could be moved into place is not looked at: the out item tells,
    ///   which has kept the temporary name then.
    /// - The temporary file "QuillboxCopyFile.tmp" is one for every copy into a folder: two at a
    ///   time spoil each other.
    /// - Sizes and ranges have 32 bits: OF A LOCAL FILE OF 5 GiB, 1 GiB IS COPIED, with 0.
    /// - When a back-end raises while the copy is prepared, the destination is removed as it is by
    ///   then, which may be the folder itself.
    ///
    /// Raises for a source whose device drives copies. Otherwise what a back-end or delegate raises
    /// is answered as a status; an exception of another kind than `Exception` reaches the caller,
    /// with the temporary file gone.
    virtual Status copyTo(TavBaseFileInfo* destination, bool ensureUniqueName,
                          const ProgressDelegate* withProgress, void* userData,
                          FileInfoPtr* outNewItem);
    /// The same with promises beyond the plain copy; without any it is the plain copy.
    virtual Status copyTo(TavBaseFileInfo* destination, bool ensureUniqueName,
                          const ProgressDelegate* withProgress, void* userData,
                          FileInfoPtr* outNewItem, const CopyOptions& options);
    /// How an item whose device drives the copy takes another one in; -1 here.
    virtual Status copyFromFile(TavBaseFileInfo* source, bool ensureUniqueName,
                                const ProgressDelegate* withProgress, void* userData,
                                FileInfoPtr* outNewItem);
    /// Asks the copy of this item that is under way to stop. May come from any thread.
    virtual void cancelCopy();
    [[nodiscard]] virtual bool deviceControlsCopy();
    virtual void setDeviceControlsCopy(bool controls);
    [[nodiscard]] virtual std::uint64_t preferredChunkSize(); ///< 8192 bytes.
    /// Copies a range of this file straight into the same range of another one, where the back-end
    /// knows a faster way than reading and writing it: whether the whole range was copied. If not,
    /// nothing outside the range has changed, and it is to be read and written. Never here.
    virtual bool cloneRange(FileRange range, OpenFileToken* readFileUserData,
                            TavBaseFileInfo* destination, OpenFileToken* writeFileUserData);
    /// What copies lean on beyond these operations; null here, and they do without.
    [[nodiscard]] virtual CopySupport* copySupport();

    // Contents. A token is handed back with each range, and in the end to be closed.

    /// Null for a file that cannot be opened, and here.
    [[nodiscard]] virtual std::shared_ptr<OpenFileToken> openFileForReading();
    /// The same. The file is empty then.
    [[nodiscard]] virtual std::shared_ptr<OpenFileToken> openFileForWriting();
    virtual void closeFile(OpenFileToken* token);
    /// The bytes of the range, fewer where the file ends; nothing when they cannot be read, and
    /// here.
    [[nodiscard]] virtual std::optional<Data>
    fileContentsWithRange(FileRange range, OpenFileToken* readFileUserData);
    /// Writes the data where the range begins; -220 here.
    virtual Status setFileContentsWithRange(BytesView data, FileRange range,
                                            OpenFileToken* writeFileUserData);
    /// The same three without the limit of 32 bits. Here they ask the others: `size`, and the
    /// ranges as far as 32 bits reach; nothing and `Status::NotSupported` beyond.
    [[nodiscard]] virtual std::uint64_t wholeSize();
    [[nodiscard]] virtual std::optional<Data>
    fileContentsWithWholeRange(WholeFileRange range, OpenFileToken* readFileUserData);
    virtual Status setFileContentsWithWholeRange(BytesView data, WholeFileRange range,
                                                 OpenFileToken* writeFileUserData);
    /// The whole content; nothing when it cannot be read. No bytes here.
    [[nodiscard]] virtual std::optional<Data> fileContents();
    [[nodiscard]] virtual std::optional<Data>
    fileContentsWithProgress(const ProgressDelegate* progress, void* userData);
    /// Replaces the whole content of a file that exists; whether it did. Never here.
    virtual bool setFileContents(BytesView data);
    virtual bool setFileContents(BytesView data, const ProgressDelegate* withProgress,
                                 void* userData);

  protected:
    TavBaseFileInfo();

    [[nodiscard]] virtual std::optional<std::string> udidCreating(bool create);
    /// Bytes that a copy leaves free on the volume beyond the copied file; 0.
    [[nodiscard]] virtual std::uint64_t _freeSpaceToKeepOnVolume();

    std::atomic<bool> _cancelCopy = false;
    bool _deviceControlsCopy = false;

  private:
    friend class internal::ItemCopy;

    struct OldState;
    OldState& oldState();
    std::unique_ptr<OldState> old_;
};

} // namespace tav
