#pragma once

#include "base/PathString.hpp"
#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/TavWindowsPathBasedFileInfo.hpp"
#include "foundation/WindowsPath.hpp"
#include "platform/memory/MemoryFileSystem.hpp"

#include <string>
#include <string_view>

namespace tav {

/// An item of a device that exists in memory only: the drive "E:\" is the folder "/E" there. As
/// much of a back-end as a device with a plain file protocol has. It has ranges of 32 bits.
class DeviceFileInfo : public TavWindowsPathBasedFileInfo {
  public:
    /// What all devices prefer.
    static inline std::uint64_t chunkSize = 8192;

    [[nodiscard]] static std::shared_ptr<DeviceFileInfo> at(FileSystem& device,
                                                            std::string_view path) {
        const auto item = internal::allocateItem<DeviceFileInfo>();
        item->device_ = &device;
        item->initWithPath(path);
        return item;
    }

    bool exists() override { return attributes().ok(); }
    bool isFolder() override { return kindIs(FileKind::Folder); }
    bool isFile() override { return kindIs(FileKind::Regular); }
    bool visible() override { return !name().starts_with('.'); }
    std::int32_t maxPathLength() override { return 255; }

    std::uint64_t size() override {
        const auto found = attributes();
        return isFile() ? found.value().size : TavBaseFileInfo::size();
    }
    std::optional<Date> modificationDate() override {
        const auto found = attributes();
        return found.ok() ? std::optional(found.value().modificationDate) : std::nullopt;
    }
    void setModificationDate(std::optional<Date> date) override {
        if (date) {
            static_cast<void>(device_->setModificationDate(place(), *date));
        }
    }

    FileInfoPtr volume() override { return at(*device_, decomposeWindowsPath(_itsPath).drive); }
    FileInfoPtr parentFolder() override {
        const FileInfoPtr parent = TavWindowsPathBasedFileInfo::parentFolder();
        return parent ? at(*device_, parent->path()) : nullptr;
    }
    FileInfoPtr find(std::string_view name) override {
        const FileInfoPtr folder = isFile() ? parentFolder() : shared_from_this();
        return at(*device_, windowsStringByAppendingPathComponent(
                                folder ? folder->path() : std::string(), name));
    }

    using TavWindowsPathBasedFileInfo::folderContentsWithFilter;
    void folderContentsWithFilter(TavBaseFileInfoFilter* filter, FileInfoArray* withArray,
                                  bool* stopAccumulating,
                                  std::string_view /*rootNodePath*/) override {
        const auto entries = device_->folderEntries(place());
        if (!entries.ok() || withArray == nullptr) {
            return;
        }
        bool stop = false;
        for (const FolderEntry& entry : entries.value()) {
            const FileInfoPtr child = find(entry.name);
            if (filter == nullptr || filter->includeItem(*child, &stop)) {
                withArray->push_back(child);
            }
            if (stop) {
                if (stopAccumulating != nullptr) {
                    *stopAccumulating = true;
                }
                return;
            }
        }
    }

    FileInfoPtr createFolder(std::string_view name) override {
        const FileInfoPtr made = find(name);
        if (!made->isFolder()) {
            static_cast<void>(device_->createFolder(placeOf(made->path()), 0777));
        }
        return made->isFolder() ? made : nullptr;
    }
    FileInfoPtr createUniqueFolder(std::string_view name) override {
        return createFolder(uniqueFilename(name));
    }
    using TavWindowsPathBasedFileInfo::createFile;
    FileInfoPtr createFile(std::string_view name, BytesView contents,
                           const Value::Dictionary* /*attributes*/, bool ensureUniqueName,
                           const ProgressDelegate* /*withProgress*/, void* /*userData*/) override {
        const FileInfoPtr made = find(ensureUniqueName ? uniqueFilename(name) : std::string(name));
        return device_->writeFile(placeOf(made->path()), contents, 0666).isNone() ? made : nullptr;
    }

    bool remove() override {
        if (isFolder()) {
            return removeContents() && device_->removeFolder(place()).isNone();
        }
        return device_->removeFile(place()).isNone();
    }
    Status moveTo(TavBaseFileInfo* destination) override {
        const SystemError error = device_->move(place(), placeOf(destination->path()), Replace::No);
        return error.isNone() ? TavWindowsPathBasedFileInfo::moveTo(destination) : Status::Failure;
    }
    void setName(std::string_view name) override {
        if (!exists() || name.empty()) {
            return;
        }
        const FileInfoPtr moved = parentFolder()->find(name);
        static_cast<void>(moveTo(moved.get()));
    }

    std::uint64_t preferredChunkSize() override { return chunkSize; }
    /// Always enough; what the memory has no room for is not written.
    std::uint64_t freeSpaceOnVolume() override { return std::uint64_t{1} << 40; }
    std::optional<Date> creationDate() override {
        const auto found = attributes();
        return found.ok() ? found.value().creationDate : std::nullopt;
    }
    std::shared_ptr<OpenFileToken> openFileForReading() override { return openFile({}); }
    std::shared_ptr<OpenFileToken> openFileForWriting() override {
        OpenOptions options;
        options.write = true;
        const auto token = openFile(options);
        return token && token->file->setSize(0).isNone() ? token : nullptr;
    }
    void closeFile(OpenFileToken* token) override {
        if (auto* const own = dynamic_cast<Token*>(token)) {
            own->file.reset();
        }
    }
    std::optional<Data> fileContentsWithRange(FileRange range,
                                              OpenFileToken* readFileUserData) override {
        auto* const own = dynamic_cast<Token*>(readFileUserData);
        if (own == nullptr || !own->file) {
            return std::nullopt;
        }
        Data chunk = own->takeBuffer(range.length);
        const auto count = own->file->readAt(range.location, chunk);
        if (!count.ok()) {
            return std::nullopt;
        }
        chunk.resize(count.value());
        return chunk;
    }
    Status setFileContentsWithRange(BytesView data, FileRange range,
                                    OpenFileToken* writeFileUserData) override {
        auto* const own = dynamic_cast<Token*>(writeFileUserData);
        return own != nullptr && own->file && own->file->setPosition(range.location).isNone() &&
                       own->file->write(data).isNone()
                   ? Status::Success
                   : Status::Failure;
    }

    using TavWindowsPathBasedFileInfo::setFileContents;
    bool setFileContents(BytesView data, const ProgressDelegate* /*withProgress*/,
                         void* /*userData*/) override {
        return device_->writeFile(place(), data, 0666).isNone();
    }
    std::optional<Data> fileContentsWithProgress(const ProgressDelegate* /*progress*/,
                                                 void* /*userData*/) override {
        auto content = device_->readFile(place(), std::uint64_t{1} << 30);
        return content.ok() ? std::optional(std::move(content).value()) : std::nullopt;
    }

  protected:
    DeviceFileInfo() = default;

  private:
    struct Token : OpenFileToken {
        std::unique_ptr<OpenFile> file;
    };
    std::shared_ptr<Token> openFile(const OpenOptions& options) {
        auto opened = device_->open(place(), options);
        if (!opened.ok()) {
            return nullptr;
        }
        const auto token = std::make_shared<Token>();
        token->file = std::move(opened).value();
        return token;
    }

    /// Where a path of the device lies in the memory's tree.
    static std::string placeOf(std::string_view path) {
        const WindowsPathParts parts = decomposeWindowsPath(path);
        return stringByAppendingPathComponent('/' + parts.drive.substr(0, 1),
                                              pathFromWindowsPath(parts.path));
    }
    [[nodiscard]] std::string place() const { return placeOf(_itsPath); }
    [[nodiscard]] Result<FileAttributes> attributes() const {
        return _itsPath.empty() ? Result<FileAttributes>(SystemError(ENOENT))
                                : device_->attributes(place());
    }
    [[nodiscard]] bool kindIs(FileKind kind) const {
        const auto found = attributes();
        return found.ok() && found.value().kind == kind;
    }

    FileSystem* device_ = nullptr;
};

} // namespace tav
