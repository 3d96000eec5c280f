#include "convert/picture_ink.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace marlet {

namespace {

struct Colour {
    int red = 0;
    int green = 0;
    int blue = 0;
};

int distance(const Colour& a, const Colour& b) {
    const int red = a.red - b.red;
    const int green = a.green - b.green;
    const int blue = a.blue - b.blue;
    return static_cast<int>(
        std::lround(std::sqrt(static_cast<double>(red * red + green * green + blue * blue))));
}

/// Nearer than this is the same colour to an eye that reads.
constexpr int alike = 90;
/// What a bin of the histogram holds: 16 steps of each channel.
constexpr int step = 16;
constexpr int bins = 16 * 16 * 16;

/// One of the picture's main colours.
struct Paint {
    Colour colour;
    std::int64_t pixels = 0;
    std::int64_t atEdge = 0;  ///< of them, beside the black around everything
};

class Pixels {
public:
    explicit Pixels(const PGSOCR::Image& image) : image_(image) {}
    Colour at(std::size_t i) const {
        return {image_.rgba[4 * i], image_.rgba[4 * i + 1], image_.rgba[4 * i + 2]};
    }
    std::size_t count() const { return image_.rgba.size() / 4; }
    static int bin(const Colour& colour) {
        return colour.red / step * 256 + colour.green / step * 16 + colour.blue / step;
    }

private:
    const PGSOCR::Image& image_;
};

/// The colours that most pixels have, without black: flat ground, since the blends at the edges of
/// letters scatter over many bins.
std::vector<Paint> mainColours(const Pixels& pixels) {
    std::vector<std::int64_t> counts(bins);
    std::int64_t coloured = 0;
    for (std::size_t i = 0; i < pixels.count(); i++) {
        const Colour colour = pixels.at(i);
        if (distance(colour, {}) < alike) continue;
        counts[static_cast<std::size_t>(Pixels::bin(colour))]++;
        coloured++;
    }
    std::vector<Paint> paints;
    while (paints.size() < 4) {
        const auto most = std::ranges::max_element(counts);
        if (*most == 0 || *most * 20 < coloured) break;
        const int bin = static_cast<int>(most - counts.begin());
        const Colour colour{bin / 256 * step + step / 2, bin / 16 % 16 * step + step / 2,
                            bin % 16 * step + step / 2};
        *most = 0;
        const bool isKnown = std::ranges::any_of(
            paints, [&](const Paint& paint) { return distance(paint.colour, colour) < alike; });
        if (!isKnown) paints.push_back({.colour = colour});
    }
    return paints;
}

/// Tells each paint its pixels, and how many of them are near the black.
void countEdges(const PGSOCR::Image& image, const Pixels& pixels, std::vector<Paint>& paints) {
    constexpr int reach = 4;  // an edge blends over two pixels of the picture
    for (int y = reach; y < image.height - reach; y++) {
        for (int x = reach; x < image.width - reach; x++) {
            const auto i = static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width) +
                           static_cast<std::size_t>(x);
            const Colour colour = pixels.at(i);
            if (distance(colour, {}) < alike) continue;
            for (Paint& paint : paints) {
                if (distance(paint.colour, colour) >= alike / 2) continue;
                paint.pixels++;
                const auto row = static_cast<std::size_t>(image.width);
                for (const std::size_t near :
                     {i - reach, i + reach, i - reach * row, i + reach * row}) {
                    if (distance(pixels.at(near), {}) >= alike / 2) continue;
                    paint.atEdge++;
                    break;
                }
                break;
            }
        }
    }
}

/// The colours of letters: those that touch the black around them least. An outline lies between
/// its letters and the black, a box has them in its middle.
std::vector<Colour> lettersOf(std::vector<Paint> paints, std::vector<Colour>& others) {
    const auto share = [](const Paint& paint) {
        return static_cast<double>(paint.atEdge) /
               static_cast<double>(std::max<std::int64_t>(paint.pixels, 1));
    };
    std::vector<Colour> letters;
    double least = std::numeric_limits<double>::max();
    for (const Paint& paint : paints) least = std::min(least, share(paint));
    for (const Paint& paint : paints) {
        const bool isLetter = share(paint) <= 2 * least + 0.1;
        (isLetter ? letters : others).push_back(paint.colour);
    }
    return letters;
}

}  // namespace

GrayPicture inkOf(const PGSOCR::Image& image) {
    GrayPicture ink{.width = image.width, .height = image.height};
    const Pixels pixels(image);
    ink.pixels.resize(pixels.count());
    std::vector<Paint> paints = mainColours(pixels);
    if (paints.size() > 1) countEdges(image, pixels, paints);
    std::vector<Colour> others{{}};
    std::vector<Colour> letters;
    if (paints.size() == 1) {
        letters.push_back(paints.front().colour);
    } else {
        letters = lettersOf(paints, others);
    }
    if (letters.empty()) return ink;
    // Few colours, many pixels: each bin of 5 bits a channel is judged once.
    std::vector<int> known(32 * 32 * 32, -1);
    for (std::size_t i = 0; i < pixels.count(); i++) {
        const Colour colour = pixels.at(i);
        int& value = known[static_cast<std::size_t>(colour.red / 8 * 1024 + colour.green / 8 * 32 +
                                                    colour.blue / 8)];
        if (value < 0) {
            value = 0;
            for (const Colour& letter : letters) {
                int from = std::numeric_limits<int>::max();
                for (const Colour& other : others) {
                    // How far the pixel is on the way from there to the letter.
                    const int all = distance(other, letter);
                    const int rest = distance(colour, letter);
                    from = std::min(from, std::max(0, all - rest) * 255 / std::max(all, 1));
                }
                value = std::max(value, std::min(from * 8 / 7, 255));
            }
        }
        ink.pixels[i] = static_cast<std::uint8_t>(value);
    }
    return ink;
}

}  // namespace marlet
