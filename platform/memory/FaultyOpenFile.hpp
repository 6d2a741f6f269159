#pragma once

#include "platform/memory/FaultyFileSystem.hpp"

#include <memory>

namespace tav {

/// A file that a `FaultyFileSystem` opened, whose calls count there.
class FaultyOpenFile final : public OpenFile {
  public:
    FaultyOpenFile(FaultyFileSystem& files, std::unique_ptr<OpenFile> inner)
        : files_(files), inner_(std::move(inner)) {}

    /// What the inner file system answered, with its file in one of these.
    static Result<std::unique_ptr<OpenFile>> over(FaultyFileSystem& files,
                                                  Result<std::unique_ptr<OpenFile>> inner);

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
    void expectWrite(std::uint64_t offset, std::uint64_t length) override;
    void forgetCached() override;
    [[nodiscard]] int descriptor() const override;
    SystemError setModificationDate(Date date) override;
    Result<Data> extendedAttribute(std::string_view name) override;
    SystemError setExtendedAttribute(std::string_view name, BytesView value) override;
    SystemError sync() override;
    SystemError close() override;

  private:
    FaultyFileSystem& files_;
    std::unique_ptr<OpenFile> inner_;
};

} // namespace tav
