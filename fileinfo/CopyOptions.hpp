#pragma once

#include <cstdint>

namespace tav {

/// What a copy promises beyond the plain one. All off is the plain copy, call for call; each option
/// stands for itself. docs/copying.md says what holds after success, failure, a kill and a power
/// cut.
///
/// With any of them a chunk that came shorter than it was asked for ends the copy (-205), a write
/// that the host tells to have failed when the new file is closed counts (-1), a new file that
/// could not be moved into place is taken away (-213), and an item whose device drives copies
/// answers `Status::NotSupported`. What else the plain copy risks goes with `keepsDestination`.
struct CopyOptions {
    /// What stands at the destination stays until the new file is whole, which then takes its place
    /// in one step. The copy grows under a temporary name of its own (".QuillboxCopy-UUID.tmp"),
    /// so that several at once go into one folder; after a failure it is taken away, and only a
    /// kill leaves it behind. A unique name is chosen when the file is whole, without a
    /// placeholder, and never taken from a file that has it by then. A file may be copied onto
    /// itself.
    ///
    /// `Status::NotSupported`, with nothing changed, where the back-end has no such step and a file
    /// is to be replaced; -213 where a folder has the name.
    bool keepsDestination = false;

    /// Success means that the file and its name are on the medium. The last report of progress
    /// waits for that. `Status::NotSupported` where the back-end cannot tell. -212 when the content
    /// could not be synced (with `keepsDestination` the old file stands then), and when the folder
    /// could not (the new file has its name then).
    bool isDurable = false;

    /// The copy is read back and compared with the source, also behind its end, before it is put in
    /// place: a source that has changed or is longer is not what was copied. Nothing but a whole
    /// file is put in place. The last report of progress waits for that; the flag that cancels is
    /// looked at before each chunk here, too. With `isDurable` it is read from the medium where the
    /// host lets go of what it holds in memory.
    bool verifies = false;

    /// Carry what the back-ends on both sides have a place for; what has none is lost silently,
    /// what could not be carried ends the copy with the status of the back-end (-205 where it could
    /// not be read). With permissions the copy is its owner's alone while it grows.
    bool carriesPermissions = false;
    bool carriesExtendedAttributes = false;
    /// Holes of the source stay holes; they read as zeros either way. Room is asked for as if there
    /// were none.
    bool carriesHoles = false;

    /// The size and the ranges have 64 bits, so that files of 4 GiB and more are copied whole. A
    /// back-end without them is asked for ranges of 32 bits; beyond those its reads and writes
    /// fail.
    bool isWhole = false;

    /// Bytes that must be left free on the volume beyond what the back-end itself keeps. Looked at
    /// once, before the copy begins.
    std::uint64_t freeSpaceFloor = 0;

    friend bool operator==(const CopyOptions&, const CopyOptions&) = default;
};

} // namespace tav
