#include "app/history_turn.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <thread>

#include "foundation/paths.h"

namespace marlet {

HistoryTurn::HistoryTurn(HistoryPatience& patience) {
    // Beside the file, since that one is replaced by every write; never removed, since another copy
    // may be about to lock it. Opened for writing, which NFS wants of whoever locks alone.
    const auto name = Paths::historyFile().replace_extension(".lock");
    lock_ = FileHandle(Sys::open(name, O_RDWR | O_CREAT | O_NOFOLLOW, 0600));
    if (!lock_.isOpen()) return;
    constexpr std::chrono::milliseconds pause{1};
    constexpr std::chrono::milliseconds afterATimeOut{100};
    for (std::chrono::milliseconds waited{0};; waited += pause) {
        if (Sys::flock(lock_.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return;
        if (waited >= patience.longest) break;
        if (patience.sleep)
            patience.sleep(pause);
        else
            std::this_thread::sleep_for(pause);
    }
    patience.longest = afterATimeOut;
}

}  // namespace marlet
