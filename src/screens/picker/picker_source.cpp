#include "screens/picker/picker_source.h"

#include "screens/picker/catalogue_picker_source.h"
#include "screens/picker/database_picker_source.h"

namespace marlet {

Task<PickerSource::Episodes> PickerSource::all(PickerTitle, std::vector<int>, Fresh, CancelToken) {
    co_return Episodes{};
}

std::function<std::unique_ptr<PickerSource>(SourceID)> PickerSource::instead;

std::unique_ptr<PickerSource> PickerSource::make(SourceID id, AppModel& model) {
    if (instead) return instead(id);
    if (id == SourceID::tmdb) return std::make_unique<DatabasePickerSource>(model);
    return std::make_unique<CataloguePickerSource>(id, model);
}

}  // namespace marlet
