#pragma once

#include "foundation/bytes.h"

namespace marlet {

/// Whether a strict player can walk the index: every box fits into the one around it, down to the
/// sample entries, and every table into its box (ISO/IEC 14496-12, 4.2). The readers of this house
/// forgive more than that.
bool isWellFormed(ByteView moov);

}  // namespace marlet
