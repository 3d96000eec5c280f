#pragma once

#include <vector>

#include "convert/text_recogniser.h"

namespace marlet {

/// Pixels of ink that touch each other: a letter mostly, or a part of one. Edges are exclusive at
/// the right and at the bottom.
struct InkPart {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    int pixels = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
};

/// All parts of more than specks, in no order.
std::vector<InkPart> partsOf(const GrayPicture& ink);

/// True for an eighth note: a head at the lower left, a stem, a flag at the right of it.
bool isNote(const GrayPicture& ink, const InkPart& part);

}  // namespace marlet
