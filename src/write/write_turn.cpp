#include "write/write_turn.h"

#include <chrono>
#include <thread>

#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/paths.h"

namespace marlet {

namespace {

/// False while the person wants the job to wait.
bool mayGoOn(const RunControl& control) {
    if (control.isCancelled()) throw CancelError();
    return !control.isPaused();
}

}  // namespace

WriteTurn::WriteTurn(RunControl& control, const std::function<void()>& check) {
    open();
    constexpr auto pause = std::chrono::milliseconds(20);
    for (;;) {
        control.checkpoint();
        if (!take()) {
            std::this_thread::sleep_for(pause);
            continue;
        }
        // The person may have spoken since the checkpoint, and it is the last one before the
        // change. Not parked with the turn in hand, or the other copies would wait, too.
        if (mayGoOn(control)) {
            if (check) check();
            if (mayGoOn(control)) return;
        }
        lock_.release();
    }
}

WriteTurn::WriteTurn() {
    open();
    isOthers_ = !take();
}

void WriteTurn::open() {
    try {
        Durable::makeFolders(Paths::documentsDir());
    } catch (const MFError&) {
        return;  // the journal will say so
    }
    lock_ = CopyLock(Paths::journalFile());
}

bool WriteTurn::take() {
    return lock_.take() != CopyLock::Holder::Others;
}

}  // namespace marlet
