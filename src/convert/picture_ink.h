#pragma once

#include "convert/pgs_ocr.h"
#include "convert/text_recogniser.h"

namespace marlet {

/// How much of each pixel belongs to the letters themselves: 255 all of it, 0 nothing. What stands
/// around letters (an outline, a shadow, a box behind them) is nothing, whatever its colour.
GrayPicture inkOf(const PGSOCR::Image& image);

}  // namespace marlet
