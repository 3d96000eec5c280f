#pragma once

#include <QtQml/qqmlregistration.h>

#include "screens/base/screen_part.h"

namespace marlet {

class AppModel;

/// What Review shows: the rows, their states, the search and the filter, the action bar.
class ReviewModel : public ScreenPart {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App has it")

public:
    explicit ReviewModel(AppModel& model, QObject* parent = nullptr);
    void refresh() override;

private:
    AppModel& model_;
};

}  // namespace marlet
