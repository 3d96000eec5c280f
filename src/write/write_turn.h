#pragma once

#include <functional>

#include "foundation/copy_lock.h"
#include "foundation/run_control.h"

namespace marlet {

/// One person's running copies of the program change files one after the other: there is one
/// journal, and a second one would take the place of the first. Held from before a journal is
/// written until it is removed, by a lock that dies with its process.
class WriteTurn {
public:
    /// Waits while another copy is changing a file, as long as that takes; the job can be paused
    /// and cancelled meanwhile (CancelError), and neither is it when the turn is had. Where there
    /// can be no such lock, nobody is kept waiting: what the journal itself says is looked at in
    /// any case. `check` is the last look at the file, with the turn in hand, which may throw and
    /// take its time: a pause or a cancel in the middle of it holds as well, and after a pause
    /// there is another look.
    explicit WriteTurn(RunControl& control, const std::function<void()>& check = {});
    /// Without waiting; isOthers() tells whether another copy has the turn.
    WriteTurn();
    WriteTurn(const WriteTurn&) = delete;
    WriteTurn& operator=(const WriteTurn&) = delete;

    bool isOthers() const { return isOthers_; }

private:
    void open();
    /// True when it was taken, or when there can be no lock.
    bool take();

    CopyLock lock_;
    bool isOthers_ = false;
};

}  // namespace marlet
