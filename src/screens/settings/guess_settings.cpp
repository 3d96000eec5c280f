#include "screens/settings/guess_settings.h"

#include "app/settings.h"
#include "identify/guess_model.h"
#include "identify/local_model.h"
#include "screens/base/qt_text.h"

namespace marlet {

GuessSettings::GuessSettings(QObject* parent) : QObject(parent) {
    refresh();
}

GuessSettings::~GuessSettings() {
    life_.cancel();
}

void GuessSettings::refresh() {
    bool other = address_.refresh(Settings::localModel());
    other |= name_.refresh(Settings::localModelName());
    const QString note = toQt(AIGuesser::availabilityNote());
    const bool can = LocalModel::isSet() && !AIGuesser::disabled();
    if (!other && note == note_ && can == canAsk_) return;
    note_ = note;
    canAsk_ = can;
    Q_EMIT changed();
}

bool GuessSettings::isFixed() const {
    return qEnvironmentVariableIsSet("MARLET_LOCAL_MODEL");
}

void GuessSettings::setAddress(const QString& address) {
    address_.type(address);
    Settings::setLocalModel(fromQt(address));
    address_.see(Settings::localModel());
    Q_EMIT stored();
}

void GuessSettings::setName(const QString& name) {
    name_.type(name);
    Settings::setLocalModelName(fromQt(name));
    name_.see(Settings::localModelName());
    Q_EMIT stored();
}

void GuessSettings::open() {
    address_.forget(Settings::localModel());
    name_.forget(Settings::localModelName());
    Q_EMIT changed();
    ask();
}

void GuessSettings::ask() {
    if (canAsk_ && !asking_) askNow();
}

Task<> GuessSettings::askNow() {
    asking_ = true;
    Q_EMIT changed();
    auto looking = AIGuesser::freshAvailabilityNote(life_);
    const std::string note = co_await looking;
    asking_ = false;
    note_ = toQt(note);
    Q_EMIT changed();
    // The address may be another one by now.
    refresh();
}

}  // namespace marlet
