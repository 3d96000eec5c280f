#include "screens/desktop_stub.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <QDBusUnixFileDescriptor>
#include <stdexcept>
#include <utility>

namespace marlet::test {

namespace {

QDBusConnection connected(const PrivateBus& bus, const char* name) {
    return QDBusConnection::connectToBus(QString::fromStdString(bus.address()),
                                         QString::fromLatin1(name));
}

}  // namespace

DesktopStub::DesktopStub()
    : desktop_(connected(bus_, "desktop")), client_(connected(bus_, "client")) {
    desktop_.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
    for (const char* service : {"org.freedesktop.portal.Desktop", "org.freedesktop.login1",
                                "org.freedesktop.Notifications", "org.freedesktop.FileManager1"})
        if (!desktop_.registerService(QString::fromLatin1(service)))
            throw std::runtime_error("no desktop");
    desktop_.connect({}, {}, QStringLiteral("com.canonical.Unity.LauncherEntry"),
                     QStringLiteral("Update"), this, SLOT(onUpdate(QString, QVariantMap)));
}

DesktopStub::~DesktopStub() {
    for (const char* name : {"desktop", "client"})
        QDBusConnection::disconnectFromBus(QString::fromLatin1(name));
    if (lockPipe_ >= 0) close(lockPipe_);
}

int DesktopStub::count(const QString& name) const {
    int found = 0;
    for (const Call& call : calls) found += call.name == name ? 1 : 0;
    return found;
}

QVariantList DesktopStub::arguments(const QString& name) const {
    for (auto call = calls.rbegin(); call != calls.rend(); ++call)
        if (call->name == name) return call->arguments;
    return {};
}

void DesktopStub::change(const QString& group, const QString& key, const QVariant& value) {
    QDBusMessage signal = QDBusMessage::createSignal(
        QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("SettingChanged"));
    signal << group << key << QVariant::fromValue(QDBusVariant(value));
    desktop_.send(signal);
}

bool DesktopStub::isLockHeld() const {
    if (lockPipe_ < 0) return false;
    // A pipe without a writer is hung up.
    pollfd end{lockPipe_, POLLIN, 0};
    poll(&end, 1, 0);
    return (end.revents & POLLHUP) == 0;
}

void DesktopStub::click(uint notification, const QString& action) {
    QDBusMessage signal = QDBusMessage::createSignal(
        QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("ActionInvoked"));
    signal << notification << action;
    desktop_.send(signal);
}

void DesktopStub::onUpdate(const QString& application, const QVariantMap& values) {
    updates.push_back({application, values});
}

bool DesktopStub::handleMessage(const QDBusMessage& message, const QDBusConnection&) {
    calls.push_back(
        {message.interface() + QLatin1Char('.') + message.member(), message.arguments()});
    if (holdAnswers) {
        message.setDelayedReply(true);
        held_.push_back(message);
    } else {
        answer(message);
    }
    return true;
}

void DesktopStub::answerNow() {
    holdAnswers = false;
    for (const QDBusMessage& message : std::exchange(held_, {})) answer(message);
}

void DesktopStub::answer(const QDBusMessage& message) {
    const QString name = message.member();
    if (name == QStringLiteral("Read")) {
        const QString key = message.arguments().value(0).toString() + QLatin1Char(' ') +
                            message.arguments().value(1).toString();
        if (!settings.contains(key)) {
            desktop_.send(message.createErrorReply(
                QStringLiteral("org.freedesktop.portal.Error.NotFound"), QStringLiteral("none")));
            return;
        }
        const QDBusVariant inner(settings.value(key));
        desktop_.send(
            message.createReply(QVariant::fromValue(QDBusVariant(QVariant::fromValue(inner)))));
    } else if (name == QStringLiteral("Inhibit")) {
        int ends[2] = {-1, -1};
        if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        if (lockPipe_ >= 0) close(lockPipe_);
        lockPipe_ = ends[0];
        {
            QDBusUnixFileDescriptor given(ends[1]);
            close(ends[1]);
            desktop_.send(message.createReply(QVariant::fromValue(given)));
        }
    } else if (name == QStringLiteral("Notify")) {
        desktop_.send(message.createReply(QVariant(7U)));
    } else {
        desktop_.send(message.createReply());
    }
}

}  // namespace marlet::test
