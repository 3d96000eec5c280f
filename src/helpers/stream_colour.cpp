#include "helpers/stream_colour.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "mp4/avc_config.h"

namespace marlet::StreamColour {

namespace {

/// What is read has no end for bad sets: each count is held to what the standards allow, and the
/// bits that aren't there read as 0.
class SetReader {
public:
    explicit SetReader(ByteView bytes) : bits_(bytes) {}

    std::uint32_t number(int count) {
        std::uint32_t value = 0;
        for (; count > 0; count--) value = value << 1 | static_cast<std::uint32_t>(bits_.bit());
        return value;
    }
    void skip(int count) {
        for (; count > 0; count--) bits_.bit();
    }
    bool flag() { return bits_.bit() == 1; }
    std::uint64_t golomb() { return bits_.ue(); }
    void skipGolombs(int count) {
        for (; count > 0; count--) bits_.ue();
    }
    /// Signed (ISO/IEC 14496-10, 9.1.1).
    std::int64_t signedGolomb() {
        const auto code = static_cast<std::int64_t>(bits_.ue());
        return code % 2 == 1 ? code / 2 + 1 : -(code / 2);
    }
    /// At most so many; more make the set bad.
    int count(int most) {
        const std::uint64_t value = bits_.ue();
        if (value > static_cast<std::uint64_t>(most)) isBad_ = true;
        return isBad() ? 0 : static_cast<int>(value);
    }
    bool isBad() const { return isBad_ || bits_.isBad(); }

private:
    SPSBits bits_;
    bool isBad_ = false;
};

PictureColour readUsability(SetReader& set) {
    constexpr std::uint32_t ownAspect = 255;
    PictureColour colour;
    if (set.flag() && set.number(8) == ownAspect) set.skip(32);
    if (set.flag()) set.flag();  // overscan
    if (!set.flag()) return colour;
    set.skip(3);  // the system of broadcasting
    const bool isFull = set.flag();
    if (set.flag()) {
        colour.primaries = static_cast<int>(set.number(8));
        colour.transfer = static_cast<int>(set.number(8));
        colour.matrix = static_cast<int>(set.number(8));
    }
    colour.range = isFull ? PictureColour::Range::Full : PictureColour::Range::Limited;
    return set.isBad() ? PictureColour() : colour;
}

// --- H.264 ---

void skipScalingList(SetReader& set, int size) {
    std::int64_t last = 8, next = 8;
    for (int i = 0; i < size && !set.isBad(); i++) {
        if (next != 0) next = (last + set.signedGolomb() + 256) % 256;
        if (next != 0) last = next;
    }
}

void skipSampleFormat(SetReader& set) {
    const std::uint64_t chroma = set.golomb();
    if (chroma == 3) set.flag();
    set.skipGolombs(2);  // depths
    set.flag();          // bypass
    if (!set.flag()) return;
    const int lists = chroma == 3 ? 12 : 8;
    for (int i = 0; i < lists; i++)
        if (set.flag()) skipScalingList(set, i < 6 ? 16 : 64);
}

/// ISO/IEC 14496-10, 7.3.2.1.1.
PictureColour readAVC(ByteView unit) {
    constexpr std::size_t header = 4;  // type, profile, constraints, level
    if (unit.size() <= header) return {};
    SetReader set(unit.subspan(header));
    set.golomb();  // its number
    if (AVCConfig::sampleFormat(unit)) skipSampleFormat(set);
    set.golomb();  // frame numbers
    const std::uint64_t order = set.golomb();
    if (order == 0) set.golomb();
    if (order == 1) {
        set.flag();
        set.skipGolombs(2);
        constexpr int longestCycle = 255;
        set.skipGolombs(set.count(longestCycle));
    }
    set.golomb();  // reference frames
    set.flag();
    set.skipGolombs(2);           // size
    if (!set.flag()) set.flag();  // fields
    set.flag();
    if (set.flag()) set.skipGolombs(4);  // crop
    if (!set.flag() || set.isBad()) return {};
    return readUsability(set);
}

// --- HEVC ---

void skipProfiles(SetReader& set, int layersBelow) {
    constexpr int profile = 88, level = 8, most = 8;
    set.skip(profile + level);
    std::array<std::array<bool, 2>, most> isTold{};
    for (int i = 0; i < layersBelow; i++)
        isTold[static_cast<std::size_t>(i)] = {set.flag(), set.flag()};
    if (layersBelow > 0) set.skip(2 * (most - layersBelow));
    for (int i = 0; i < layersBelow; i++) {
        const auto& [hasProfile, hasLevel] = isTold[static_cast<std::size_t>(i)];
        set.skip((hasProfile ? profile : 0) + (hasLevel ? level : 0));
    }
}

/// ISO/IEC 23008-2, 7.3.4.
void skipScalingLists(SetReader& set) {
    for (int size = 0; size < 4; size++) {
        for (int matrix = 0; matrix < 6; matrix += size == 3 ? 3 : 1) {
            if (!set.flag()) {
                set.golomb();
                continue;
            }
            if (size > 1) set.golomb();
            set.skipGolombs(std::min(64, 1 << (4 + 2 * size)));
        }
    }
}

/// 7.3.7: how many pictures each set names counts for the one behind it.
void skipReferenceSets(SetReader& set) {
    constexpr int mostSets = 64, mostPictures = 16;
    const int sets = set.count(mostSets);
    int pictures = 0;
    for (int i = 0; i < sets && !set.isBad(); i++) {
        if (i > 0 && set.flag()) {
            set.flag();
            set.golomb();
            int kept = 0;
            for (int j = 0; j <= pictures; j++)
                if (set.flag() || set.flag()) kept++;
            pictures = kept;
        } else {
            const int before = set.count(mostPictures);
            pictures = before + set.count(mostPictures);
            for (int j = 0; j < pictures; j++) {
                set.golomb();
                set.flag();
            }
        }
    }
}

/// 7.3.2.2.1.
PictureColour readHEVC(ByteView unit) {
    constexpr std::size_t header = 2;
    if (unit.size() <= header) return {};
    SetReader set(unit.subspan(header));
    set.skip(4);
    const auto layersBelow = static_cast<int>(set.number(3));
    set.flag();
    skipProfiles(set, layersBelow);
    set.golomb();                        // its number
    if (set.golomb() == 3) set.flag();   // chroma
    set.skipGolombs(2);                  // size
    if (set.flag()) set.skipGolombs(4);  // crop
    set.skipGolombs(2);                  // depths
    constexpr int mostOrderBits = 12;
    const int orderBits = set.count(mostOrderBits) + 4;
    const int ordered = set.flag() ? layersBelow + 1 : 1;
    set.skipGolombs(3 * ordered);
    set.skipGolombs(6);  // blocks
    if (set.flag() && set.flag()) skipScalingLists(set);
    set.skip(2);
    if (set.flag()) {  // uncompressed samples
        set.skip(8);
        set.skipGolombs(2);
        set.flag();
    }
    skipReferenceSets(set);
    if (set.flag()) {  // references of long terms
        constexpr int mostLongTerms = 32;
        for (int left = set.count(mostLongTerms); left > 0; left--) set.skip(orderBits + 1);
    }
    set.skip(2);
    if (!set.flag() || set.isBad()) return {};
    return readUsability(set);
}

/// The first set of an `avcC` (ISO/IEC 14496-15, 5.3.3.1).
ByteView firstAVCSet(ByteView record) {
    constexpr std::int64_t lengthAt = 6;
    if (record.size() < 8 || (record[5] & 31) == 0) return {};
    const std::int64_t length = BigEndian::u16(record, lengthAt);
    return slice(record, lengthAt + 2, lengthAt + 2 + length);
}

/// Of an `hvcC` (8.3.3.1).
ByteView firstHEVCSet(ByteView record) {
    constexpr std::int64_t arraysAt = 23;
    constexpr int sequence = 33;
    if (record.size() < static_cast<std::size_t>(arraysAt)) return {};
    const auto size = static_cast<std::int64_t>(record.size());
    std::int64_t at = arraysAt;
    for (int arrays = record[arraysAt - 1]; arrays > 0 && at + 5 <= size; arrays--) {
        const int type = record[static_cast<std::size_t>(at)] & 63;
        int units = BigEndian::u16(record, at + 1);
        at += 3;
        for (; units > 0 && at + 2 <= size; units--) {
            const std::int64_t length = BigEndian::u16(record, at);
            at += 2;
            if (type == sequence) return slice(record, at, at + length);
            at += length;
        }
    }
    return {};
}

}  // namespace

PictureColour of(const MKVTrack& track) {
    if (track.codecID == "V_MPEG4/ISO/AVC") return readAVC(firstAVCSet(track.codecPrivate));
    if (track.codecID == "V_MPEGH/ISO/HEVC") return readHEVC(firstHEVCSet(track.codecPrivate));
    return {};
}

}  // namespace marlet::StreamColour
