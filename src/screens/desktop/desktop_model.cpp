#include "screens/desktop/desktop_model.h"

#include "app/app_model.h"

namespace marlet {

DesktopModel::DesktopModel(AppModel& model, QObject* parent) : ScreenPart(parent), model_(model) {}

void DesktopModel::refresh() {}

}  // namespace marlet
