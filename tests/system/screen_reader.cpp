#include "system/screen_reader.h"

#include <signal.h>

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <thread>

namespace marlet::test {

namespace {

namespace fs = std::filesystem;

constexpr const char* launcher = "/usr/libexec/at-spi-bus-launcher";
constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* sessionName = "test session";
constexpr const char* busName = "test accessibility";

// Bits of AT-SPI's state set.
constexpr int focusedBit = 12;
constexpr int showingBit = 25;

bool has(std::uint64_t states, int bit) {
    return ((states >> bit) & 1) != 0;
}

std::uint64_t statesIn(const QDBusMessage& answer) {
    if (answer.arguments().isEmpty()) return 0;
    const auto list = answer.arguments().first().value<QDBusArgument>();
    std::uint64_t states = 0;
    int shift = 0;
    list.beginArray();
    for (; !list.atEnd(); shift += 32) {
        uint word = 0;
        list >> word;
        states |= static_cast<std::uint64_t>(word) << shift;
    }
    list.endArray();
    return states;
}

void takeBox(const QDBusMessage& answer, Seen& seen) {
    if (answer.arguments().isEmpty()) return;
    const auto box = answer.arguments().first().value<QDBusArgument>();
    box.beginStructure();
    box >> seen.x >> seen.y >> seen.width >> seen.height;
    box.endStructure();
}

std::string textIn(const QDBusMessage& answer) {
    if (answer.arguments().isEmpty()) return {};
    const QVariant value = answer.arguments().first();
    const bool boxed = value.canConvert<QDBusVariant>();
    return (boxed ? value.value<QDBusVariant>().variant() : value).toString().toStdString();
}

}  // namespace

ScreenReader::Launcher::Launcher(const std::map<std::string, std::string>& environment)
    : process(launcher, {"--launch-immediately"}, environment) {}

ScreenReader::Launcher::~Launcher() {
    // Asked in kind, it takes what it started along.
    process.signal(SIGTERM);
    try {
        process.wait();
    } catch (const std::exception&) {
        // It is killed then.
    }
}

ScreenReader::ScreenReader(const std::string& display) {
    fs::permissions(runtime_.path(), fs::perms::owner_all);
    auto variables = environment();
    variables["DISPLAY"] = display;
    launcher_ = std::make_unique<Launcher>(variables);
    const QString address = addressOfBus();
    bus_ = QDBusConnection::connectToBus(address, QString::fromLatin1(busName));
    if (!bus_->isConnected()) throw std::runtime_error("no accessibility bus");
}

ScreenReader::~ScreenReader() {
    QDBusConnection::disconnectFromBus(QString::fromLatin1(busName));
}

QString ScreenReader::addressOfBus() const {
    const auto session = QDBusConnection::connectToBus(QString::fromStdString(session_.address()),
                                                       QString::fromLatin1(sessionName));
    QString address;
    for (int i = 0; address.isEmpty() && !launcher_->process.hasEnded() && i < 30000; i++) {
        const QDBusMessage answer = session.call(QDBusMessage::createMethodCall(
            QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
            QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress")));
        address = QString::fromStdString(
            answer.type() == QDBusMessage::ReplyMessage ? textIn(answer) : std::string());
        if (address.isEmpty()) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    QDBusConnection::disconnectFromBus(QString::fromLatin1(sessionName));
    if (address.isEmpty())
        throw std::runtime_error("no accessibility: " + launcher_->process.errors() + " " +
                                 session.lastError().message().toStdString());
    return address;
}

std::map<std::string, std::string> ScreenReader::environment() const {
    return {{"DBUS_SESSION_BUS_ADDRESS", session_.address()},
            {"XDG_RUNTIME_DIR", runtime_.path().string()},
            {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"}};
}

QDBusMessage ScreenReader::ask(const Place& place, const char* interface, const char* method,
                               const QVariantList& arguments) const {
    QDBusMessage call = QDBusMessage::createMethodCall(
        place.service, place.path, QString::fromLatin1(interface), QString::fromLatin1(method));
    call.setArguments(arguments);
    const QDBusMessage answer = bus_->call(call);
    // What was there may be gone by now.
    return answer.type() == QDBusMessage::ReplyMessage ? answer : QDBusMessage();
}

std::string ScreenReader::told(const Place& place, const char* property) const {
    return textIn(ask(place, "org.freedesktop.DBus.Properties", "Get",
                      {QString::fromLatin1(accessible), QString::fromLatin1(property)}));
}

std::vector<ScreenReader::Place> ScreenReader::childrenOf(const Place& place) const {
    const QDBusMessage answer = ask(place, accessible, "GetChildren");
    if (answer.arguments().isEmpty()) return {};
    const auto list = answer.arguments().first().value<QDBusArgument>();
    std::vector<Place> children;
    list.beginArray();
    while (!list.atEnd()) {
        QString service;
        QDBusObjectPath path;
        list.beginStructure();
        list >> service >> path;
        list.endStructure();
        children.push_back({service, path.path()});
    }
    list.endArray();
    return children;
}

void ScreenReader::walk(const Place& place, int depth, std::vector<Seen>& found) const {
    const std::uint64_t states = statesIn(ask(place, accessible, "GetState"));
    if (!has(states, showingBit)) return;
    Seen seen;
    seen.depth = depth;
    seen.focused = has(states, focusedBit);
    seen.role = textIn(ask(place, accessible, "GetRoleName"));
    seen.name = told(place, "Name");
    if (seen.name.empty()) seen.name = told(place, "Description");
    takeBox(ask(place, "org.a11y.atspi.Component", "GetExtents", {0U}), seen);
    found.push_back(seen);
    for (const Place& child : childrenOf(place)) walk(child, depth + 1, found);
}

std::vector<Seen> ScreenReader::look() {
    std::vector<Seen> found;
    const Place registry = {QStringLiteral("org.a11y.atspi.Registry"),
                            QStringLiteral("/org/a11y/atspi/accessible/root")};
    for (const Place& program : childrenOf(registry)) walk(program, 0, found);
    return found;
}

}  // namespace marlet::test
