#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>

namespace marlet {

/// Fraction done, 0 to 1.
using Progress = std::function<void(double)>;
/// A label for people and the fraction done, 0 to 1. Called on the job's thread.
using StepProgress = std::function<void(const std::string& label, double fraction)>;

/// Pause and cancel of one job, shared by the queue (main context) and the job (worker thread).
/// While a file is being changed the job is critical, and neither holds nor stops it.
class RunControl {
public:
    RunControl() = default;
    ~RunControl();
    RunControl(const RunControl&) = delete;
    RunControl& operator=(const RunControl&) = delete;

    void pause();
    void resume();
    /// Leaves the pause as it is: the checkpoint sees the cancel while it waits.
    void cancel();
    bool isPaused() const;
    bool isCancelled() const;

    /// Between two pieces of work: waits while paused, throws CancelError when cancelled;
    /// does neither in a critical section.
    void checkpoint();

    /// Every true is paired with exactly one false; use CriticalSection rather than this.
    void setCritical(bool on);

    /// Once this job has been critical, the program doesn't end before settle(): somebody keeps a
    /// record of what was done to the file.
    void expectRecord();
    /// The record is in good hands, or nobody waits for it any more.
    void settle();

    /// True while any job of this process is in a critical section.
    static bool criticalActive();
    /// True then, and while a record is owed.
    static bool endMustWait();

    /// For the very end of the program: true when it needn't wait, and then no job can enter a
    /// critical section any more (it waits for the process to end), so that the answer stays true.
    static bool closeForQuit();

private:
    mutable std::mutex mutex_;
    std::condition_variable cond_;
    bool paused_ = false;         // guarded by mutex_
    bool cancelled_ = false;      // guarded by mutex_
    bool critical_ = false;       // guarded by mutex_
    bool expectsRecord_ = false;  // guarded by mutex_
    bool owesRecord_ = false;     // guarded by mutex_
};

/// Holds a job in its critical section for as long as it lives.
class CriticalSection {
public:
    explicit CriticalSection(RunControl& control) : control_(control) {
        control_.setCritical(true);
    }
    ~CriticalSection() { control_.setCritical(false); }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

private:
    RunControl& control_;
};

}  // namespace marlet
