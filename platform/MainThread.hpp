#pragma once

#include "platform/Seam.hpp"

#include <functional>

namespace tav {

class MainThread;

namespace internal {
/// The queue of this process (platform/MainThreadQueue).
MainThread& realMainThread();
} // namespace internal

/// The seam to the thread that an application's event loop runs on. A program without a loop calls
/// `runPending` when it sees fit.
class MainThread : public Seam<MainThread, internal::realMainThread> {
  public:
    virtual ~MainThread() = default;

    /// Queues work for the main thread and returns; it never runs within this call. An empty
    /// function is nothing to do. Any thread.
    virtual void post(std::function<void()> work) = 0;
    /// Has work done on the main thread and waits for its end; what it throws is thrown here. On
    /// the main thread itself, and where no loop is installed, it runs at once on this thread,
    /// before what is queued. Any thread.
    virtual void runAndWait(const std::function<void()>& work) = 0;

    /// Does what is queued, in its order, and no more than was queued when it began. On the main
    /// thread, or on any thread where no loop is installed; on another one than the main thread it
    /// does nothing. An exception of posted work ends it; the rest stays queued. Work may call it
    /// again, as a loop within the loop does: the inner call goes on with the queue, nothing runs
    /// twice.
    virtual void runPending() = 0;

    /// Makes the calling thread the main thread. `wake` is called from any thread when work was
    /// queued, and has to see to it that the loop calls `runPending` soon: write to a pipe, post an
    /// event. It must not throw, run the work or call this object. It is called at once, from here,
    /// when work is queued already. After the return no earlier `wake` is running or will be
    /// called. A null function takes the loop away; work still waited for is then done by whoever
    /// waits, and what was posted stays queued.
    virtual void installLoop(std::function<void()> wake) = 0;
};

} // namespace tav
