#pragma once

#include "base/Data.hpp"
#include "base/Date.hpp"
#include "base/FileRef.hpp"
#include "base/Image.hpp"
#include "base/KeyedCoding.hpp"
#include "base/OptionalText.hpp"
#include "base/Status.hpp"
#include "base/Url.hpp"
#include "base/Value.hpp"
#include "fileinfo/local/FileSpec.hpp"
#include "platform/FileSystem.hpp"
#include "platform/Pasteboard.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

class KeyedArchiver;
class KeyedUnarchiver;
class TavFileInfo;
class TavFileInfoFilter;

namespace internal {
class CachedAttributes;
} // namespace internal

/// An older item, null for nil.
using TavFileInfoPtr = std::shared_ptr<TavFileInfo>;
using TavFileInfoArray = std::vector<TavFileInfoPtr>;

/// The older item of the local file system, which stands alone: the media operations and the older
/// node tree take it. What is named as in `TavMacFileInfo` does the same and is explained there;
/// here stands where the two differ:
/// - Paths are standardised when an item is made ("/a/../b" is "/b"), and there may be none at all.
/// - Attributes, dates, codes and sizes of a link are those of what it leads to. Changes are as
///   there: nothing but the modification date of a link can be changed.
/// - A link that leads nowhere exists, but is neither file nor folder nor alias, and has no
///   attributes.
/// - Listings go through links, log nothing, remove nothing and do not raise.
///
/// Not every operation is there, and none is meant to be overridden. An item serves one thread at a
/// time.
class TavFileInfo : public Coding, public std::enable_shared_from_this<TavFileInfo> {
  public:
    TavFileInfo(const TavFileInfo&) = delete;
    TavFileInfo& operator=(const TavFileInfo&) = delete;
    ~TavFileInfo() override;

    // Making items

    /// Nil stays nil: an item without a path.
    [[nodiscard]] static TavFileInfoPtr fileInfoWithPath(OptionalText path);
    [[nodiscard]] static TavFileInfoPtr fileInfoResolveAliasesWithPath(std::string_view path);
    [[nodiscard]] static TavFileInfoPtr withPath(OptionalText path, bool resolveAliases);
    /// Without a path unless it is a file URL.
    [[nodiscard]] static TavFileInfoPtr withURL(const Url* url, bool resolveAliases);
    [[nodiscard]] static TavFileInfoPtr fileInfoWithURL(const Url* url);
    [[nodiscard]] static TavFileInfoPtr fileInfoResolveAliasesWithURL(const Url* url);
    /// Without a path for null and where the file is not found.
    [[nodiscard]] static TavFileInfoPtr withFileRef(const FileRef* reference, bool resolveAliases);
    [[nodiscard]] static TavFileInfoPtr fileInfoWithFileRef(const FileRef* reference);
    [[nodiscard]] static TavFileInfoPtr fileInfoResolveAliasesWithFileRef(const FileRef* reference);
    [[nodiscard]] static TavFileInfoPtr withFileSpec(const FileSpec* specification,
                                                     bool resolveAliases);
    [[nodiscard]] static TavFileInfoPtr fileInfoWithFileSpec(const FileSpec* specification);
    [[nodiscard]] static TavFileInfoPtr
    fileInfoResolveAliasesWithFileSpec(const FileSpec* specification);
    /// A copy of a new item without a path: the argument is not read.
    [[nodiscard]] static TavFileInfoPtr fileInfoWithFileInfo(TavFileInfo* item);
    [[nodiscard]] static TavFileInfoArray
    fileInfoArrayFromPathsArray(std::span<const std::string> paths);
    [[nodiscard]] static TavFileInfoArray fileInfoArrayFromPasteboard(const Pasteboard& pasteboard);
    /// Forgets the path and all that was learned.
    void initX();
    [[nodiscard]] TavFileInfoPtr copy();

    // Archiving: the path and nothing else

    void encodeWithCoder(KeyedArchiver& coder);
    void initWithCoder(KeyedUnarchiver& coder);
    void encode(KeyedArchiver& archiver) const override;
    [[nodiscard]] std::string className() const override;

    // Panels

    [[nodiscard]] static TavFileInfoPtr chooseFolderWithPrompt(OptionalText prompt,
                                                               OptionalText startFolderPath);
    /// The item may be null.
    [[nodiscard]] static TavFileInfoPtr chooseFolderWithPromptStartFolder(OptionalText prompt,
                                                                          TavFileInfo* startFolder);

    // Between paths, URLs and references

    [[nodiscard]] static std::optional<Url> urlFromPath(OptionalText path);
    [[nodiscard]] static std::optional<std::string> pathFromURL(const Url* url);
    [[nodiscard]] static std::optional<std::string> pathFromFileRef(const FileRef& reference);
    [[nodiscard]] static std::optional<std::string> pathFromFileSpec(const FileSpec& specification);
    [[nodiscard]] static FileRef fileRefFromPath(OptionalText path);
    [[nodiscard]] static FileRef fileRefFromURL(const Url* url);
    [[nodiscard]] static FileRef fileRefFromFileSpec(const FileSpec& specification);
    [[nodiscard]] static FileSpec fileSpecFromFileRef(const FileRef& reference);

    /// The item's own reference, as long as the item is not changed; null when no file is found.
    [[nodiscard]] const FileRef* fileRef();
    /// The same with the reason, unless the pointer is null: -50 for an item without a path, -1
    /// when no file is found at the path or at `resolvedPath`.
    const FileRef* fileRefWithError(Status* outError);
    [[nodiscard]] FileSpec fileSpecWithError(Status* outError);
    [[nodiscard]] FileSpec fileSpec();
    [[nodiscard]] std::optional<std::string> resolvedPath();

    // Special folders

    [[nodiscard]] static TavFileInfoPtr _specialFolder(std::uint32_t directory,
                                                       std::uint32_t where);
    [[nodiscard]] static TavFileInfoPtr userLibraryFolder();
    [[nodiscard]] static TavFileInfoPtr globalLibraryFolder();
    [[nodiscard]] static TavFileInfoPtr userAppSupportFolder();
    [[nodiscard]] static TavFileInfoPtr globalAppSupportFolder();
    [[nodiscard]] static TavFileInfoPtr tempFolder();
    [[nodiscard]] static std::optional<std::string>
    findFolderPath(std::int16_t volume, std::uint32_t withType, bool createIfNotExist);
    [[nodiscard]] static TavFileInfoPtr findFolder(std::int16_t volume, std::uint32_t withType,
                                                   bool createIfNotExist);

    // Names

    /// Where the file is; the empty text for an item without a path.
    [[nodiscard]] std::string path();
    /// The path, or "TavFileInfo has (null) path.".
    [[nodiscard]] std::string description();
    [[nodiscard]] std::string name();
    [[nodiscard]] std::string nameWithoutExtension();
    [[nodiscard]] std::string extension();
    void setName(std::string_view name);
    void setNameKeepingExtension(std::string_view name);
    [[nodiscard]] static std::string makeNameOSCompliant(std::string_view name);
    /// The name when nothing has it in the folder (its own or the file's), otherwise "name-1.ext",
    /// "name-2.ext", ...
    [[nodiscard]] std::string uniqueFilename(std::string_view name);
    /// Of what has the item's extension, in the user's words, whatever the file itself is and also
    /// when there is none; "unknown" in the user's language otherwise.
    [[nodiscard]] std::string kindString();
    /// The desktop's icon of the file; null where it has none.
    [[nodiscard]] std::shared_ptr<Image> icon();
    /// The picture that the file holds, where it can be read (a PNG file of no more than 1024
    /// pixels a side), or else the desktop's icon as an object of its own of 128 by 128 points.
    /// Null for what does not exist.
    [[nodiscard]] std::shared_ptr<Image> preview();
    [[nodiscard]] bool visible();

    // Equality

    /// Whether the other object is an older item whose path is equal, ignoring case. No path is
    /// equal to nothing.
    [[nodiscard]] bool isEqualTo(Coding* other);
    [[nodiscard]] bool isEqualToFileInfo(TavFileInfo* other);
    /// Whether the other's path begins with this folder's, ignoring case. Nothing is asked of the
    /// character that follows: the folder "/a/b" contains "/a/bc".
    [[nodiscard]] bool contains(TavFileInfo* other);

    // Kinds

    [[nodiscard]] bool exists();
    [[nodiscard]] bool isFolder();
    [[nodiscard]] bool isFile();
    [[nodiscard]] bool isAlias();
    /// Asks whether the item is a folder and an alias, if that is not known; whether it is now.
    bool cacheInfo();
    [[nodiscard]] TavFileInfoPtr aliasTarget();
    bool resolveAlias();
    [[nodiscard]] TavFileInfoPtr resolvedFileInfo();
    [[nodiscard]] std::uint32_t resolvedSize();

    // Attributes

    /// Asks for the attributes of what the path leads to, if they are not known; whether they are
    /// now.
    bool cacheAttributes();
    [[nodiscard]] std::uint32_t typeCode();
    [[nodiscard]] std::uint32_t creatorCode();
    [[nodiscard]] std::string typeCodeString();
    [[nodiscard]] std::optional<Date> modificationDate();
    [[nodiscard]] std::optional<Date> creationDate();
    void setModificationDate(std::optional<Date> date);
    void setCreationDate(std::optional<Date> date);
    [[nodiscard]] bool isLocked();
    void setLocked(bool locked);
    void setHideExtension(bool hide);
    /// The low 32 bits of the size that the file system tells, of a folder, too: nothing is summed.
    [[nodiscard]] std::uint32_t size();

    // Lookup

    [[nodiscard]] TavFileInfoPtr find(std::string_view name);
    [[nodiscard]] TavFileInfoPtr find(std::string_view name, bool resolveAliases);
    [[nodiscard]] TavFileInfoArray findDeep(std::string_view name);
    [[nodiscard]] TavFileInfoPtr findFirstDeep(std::string_view name);
    /// Of "/" it is "/".
    [[nodiscard]] TavFileInfoPtr parentFolder();

    // Listing, in the file system's order; a folder that cannot be read lists nothing. The filter
    // is lent; null lets everything in.

    [[nodiscard]] TavFileInfoArray folderContents();
    [[nodiscard]] TavFileInfoArray folderContentsWithFilter(TavFileInfoFilter* filter);
    /// Appends to the array. The flag, which may be null, is set when the filter ends the listing.
    void folderContentsWithFilter(TavFileInfoFilter* filter, TavFileInfoArray* withArray,
                                  bool* stopAccumulating);
    /// All that the filter lets in at any depth, each once. What is inside a folder stands before
    /// it; a folder that is not let in is searched all the same. See `legacy::GoDeepFilter` for
    /// links.
    [[nodiscard]] TavFileInfoArray folderContentsDeepWithFilter(TavFileInfoFilter* filter);
    /// Appends what is in this folder: aliases of files and files always, anything else unless the
    /// array has what it leads to already.
    void addFolderContentsToArray(TavFileInfoArray* array);
    /// Whether the `resolvedPath` of an element is the item's path, ignoring case.
    [[nodiscard]] static bool _array(const TavFileInfoArray& array, TavFileInfo* containsInfo);

    // Contents

    /// Null unless it exists and is a regular file that can be read.
    [[nodiscard]] std::optional<Data> fileContents();
    /// Replaces the content of a file that exists, in place.
    bool setFileContents(BytesView data);
    /// A file that has the name is rewritten, and keeps its attributes; a folder makes it null. The
    /// item does not exist where the file could not be made.
    [[nodiscard]] TavFileInfoPtr createFile(std::string_view name, BytesView contents,
                                            const Value::Dictionary* attributes);
    /// With another name where this one is taken: "name-1.ext", "name-2.ext", ...
    [[nodiscard]] TavFileInfoPtr createFile(std::string_view name, BytesView contents,
                                            const Value::Dictionary* attributes,
                                            bool ensureUniqueName);

    // Copying

    /// Without the new item.
    Status copyTo(TavFileInfo* destination);
    /// As `copyPath` does it, under the item's own name in the destination, or in the folder that
    /// it lies in when it is a file; nothing is replaced. -50 when there is nothing to copy, and
    /// then the pointer's item stays what it was; -1 for every other failure, with null for the new
    /// item. The pointer may be null.
    Status copyTo(TavFileInfo* destination, TavFileInfoPtr* outNewItem);

    // Changing

    /// One level only: a folder that is there is answered as it is, for a file it is null.
    [[nodiscard]] TavFileInfoPtr createFolder(std::string_view name);
    bool removeContents();
    bool remove();
    void refresh();

  protected:
    TavFileInfo();

  private:
    [[nodiscard]] static TavFileInfoPtr itemIn(std::string_view folder, std::string_view name);
    [[nodiscard]] bool hasNoPath() const { return !itsPath_ || itsPath_->empty(); }
    /// Without looking where the file is now.
    [[nodiscard]] std::string_view storedPath() const {
        return itsPath_ ? std::string_view(*itsPath_) : std::string_view();
    }
    /// The folder that an operation of this item works in: the item itself, or what it lies in.
    [[nodiscard]] TavFileInfoPtr folder();
    Status takeFileRef(std::optional<FileAttributes>& learned);
    [[nodiscard]] Result<FileAttributes> ownAttributes();
    [[nodiscard]] std::optional<Value> attribute(std::string_view key);
    [[nodiscard]] std::uint32_t code(std::string_view extendedAttribute);

    std::optional<std::string> itsPath_;
    bool folderAliasValid_ = false; ///< The next two are known.
    bool isFolder_ = false;         ///< The item, or what an alias leads to.
    bool isAlias_ = false;
    FileRef aliasRef_; ///< Of what the item leads to.
    bool fileRefValid_ = false;
    /// The file was looked for and is not in its folder any more.
    bool isLost_ = false;
    FileRef itsFileRef_;
    std::unique_ptr<internal::CachedAttributes> attrs_;
};

} // namespace tav
