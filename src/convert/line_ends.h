#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "foundation/text.h"

namespace marlet::LineEnds {

/// Line feeds for the line ends of Windows and of old systems: mkvmerge writes "\r\n" between the
/// lines of a subtitle.
inline std::string even(std::string text) {
    for (const std::string_view end : {"\r\n", "\r"})
        text = Text::replaceAll(std::move(text), end, "\n");
    return text;
}

}  // namespace marlet::LineEnds
