#pragma once

#include "foundation/records.h"

namespace marlet {

/// As much of the details as a job or an entry of History tells of its file: enough for a label.
template <typename Told>
Details labelDetails(const Told& told) {
    Details details;
    details.kind = told.isMovie ? MediaKind::movie : MediaKind::tv;
    details.title = told.title;
    details.show = told.show.value_or("");
    details.season = told.season;
    details.episode = told.episode;
    return details;
}

}  // namespace marlet
