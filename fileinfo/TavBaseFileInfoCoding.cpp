// Items in keyed archives.

#include "base/KeyedArchiver.hpp"
#include "base/KeyedUnarchiver.hpp"
#include "fileinfo/ArchivedFileInfos.hpp"
#include "fileinfo/TavBaseFileInfo.hpp"

namespace tav {

namespace {

constexpr std::string_view creationDateKey = "_creationDate";
constexpr std::string_view modificationDateKey = "_modificationDate";
constexpr std::string_view isFileKey = "_isFile";
constexpr std::string_view fileSizeKey = "_fileSize";

std::optional<Date> decodeDate(KeyedUnarchiver& coder, std::string_view key) {
    const std::optional<Value> value = coder.decodeValue(key);
    const Date* date = value ? value->asDate() : nullptr;
    return date != nullptr ? std::optional(*date) : std::nullopt;
}

} // namespace

Archived TavBaseFileInfo::unarchiveFromData(BytesView data) {
    registerArchivedFileInfos();
    return unarchiveObjectWithData(data);
}

Data TavBaseFileInfo::archiveToData() {
    return archivedDataWithRootClass("TavBaseFileInfo", {"NSObject"});
}

std::string TavBaseFileInfo::className() const { return "TavBaseFileInfo"; }

void TavBaseFileInfo::encode(KeyedArchiver& archiver) const {
    // Items are made by functions that answer them changeable, so none is really constant.
    const_cast<TavBaseFileInfo*>(this)->encodeWithCoder(archiver);
}

void TavBaseFileInfo::encodeWithCoder(KeyedArchiver& coder) {
    if (const std::optional<Date> date = creationDate()) {
        coder.encodeValue(creationDateKey, *date);
    }
    if (const std::optional<Date> date = modificationDate()) {
        coder.encodeValue(modificationDateKey, *date);
    }
    const bool file = isFile();
    coder.encodeValue(isFileKey, file);
    if (file) {
        coder.encodeValue(fileSizeKey, size());
    }
}

void TavBaseFileInfo::initWithCoder(KeyedUnarchiver& coder) {
    setOldCreationDate(decodeDate(coder, creationDateKey));
    setOldModificationDate(decodeDate(coder, modificationDateKey));
    const std::optional<Value> fileSize = coder.decodeValue(fileSizeKey);
    if (fileSize && fileSize->isNumber()) {
        setOldFileSize(fileSize->unsignedLongLongValue());
    }
}

} // namespace tav
