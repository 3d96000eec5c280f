#include "foundation/run_control.h"

#include "foundation/errors.h"

namespace marlet {

namespace {

// Never held together with a control's own mutex.
std::mutex criticalLock;
int criticalCount = 0;  // guarded by criticalLock

}  // namespace

void RunControl::pause() {
    const std::lock_guard guard(mutex_);
    paused_ = true;
}

void RunControl::resume() {
    const std::lock_guard guard(mutex_);
    paused_ = false;
    cond_.notify_all();
}

void RunControl::cancel() {
    const std::lock_guard guard(mutex_);
    cancelled_ = true;
    cond_.notify_all();
}

bool RunControl::isPaused() const {
    const std::lock_guard guard(mutex_);
    return paused_;
}

bool RunControl::isCancelled() const {
    const std::lock_guard guard(mutex_);
    return cancelled_;
}

void RunControl::checkpoint() {
    std::unique_lock guard(mutex_);
    cond_.wait(guard, [this] { return !paused_ || cancelled_ || critical_; });
    if (cancelled_ && !critical_) throw CancelError();
}

void RunControl::setCritical(bool on) {
    {
        const std::lock_guard guard(mutex_);
        critical_ = on;
        // A job parked in a checkpoint on another thread must see it.
        cond_.notify_all();
    }
    const std::lock_guard guard(criticalLock);
    criticalCount += on ? 1 : -1;
}

bool RunControl::criticalActive() {
    const std::lock_guard guard(criticalLock);
    return criticalCount > 0;
}

}  // namespace marlet
