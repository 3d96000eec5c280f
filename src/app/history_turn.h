#pragma once

#include <chrono>
#include <functional>

#include "foundation/copy_lock.h"

namespace marlet {

/// How long History waits for another running copy of the program. One that hangs is waited for
/// in full once, and hardly at all from then on, until it has let go.
struct HistoryPatience {
    std::chrono::milliseconds longest{5000};
    bool isAtItsEnd = false;
    /// For tests, which don't wait.
    std::function<void(std::chrono::milliseconds)> sleep;
};

/// Keeps other copies of the program from replacing History's file between our look at it and our
/// own replacement of it, by a lock that dies with its process. Where there can be no such lock, or
/// one that hangs has it, History may lose what others write, but holds nobody up.
class HistoryTurn {
public:
    explicit HistoryTurn(HistoryPatience& patience);
    HistoryTurn(const HistoryTurn&) = delete;
    HistoryTurn& operator=(const HistoryTurn&) = delete;

private:
    CopyLock lock_;
};

}  // namespace marlet
