#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "convert/pgs_ocr.h"

namespace marlet::PGSOCR {

namespace {

constexpr int border = 12;
constexpr std::int64_t channels = 4;
/// Pixels of a canvas: the largest screen of the format, and what may lie beyond its edges.
constexpr std::int64_t largestCanvas = 16'000'000;
/// A canvas with more is large enough as it stands, and its double would fill the memory.
constexpr std::int64_t largestDoubled = 4'000'000;
/// Pixels of all objects. Hundreds that each cover the screen show no more than a few do, and take
/// as long as hundreds.
constexpr std::int64_t mostDrawn = 4 * largestCanvas;

struct Rectangle {
    int left = std::numeric_limits<int>::max();
    int top = std::numeric_limits<int>::max();
    int right = std::numeric_limits<int>::min();
    int bottom = std::numeric_limits<int>::min();

    /// Of a canvas with this in its middle.
    std::int64_t width() const { return std::int64_t{right} - left + 2 * border; }
    std::int64_t height() const { return std::int64_t{bottom} - top + 2 * border; }
};

Rectangle joined(const Rectangle& all, const PGSParser::Obj& object,
                 const PGSParser::Bitmap& bitmap) {
    return {.left = std::min(all.left, object.x),
            .top = std::min(all.top, object.y),
            .right = std::max(all.right, object.x + bitmap.w),
            .bottom = std::max(all.bottom, object.y + bitmap.h)};
}

/// The bitmap with this id when it is what it says.
const PGSParser::Bitmap* bitmapOf(const PGSParser::Event& event, const PGSParser::Obj& object) {
    const auto found = event.bitmaps.find(object.id);
    if (found == event.bitmaps.end()) return nullptr;
    const PGSParser::Bitmap& bitmap = found->second;
    const bool isWhole = bitmap.w > 0 && bitmap.h > 0 &&
                         bitmap.idx.size() == static_cast<std::size_t>(bitmap.w) *
                                                  static_cast<std::size_t>(bitmap.h);
    return isWhole ? &bitmap : nullptr;
}

Image black(std::int64_t width, std::int64_t height) {
    Image image{.width = static_cast<int>(width), .height = static_cast<int>(height)};
    image.rgba.resize(static_cast<std::size_t>(width * height * channels));
    for (std::size_t at = 3; at < image.rgba.size(); at += channels) image.rgba[at] = 255;
    return image;
}

std::uint8_t* pixel(Image& image, int x, int y) {
    return &image.rgba[static_cast<std::size_t>((std::int64_t{y} * image.width + x) * channels)];
}

void draw(Image& canvas, const PGSParser::Bitmap& bitmap, int left, int top,
          const std::array<std::uint32_t, 256>& palette) {
    const std::uint8_t* index = bitmap.idx.data();
    for (int y = 0; y < bitmap.h; y++) {
        std::uint8_t* to = pixel(canvas, left, top + y);
        for (int x = 0; x < bitmap.w; x++, to += channels) {
            const std::uint32_t entry = palette[*index++];
            const std::uint32_t alpha = entry >> 24;
            if (alpha == 0) continue;
            for (unsigned channel = 0; channel < 3; channel++) {
                const std::uint32_t colour = (entry >> (8 * channel)) & 0xFF;
                to[channel] =
                    static_cast<std::uint8_t>((colour * alpha + to[channel] * (255 - alpha)) / 255);
            }
        }
    }
}

/// A pixel of twice the size lies a quarter of a pixel beside one of the picture, so every second
/// one has the same four weights (cubic, Catmull and Rom), and the others those mirrored. In 128ths
/// of 1.
constexpr std::array<int, 4> nearWeights{-9, 111, 29, -3};

/// One row or column to twice its length. Both are walked in steps of bytes.
void doubleLine(const std::uint8_t* from, std::ptrdiff_t fromStep, int length, std::uint8_t* to,
                std::ptrdiff_t toStep) {
    const auto at = [&](int i) {
        return static_cast<int>(from[std::clamp(i, 0, length - 1) * fromStep]);
    };
    for (int i = 0; i < length; i++) {
        const int before = at(i - 1);
        const int here = at(i);
        const int after = at(i + 1);
        const int left = nearWeights[3] * at(i - 2);
        const int right = nearWeights[3] * at(i + 2);
        // A pixel's left half leans to what stands before it.
        const int leftHalf =
            left + nearWeights[2] * before + nearWeights[1] * here + nearWeights[0] * after;
        const int rightHalf =
            nearWeights[0] * before + nearWeights[1] * here + nearWeights[2] * after + right;
        to[0] = static_cast<std::uint8_t>(std::clamp((leftHalf + 64) / 128, 0, 255));
        to[toStep] = static_cast<std::uint8_t>(std::clamp((rightHalf + 64) / 128, 0, 255));
        to += 2 * toStep;
    }
}

Image doubled(const Image& image) {
    Image wide = black(std::int64_t{2} * image.width, image.height);
    for (int y = 0; y < image.height; y++) {
        const std::uint8_t* row =
            &image.rgba[static_cast<std::size_t>(std::int64_t{y} * image.width * channels)];
        for (int channel = 0; channel < 3; channel++)
            doubleLine(row + channel, channels, image.width, pixel(wide, 0, y) + channel, channels);
    }
    Image whole = black(wide.width, std::int64_t{2} * image.height);
    const std::ptrdiff_t step = std::ptrdiff_t{wide.width} * channels;
    for (int x = 0; x < wide.width; x++) {
        for (int channel = 0; channel < 3; channel++)
            doubleLine(pixel(wide, x, 0) + channel, step, image.height,
                       pixel(whole, x, 0) + channel, step);
    }
    return whole;
}

}  // namespace

std::optional<Image> image(const PGSParser::Event& event) {
    // A place that lies, far from all others, must not cost what stands on the screen.
    Rectangle all;
    std::vector<const PGSParser::Obj*> drawn;
    std::int64_t pixels = 0;
    for (const PGSParser::Obj& object : event.objects) {
        const PGSParser::Bitmap* const bitmap = bitmapOf(event, object);
        if (bitmap == nullptr) continue;
        const Rectangle more = joined(all, object, *bitmap);
        const std::int64_t own = std::int64_t{bitmap->w} * bitmap->h;
        if (more.width() * more.height() > largestCanvas || pixels + own > mostDrawn) continue;
        pixels += own;
        all = more;
        drawn.push_back(&object);
    }
    if (drawn.empty()) return std::nullopt;
    Image canvas = black(all.width(), all.height());
    for (const PGSParser::Obj* const object : drawn)
        draw(canvas, *bitmapOf(event, *object), object->x - all.left + border,
             object->y - all.top + border, event.palette);
    return all.width() * all.height() > largestDoubled ? canvas : doubled(canvas);
}

}  // namespace marlet::PGSOCR
