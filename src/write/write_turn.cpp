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
    try {
        Durable::makeFolders(Paths::documentsDir());
    } catch (const MFError&) {
        return;  // the journal will say so
    }
    // Beside the journal, which comes and goes; never removed, since another copy may be about to
    // lock it.
    const auto name = Paths::journalFile().replace_extension(".lock");
    lock_ = FileHandle(Sys::open(name, O_RDWR | O_CREAT | O_NOFOLLOW, 0600));
    constexpr auto pause = std::chrono::milliseconds(20);
    while (lock_.isOpen() && Sys::flock(lock_.get(), LOCK_EX | LOCK_NB) != 0 &&
           errno == EWOULDBLOCK) {
        control.checkpoint();
        std::this_thread::sleep_for(pause);
    }
}

}  // namespace marlet
