#include "verify/nal_units.h"

#include <algorithm>

#include "foundation/digest.h"

namespace marlet::ConvertVerify {

namespace {

using Codec = NALFormat::Codec;

int avcType(std::uint8_t first) {
    return first & 0x1F;
}
int hevcType(std::uint8_t first) {
    return first >> 1 & 0x3F;
}

/// Reads a record forward; what isn't there makes it bad.
class RecordReader {
public:
    RecordReader(ByteView record, std::size_t at) : record_(record), at_(at) {}

    std::size_t number(std::size_t bytes) {
        std::size_t value = 0;
        for (const std::uint8_t byte : take(bytes)) value = value << 8 | byte;
        return value;
    }
    ByteView take(std::size_t count) {
        if (at_ > record_.size() || count > record_.size() - at_) {
            isBad_ = true;
            return {};
        }
        const ByteView part = record_.subspan(at_, count);
        at_ += count;
        return part;
    }
    void takeSets(std::size_t count, const NALFormat& format, ParameterSets& into) {
        for (; count > 0 && !isBad_; count--) {
            const ByteView unit = take(number(2));
            if (!unit.empty() && format.isParameterSet(unit[0])) into.insert(parameterSetKey(unit));
        }
    }
    bool isBad() const { return isBad_; }

private:
    ByteView record_;
    std::size_t at_;
    bool isBad_ = false;
};

std::optional<ParameterSets> avcSets(ByteView record) {
    constexpr std::size_t sequenceCount = 5;
    const NALFormat format{Codec::avc, 0};
    RecordReader reader(record, sequenceCount);
    ParameterSets sets;
    reader.takeSets(reader.number(1) & 0x1F, format, sets);
    reader.takeSets(reader.number(1), format, sets);
    if (reader.isBad()) return std::nullopt;
    return sets;
}

std::optional<ParameterSets> hevcSets(ByteView record) {
    constexpr std::size_t arrayCount = 22;
    const NALFormat format{Codec::hevc, 0};
    RecordReader reader(record, arrayCount);
    ParameterSets sets;
    for (std::size_t arrays = reader.number(1); arrays > 0 && !reader.isBad(); arrays--) {
        reader.take(1);  // the type, which each unit says itself
        reader.takeSets(reader.number(2), format, sets);
    }
    if (reader.isBad()) return std::nullopt;
    return sets;
}

bool skipInAVC(std::uint8_t first) {
    const int type = avcType(first);
    return type >= 7 && type <= 9;
}
bool skipInHEVC(std::uint8_t first) {
    return (first & 0x78) == 0x40;
}

}  // namespace

bool NALFormat::isParameterSet(std::uint8_t first) const {
    if (codec == Codec::avc) return avcType(first) == 7 || avcType(first) == 8;
    return codec == Codec::hevc && hevcType(first) >= 32 && hevcType(first) <= 34;
}

bool NALFormat::isRefresh(std::uint8_t first) const {
    if (codec == Codec::avc) return avcType(first) == 5;
    return codec == Codec::hevc && (hevcType(first) == 19 || hevcType(first) == 20);
}

NALFormat::Codec nalCodec(std::string_view codecID) {
    if (codecID == "V_MPEG4/ISO/AVC") return Codec::avc;
    if (codecID == "V_MPEGH/ISO/HEVC") return Codec::hevc;
    return Codec::none;
}

std::optional<ByteView> NALWalk::next() {
    if (rest_.size() <= lengthSize_) return std::nullopt;
    std::size_t length = 0;
    for (const std::uint8_t byte : rest_.first(lengthSize_)) length = length << 8 | byte;
    if (length < 1 || length > rest_.size() - lengthSize_) return std::nullopt;
    const ByteView unit = rest_.subspan(lengthSize_, length);
    rest_ = rest_.subspan(lengthSize_ + length);
    return unit;
}

FrameKey keyOf(const FrameDigest& digest) {
    FrameKey key{};
    std::copy_n(digest.begin(), key.size(), key.begin());
    return key;
}

FrameKey parameterSetKey(ByteView unit) {
    while (!unit.empty() && unit.back() == 0) unit = unit.first(unit.size() - 1);
    return keyOf(frameDigest(unit, nullptr, 0));
}

std::optional<ParameterSets> parameterSetsOf(Codec codec, ByteView record) {
    if (codec == Codec::avc) return avcSets(record);
    if (codec == Codec::hevc) return hevcSets(record);
    return std::nullopt;
}

std::size_t recordLengthSize(Codec codec, ByteView record) {
    constexpr std::size_t placeInAVC = 4;
    constexpr std::size_t placeInHEVC = 21;
    if (codec == Codec::none) return 0;
    const std::size_t place = codec == Codec::avc ? placeInAVC : placeInHEVC;
    return record.size() > place ? (record[place] & 3U) + 1 : 0;
}

std::size_t lengthSize(const MKVTrack& track) {
    return recordLengthSize(nalCodec(track.codecID), track.codecPrivate);
}

NALFilter nalFilter(std::string_view codecID) {
    return nalCodec(codecID) == Codec::hevc ? skipInHEVC : skipInAVC;
}

FrameDigest frameDigest(ByteView frame, NALFilter skip, std::size_t lengthSize) {
    thread_local Sha256 digest;
    if (skip == nullptr || lengthSize == 0) {
        digest.update(frame);
        return digest.restart();
    }
    NALWalk walk(frame, lengthSize);
    while (const auto unit = walk.next())
        if (!skip((*unit)[0])) digest.update(*unit);
    digest.update(walk.rest());
    return digest.restart();
}

}  // namespace marlet::ConvertVerify
