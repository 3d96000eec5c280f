// What an earlier run left unfinished comes back.

#include "app/app_model.h"

namespace marlet {

void AppModel::resumeUnfinished() {
    offer_.reset();
    changed();
}

void AppModel::discardUnfinished() {
    offer_.reset();
    changed();
}

}  // namespace marlet
