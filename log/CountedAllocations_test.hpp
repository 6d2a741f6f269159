#pragma once

namespace tav {

/// How often this thread has asked for memory with `new`.
[[nodiscard]] long allocationsOfThisThread();

} // namespace tav
