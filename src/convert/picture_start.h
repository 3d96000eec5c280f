#pragma once

#include <vector>

#include "convert/built_index.h"
#include "convert/mux_plan.h"

namespace marlet::PictureStart {

/// Hides the composition offset of a picture that begins late. A media tool that is told a delay
/// writes an empty edit and lets the media begin at 0, so that a picture with B-frames is shown by
/// its first composition offset too late. Where the edit list is just that, its second entry is set
/// to the first frame that is shown (ISO/IEC 14496-12, 8.6.6): fields of fixed size, in place.
/// Converted sound loses the edit of its own file the same way, and with it the silence that its
/// encoder put first is heard: that is set again, too. `tracks` as the file was asked for.
void restore(BuiltIndex& index, const std::vector<MuxTrack>& tracks = {});

}  // namespace marlet::PictureStart
