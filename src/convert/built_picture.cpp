#include "convert/built_picture.h"

#include <algorithm>
#include <cstdint>
#include <optional>

#include "matroska/picture_shape.h"
#include "mp4/box_cursor.h"
#include "mp4/sample_entry.h"

namespace marlet::BuiltPicture {

namespace {

int number(int tool, int told) {
    constexpr int most = 0xFFFF;
    return tool == PictureColour::notTold ? std::min(told, most) : tool;
}

/// Primaries, transfer and matrix of 16 bits each, and the range in the first bit of a byte.
Bytes colours(ByteView fields, const PictureColour& told) {
    constexpr int rgb = 0;
    const auto known = [](int matrix) { return matrix == rgb ? PictureColour::notTold : matrix; };
    Bytes bytes;
    const auto put = [&bytes](int value) {
        BigEndian::put16(bytes, static_cast<std::uint16_t>(value));
    };
    put(number(BigEndian::u16(fields, 0), told.primaries));
    put(number(BigEndian::u16(fields, 2), told.transfer));
    put(number(known(BigEndian::u16(fields, 4)), known(told.matrix)));
    const bool isFull = told.range == PictureColour::Range::Full;
    bytes.push_back(static_cast<std::uint8_t>(fields[6] | (isFull ? 0x80 : 0)));
    return bytes;
}

/// The pictures' tracks of an index.
class Pictures {
public:
    Pictures(BuiltIndex& index, const MKVTrack& source)
        : index_(index), moov_(index.moov()), source_(source) {}

    void restore() {
        BoxCursor traks(moov_, 0, static_cast<std::int64_t>(moov_.size()));
        while (const auto trak = traks.next()) {
            if (trak->code != boxCode("trak") ||
                !findSpan(moov_, *trak, {boxCode("mdia"), boxCode("minf"), boxCode("vmhd")}))
                continue;
            if (changeEntries(*trak)) changeWidth(*trak);
        }
    }

private:
    /// True when a shape was changed.
    bool changeEntries(const BoxSpan& trak) {
        const auto stsd = findSpan(
            moov_, trak, {boxCode("mdia"), boxCode("minf"), boxCode("stbl"), boxCode("stsd")});
        if (!stsd) return false;
        const ByteView payload = slice(moov_, stsd->start, stsd->end);
        const SampleEntries all = sampleEntries(payload);
        bool isReshaped = false;
        for (const BoxSpan& entry : all.entries) {
            const auto fixed = fixedFieldsLength(payload, all.version(), entry);
            if (!fixed) continue;
            const std::int64_t from = stsd->start + entry.start + *fixed;
            const std::int64_t to = stsd->start + entry.end;
            changeColour(findSpan(moov_, from, to, boxCode("colr")));
            isReshaped = changeShape(findSpan(moov_, from, to, boxCode("pasp"))) || isReshaped;
        }
        return isReshaped;
    }

    void changeColour(const std::optional<BoxSpan>& colr) {
        constexpr std::int64_t kind = 4, fields = 7;
        if (!colr || colr->end - colr->start < kind + fields ||
            BigEndian::u32(moov_, colr->start) != boxCode("nclx"))
            return;
        const std::int64_t at = colr->start + kind;
        change(at, colours(slice(moov_, at, at + fields), source_.picture.colour));
    }

    bool changeShape(const std::optional<BoxSpan>& pasp) {
        const auto aspect = PictureShape::pixelAspect(source_);
        if (!pasp || pasp->end - pasp->start < 8 || !aspect) return false;
        const std::uint64_t width = BigEndian::u32(moov_, pasp->start);
        const std::uint64_t height = BigEndian::u32(moov_, pasp->start + 4);
        if (width * aspect->height == height * aspect->width) return false;
        Bytes bytes;
        BigEndian::put32(bytes, aspect->width);
        BigEndian::put32(bytes, aspect->height);
        change(pasp->start, bytes);
        return true;
    }

    /// Width and height are the last fields of a track's header (8.3.2), in 1/65536 pixels.
    void changeWidth(const BoxSpan& trak) {
        const auto header = findSpan(moov_, trak, {boxCode("tkhd")});
        constexpr std::int64_t shortest = 84;
        if (!header || header->end - header->start < shortest) return;
        const PictureShape::Size shown = PictureShape::shown(source_);
        Bytes bytes;
        BigEndian::put32(bytes, static_cast<std::uint32_t>(shown.width) << 16);
        BigEndian::put32(bytes, static_cast<std::uint32_t>(shown.height) << 16);
        change(header->end - 8, bytes);
    }

    void change(std::int64_t at, const Bytes& bytes) {
        index_.put(at, bytes, "cannot open the new file to set how it is shown");
    }

    BuiltIndex& index_;
    const ByteView moov_;
    const MKVTrack& source_;
};

}  // namespace

void restore(BuiltIndex& index, const MKVTrack& source) {
    Pictures(index, source).restore();
}

}  // namespace marlet::BuiltPicture
