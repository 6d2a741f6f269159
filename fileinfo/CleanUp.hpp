#pragma once

#include <utility>

namespace tav::internal {

/// What has to be done once when an operation does not come to its end: said by `run`, or else by
/// leaving the scope, as any exception does that nobody here catches. `dismiss` takes it back.
template <class Action>
class CleanUp {
  public:
    explicit CleanUp(Action action) : action_(std::move(action)) {}
    CleanUp(const CleanUp&) = delete;
    CleanUp& operator=(const CleanUp&) = delete;
    ~CleanUp() {
        if (isDue_) {
            try {
                action_();
            } catch (...) {
                // The exception that left the scope goes on; this one would end the process.
            }
        }
    }

    /// What the action raises, this raises; it is not tried again then.
    void run() {
        if (std::exchange(isDue_, false)) {
            action_();
        }
    }
    void dismiss() { isDue_ = false; }

  private:
    Action action_;
    bool isDue_ = true;
};

} // namespace tav::internal
