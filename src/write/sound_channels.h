#pragma once

#include "foundation/bytes.h"

namespace marlet {

/// Channels of a sound track by its `stsd` payload; 0 if unknown. The sample entry's own count is
/// only a template where the codec's configuration tells the true one (ISO/IEC 14496-14, 5.6.1;
/// ETSI TS 102 366, F.3): programs write 2 there for surround sound.
int soundChannels(ByteView stsd);

}  // namespace marlet
