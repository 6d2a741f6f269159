#pragma once

#include "base/Status.hpp"
#include "fileinfo/TavBaseFileInfo.hpp"

#include <functional>
#include <span>

namespace tav {

/// What is told of each file of `copyFiles` when it has been copied or not: the status and the new
/// item that `copyTo` answered. The answer tells whether to go on.
using FileCopied =
    std::function<bool(TavBaseFileInfo& file, Status status, const FileInfoPtr& newItem)>;

/// Copies many files into one folder, one after the other in their order, each as its `copyTo` with
/// five parameters does it: with the same statuses, reports and leavings, between any back-ends. A
/// file that fails or is cancelled does not end it, `copied` decides that; what a copy or `copied`
/// raises does. None of the files is null, and the span stays as it is until this returns. All is
/// called on this thread; an empty `copied` goes on.
///
/// Between local items it takes less time than so many copies by themselves, where names need not
/// be unique: from 32 files on small
/// ones are read on a thread of this function's own while those before them are copied, at most 64
/// at a time. A file that was changed or replaced since it was read is read anew. The thread has
/// ended when this returns or raises.
void copyFiles(std::span<const FileInfoPtr> files, TavBaseFileInfo& folder, bool ensureUniqueName,
               const ProgressDelegate* delegate, void* userData, const FileCopied& copied);

} // namespace tav
