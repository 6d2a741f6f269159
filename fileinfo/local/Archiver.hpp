#pragma once

#include <string>
#include <string_view>

/// The programs that make archives and unpack them, run to their end. Whether one failed is not
/// told: look for what it should have made. Paths that are not absolute count from the working
/// directory. What `ChildProcess::run` throws is passed on.
namespace tav::internal {

/// Whether "/usr/bin/zip" is there.
[[nodiscard]] bool canZip();
/// Whether "/usr/bin/ditto" is there, or what stands in for it here: bsdtar, which packs and
/// unpacks, and unzip, which unpacks.
[[nodiscard]] bool canDittoPack();
[[nodiscard]] bool canDittoUnpack();

/// Packs a file or folder under its whole path (without the first slash). Links are packed as
/// links, not what they lead to.
void zipPack(std::string_view path, bool isFolder, std::string_view archive);

/// Packs a file or folder under its name. The names are stored as UTF-8, unless one of them is
/// none: then all of them as bytes of no known encoding, so that they come back as they are.
void dittoPack(std::string_view path, std::string_view archive);

/// Unpacks a zip archive into an empty folder, in which nothing is left afterwards that leads out
/// of it (see `cleanUnpackedFolder`). Members that would lie outside are not unpacked, nor are
/// owners and the bits that lend rights. Of what cannot be cleaned nothing is left; false when that
/// cannot be removed either, so that nobody can vouch for what is there.
///
/// Three quarters of the volume's free space may be filled, or all but 1 GiB if that is more. Of
/// an archive that takes more nothing is left. Where it is ours to choose, the folder stays empty
/// also for what is no zip archive and for one of which something is encrypted, and the platform's
/// own "__MACOSX" goes.
[[nodiscard]] bool dittoUnpack(std::string_view archive, const std::string& folder);

/// Removes what an archive became, with folders that may not be read.
void removeUnpacked(const std::string& path);

} // namespace tav::internal
