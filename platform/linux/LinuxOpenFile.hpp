#pragma once

#include "platform/OpenFile.hpp"
#include "platform/linux/Descriptor.hpp"

#include <optional>

namespace tav {

/// A regular file held open by a descriptor of the kernel, which has the position.
class LinuxOpenFile final : public OpenFile {
  public:
    /// `isWritable`: whether the descriptor was opened for writing, too.
    LinuxOpenFile(Descriptor file, bool isWritable)
        : file_(std::move(file)), isWritable_(isWritable) {}

    Result<FileAttributes> attributes() override;
    Result<std::size_t> read(std::span<std::byte> buffer) override;
    Result<std::size_t> readAt(std::uint64_t offset, std::span<std::byte> buffer) override;
    [[nodiscard]] bool canBeReadBeside() const override { return true; }
    Result<std::size_t> writeOnce(BytesView bytes) override;
    SystemError write(BytesView bytes) override;
    Result<std::uint64_t> position() override;
    SystemError setPosition(std::uint64_t offset) override;
    SystemError setSize(std::uint64_t size) override;
    Result<DataStretch> nextData(std::uint64_t offset) override;
    SystemError cloneRange(OpenFile& from, std::uint64_t fromOffset, std::uint64_t length,
                           std::uint64_t offset) override;
    void expectWrite(std::uint64_t offset, std::uint64_t length) override;
    void forgetCached() override;
    [[nodiscard]] int descriptor() const override;
    SystemError setModificationDate(Date date) override;
    Result<Data> extendedAttribute(std::string_view name) override;
    SystemError setExtendedAttribute(std::string_view name, BytesView value) override;
    SystemError sync() override;
    SystemError close() override;

  private:
    [[nodiscard]] bool canWrite() const { return file_.isOpen() && isWritable_; }

    Descriptor file_;
    bool isWritable_;
    std::optional<bool> gainsByExpecting_; ///< Unknown until somebody expects.
};

} // namespace tav
