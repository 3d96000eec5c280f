#include "convert/pgs_runs.h"

#include <algorithm>

#include "convert/pgs_parser.h"

namespace marlet {

namespace {

/// Hands out the run lengths one by one, until they end in the midst of one at the latest.
/// `run(length, colour)` draws, `nextRow()` gives whether another row is wanted.
template <class Run, class NextRow>
void forEachRun(ByteView runs, Run run, NextRow nextRow) {
    std::size_t at = 0;
    const auto left = [&] { return runs.size() - at; };
    while (left() > 0) {
        if (const std::uint8_t colour = runs[at++]; colour != 0) {
            run(std::size_t{1}, colour);
            continue;
        }
        if (left() < 1) return;
        const std::uint8_t control = runs[at++];
        if (control == 0) {
            if (!nextRow()) return;
            continue;
        }
        std::size_t length = control & 0x3F;
        if ((control & 0x40) != 0) {
            if (left() < 1) return;
            length = length << 8 | runs[at++];
        }
        std::uint8_t colour = 0;
        if ((control & 0x80) != 0) {
            if (left() < 1) return;
            colour = runs[at++];
        }
        run(length, colour);
    }
}

}  // namespace

PGSRuns::Extent PGSRuns::extent(ByteView runs, int width, int height) {
    if (width <= 0 || height <= 0) return {};
    const auto wide = static_cast<std::size_t>(width);
    std::size_t widest = 0;
    std::size_t column = 0;
    Extent reached;
    int row = 0;
    forEachRun(
        runs,
        [&](std::size_t length, std::uint8_t) {
            column = std::min(wide, column + length);
            if (column == 0) return;
            widest = std::max(widest, column);
            reached.rows = row + 1;
        },
        [&] {
            column = 0;
            return ++row < height;
        });
    reached.columns = static_cast<int>(widest);
    return reached;
}

Bytes PGSParser::decodeRLE(std::span<const std::uint8_t> rle, int width, int height) {
    if (width <= 0 || height <= 0) return {};
    const auto wide = static_cast<std::size_t>(width);
    const auto high = static_cast<std::size_t>(height);
    if (wide > mostPixels / high) return {};

    Bytes pixels(wide * high);
    std::size_t row = 0;
    std::size_t column = 0;
    forEachRun(
        rle,
        [&](std::size_t length, std::uint8_t colour) {
            const std::size_t fits = std::min(length, wide - column);
            if (colour != 0) std::fill_n(pixels.data() + row * wide + column, fits, colour);
            column += fits;
        },
        [&] {
            column = 0;
            return ++row < high;
        });
    return pixels;
}

}  // namespace marlet
