#include "screens/queue/queue_model.h"

#include "app/app_model.h"

namespace marlet {

QueueModel::QueueModel(AppModel& model, QObject* parent) : ScreenPart(parent), model_(model) {}

void QueueModel::refresh() {}

}  // namespace marlet
