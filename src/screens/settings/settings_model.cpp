#include "screens/settings/settings_model.h"

#include "app/app_model.h"

namespace marlet {

SettingsModel::SettingsModel(AppModel& model, QObject* parent)
    : ScreenPart(parent), model_(model) {}

void SettingsModel::refresh() {}

}  // namespace marlet
