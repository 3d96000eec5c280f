#pragma once

#include <QtQml/qqmlregistration.h>

#include "screens/base/screen_part.h"

namespace marlet {

class AppModel;

/// What the desktop does for the program and the program for the desktop: its colours, sleep,
/// notifications, the task bar, the file manager.
class DesktopModel : public ScreenPart {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App has it")

public:
    explicit DesktopModel(AppModel& model, QObject* parent = nullptr);
    void refresh() override;

private:
    AppModel& model_;
};

}  // namespace marlet
