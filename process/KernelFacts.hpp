#pragma once

#include "base/Status.hpp"

#include <cstdint>

namespace tav {

/// What the process table knows of the running kernel. Written by `ZoMachStatsInit` alone.
struct KernelFacts {
    int major_version = 0;
    int minor_version = 0;
    int update_version = 0;
    std::uint32_t global_shared_text_segment = 0;
    std::uint32_t shared_data_region_size = 0;
    std::uint32_t shared_text_region_size = 0;
    /// The most bytes that a process's argument area is asked for.
    int argument_buffer_size = 0;
};

/// The facts, computed when they are first asked for.
[[nodiscard]] const KernelFacts& kernelFacts();

/// `KERN_FAILURE`: the kernel did not tell its release, and nothing was changed.
inline constexpr Status kernelFailure = static_cast<Status>(5);

/// Asks the process table's seam for the kernel's release and for the size of the argument area,
/// and computes the facts from them. May run again at any time, but not beside another use of the
/// facts.
///
/// The area's size is 4096 when the kernel does not tell it, and is kept to 8192 up to major
/// version 6, a cap for older kernels that stands although today's Linux begins with 6 again: see
/// `ProcessTable::argumentArea`, which is free to hand over more.
Status ZoMachStatsInit();

} // namespace tav
