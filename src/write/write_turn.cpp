#include "write/write_turn.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/paths.h"

namespace marlet {

WriteTurn::WriteTurn(RunControl& control) {
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
        if (control.isCancelled()) throw CancelError();
        if (!control.isPaused()) return;
        if (lock_.isOpen()) Sys::flock(lock_.get(), LOCK_UN);
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
    // Beside the journal, which comes and goes; never removed, since another copy may be about to
    // lock it.
    const auto name = Paths::journalFile().replace_extension(".lock");
    lock_ = FileHandle(Sys::open(name, O_RDWR | O_CREAT | O_NOFOLLOW, 0600));
}

bool WriteTurn::take() {
    return !lock_.isOpen() || Sys::flock(lock_.get(), LOCK_EX | LOCK_NB) == 0 ||
           errno != EWOULDBLOCK;
}

}  // namespace marlet
