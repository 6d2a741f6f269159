#pragma once

#include <cstdint>

namespace tav {

/// What a copy promises beyond the plain one. All off is the plain copy, call for call; each option
/// stands for itself. docs/copying.md says what holds after success, failure, a kill and a power
/// cut.
struct CopyOptions {
    /// What stands at the destination stays until the new file is whole, which then takes its place
    /// in one step. The copy grows under a temporary name of its own; after a failure it is taken
    /// away, and only a kill leaves it behind. `Status::NotSupported`, with nothing changed, where
    /// the back-end has no such step and a file is to be replaced.
    bool keepsDestination = false;

    /// Success means that the file and its name are on the medium. The last report of progress
    /// waits for that. `Status::NotSupported` where the back-end cannot tell.
    bool isDurable = false;

    /// The copy is read back and compared with the source before it is put in place; with
    /// `isDurable` it is read from the medium where the host lets go of what it holds in memory.
    bool verifies = false;

    /// Carry what the back-ends on both sides have a place for; what has none is lost silently.
    bool carriesPermissions = false;
    bool carriesExtendedAttributes = false;
    /// Holes of the source stay holes; they read as zeros either way.
    bool carriesHoles = false;

    /// The size and the ranges have 64 bits, so that files of 4 GiB and more are copied whole.
    bool isWhole = false;

    /// Bytes that must be left free on the volume beyond what the back-end itself keeps.
    std::uint64_t freeSpaceFloor = 0;

    friend bool operator==(const CopyOptions&, const CopyOptions&) = default;
};

} // namespace tav
