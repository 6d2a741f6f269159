#pragma once

#include "base/FileRef.hpp"
#include "base/Url.hpp"
#include "fileinfo/TavPathBasedFileInfo.hpp"
#include "fileinfo/local/FileSpec.hpp"
#include "fileinfo/local/FileWrapper.hpp"
#include "fileinfo/local/FollowedPath.hpp"
#include "platform/FileSystem.hpp"
#include "platform/Pasteboard.hpp"
#include "platform/Volumes.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

class OpenFolder;

namespace internal {
class CachedAttributes;
class FolderWalk;
class LocalCopySeries;
class SmallCopy;
} // namespace internal

/// The item of the local file system: a file, folder, alias or volume named by an absolute path.
/// An alias is a symbolic link.
///
/// What it learns it keeps until `refresh`: the reference of the file (taken with the first
/// question and whenever the item is given another path), the folder and alias flags and the
/// attributes (asked for once, when they are needed). Making an item asks nothing. An item whose
/// file was given another name by somebody else follows it where the reference can be found again
/// (docs/platform.md). Files are reached through `FileSystem::current()`; nothing blocks on pipes
/// or devices.
class TavMacFileInfo : public TavPathBasedFileInfo {
  public:
    ~TavMacFileInfo() override;

    // Making items

    /// A leading tilde is expanded; links are not resolved. The file need not exist.
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo> fileInfoWithPath(std::string_view path);
    /// Follows an alias at every component; null as soon as one of them does not exist. A link at
    /// the end of which it cannot be told where it leads, in circles say, stands for itself.
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo>
    fileInfoResolveAliasesWithPath(std::string_view path);
    /// With the empty path.
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo> fileInfo();
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo> withPath(std::string_view path,
                                                                  bool resolveAliases);
    /// With the empty path unless it is a file URL.
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo> withURL(const Url* url,
                                                                 bool resolveAliases);
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo> fileInfoWithURL(const Url* url);
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo>
    fileInfoResolveAliasesWithURL(const Url* url);
    /// The reference is kept as it is, not taken anew; null leaves the item without one.
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo> withFileRef(const FileRef* reference,
                                                                     bool resolveAliases);
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo>
    fileInfoWithFileRef(const FileRef* reference);
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo>
    fileInfoResolveAliasesWithFileRef(const FileRef* reference);
    /// Takes the path that a folder and a name lead to; the empty one for null and for none.
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo> withFileSpec(const FileSpec* specification,
                                                                      bool resolveAliases);
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo>
    fileInfoWithFileSpec(const FileSpec* specification);
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo>
    fileInfoResolveAliasesWithFileSpec(const FileSpec* specification);
    /// A copy of a new, empty item: the argument is not read. Callers that want a duplicate ask the
    /// item for its `copy`.
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo> fileInfoWithFileInfo(TavMacFileInfo* item);

    /// Makes every folder that is missing on the way; the deepest one, or null.
    [[nodiscard]] static FileInfoPtr fileInfoCreateFolderWithFullPath(std::string_view path);
    /// The same for all but the last component, which is made as an empty file. One that is there
    /// IS EMPTIED; null where a folder is.
    [[nodiscard]] static FileInfoPtr fileInfoCreateFileWithFullPath(std::string_view path);
    /// One item a path, in their order.
    [[nodiscard]] static FileInfoArray
    fileInfoArrayFromPathsArray(std::span<const std::string> paths);
    /// The files on a pasteboard, by its list of names or else its list of URLs; none where it
    /// holds no files.
    [[nodiscard]] static FileInfoArray fileInfoArrayFromPasteboard(const Pasteboard& pasteboard);
    /// Has the drag drop the files that it promised into "Orvane_TempFiles" in the temporary
    /// folder; those that are there then. Nothing when the pasteboard promises none or no names
    /// come back.
    [[nodiscard]] static std::optional<FileInfoArray>
    promisedFilesOnPasteboard(const Pasteboard& pasteboard, DragInfo& dragInfo);

    // Panels, in which a person chooses one thing; null when nothing is chosen. They wait for the
    // person. A link that is chosen answers what it leads to. A nil prompt or title is the panel's
    // own; nil and the empty path leave the place to begin at to the panel.

    [[nodiscard]] static std::shared_ptr<TavMacFileInfo>
    chooseFolderWithPrompt(OptionalText prompt, OptionalText title, OptionalText startFolderPath);
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo>
    chooseFileWithPrompt(OptionalText prompt, OptionalText title, OptionalText startFolderPath);
    /// Without a title.
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo>
    chooseFolderWithPrompt(OptionalText prompt, OptionalText startFolderPath);
    /// Without a title. The item may be null.
    [[nodiscard]] static std::shared_ptr<TavMacFileInfo>
    chooseFolderWithPromptStartFolder(OptionalText prompt, TavBaseFileInfo* startFolder);

    // Between paths, URLs and references

    /// Nothing for nil, otherwise a file URL.
    [[nodiscard]] static std::optional<Url> urlFromPath(OptionalText path);
    /// Nothing unless it is the URL of a file on this host.
    [[nodiscard]] static std::optional<std::string> pathFromURL(const Url* url);
    /// Where the file is now; nothing when it is not found (docs/platform.md says where it is
    /// looked for).
    [[nodiscard]] static std::optional<std::string> pathFromFileRef(const FileRef& reference);
    /// A reference of zeros for nothing and for what is not there.
    [[nodiscard]] static FileRef fileRefFromPath(OptionalText path);
    [[nodiscard]] static FileRef fileRefFromURL(const Url* url);
    [[nodiscard]] static std::optional<std::string> pathFromFileSpec(const FileSpec& specification);
    [[nodiscard]] static FileRef fileRefFromFileSpec(const FileSpec& specification);
    /// Zero when the file is not found.
    [[nodiscard]] static FileSpec fileSpecFromFileRef(const FileRef& reference);

    [[nodiscard]] std::optional<Url> URL();
    /// Takes the reference if it is not valid: -50 for the empty path, -1 when no file is found at
    /// the path or at `resolvedPath`. The pointer may be null.
    Status fileRef(FileRef* outReference);
    /// Zero unless `fileRef` succeeds, whose status goes to the pointer, which may be null.
    [[nodiscard]] FileSpec fileSpecWithError(Status* outError);
    [[nodiscard]] FileSpec fileSpec();
    /// The path with every alias on the way resolved; nothing when a component does not exist.
    [[nodiscard]] virtual std::optional<std::string> resolvedPath();

    // Special folders; null where the host has none. They need not exist.

    /// Directories and domains are those of the platform's search paths (library 5, application
    /// support 14, ...; user 1, local 2).
    [[nodiscard]] static FileInfoPtr _specialFolder(std::uint32_t directory, std::uint32_t where);
    [[nodiscard]] static FileInfoPtr userLibraryFolder();
    [[nodiscard]] static FileInfoPtr globalLibraryFolder();
    [[nodiscard]] static FileInfoPtr userAppSupportFolder();
    [[nodiscard]] static FileInfoPtr globalAppSupportFolder();
    [[nodiscard]] static FileInfoPtr systemTempFolder();
    /// The folder for a four-character type ("docs", "desk", ...; see `internal::FolderType`) and a
    /// domain (0x8000 to 0x8005 as a signed number, of which the local one has the library and
    /// application support, and the others are the user's). Nothing when it does not exist, unless
    /// it is to be made.
    [[nodiscard]] static std::optional<std::string>
    findFolderPath(std::int16_t volume, std::uint32_t withType, bool createIfNotExist);
    [[nodiscard]] static FileInfoPtr findFolder(std::int16_t volume, std::uint32_t withType,
                                                bool createIfNotExist);

    // Names

    /// The name as a file name here: "/" becomes "_".
    [[nodiscard]] static std::string makeNameOSCompliant(std::string_view name);

    // Cleaning

    /// Removes what desktops leave on the volume of a path: its trash, desktop databases and
    /// markers at the root, ".DS_Store" and "._" files everywhere.
    static void removeMacGeneratedItemsAtPath(std::string_view path);

    /// A new item for the same path with what this one knows already.
    [[nodiscard]] virtual std::shared_ptr<TavMacFileInfo> copy();

    // Archiving: as an item known by its path, nothing else is kept

    /// As for any item; local ones are known here.
    [[nodiscard]] static Archived unarchiveFromData(BytesView data);
    [[nodiscard]] std::string className() const override;
    [[nodiscard]] std::vector<std::string> superclassNames() const override;

    /// Where the file is. Where it was given another name in its folder, that path is taken over.
    [[nodiscard]] std::string path() override;
    [[nodiscard]] std::string name() override;
    [[nodiscard]] std::string extension() override;
    void setName(std::string_view name) override;
    void setNameKeepingExtension(std::string_view name) override;
    [[nodiscard]] std::string makeValidFilename(std::string_view filename,
                                                bool encodeNonASCII) override;
    /// The path as people are shown it: the home folder as "~", each name as it is displayed.
    [[nodiscard]] std::string humanFriendlyPath() override;
    /// The name as it is displayed: without its extension where that is to be hidden.
    [[nodiscard]] std::string humanFriendlyName() override;
    [[nodiscard]] std::string kindString() override;
    [[nodiscard]] std::shared_ptr<Image> icon() override;
    [[nodiscard]] std::int32_t maxPathLength() override;
    [[nodiscard]] std::uint64_t preferredChunkSize() override;
    [[nodiscard]] bool supportsTimezones() override;
    /// Whether files keep local time for UTC: dates are shifted by the time zone's offset of now
    /// then. Never here.
    [[nodiscard]] virtual bool mustUseUTCDates();
    /// Four characters each as a number; those of "????" for a file without.
    [[nodiscard]] virtual std::uint32_t typeCode();
    [[nodiscard]] virtual std::uint32_t creatorCode();
    /// The type between apostrophes; "''" for a file without, empty for none.
    [[nodiscard]] virtual std::string typeCodeString();
    /// The name and the content of a regular file below 4 GiB; nothing for anything else.
    [[nodiscard]] virtual std::optional<FileWrapper> fileWrapper();
    // Through `ItemMedia::current()`.
    [[nodiscard]] std::optional<Value> metadata() override;
    void setMetadata(const Value& metadata) override;
    [[nodiscard]] bool hasDRM() override;
    /// Whether the item is the root of one of a device's two volumes; no device is known yet.
    [[nodiscard]] virtual bool isBlackberryInternalMemoryRoot();
    [[nodiscard]] virtual bool isBlackberryMemoryCardRoot();

    [[nodiscard]] bool exists() override;
    [[nodiscard]] bool isFolder() override;
    [[nodiscard]] bool isFile() override;
    [[nodiscard]] bool isBundle() override;
    [[nodiscard]] bool isVolume() override;
    [[nodiscard]] virtual bool isAlias();
    [[nodiscard]] virtual bool isAliasAllowingPrompts(bool allowingPrompts);
    [[nodiscard]] bool visible() override;
    /// Whether its owner may not write it. Of a link itself, never.
    [[nodiscard]] bool isLocked() override;
    /// Takes or gives back the right to write; a link itself has none. Failures are not told.
    void setLocked(bool locked) override;
    void setHideExtension(bool hide) override;
    [[nodiscard]] FileInfoPtr aliasTarget() override;
    [[nodiscard]] FileInfoPtr resolvedFileInfo() override;
    [[nodiscard]] std::uint32_t resolvedSize() override;
    bool resolveAlias() override;
    /// A broken alias becomes an item with the empty path, which does not exist. That an item was a
    /// broken alias is not forgotten by `refresh`: it resolves to the empty path also when what it
    /// leads to has come back. This is meant.
    virtual bool resolveAliasAllowingPrompts(bool allowingPrompts);

    /// One of the attributes by the platform's name ("NSFileSize", "NSFileModificationDate", ...),
    /// of a link those of the link; nothing for a file that does not exist, for names that are not
    /// known and for what the file has not.
    [[nodiscard]] virtual std::optional<Value> attribute(std::string_view key);
    [[nodiscard]] std::optional<Date> modificationDate() override;
    [[nodiscard]] std::optional<Date> creationDate() override;
    void setModificationDate(std::optional<Date> date) override;
    void setCreationDate(std::optional<Date> date) override;
    /// Of a file the low 32 bits of its size: 5 GiB read as 1 GiB.
    [[nodiscard]] std::uint64_t size() override;
    [[nodiscard]] std::uint64_t freeSpaceOnVolume() override;
    [[nodiscard]] FileInfoPtr volume() override;

    [[nodiscard]] FileInfoPtr parentFolder() override;
    [[nodiscard]] FileInfoPtr find(std::string_view name) override;
    [[nodiscard]] virtual std::shared_ptr<TavMacFileInfo> find(std::string_view name,
                                                               bool resolveAliases);
    [[nodiscard]] virtual std::shared_ptr<TavMacFileInfo>
    find(std::string_view name, bool resolveAliases, bool allowingPrompts);
    [[nodiscard]] FileInfoPtr findFirstDeep(std::string_view name) override;
    [[nodiscard]] FileInfoArray findDeep(std::string_view name) override;
    [[nodiscard]] FileInfoPtr tempFolder() override;

    using TavPathBasedFileInfo::folderContentsWithFilter;
    void folderContentsWithFilter(TavBaseFileInfoFilter* filter, FileInfoArray* withArray,
                                  bool* stopAccumulating, std::string_view rootNodePath) override;
    [[nodiscard]] FileInfoPtr createFolder(std::string_view path) override;
    [[nodiscard]] FileInfoPtr createUniqueFolder(std::string_view name) override;
    bool removeContents() override;
    bool remove() override;

    // Contents. Tokens hold the open file; a token of another back-end, one that is closed and null
    // have none. Any local item takes the token of any other. A class that reads or writes ranges
    // in a way of its own overrides those of 64 bits and `cloneRange`, too: they go straight to the
    // file.

    /// Null when it is no regular file that can be opened.
    [[nodiscard]] std::shared_ptr<OpenFileToken> openFileForReading() override;
    /// Null when there is no such file. ITS CONTENT IS GONE as soon as it is open.
    [[nodiscard]] std::shared_ptr<OpenFileToken> openFileForWriting() override;
    /// What was learned of a file that was open for writing is forgotten.
    void closeFile(OpenFileToken* token) override;
    /// As many bytes of the range as the file has; nothing without an open file, and when the read
    /// fails.
    [[nodiscard]] std::optional<Data>
    fileContentsWithRange(FileRange range, OpenFileToken* readFileUserData) override;
    /// Writes all the data at the location, whatever the range's length is. A file that ends before
    /// the location is made longer by zeros. -1 without an open file, and when the write fails.
    Status setFileContentsWithRange(BytesView data, FileRange range,
                                    OpenFileToken* writeFileUserData) override;
    /// Of an alias that of what it leads to, as its ranges are those.
    [[nodiscard]] std::uint64_t wholeSize() override;
    [[nodiscard]] std::optional<Data>
    fileContentsWithWholeRange(WholeFileRange range, OpenFileToken* readFileUserData) override;
    Status setFileContentsWithWholeRange(BytesView data, WholeFileRange range,
                                         OpenFileToken* writeFileUserData) override;
    bool cloneRange(FileRange range, OpenFileToken* readFileUserData, TavBaseFileInfo* destination,
                    OpenFileToken* writeFileUserData) override;
    [[nodiscard]] CopySupport* copySupport() override;
    using TavPathBasedFileInfo::setFileContents;
    /// The whole content; nothing for what is no file that can be read. A delegate is told after
    /// every chunk of a file that is longer than one. When it asks to stop, the rest of the answer
    /// is zeros; a caller who does so has no use for it. Chunks end at `size`, so that a delegate
    /// gets 1 GiB of a file of 5 GiB; what was cut off meanwhile is missing from the answer.
    [[nodiscard]] std::optional<Data> fileContentsWithProgress(const ProgressDelegate* progress,
                                                               void* userData) override;
    /// Writes the whole content in place: links lead on, other names of the file show it, too. Not
    /// atomic; after a failure a part may be there. A delegate is told after every chunk of data
    /// longer than one; when it asks to stop, the file keeps the chunks so far, and the answer is
    /// true. False with a line in the log for an item that does not exist or is a folder.
    bool setFileContents(BytesView data, const ProgressDelegate* withProgress,
                         void* userData) override;
    using TavPathBasedFileInfo::createFile;
    /// Makes a child, or for a file a sibling, with attributes by their names (those of `attribute`
    /// that can be set), of which nobody is told. A file that has the name is rewritten, attributes
    /// left alone, unless the name is to be unique; then it is that of `uniqueFilename`, and nobody
    /// else's file is touched. Null, with a line in the log, when a folder is in the way. An item
    /// is answered also where nothing could be made or written: ask it whether it exists.
    [[nodiscard]] FileInfoPtr createFile(std::string_view name, BytesView contents,
                                         const Value::Dictionary* attributes, bool ensureUniqueName,
                                         const ProgressDelegate* withProgress,
                                         void* userData) override;

    // Copies. The one in pieces, with progress, is that of every item.

    using TavPathBasedFileInfo::copyTo;
    /// Under the name that the item has.
    Status copyTo(TavBaseFileInfo* destination) override;
    Status copyTo(TavBaseFileInfo* destination, FileInfoPtr* outNewItem) override;
    /// Copies a file, a link or a folder with all that is in it into a folder (that of a file) by
    /// the file manager (`copyPath`). -50 when this does not exist or the destination is neither.
    /// -1 and null for every failure, among them something that has the name already. To an item
    /// of another back-end it goes as from any item.
    Status copyTo(TavBaseFileInfo* destination, std::string_view withName,
                  FileInfoPtr* outNewItem) override;
    /// Copies the content and both dates onto another file, which is made when it is missing, with
    /// the folders on the way. THE CONTENT OF ONE THAT IS THERE IS GONE as soon as it is open, and
    /// the file with it when the copy fails. Nothing happens when both are one file.
    ///
    /// The delegate is told before and after the writing of each chunk, and of 100 percent in the
    /// end, whose answer does not count. Every failure is raised: "copyToFile" with the reason, and
    /// "File copy canceled" after `cancelCopy`, also when that came before. The destination is
    /// removed then, and whatever else a delegate raises is handed on. What counts is `size`: of
    /// 5 GiB 1 GiB is copied, of an alias as many bytes as its text has. A source that becomes
    /// shorter meanwhile makes a shorter copy.
    virtual void copyToFile(TavBaseFileInfo* destination, const ProgressDelegate* withProgress,
                            void* userData);

    // Archives, by programs of the host (docs/platform.md), which are waited for. Nothing where the
    // item does not exist or the program is missing. How a program ended is not told. Each uses one
    // place in the temporary folder: two at the same time disturb each other.

    /// The bytes of a zip archive with the item under its whole path, by zip. The archive stays in
    /// "OrvaneTemp/temp.zip" in the temporary folder, and replaces that of before.
    [[nodiscard]] std::optional<Data> zip() override;
    /// The same with the item under its name, by ditto or bsdtar.
    [[nodiscard]] std::optional<Data> ditto() override;
    /// Packs the item, like `ditto`, into the folder, under its name with the extension "zip"; A
    /// FILE OF THAT NAME IS REMOVED FIRST. The archive's item, whether or not it was made; null for
    /// no folder.
    [[nodiscard]] FileInfoPtr zipToFolder(TavBaseFileInfo* folder) override;
    /// Unpacks this zip archive into "OrvaneUnzip-N" in the temporary folder, where N are sixtieths
    /// of a second since start-up: what is at the top level then. THE FOLDER IS EMPTIED FIRST, also
    /// of what was unpacked in the same sixtieth. It stays; the caller removes it. Nothing in it
    /// leads out of it; of an archive that would fill the volume, or that is none, nothing is
    /// there.
    [[nodiscard]] std::optional<FileInfoArray> unzip() override;

    /// Does not replace what stands there. To another volume it is copied and then removed, as by
    /// `movePath`. 0, or -1 for every failure; then the item keeps its path.
    Status moveTo(TavBaseFileInfo* destination) override;
    void setPath(std::string_view path) override;
    void refresh() override;

  protected:
    TavMacFileInfo();

    /// Stores the path, tilde expanded. Nothing is asked of the file system.
    void initWithPath(OptionalText path) override;
    void _setPath(OptionalText path) override;
    virtual void _setPath(OptionalText path, bool updateFileRef);

    /// Asks whether the item is a folder and an alias, if that is not known; whether it is now.
    bool _cacheInfoAllowingPrompts(bool allowingPrompts);
    /// Asks for the attributes of the file itself, if they are not known; whether they are now.
    bool _cacheAttributes();
    void _cacheBlackberryInfo();
    void _clearCaches();
    /// The identifier of the item's volume; 0 when it cannot be had.
    [[nodiscard]] std::uint64_t _vRefNum();

  private:
    friend class internal::FolderWalk;
    friend class internal::LocalCopySeries;
    friend class internal::SmallCopy;

    Result<FileAttributes> _ownAttributes();
    Result<FileAttributes> _targetAttributes();
    Status _takeFileRef(std::optional<FileAttributes>& learned);
    bool _followFile();
    /// Where the file is now, asked for once; nothing where there is none.
    std::optional<std::string> _pathOfExisting();
    bool _cacheAliasInfo(const std::optional<FileAttributes>& learned);
    Result<VolumeInfo> _volumeInfo();
    std::string _pathOnVolume(const std::optional<FileAttributes>& learned);
    std::uint32_t _code(std::string_view attribute);
    /// Null where the file has none.
    const Data* _extendedAttribute(std::string_view name);
    bool _hidesExtension();

    internal::FileNumbers _itsFileRef;
    std::unique_ptr<FileRef> _aliasRef; ///< Of the alias's target.
    std::unique_ptr<internal::CachedAttributes> _attrs;
    /// The open folder of the listing that is asking its filter about this item; null at any other
    /// time, and once the item has another path. Questions go through it, which spares the way
    /// along the path, and the path stands meanwhile.
    OpenFolder* _listingFolder = nullptr;
    /// While many files are copied into this folder; null at any other time.
    internal::LocalCopySeries* _copySeries = nullptr;
    bool _folderAliasValid = false; ///< The next three are known.
    bool _isFolder = false;         ///< The item, or what an alias leads to.
    bool _isAlias = false;
    bool _badAlias = false; ///< The alias leads to nothing.
    bool _fileRefValid = false;
    /// The file was looked for and is not in its folder any more.
    bool _isLost = false;
    std::int8_t _hasDRM = -1; ///< -1 not yet known, 0 no, 1 yes.
    bool _blackberryInfoValid = false;
    bool _isBlackberryInternalMemoryRoot = false;
    bool _isBlackberryMemoryCardRoot = false;
};

/// The one way from an item to its local form; null for one that is not local.
[[nodiscard]] TavMacFileInfo* asMacFileInfo(TavBaseFileInfo* item);

} // namespace tav
