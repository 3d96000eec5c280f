#include "screens/inspector/inspector_model.h"

#include "app/app_model.h"

namespace marlet {

InspectorModel::InspectorModel(AppModel& model, QObject* parent)
    : ScreenPart(parent), model_(model) {}

void InspectorModel::refresh() {}

}  // namespace marlet
