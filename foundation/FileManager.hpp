#pragma once

#include "base/Status.hpp"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Operations on files and folders by their paths, in `FileSystem::current()`. Nothing here raises
/// by itself. An empty path reads as none. Any thread, as far as the file system allows it.
namespace tav {

/// The path itself, as it is written, when nothing stands there, otherwise the first free one of
/// "B 1.E", "B 2.E", ..., where B and E are the name without its extension and the extension. A
/// candidate that is a folder makes the next one the whole name with a blank and the number: "B.E
/// 1". Empty for an empty path.
///
/// A name without extension has the empty one, so where "README" is taken the first candidate is
/// "README." and the next "README 1.". "Nothing stands there" means that the path leads to nothing:
/// a link to nothing counts as free, and so does what cannot be looked at.
[[nodiscard]] std::string uniqueFilePath(std::string_view path);

/// Descending order ignoring case, for sorting paths so that what lies in a folder comes before it:
/// negative, 0 or positive as b is before, equal to or behind a.
[[nodiscard]] int CompareDirectoriesForEmpty(std::string_view a, std::string_view b);

/// Removes a folder in which, in all depths, no file stands but those that are passed over: names
/// that begin with "." and names to ignore, ignoring case. They go with it. A folder inside keeps
/// it only by being in another one under a name that is not passed over.
///
/// Whatever a link leads to counts as standing in its place, a link to nothing does not count; when
/// the folder goes, links go and what they lead to stays. What cannot be listed or looked at keeps
/// the folder, and so does what is no folder; nothing is removed that was not looked at. The
/// removal stops at its first failure.
void removeDirectoryIfEmpty(std::string_view folder, const std::vector<std::string>& namesToIgnore);

/// Removes THE FOLDER ITSELF WITH EVERYTHING IN IT, files too, as soon as any folder below it, in
/// any depth, holds nothing but names that begin with ".". This is meant. It has nothing to do with
/// whether the folder is empty: an empty folder stays, since there is nothing below it.
///
/// A link to such a folder counts as one. Nothing is removed when anything below cannot be listed;
/// the removal stops at its first failure, which ends the walk.
void removeEmptyDirectoriesFromPath(std::string_view folder);

/// Makes the folders of an absolute path, those that are missing. A file that stands at the path,
/// or a link that leads to no folder, IS REMOVED first; one further up is not. Failures are not
/// told: look whether the folder is there.
///
/// The path's first component is taken for "/", whatever it is: of the relative path "a/b" the
/// folder "/b" is made. Beyond the first 4000 bytes of a path "." and ".." end the walk, and so
/// does a folder that cannot be listed.
void recursivelyCreatePath(std::string_view path);

/// Where an alias, which here is a symbolic link, leads to: an absolute path without any links.
/// Anything else is answered as it was given, relative paths too.
///
/// Of a link that leads nowhere (or to a path of more than 2046 bytes) the answer is made of its
/// text: as it stands when something exists there (a relative one is looked up in the working
/// directory), otherwise appended to the link's folder, even an absolute one.
[[nodiscard]] std::string absolutePathForPath(std::string_view path);

/// The bytes of a file's content, through links; for what cannot be opened (a folder) the size that
/// the file system tells; 0 when nothing is there.
[[nodiscard]] std::uint64_t getDataForkSize(std::string_view path);

/// Told of a copy's progress: the bytes of this step, those so far and all. Anything but 0 cancels.
using FileCopyProgress = int (*)(void* context, std::uint64_t step, std::uint64_t offset,
                                 std::uint64_t total);

/// Copies a file's content and REMOVES THE SOURCE: as soon as it is open, whatever happens next,
/// and once more (what may stand there by then, but no folder) when the copy fails or is cancelled.
/// After a failure the content may thus be lost; what was written stays at the destination.
///
/// The destination must be new; missing folders on its way are made as by `recursivelyCreatePath`.
/// Its permissions are 0666 less the process's mask. The progress function (null for none) is
/// called with (0, 0, total) first, then after every step. Steps are 0x100000 bytes for files of
/// more than 0x500000 bytes, otherwise 0x40000.
///
/// Success; Failure (-1) when cancelled or without memory; otherwise the host's error number, made
/// negative. Where the source cannot be opened (a folder is EISDIR, a pipe EINVAL) nothing is
/// changed. EIO when the source ends before its size at the beginning.
Status copyFile(std::string_view source, std::string_view destination,
                FileCopyProgress progressFunction, void* context);

/// Copies a file, a link or a folder with all that is in it, and leaves the source as it is. The
/// destination is the new item's own path; nothing may stand there, its folder has to be there.
///
/// A link is copied as a link, whatever it leads to, and so is each link inside. Permissions,
/// modification dates and extended attributes whose names begin with "user." travel; what the other
/// volume does not keep of them is lost without a word. The copy belongs to whoever copies, and a
/// file that runs as its user or group (the bits 06000) does so only when it is still the same one.
/// Hard links become files of their own, holes of files of more than 64 KiB stay holes, and on a
/// volume that can share blocks a file's content takes no room until one of the two is changed.
///
/// A folder is copied as it is when it is listed, in the beginning: what comes later is not. Of a
/// file come as many bytes as it had when it was opened. Nothing is synced.
///
/// Success, or the host's error number, made negative; then what the copy made is taken away again,
/// and nothing else. EEXIST where something stands (a link to nothing, too), EINVAL for a folder
/// into itself and for pipes, sockets and devices, which fail the whole copy wherever they lie,
/// before anything is made. EIO when a file ends before the size that it had, ENOENT when something
/// vanished, ESTALE when something else took its place. A process that ends meanwhile leaves a part
/// at the destination, in folders that only their owner may enter.
Status copyPath(std::string_view source, std::string_view destination);

/// Gives a file, link or folder another path and replaces nothing. In one volume this is one step.
///
/// To another volume it is copied as by `copyPath`, then removed. The source stays untouched until
/// the copy is whole and on the medium. ESTALE when anything in it was changed meanwhile, came or
/// went: then the copy is taken away again. Only what was copied is removed; when that fails, the
/// copy stays, WHOLE, beside what is left of the source: the content is lost in no case.
///
/// Success, or the host's error number, made negative.
Status movePath(std::string_view source, std::string_view destination);

/// The folder "Caches/Metadata" and the main bundle's identifier (when it has one) in the user's
/// folder of caches, or else the temporary one. It is made when missing. Empty when the host tells
/// neither.
[[nodiscard]] std::string metadataFolder();

} // namespace tav
