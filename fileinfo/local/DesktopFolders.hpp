#pragma once

#include <string>
#include <string_view>

namespace tav::internal {

/// A folder of the user that desktops know by a word: "DESKTOP", "DOCUMENTS", "DOWNLOAD", "MUSIC",
/// "PICTURES", "PUBLICSHARE", "TEMPLATES" or "VIDEOS". As the file "user-dirs.dirs" among the
/// user's settings has it (freedesktop.org's xdg-user-dirs), otherwise the one that desktops make
/// in the home folder ("Documents"). The folder need not exist; empty for other words and where
/// there is no home folder.
[[nodiscard]] std::string desktopFolder(std::string_view word);

/// What a "user-dirs.dirs" says of a word, the last line that does; empty when none does. Lines
/// read `XDG_WORD_DIR="$HOME/name"` or `XDG_WORD_DIR="/path"`, with a backslash before characters
/// that a shell would take for its own; others are passed over.
[[nodiscard]] std::string desktopFolderFromSettings(std::string_view settings,
                                                    std::string_view word,
                                                    std::string_view homeFolder);

} // namespace tav::internal
