#include "screens/history/history_model.h"

#include "app/app_model.h"

namespace marlet {

HistoryModel::HistoryModel(AppModel& model, QObject* parent) : ScreenPart(parent), model_(model) {}

void HistoryModel::refresh() {}

}  // namespace marlet
