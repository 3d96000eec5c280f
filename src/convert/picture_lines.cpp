#include "convert/picture_lines.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace marlet {

namespace {

constexpr std::uint8_t isInk = 128;

/// Rows of one line, the lower edge exclusive.
struct Band {
    int top = 0;
    int bottom = 0;
    int height() const { return bottom - top; }
};

std::vector<int> inkByRow(const GrayPicture& ink) {
    std::vector<int> rows(static_cast<std::size_t>(ink.height));
    for (int y = 0; y < ink.height; y++)
        for (int x = 0; x < ink.width; x++)
            if (ink.at(x, y) >= isInk) rows[static_cast<std::size_t>(y)]++;
    return rows;
}

/// The height of a capital: most letters are as high (with a stem up or down), or less; few are
/// higher.
int capitalHeight(const std::vector<InkPart>& parts) {
    int highest = 0;
    for (const InkPart& part : parts)
        if (part.width() < 3 * part.height()) highest = std::max(highest, part.height());
    std::vector<int> heights;
    for (const InkPart& part : parts)
        if (2 * part.height() > highest && part.height() <= highest)
            heights.push_back(part.height());
    if (heights.empty()) {
        // Words of one wide part each, as Arabic has them.
        for (const InkPart& part : parts) heights.push_back(part.height());
    }
    std::ranges::sort(heights);
    return heights[heights.size() * 3 / 4];
}

/// Accents and dots apart from their letters belong to the line below; what has none below near it,
/// to the line above.
void joinSmall(std::vector<Band>& bands, int capital) {
    for (std::size_t i = 0; i < bands.size() && bands.size() > 1;) {
        const auto isNear = [&](std::size_t upper) {
            return upper + 1 < bands.size() &&
                   (bands[upper + 1].top - bands[upper].bottom) * 2 <= capital;
        };
        const bool isSmall = 2 * bands[i].height() < capital;
        if (isSmall && isNear(i)) {
            bands[i + 1].top = bands[i].top;
        } else if (isSmall && i > 0 && isNear(i - 1)) {
            bands[i - 1].bottom = bands[i].bottom;
        } else {
            i++;
            continue;
        }
        bands.erase(bands.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

/// Two lines touch where a stem meets an accent below it: cut where there is least.
void splitHigh(std::vector<Band>& bands, const std::vector<int>& rows, int capital) {
    for (std::size_t i = 0; i < bands.size(); i++) {
        const Band band = bands[i];
        if (band.height() * 10 < capital * 21) continue;
        const int from = band.top + std::max(capital * 9 / 10, 1);
        const int to = std::min(band.bottom - capital * 9 / 10, band.top + capital * 19 / 10);
        if (from >= to) continue;
        const auto least = std::min_element(rows.begin() + from, rows.begin() + to);
        const int cut = static_cast<int>(least - rows.begin());
        bands[i].bottom = cut;
        bands.insert(bands.begin() + static_cast<std::ptrdiff_t>(i) + 1, {cut, band.bottom});
    }
}

std::vector<Band> bandsOf(const GrayPicture& ink, int capital) {
    const std::vector<int> rows = inkByRow(ink);
    std::vector<Band> bands;
    bool isOpen = false;
    for (int y = 0; y < ink.height; y++) {
        const bool hasInk = rows[static_cast<std::size_t>(y)] > 0;
        if (hasInk && !isOpen) bands.push_back({y, y});
        if (hasInk) bands.back().bottom = y + 1;
        isOpen = hasInk;
    }
    joinSmall(bands, capital);
    splitHigh(bands, rows, capital);
    return bands;
}

/// A part of the picture in another size, dark on light, with light around it. Each pixel is the
/// mean of those that it covers.
GrayPicture scaled(const GrayPicture& ink, const InkPart& area, double factor, int margin) {
    const int width = std::max(1, static_cast<int>(std::lround(area.width() * factor)));
    const int height = std::max(1, static_cast<int>(std::lround(area.height() * factor)));
    GrayPicture made{.width = width + 2 * margin, .height = height + 2 * margin};
    made.pixels.assign(static_cast<std::size_t>(made.width) * static_cast<std::size_t>(made.height),
                       255);
    const double step = 1 / factor;
    // Columns first, row by row, then the rows of that.
    std::vector<float> narrow(static_cast<std::size_t>(width) *
                              static_cast<std::size_t>(area.height()));
    const auto cover = [&](int i, int limit, auto&& take) {
        const double from = i * step;
        const double to = std::min<double>((i + 1) * step, limit);
        for (int at = static_cast<int>(from); at < limit && at < to; at++)
            take(at, std::min<double>(to, at + 1) - std::max<double>(from, at));
        return std::max(to - from, 1e-9);
    };
    for (int x = 0; x < width; x++) {
        for (int y = 0; y < area.height(); y++) {
            double sum = 0;
            const double whole = cover(x, area.width(), [&](int at, double weight) {
                sum += weight * ink.at(area.left + at, area.top + y);
            });
            narrow[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                   static_cast<std::size_t>(x)] = static_cast<float>(sum / whole);
        }
    }
    for (int y = 0; y < height; y++) {
        for (int x = 0; x < width; x++) {
            double sum = 0;
            const double whole = cover(y, area.height(), [&](int at, double weight) {
                sum += weight *
                       static_cast<double>(
                           narrow[static_cast<std::size_t>(at) * static_cast<std::size_t>(width) +
                                  static_cast<std::size_t>(x)]);
            });
            made.at(x + margin, y + margin) =
                static_cast<std::uint8_t>(std::clamp(255 - sum / whole, 0.0, 255.0));
        }
    }
    return made;
}

/// Parts from left to right to glyphs: what stands above or below belongs together, as a dot to its
/// i and an accent to its letter.
std::vector<Glyph> glyphsOf(const std::vector<InkPart>& parts) {
    std::vector<Glyph> glyphs;
    for (const InkPart& part : parts) {
        const auto belongs = [&](const Glyph& glyph) {
            const int shared =
                std::min(glyph.box.right, part.right) - std::max(glyph.box.left, part.left);
            return 2 * shared > std::min(glyph.box.width(), part.width());
        };
        if (glyphs.empty() || !belongs(glyphs.back())) {
            glyphs.push_back({.box = part, .parts = {part}});
            continue;
        }
        Glyph& glyph = glyphs.back();
        glyph.box.left = std::min(glyph.box.left, part.left);
        glyph.box.top = std::min(glyph.box.top, part.top);
        glyph.box.right = std::max(glyph.box.right, part.right);
        glyph.box.bottom = std::max(glyph.box.bottom, part.bottom);
        glyph.box.pixels += part.pixels;
        glyph.parts.push_back(part);
    }
    for (Glyph& glyph : glyphs)
        std::ranges::sort(glyph.parts, std::ranges::greater(), &InkPart::pixels);
    return glyphs;
}

/// A line of nothing else says nothing, and the engine makes a word of it.
bool isDash(const InkPart& part) {
    return part.width() >= 3 * part.height() &&
           part.pixels * 100LL >= part.width() * 85LL * part.height();
}

/// Capitals in the engine's picture, which it is best at, and the light around them.
constexpr double wantedCapital = 30;
constexpr int margin = 10;
/// No screen of letters has as many lines, nor lines as long in capitals; reading what has would
/// take minutes.
constexpr std::size_t mostLines = 40;
constexpr int longestLine = 400;

PictureLine lineOf(const GrayPicture& ink, const Band& band, const std::vector<InkPart>& parts,
                   int capital) {
    PictureLine line{.capital = capital};
    const double factor = std::min(wantedCapital / capital, 1.0);
    InkPart area{.left = ink.width, .top = band.top, .right = 0, .bottom = band.bottom};
    for (const InkPart& part : parts) {
        area.left = std::min(area.left, part.left);
        area.right = std::max(area.right, part.right);
    }
    line.picture = scaled(ink, area, factor, margin);
    line.glyphs = glyphsOf(parts);
    for (Glyph& glyph : line.glyphs) {
        glyph.left = (glyph.box.left - area.left) * factor + margin;
        glyph.right = (glyph.box.right - area.left) * factor + margin;
    }
    return line;
}

}  // namespace

std::vector<PictureLine> linesOf(const GrayPicture& ink) {
    std::vector<PictureLine> lines;
    std::vector<InkPart> parts = partsOf(ink);
    if (parts.empty()) return lines;
    std::ranges::sort(parts, {}, &InkPart::left);
    const int capital = capitalHeight(parts);
    const std::vector<Band> bands = bandsOf(ink, capital);
    if (bands.size() > mostLines) return lines;
    for (const Band& band : bands) {
        std::vector<InkPart> own;
        std::ranges::copy_if(parts, std::back_inserter(own), [&](const InkPart& part) {
            const int middle = (part.top + part.bottom) / 2;
            return middle >= band.top && middle < band.bottom;
        });
        if (std::ranges::all_of(own, isDash)) continue;  // or no ink at all
        const int right = std::ranges::max(own, {}, &InkPart::right).right;
        if ((right - own.front().left) / capital < longestLine)
            lines.push_back(lineOf(ink, band, own, capital));
    }
    return lines;
}

void erase(PictureLine& line, const Glyph& glyph) {
    const int from = std::max(0, static_cast<int>(std::floor(glyph.left)) - 1);
    const int to = std::min(line.picture.width, static_cast<int>(std::ceil(glyph.right)) + 1);
    for (int y = 0; y < line.picture.height; y++)
        for (int x = from; x < to; x++) line.picture.at(x, y) = 255;
}

}  // namespace marlet
