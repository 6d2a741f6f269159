#pragma once

#include <functional>
#include <ostream>

namespace tav {

/// How a process ended: by itself with a status, or by a signal.
struct ProcessEnd {
    int status = 0; ///< 0 to 255; only when no signal ended it.
    int signal = 0; ///< 0 for none.
    friend bool operator==(const ProcessEnd&, const ProcessEnd&) = default;
};

std::ostream& operator<<(std::ostream& stream, const ProcessEnd& end);

/// Runs a function in a child that is a copy of this process, and waits for its end. The function's
/// answer is the child's exit status (the low eight bits of it); an exception that it lets out
/// makes 255.
///
/// Nothing of the parent is torn down in the child: no destructor outside the function, no flushing
/// of streams, no check for leaks. What the child prints to the standard output, failed
/// expectations for one, is dropped, so let the function answer what went wrong. After a minute
/// SIGALRM ends it.
///
/// Not while other threads run: the child has only the calling one, and whatever locks the others
/// held stay locked in it. Throws `std::system_error` when there can be no child.
[[nodiscard]] ProcessEnd runForked(const std::function<int()>& run);

} // namespace tav
