#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/bytes.h"

// Presentation Graphic Streams, the picture subtitles of Blu-ray discs: from pictures down to
// segments, and up to the files that carry them.
namespace marlet::test::pgs {

/// Four bytes a pixel: red, green, blue, alpha; not premultiplied. Rows without padding.
struct Picture {
    int width = 0;
    int height = 0;
    Bytes rgba;
};

/// A picture's place on the plane.
struct Placed {
    Picture picture;
    int x = 0;
    int y = 0;
    bool forced = false;
};

struct Plane {
    int width = 1920;
    int height = 1080;
};

// --- segments: a type, a size of 16 bits and a payload ---
enum Type : std::uint8_t { palette = 20, object = 21, composition = 22, window = 23, end = 128 };
Bytes segment(std::uint8_t type, ByteView payload);
/// With a size that may lie.
Bytes lyingSegment(std::uint8_t type, std::uint16_t size, ByteView payload);

struct Row {
    int id = 0;
    int x = 0;
    int y = 0;
    bool forced = false;
    bool cropped = false;  ///< eight bytes more, of a rectangle that crops nothing
};
constexpr std::uint8_t normal = 0x00;
constexpr std::uint8_t acquisition = 0x40;
constexpr std::uint8_t epochStart = 0x80;
Bytes compositionSegment(const std::vector<Row>& rows, std::uint8_t state = epochStart,
                         const Plane& plane = {}, std::uint16_t number = 0);

struct Rectangle {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};
/// The windows 0, 1 and so on.
Bytes windowSegment(const std::vector<Rectangle>& windows);

struct Entry {
    std::uint8_t index = 0;
    std::uint8_t y = 16;
    std::uint8_t cr = 128;
    std::uint8_t cb = 128;
    std::uint8_t alpha = 255;
};
/// The nearest to a colour, by ITU-R BT.709 with video levels.
Entry entryOf(std::uint8_t index, std::uint8_t red, std::uint8_t green, std::uint8_t blue,
              std::uint8_t alpha = 255);
Bytes paletteSegment(const std::vector<Entry>& entries);

constexpr std::uint8_t first = 0x80;
constexpr std::uint8_t last = 0x40;
/// The first of an object's segments; it tells the size of the picture.
Bytes objectStart(int id, int width, int height, ByteView runs, std::uint8_t flags = first | last);
/// Those that follow.
Bytes objectPart(int id, ByteView runs, std::uint8_t flags = last);
/// In as many segments as it takes when each holds so many bytes of run lengths at most.
Bytes objectSegments(int id, int width, int height, ByteView runs, std::size_t most = 65'500);
Bytes endSegment();

/// The shortest run lengths of palette indices.
Bytes runs(ByteView indices, int width);

// --- pictures ---
struct Indexed {
    Bytes indices;
    std::vector<Entry> entries;  ///< the transparent colour has the index 0
};
/// With at most 255 colours: those of pictures that have more are made coarser until they fit. The
/// pictures share one palette and get indices each.
std::vector<Indexed> indexed(const std::vector<const Picture*>& pictures);

/// All segments that show these pictures and nothing else, as a new epoch; without pictures those
/// that clear the screen.
Bytes displaySet(const std::vector<Placed>& pictures, const Plane& plane = {},
                 std::uint16_t number = 0);

// --- films ---
/// Something that is on the screen from one time to another; others may be at the same time.
struct Line {
    std::int64_t startMs = 0;
    std::int64_t endMs = 0;
    std::vector<Placed> pictures;
};
/// What is sent at one time.
struct Timed {
    std::int64_t ms = 0;
    Bytes segments;
};
/// A display set wherever a line starts or ends.
std::vector<Timed> stream(const std::vector<Line>& lines, const Plane& plane = {});

/// As a .sup file, which mkvmerge and FFmpeg read.
Bytes sup(const std::vector<Timed>& sets);

struct Track {
    std::vector<Timed> sets;
    std::string language = "eng";
    Bytes more;  ///< further elements of the track entry
};
/// A Matroska file of these tracks, numbered from 1, one frame a set.
Bytes film(const std::vector<Track>& tracks);
Bytes film(const std::vector<Timed>& sets);

}  // namespace marlet::test::pgs
