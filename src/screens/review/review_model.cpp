#include "screens/review/review_model.h"

#include "app/app_model.h"

namespace marlet {

ReviewModel::ReviewModel(AppModel& model, QObject* parent) : ScreenPart(parent), model_(model) {}

void ReviewModel::refresh() {}

}  // namespace marlet
