#include "foundation/run_control.h"

#include <chrono>
#include <thread>
#include <utility>

#include "foundation/errors.h"

namespace marlet {

namespace {

// Never held together with a control's own mutex.
std::mutex criticalLock;
int criticalCount = 0;       // guarded by criticalLock
int owedCount = 0;           // guarded by criticalLock
bool closedForQuit = false;  // guarded by criticalLock

/// The process ends within moments; whoever comes here must not touch a file any more.
[[noreturn]] void waitForTheEnd() {
    for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

}  // namespace

RunControl::~RunControl() {
    settle();
}

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
    bool owesNow = false;
    {
        const std::lock_guard guard(mutex_);
        critical_ = on;
        owesNow = on && expectsRecord_ && !owesRecord_;
        if (owesNow) owesRecord_ = true;
        // A job parked in a checkpoint on another thread must see it.
        cond_.notify_all();
    }
    std::unique_lock guard(criticalLock);
    if (on && closedForQuit) {
        guard.unlock();
        waitForTheEnd();
    }
    criticalCount += on ? 1 : -1;
    if (owesNow) owedCount++;
}

void RunControl::expectRecord() {
    const std::lock_guard guard(mutex_);
    expectsRecord_ = true;
}

void RunControl::settle() {
    {
        const std::lock_guard guard(mutex_);
        expectsRecord_ = false;
        if (!std::exchange(owesRecord_, false)) return;
    }
    const std::lock_guard guard(criticalLock);
    owedCount--;
}

bool RunControl::endMustWait() {
    const std::lock_guard guard(criticalLock);
    return criticalCount > 0 || owedCount > 0;
}

bool RunControl::criticalActive() {
    const std::lock_guard guard(criticalLock);
    return criticalCount > 0;
}

bool RunControl::closeForQuit() {
    const std::lock_guard guard(criticalLock);
    if (criticalCount > 0 || owedCount > 0) return false;
    closedForQuit = true;
    return true;
}

}  // namespace marlet
