#pragma once

#include <QtQml/qqmlregistration.h>

#include "screens/base/screen_part.h"

namespace marlet {

class AppModel;

/// The sheet that answers "Which one is this?": search, seasons and episodes of each source, the
/// hand form.
class PickerModel : public ScreenPart {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App has it")

public:
    explicit PickerModel(AppModel& model, QObject* parent = nullptr);
    void refresh() override;

private:
    AppModel& model_;
};

}  // namespace marlet
