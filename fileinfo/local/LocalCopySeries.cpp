#include "fileinfo/local/LocalCopySeries.hpp"

#include "fileinfo/local/LocalCopySupport.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"

#include <utility>

namespace tav::internal {

namespace {

/// Whether nothing has become of the file. Every change sets the date of change, and so does what
/// changes its name.
bool areSame(const FileAttributes& before, const FileAttributes& now) {
    return now.identity == before.identity && now.mount == before.mount &&
           now.size == before.size && now.changeDate == before.changeDate &&
           now.modificationDate == before.modificationDate;
}

} // namespace

LocalCopySeries::LocalCopySeries(std::span<const FileInfoPtr> files, TavMacFileInfo& folder)
    : files_(files), folder_(folder), outer_(std::exchange(folder._copySeries, this)),
      ahead_(files.size() >= fewestFiles ? FilesAhead::start() : nullptr) {}

LocalCopySeries::~LocalCopySeries() { folder_._copySeries = outer_; }

void LocalCopySeries::comeTo(std::size_t index) {
    index_ = index;
    if (!ahead_) {
        return;
    }
    ahead_->comeTo(index);
    // The thread is woken for some at a time.
    std::size_t room = ahead_->room();
    if (room < FilesAhead::mostAhead / 2 || added_ == files_.size()) {
        return;
    }
    for (; room > 0 && added_ < files_.size(); --room, ++added_) {
        TavBaseFileInfo& file = *files_[added_];
        const bool isKnown = isPlainLocalItem(file);
        ahead_->add(isKnown ? std::string_view(static_cast<TavMacFileInfo&>(file)._itsPath) : "");
    }
    ahead_->go();
}

const ReadFile* LocalCopySeries::readAhead(TavMacFileInfo& file) const {
    const ReadFile* const read =
        ahead_ && files_[index_].get() == &file ? ahead_->current() : nullptr;
    if (read == nullptr) {
        return nullptr;
    }
    const auto now = FileSystem::current().attributes(file._itsPath);
    return now.ok() && areSame(read->attributes, now.value()) ? read : nullptr;
}

} // namespace tav::internal
