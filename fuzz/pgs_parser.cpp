// Frames of any bytes give events that lasted and that hold what they show, within bounds. A frame
// follows two bytes with its size, and a byte with the time since the one before.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "convert/pgs_displays.h"

namespace {

using namespace marlet;

void check(bool holds) {
    if (!holds) std::abort();
}

void look(const PGSParser::Event& event) {
    check(event.startMs < event.endMs);
    check(!event.objects.empty() && event.objects.size() <= 255);
    const auto any = [&](auto&& isIt) {
        return std::any_of(event.objects.begin(), event.objects.end(), isIt);
    };
    check(event.forced == any([](const PGSParser::Obj& object) { return object.forced; }));
    std::size_t pixels = 0;
    for (const auto& [id, bitmap] : event.bitmaps) {
        check(any([wanted = id](const PGSParser::Obj& object) { return object.id == wanted; }));
        check(bitmap.w > 0 && bitmap.h > 0);
        check(bitmap.idx.size() ==
              static_cast<std::size_t>(bitmap.w) * static_cast<std::size_t>(bitmap.h));
        pixels += bitmap.idx.size();
    }
    check(pixels <= PGSParser::mostPixels);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteView rest(data, size);
    PGSDisplays displays;
    std::int64_t time = 0;
    std::int64_t ended = 0;
    while (rest.size() >= 3) {
        const std::size_t length = std::min<std::size_t>(BigEndian::u16(rest, 0), rest.size() - 3);
        time += rest[2];
        displays.frame(rest.subspan(3, length), time, [&](const PGSParser::Event& event) {
            check(event.startMs >= ended && event.endMs == time);
            ended = event.endMs;
            look(event);
        });
        rest = rest.subspan(3 + length);
    }
    return 0;
}
