#pragma once

#include <QSocketNotifier>
#include <QTimer>
#include <functional>
#include <memory>

namespace marlet {

/// Every way of ending the program passes here: the end of a scripted mode, SIGTERM, SIGINT and
/// SIGHUP, the window and the session. While a file is being changed the answer is
/// "later", and the program ends by itself as soon as it no longer is. A job outside its critical
/// section is abandoned: its lock dies with the process and the next start clears its folder.
class QuitGate {
public:
    /// Takes over those signals, and ignores SIGPIPE.
    QuitGate();
    ~QuitGate();
    QuitGate(const QuitGate&) = delete;
    QuitGate& operator=(const QuitGate&) = delete;

    /// The exit status from now on, however the process ends; 0 at first.
    void setStatus(int status) { status_ = status; }
    /// Called once, when nothing holds the end up any more.
    std::function<void()> onEnd;
    /// Called when an end was asked for that has to wait.
    std::function<void()> onWait;
    /// Ends the process, now or when the last critical section has ended.
    void requestQuit();

private:
    void tryToEnd();

    int status_ = 0;
    QTimer poll_;
    std::unique_ptr<QSocketNotifier> signals_;
};

}  // namespace marlet
