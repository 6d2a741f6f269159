#pragma once

#include "platform/memory/MemoryFileSystem.hpp"

#include <string>
#include <string_view>

namespace tav {

/// A file of a `MemoryFileSystem` held open; it keeps its content when it is removed or replaced,
/// and takes room for as long. A file grows to a GiB at most: EFBIG. One thread.
class MemoryOpenFile final : public OpenFile {
  public:
    MemoryOpenFile(MemoryFileSystem& files, MemoryNode& node, std::string_view path,
                   const OpenOptions& options);
    ~MemoryOpenFile() override;

    Result<FileAttributes> attributes() override;
    Result<std::size_t> read(std::span<std::byte> buffer) override;
    Result<std::size_t> readAt(std::uint64_t offset, std::span<std::byte> buffer) override;
    Result<std::size_t> writeOnce(BytesView bytes) override;
    SystemError write(BytesView bytes) override;
    Result<std::uint64_t> position() override;
    SystemError setPosition(std::uint64_t offset) override;
    SystemError setSize(std::uint64_t size) override;
    Result<DataStretch> nextData(std::uint64_t offset) override;
    SystemError cloneRange(OpenFile& from, std::uint64_t fromOffset, std::uint64_t length,
                           std::uint64_t offset) override;
    void forgetCached() override;
    [[nodiscard]] int descriptor() const override;
    SystemError setModificationDate(Date date) override;
    Result<Data> extendedAttribute(std::string_view name) override;
    SystemError setExtendedAttribute(std::string_view name, BytesView value) override;
    SystemError sync() override;
    SystemError close() override;

  private:
    SystemError begin(std::string_view operation);
    SystemError beginChange(std::string_view operation);
    [[nodiscard]] std::size_t copyTo(std::uint64_t offset, std::span<std::byte> buffer) const;
    Result<std::size_t> writeWhatFits(BytesView bytes);
    void letGo();

    MemoryFileSystem& files_;
    MemoryNode* node_; ///< Nothing when closed.
    std::string path_;
    bool isWritable_;
    bool appends_;
    std::uint64_t position_ = 0;
};

} // namespace tav
