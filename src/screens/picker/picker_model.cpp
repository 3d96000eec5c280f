#include "screens/picker/picker_model.h"

#include "app/app_model.h"

namespace marlet {

PickerModel::PickerModel(AppModel& model, QObject* parent) : ScreenPart(parent), model_(model) {}

void PickerModel::refresh() {}

}  // namespace marlet
