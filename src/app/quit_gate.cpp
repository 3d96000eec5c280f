#include "app/quit_gate.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "foundation/run_control.h"

namespace marlet {

namespace {

// A signal handler may do nothing but write a byte; the event loop reads it.
int signalPipe[2] = {-1, -1};

extern "C" void onSignal(int) {
    const char byte = 1;
    const ssize_t ignored = write(signalPipe[0], &byte, 1);
    static_cast<void>(ignored);
}

/// A person, the system, or the terminal that was closed.
constexpr std::array asked = {SIGTERM, SIGINT, SIGHUP};

void takeOver(int number) {
    struct sigaction action {};
    // Started by nohup, the program is to outlive its terminal.
    if (sigaction(number, nullptr, &action) == 0 && number == SIGHUP &&
        action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    sigaction(number, &action, nullptr);
}

}  // namespace

QuitGate::QuitGate() {
    poll_.setInterval(200);
    QObject::connect(&poll_, &QTimer::timeout, &poll_, [this] { tryToEnd(); });
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalPipe) != 0) return;
    signals_ = std::make_unique<QSocketNotifier>(signalPipe[1], QSocketNotifier::Read);
    QObject::connect(signals_.get(), &QSocketNotifier::activated, signals_.get(), [this] {
        char byte = 0;
        const ssize_t ignored = read(signalPipe[1], &byte, 1);
        static_cast<void>(ignored);
        requestQuit();
    });
    for (const int number : asked) takeOver(number);
    // Whoever read our output may leave; that is no reason to leave a file half written.
    std::signal(SIGPIPE, SIG_IGN);
}

QuitGate::~QuitGate() {
    for (const int number : asked) std::signal(number, SIG_DFL);
}

void QuitGate::requestQuit() {
    tryToEnd();
    poll_.start();
    if (onWait) onWait();
}

void QuitGate::tryToEnd() {
    if (!RunControl::closeForQuit()) return;
    if (const auto end = std::exchange(onEnd, nullptr)) end();
    std::fflush(nullptr);
    // A worker may still be copying; it is abandoned, not waited for.
    std::_Exit(status_);
}

}  // namespace marlet
