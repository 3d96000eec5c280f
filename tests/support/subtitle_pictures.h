#pragma once

#include <cstdint>
#include <string>

#include "support/pgs_builder.h"

namespace marlet::test {

/// How a line of a subtitle looks.
struct SubtitleStyle {
    std::string typeface = "DejaVu Sans";
    double size = 0;  ///< pixels from line to line, about; 0: a twentieth of the plane's height
    std::uint32_t colour = 0xFFFFFF;         ///< 0xRRGGBB
    std::uint32_t outlineColour = 0x000000;  ///< 0xRRGGBB
    double outline = -1;                     ///< pixels around the letters; -1: what suits the size
    bool italic = false;
    bool bold = false;
    bool isLeftAligned = false;  ///< of two lines or more; otherwise centred
};

/// Draws lines (UTF-8, joined with line feeds) as discs have them: smooth edges on a transparent
/// ground, a picture just as large as it takes, low on the plane and in its middle. Throws when the
/// typeface isn't installed. Call it from the main thread; it makes a QGuiApplication that needs no
/// display.
pgs::Placed renderLines(const std::string& text, const SubtitleStyle& style, int planeWidth,
                        int planeHeight);

}  // namespace marlet::test
