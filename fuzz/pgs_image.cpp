// Events of any objects become pictures within bounds; the ink of those, and any ink at all, falls
// into lines whose glyphs lie within it. An event is a palette entry and objects, as below, and
// bitmaps are filled from the rest of the bytes, again and again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "convert/lone_glyphs.h"
#include "convert/pgs_ocr.h"
#include "convert/picture_ink.h"
#include "convert/picture_lines.h"

namespace {

using namespace marlet;

void check(bool holds) {
    if (!holds) std::abort();
}

/// Numbers from the input; 0 behind its end.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : bytes_(data, size) {}
    std::uint8_t u8() {
        if (bytes_.empty()) return 0;
        const std::uint8_t value = bytes_[0];
        bytes_ = bytes_.subspan(1);
        return value;
    }
    std::uint16_t u16() {
        const std::uint8_t high = u8();
        return static_cast<std::uint16_t>(high << 8 | u8());
    }
    ByteView rest() const { return bytes_; }

private:
    ByteView bytes_;
};

Bytes filled(ByteView pattern, std::size_t size) {
    Bytes all(size);
    if (!pattern.empty())
        for (std::size_t i = 0; i < size; i++) all[i] = pattern[i % pattern.size()];
    return all;
}

void look(const InkPart& part, const GrayPicture& ink) {
    check(part.left >= 0 && part.left < part.right && part.right <= ink.width);
    check(part.top >= 0 && part.top < part.bottom && part.bottom <= ink.height);
    check(part.pixels > 0 && part.pixels <= part.width() * part.height());
}

void split(const GrayPicture& ink) {
    check(ink.pixels.size() ==
          static_cast<std::size_t>(ink.width) * static_cast<std::size_t>(ink.height));
    std::int64_t pixels = 0;
    for (const InkPart& part : partsOf(ink)) {
        look(part, ink);
        isNote(ink, part);
        pixels += part.pixels;
    }
    check(pixels <= static_cast<std::int64_t>(ink.pixels.size()));
    std::vector<PictureLine> lines = linesOf(ink);
    check(lines.size() <= 40);
    for (PictureLine& line : lines) {
        check(line.capital > 0 && line.capital <= ink.height);
        check(line.picture.width > 0 && line.picture.width < 32'000);
        check(line.picture.pixels.size() == static_cast<std::size_t>(line.picture.width) *
                                                static_cast<std::size_t>(line.picture.height));
        check(!line.glyphs.empty());
        int last = 0;
        for (const Glyph& glyph : line.glyphs) {
            check(glyph.box.left >= last && glyph.left <= glyph.right && !glyph.parts.empty());
            last = glyph.box.left;
            for (const InkPart& part : glyph.parts) look(part, ink);
        }
        const std::size_t glyphs = line.glyphs.size();
        check(takeLoneGlyphs(ink, line, true).size() + line.glyphs.size() == glyphs);
    }
}

PGSParser::Event eventOf(Input& input) {
    PGSParser::Event event;
    const int bitmaps = input.u8() % 4;
    const int objects = input.u8() % 8;
    for (int i = 0; i < bitmaps; i++)
        event.bitmaps[i] = {.w = input.u16() % 160, .h = input.u16() % 90};
    for (int i = 0; i < objects; i++) {
        const int id = input.u8();
        // Mostly near each other, since large canvases take long.
        const int most = id < 250 ? 300 : 65'536;
        const int x = input.u16() % most;
        event.objects.push_back({.id = id % 5, .x = x, .y = input.u16() % most});
    }
    for (int i = 0; i < 8; i++)
        event.palette[input.u8()] = static_cast<std::uint32_t>(input.u16()) << 16 | input.u16();
    for (auto& [id, bitmap] : event.bitmaps)
        bitmap.idx = filled(
            input.rest(), static_cast<std::size_t>(bitmap.w) * static_cast<std::size_t>(bitmap.h));
    return event;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    if (input.u8() % 2 == 0) {
        GrayPicture ink{.width = input.u16() % 250, .height = input.u16() % 120};
        ink.pixels = filled(input.rest(), static_cast<std::size_t>(ink.width) *
                                              static_cast<std::size_t>(ink.height));
        split(ink);
        return 0;
    }
    const auto image = PGSOCR::image(eventOf(input));
    if (!image) return 0;
    check(image->width > 24 && image->height > 24);
    check(image->rgba.size() ==
          static_cast<std::size_t>(image->width) * static_cast<std::size_t>(image->height) * 4);
    check(image->rgba.size() <= std::size_t{64'000'000});
    // As long as one try should take; what is larger only lasts longer.
    if (image->rgba.size() <= std::size_t{4'000'000}) split(inkOf(*image));
    return 0;
}
