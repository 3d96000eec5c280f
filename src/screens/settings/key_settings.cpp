#include "screens/settings/key_settings.h"

#include <QTimer>

#include "screens/base/qt_text.h"

namespace marlet {

KeySettings::KeySettings(QObject* parent) : QObject(parent) {
    field_.onChanged = [this] {
        if (!field_.isBusy()) origin_ = toQt(field_.origin());
        Q_EMIT changed();
    };
}

QString KeySettings::result() const {
    return isBusy() ? tr("Trying the key…") : toQt(field_.result());
}

void KeySettings::look() {
    QTimer::singleShot(0, this, [this] {
        origin_ = toQt(field_.origin());
        Q_EMIT changed();
    });
}

void KeySettings::keep(const QString& typed) {
    field_.keep(fromQt(typed));
}

void KeySettings::tryKey() {
    field_.tryKey();
}

void KeySettings::remove() {
    field_.remove();
}

}  // namespace marlet
