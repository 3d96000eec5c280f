#pragma once

#include <QtQml/qqmlregistration.h>

#include "screens/base/screen_part.h"

namespace marlet {

class AppModel;

/// The settings as the screen shows them; each is stored as soon as it changes. Also what About
/// tells.
class SettingsModel : public ScreenPart {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App has it")

public:
    explicit SettingsModel(AppModel& model, QObject* parent = nullptr);
    void refresh() override;

private:
    AppModel& model_;
};

}  // namespace marlet
