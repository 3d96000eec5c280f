#pragma once

#include <ostream>

#include "convert/subtitle_text.h"

namespace marlet {

/// How a failed test shows a cue.
inline void PrintTo(const Cue& cue, std::ostream* out) {
    *out << cue.startMs << "-" << cue.endMs << " \"" << cue.text << '"';
}

}  // namespace marlet
