#pragma once

#include <QtQml/qqmlregistration.h>

#include "screens/base/screen_part.h"

namespace marlet {

class AppModel;

/// The file or season in the inspector: its verdict, its details, tracks and artwork.
class InspectorModel : public ScreenPart {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App has it")

public:
    explicit InspectorModel(AppModel& model, QObject* parent = nullptr);
    void refresh() override;

private:
    AppModel& model_;
};

}  // namespace marlet
