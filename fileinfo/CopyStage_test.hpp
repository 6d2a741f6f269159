#pragma once

#include "base/Exception.hpp"
#include "base/PathString.hpp"
#include "fileinfo/ItemAllocation.hpp"
#include "fileinfo/TavPathBasedFileInfo.hpp"

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace tav {

using Lines = std::vector<std::string>;

/// Files that items of one test stand for, and every call that reached those items, in order:
/// "operation path arguments". Calls can be made to fail and to throw, by their text or number.
struct CopyStage {
    struct File {
        bool isFolder = false;
        Data content;
        std::optional<Date> creationDate;
        std::optional<Date> modificationDate;
    };
    std::map<std::string, File> files;
    std::vector<std::string> calls;

    std::uint64_t freeSpace = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t spaceToKeep = 0;
    std::map<std::string, std::uint64_t> chunkSizes; ///< By path; 8192 for the others.
    std::map<std::string, std::uint64_t> toldSizes;  ///< By path, in the place of the real ones.
    bool hasParents = true;

    std::set<std::string, std::less<>> failing; ///< Calls that fail, by their text.
    std::map<std::string, std::function<void()>, std::less<>> at; ///< Done first, by their text.
    std::size_t failingCall = 0;                                  ///< By its number from 1 on.
    std::size_t throwingCall = 0;
    CopySupport* support = nullptr;   ///< Of all items; lent.
    std::optional<Value> createdWith; ///< The attributes of the last new file.
    std::function<void()> thrown = [] { throw Exception("stage", "thrown on purpose"); };

    void addFile(std::string_view path, std::string_view text) {
        files[std::string(path)] = {false, dataFromText(text), Date(100), Date(200)};
    }
    void addFolder(std::string_view path) { files[std::string(path)].isFolder = true; }
    /// The text of a file; "(none)" where there is none.
    [[nodiscard]] std::string text(const std::string& path) const {
        const auto found = files.find(path);
        return found == files.end() ? "(none)" : std::string(textOf(found->second.content));
    }
    [[nodiscard]] std::vector<std::string> paths() const {
        std::vector<std::string> all;
        for (const auto& [path, file] : files) {
            all.push_back(path);
        }
        return all;
    }
    /// The calls of one operation.
    [[nodiscard]] std::vector<std::string> callsOf(std::string_view operation) const {
        std::vector<std::string> some;
        std::ranges::copy_if(calls, std::back_inserter(some), [&](const std::string& call) {
            return call.starts_with(std::string(operation) + ' ');
        });
        return some;
    }

    /// Whether the call does what it should. A temporary name of a copy's own is told as "OWN".
    bool enter(std::string call) {
        constexpr std::string_view own = ".QuillboxCopy-";
        constexpr std::size_t ownLength = own.size() + 36 + 4;
        for (std::size_t place; (place = call.find(own)) != std::string::npos;) {
            call.replace(place, ownLength, "OWN");
        }
        calls.push_back(call);
        if (const auto action = at.find(call); action != at.end()) {
            action->second();
        }
        if (calls.size() == throwingCall) {
            thrown();
        }
        return calls.size() != failingCall && !failing.contains(call);
    }
};

/// An item of a stage.
class StagedFileInfo : public TavPathBasedFileInfo {
  public:
    struct Token : OpenFileToken {
        explicit Token(std::string_view itsPath) : path(itsPath) {}
        std::string path;
    };

    [[nodiscard]] static std::shared_ptr<StagedFileInfo> at(CopyStage& stage,
                                                            std::string_view path) {
        const auto item = internal::allocateItem<StagedFileInfo>();
        item->initWithStage(stage, path);
        return item;
    }

    bool exists() override { return enter("exists") && file() != nullptr; }
    bool isFolder() override { return enter("isFolder") && file() != nullptr && file()->isFolder; }
    bool isFile() override { return enter("isFile") && file() != nullptr && !file()->isFolder; }
    std::string name() override {
        enter("name");
        return TavPathBasedFileInfo::name();
    }
    std::uint64_t size() override {
        enter("size");
        if (const auto told = stage_->toldSizes.find(_itsPath); told != stage_->toldSizes.end()) {
            return told->second;
        }
        return file() != nullptr ? file()->content.size() : 0;
    }
    std::uint64_t freeSpaceOnVolume() override {
        return enter("freeSpaceOnVolume") ? stage_->freeSpace : 0;
    }
    std::uint64_t preferredChunkSize() override {
        enter("preferredChunkSize");
        const auto told = stage_->chunkSizes.find(_itsPath);
        return told != stage_->chunkSizes.end() ? told->second
                                                : TavPathBasedFileInfo::preferredChunkSize();
    }
    bool deviceControlsCopy() override {
        enter("deviceControlsCopy");
        return TavPathBasedFileInfo::deviceControlsCopy();
    }
    FileInfoPtr parentFolder() override {
        return enter("parentFolder") && stage_->hasParents
                   ? at(*stage_, stringByDeletingLastPathComponent(_itsPath))
                   : nullptr;
    }
    FileInfoPtr find(std::string_view name) override {
        return enter("find", name) ? child(name) : nullptr;
    }
    FileInfoPtr createFile(std::string_view name, BytesView contents,
                           const Value::Dictionary* attributes, bool ensureUniqueName,
                           const ProgressDelegate* withProgress, void* userData) override {
        std::string arguments(name);
        arguments += contents.empty() ? "" : " contents";
        arguments += attributes != nullptr ? " attributes" : "";
        arguments += ensureUniqueName ? " unique" : "";
        arguments += withProgress != nullptr ? " progress" : "";
        arguments += userData != nullptr ? " user" : "";
        stage_->createdWith =
            attributes != nullptr ? std::optional<Value>(*attributes) : std::nullopt;
        if (!enter("createFile", arguments)) {
            return nullptr;
        }
        std::string free(name);
        for (int n = 1; ensureUniqueName && stage_->files.contains(child(free)->_itsPath); ++n) {
            free = std::string(name) + '-' + std::to_string(n);
        }
        const auto made = child(free);
        CopyStage::File& file = stage_->files[made->_itsPath];
        if (file.isFolder) {
            return nullptr;
        }
        file = {false, {}, Date(1), Date(1)};
        return made;
    }
    using TavPathBasedFileInfo::createFile;
    bool remove() override { return enter("remove") && stage_->files.erase(_itsPath) != 0; }
    Status moveTo(TavBaseFileInfo* destination) override {
        const std::string there = destination != nullptr ? destination->path() : "";
        if (!enter("moveTo", there) || file() == nullptr || stage_->files.contains(there)) {
            return Status::Failure;
        }
        stage_->files[there] = *file();
        stage_->files.erase(_itsPath);
        return TavPathBasedFileInfo::moveTo(destination);
    }

    std::optional<Date> creationDate() override {
        return enter("creationDate") && file() != nullptr ? file()->creationDate : std::nullopt;
    }
    std::optional<Date> modificationDate() override {
        return enter("modificationDate") && file() != nullptr ? file()->modificationDate
                                                              : std::nullopt;
    }
    void setCreationDate(std::optional<Date> date) override {
        if (enter("setCreationDate", told(date)) && file() != nullptr) {
            file()->creationDate = date;
        }
    }
    void setModificationDate(std::optional<Date> date) override {
        if (enter("setModificationDate", told(date)) && file() != nullptr) {
            file()->modificationDate = date;
        }
    }

    std::shared_ptr<OpenFileToken> openFileForReading() override {
        return enter("openFileForReading") && file() != nullptr ? std::make_shared<Token>(_itsPath)
                                                                : nullptr;
    }
    std::shared_ptr<OpenFileToken> openFileForWriting() override {
        if (!enter("openFileForWriting") || file() == nullptr) {
            return nullptr;
        }
        file()->content.clear();
        return std::make_shared<Token>(_itsPath);
    }
    void closeFile(OpenFileToken* token) override { enter("closeFile", told(token)); }
    std::optional<Data> fileContentsWithRange(FileRange range,
                                              OpenFileToken* readFileUserData) override {
        if (!enter("read", told(range) + told(readFileUserData)) || file() == nullptr) {
            return std::nullopt;
        }
        const Data& all = file()->content;
        const std::size_t begin = std::min<std::size_t>(range.location, all.size());
        const std::size_t end = std::min<std::size_t>(begin + range.length, all.size());
        return Data(all.begin() + std::ptrdiff_t(begin), all.begin() + std::ptrdiff_t(end));
    }
    Status setFileContentsWithRange(BytesView data, FileRange range,
                                    OpenFileToken* writeFileUserData) override {
        if (!enter("write", told(range) + told(writeFileUserData)) || file() == nullptr) {
            return Status{-7};
        }
        if (!data.empty()) {
            Data& all = file()->content;
            all.resize(std::max<std::size_t>(all.size(), range.location + data.size()));
            std::ranges::copy(data, all.begin() + range.location);
        }
        return Status::Success;
    }
    CopySupport* copySupport() override { return stage_->support; }
    Status copyFromFile(TavBaseFileInfo* source, bool ensureUniqueName,
                        const ProgressDelegate* withProgress, void* userData,
                        FileInfoPtr* outNewItem) override {
        std::string arguments = source->path();
        arguments += ensureUniqueName ? " unique" : "";
        arguments += withProgress != nullptr ? " progress" : "";
        arguments += userData != nullptr ? " user" : "";
        arguments += outNewItem != nullptr ? " out" : "";
        return enter("copyFromFile", arguments) ? Status{-4321} : Status{-1234};
    }

  protected:
    StagedFileInfo() = default;
    void initWithStage(CopyStage& stage, std::string_view path) {
        stage_ = &stage;
        initWithPath(path);
    }
    std::uint64_t _freeSpaceToKeepOnVolume() override {
        enter("freeSpaceToKeep");
        return stage_->spaceToKeep;
    }

    bool enter(std::string_view operation, std::string_view arguments = {}) {
        std::string call(operation);
        call += ' ';
        call += _itsPath;
        if (!arguments.empty()) {
            call += ' ';
            call += arguments;
        }
        return stage_->enter(call);
    }
    CopyStage::File* file() {
        const auto found = stage_->files.find(_itsPath);
        return found != stage_->files.end() ? &found->second : nullptr;
    }
    CopyStage& stage() { return *stage_; }

  private:
    std::shared_ptr<StagedFileInfo> child(std::string_view name) {
        return at(*stage_, stringByAppendingPathComponent(_itsPath, name));
    }
    static std::string told(std::optional<Date> date) {
        return date ? std::to_string(int(date->secondsSinceReferenceDate())) : "nil";
    }
    static std::string told(OpenFileToken* token) {
        auto* const own = dynamic_cast<Token*>(token);
        return own != nullptr ? '(' + own->path + ')' : "(nil)";
    }
    static std::string told(FileRange range) {
        return std::to_string(range.location) + '+' + std::to_string(range.length) + ' ';
    }
    CopyStage* stage_ = nullptr;
};

} // namespace tav
