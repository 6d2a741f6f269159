// Files and folders that a person chooses.

#include "fileinfo/VerboseLog.hpp"
#include "fileinfo/local/TavMacFileInfo.hpp"
#include "platform/Panels.hpp"

namespace tav {

namespace {

PanelRequest requestFor(bool folders, OptionalText prompt, OptionalText title,
                        OptionalText startFolderPath) {
    PanelRequest request;
    request.folders = folders;
    if (!prompt.isNil()) {
        request.prompt = *prompt;
    }
    if (!title.isNil()) {
        request.title = *title;
    }
    if (!startFolderPath.isNil()) {
        request.startFolder = *startFolderPath;
    }
    return request;
}

std::shared_ptr<TavMacFileInfo> choose(const PanelRequest& request, const char* logForm) {
    const std::optional<std::string> path = Panels::current().choose(request);
    if (!path) {
        return nullptr;
    }
    std::shared_ptr<TavMacFileInfo> item = TavMacFileInfo::fileInfoWithPath(*path);
    if (item->isAlias()) {
        // One that leads nowhere stays what was chosen.
        std::shared_ptr<TavMacFileInfo> target = item->copy();
        if (target->resolveAlias() && target->exists()) {
            item = std::move(target);
        }
    }
    internal::logVerbose(logForm, item->path());
    return item;
}

} // namespace

std::shared_ptr<TavMacFileInfo>
TavMacFileInfo::chooseFolderWithPrompt(OptionalText prompt, OptionalText title,
                                       OptionalText startFolderPath) {
    return choose(requestFor(true, prompt, title, startFolderPath),
                  "The user selected folder \"%@\"");
}

std::shared_ptr<TavMacFileInfo> TavMacFileInfo::chooseFileWithPrompt(OptionalText prompt,
                                                                     OptionalText title,
                                                                     OptionalText startFolderPath) {
    return choose(requestFor(false, prompt, title, startFolderPath),
                  "The user selected file \"%@\"");
}

std::shared_ptr<TavMacFileInfo>
TavMacFileInfo::chooseFolderWithPrompt(OptionalText prompt, OptionalText startFolderPath) {
    return chooseFolderWithPrompt(prompt, nullptr, startFolderPath);
}

std::shared_ptr<TavMacFileInfo>
TavMacFileInfo::chooseFolderWithPromptStartFolder(OptionalText prompt,
                                                  TavBaseFileInfo* startFolder) {
    return chooseFolderWithPrompt(
        prompt, nullptr, startFolder != nullptr ? OptionalText(startFolder->path()) : nullptr);
}

} // namespace tav
