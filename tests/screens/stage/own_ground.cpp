#include "screens/stage/own_ground.h"

#include <QString>
#include <QtGlobal>
#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace marlet::test {

namespace {

std::atomic<int> warnings = 0;
QtMessageHandler before = nullptr;

void note(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    // The offscreen platform can't do all that a desktop does; that is no fault of ours.
    const bool platform = text.contains(QLatin1String("This plugin does not support"));
    if (type != QtDebugMsg && type != QtInfoMsg && !platform) {
        ++warnings;
        std::fprintf(stderr, "CONSOLE %s\n", qPrintable(text));
    }
    if (before != nullptr) before(type, context, text);
}

}  // namespace

void standOnOwnGround() {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    setenv("QT_QUICK_BACKEND", "software", 0);
    setenv("LC_ALL", "en_US.UTF-8", 1);
    setenv("LANGUAGE", "en", 1);
    // Pictures of two runs are to be equal.
    setenv("QT_QUICK_CONTROLS_HOVER_ENABLED", "1", 1);
    unsetenv("MARLET_TMDB_TOKEN");
    // Unset, it would be looked for at its usual place.
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/dev/null", 1);
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/dev/null", 1);
}

int warningsSoFar() {
    return warnings;
}

void watchTheConsole() {
    before = qInstallMessageHandler(note);
}

}  // namespace marlet::test
