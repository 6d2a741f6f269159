#include "platform/memory/FaultyOpenFile.hpp"

namespace tav {

Result<std::unique_ptr<OpenFile>> FaultyOpenFile::over(FaultyFileSystem& files,
                                                       Result<std::unique_ptr<OpenFile>> inner) {
    if (!inner.ok()) {
        return inner;
    }
    return Result<std::unique_ptr<OpenFile>>(
        std::make_unique<FaultyOpenFile>(files, std::move(inner).value()));
}

Result<FileAttributes> FaultyOpenFile::attributes() {
    const SystemError error = files_.count("OpenFile.attributes");
    return error.isNone() ? inner_->attributes() : error;
}

Result<std::size_t> FaultyOpenFile::read(std::span<std::byte> buffer) {
    const SystemError error = files_.count("OpenFile.read");
    return error.isNone() ? inner_->read(buffer) : error;
}

Result<std::size_t> FaultyOpenFile::readAt(std::uint64_t offset, std::span<std::byte> buffer) {
    const SystemError error = files_.count("OpenFile.readAt");
    return error.isNone() ? inner_->readAt(offset, buffer) : error;
}

Result<std::size_t> FaultyOpenFile::writeOnce(BytesView bytes) {
    const auto call = files_.countWrite("OpenFile.writeOnce", bytes.size());
    if (!call.error.isNone()) {
        return call.error;
    }
    auto written = inner_->writeOnce(bytes.first(call.bytes));
    // A short write is a success here, and says how short it was.
    static_cast<void>(FaultyFileSystem::finish(call, written.error()));
    return written;
}

SystemError FaultyOpenFile::write(BytesView bytes) {
    const auto call = files_.countWrite("OpenFile.write", bytes.size());
    return call.error.isNone()
               ? FaultyFileSystem::finish(call, inner_->write(bytes.first(call.bytes)))
               : call.error;
}

Result<std::uint64_t> FaultyOpenFile::position() {
    const SystemError error = files_.count("OpenFile.position");
    return error.isNone() ? inner_->position() : error;
}

SystemError FaultyOpenFile::setPosition(std::uint64_t offset) {
    const SystemError error = files_.count("OpenFile.setPosition");
    return error.isNone() ? inner_->setPosition(offset) : error;
}

SystemError FaultyOpenFile::setSize(std::uint64_t size) {
    const SystemError error = files_.count("OpenFile.setSize");
    return error.isNone() ? inner_->setSize(size) : error;
}

Result<DataStretch> FaultyOpenFile::nextData(std::uint64_t offset) {
    const SystemError error = files_.count("OpenFile.nextData");
    return error.isNone() ? inner_->nextData(offset) : error;
}

SystemError FaultyOpenFile::cloneRange(OpenFile& from, std::uint64_t fromOffset,
                                       std::uint64_t length, std::uint64_t offset) {
    const SystemError error = files_.count("OpenFile.cloneRange");
    return error.isNone() ? inner_->cloneRange(from, fromOffset, length, offset) : error;
}

void FaultyOpenFile::expectWrite(std::uint64_t offset, std::uint64_t length) {
    if (files_.count("OpenFile.expectWrite").isNone()) {
        inner_->expectWrite(offset, length);
    }
}

void FaultyOpenFile::forgetCached() { inner_->forgetCached(); }

int FaultyOpenFile::descriptor() const { return inner_->descriptor(); }

SystemError FaultyOpenFile::setModificationDate(Date date) {
    const SystemError error = files_.count("OpenFile.setModificationDate");
    return error.isNone() ? inner_->setModificationDate(date) : error;
}

Result<Data> FaultyOpenFile::extendedAttribute(std::string_view name) {
    const SystemError error = files_.count("OpenFile.extendedAttribute");
    return error.isNone() ? inner_->extendedAttribute(name) : error;
}

SystemError FaultyOpenFile::setExtendedAttribute(std::string_view name, BytesView value) {
    const SystemError error = files_.count("OpenFile.setExtendedAttribute");
    return error.isNone() ? inner_->setExtendedAttribute(name, value) : error;
}

SystemError FaultyOpenFile::sync() {
    const SystemError error = files_.count("OpenFile.sync");
    return error.isNone() ? inner_->sync() : error;
}

SystemError FaultyOpenFile::close() {
    const SystemError error = files_.count("OpenFile.close");
    const SystemError closed = inner_->close();
    return error.isNone() ? closed : error;
}

} // namespace tav
