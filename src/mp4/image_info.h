#pragma once

#include <string>

#include "foundation/bytes.h"

namespace marlet {

/// An image's kind, its size in pixels where its header tells one, and its bytes:
/// "JPEG 1400x2100, 345678 bytes".
std::string imageInfo(ByteView image);

}  // namespace marlet
