#pragma once

#include <functional>
#include <thread>

namespace tav {

/// Starts a thread for work inside of the library, which takes no signals: the handlers of the
/// program go on running where it expects them. The program's threads are none of its business
/// either, so whoever starts one ends it before answering its own caller. Joined with the object.
/// Throws `std::system_error` when there is no thread to be had.
[[nodiscard]] std::jthread startQuietThread(std::function<void()> work);

} // namespace tav
