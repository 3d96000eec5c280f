// The rewrite of `avcC` (ISO/IEC 14496-15, 5.3.3.1): the media tool adds, to the record of a High
// profile, the four bytes that other programs leave out. They repeat what the sequence parameter
// set says, so a decoder learns nothing else from them.

#include <algorithm>
#include <array>
#include <optional>

#include "mp4/avc_config.h"
#include "verify/sample_descriptions.h"

namespace marlet {

namespace {

constexpr std::size_t shortestRecord = 7;
constexpr std::size_t extensionLength = 4;
constexpr std::array<std::uint8_t, 4> profilesWithExtension = {100, 110, 122, 144};

struct Record {
    ByteView core;  ///< header, sequence and picture parameter sets
    ByteView extension;
    ByteView firstSet;  ///< the first sequence parameter set; empty when there is none
};

/// Steps over that many sets, each behind 16 bits of its length. False when they run off the end.
bool stepOverSets(ByteView record, int count, std::size_t& at, ByteView* first) {
    for (int i = 0; i < count; i++) {
        if (record.size() - at < 2) return false;
        const std::size_t length = BigEndian::u16(record, static_cast<std::int64_t>(at));
        at += 2;
        if (record.size() - at < length) return false;
        if (i == 0 && first != nullptr) *first = record.subspan(at, length);
        at += length;
    }
    return true;
}

std::optional<Record> parse(ByteView record) {
    constexpr std::size_t sets = 5;
    if (record.size() < shortestRecord) return std::nullopt;
    Record parts;
    std::size_t at = sets + 1;
    if (!stepOverSets(record, record[sets] & 0x1F, at, &parts.firstSet)) return std::nullopt;
    if (at == record.size()) return std::nullopt;
    const int pictureSets = record[at++];
    if (!stepOverSets(record, pictureSets, at, nullptr)) return std::nullopt;
    parts.core = record.first(at);
    parts.extension = record.subspan(at);
    return parts;
}

/// The extension's own values, and those of the set in the same terms.
struct Depths {
    std::uint64_t chroma = 0;
    std::uint64_t luma = 0;
    std::uint64_t chromaDepth = 0;
    bool operator==(const Depths&) const = default;

    std::string text() const {
        return "chroma " + std::to_string(chroma) + ", depth " + std::to_string(luma) + "/" +
               std::to_string(chromaDepth);
    }
};

/// Reserved bits are ones, and there are no extended sets.
bool isWellFormed(ByteView extension) {
    return extension[0] >= 252 && extension[1] >= 248 && extension[2] >= 248 && extension[3] == 0;
}

std::optional<std::string> disagreement(ByteView extension, ByteView firstSet) {
    const auto format = AVCConfig::sampleFormat(firstSet);
    if (!format) return "avcC: could not read the SPS to check the extension";
    const Depths said{extension[0] & 3U, (extension[1] & 7U) + 8, (extension[2] & 7U) + 8};
    const Depths set{format->chromaFormat, format->lumaDepth, format->chromaDepth};
    if (said == set) return std::nullopt;
    return "avcC: extension (" + said.text() + ") disagrees with the SPS (" + set.text() + ")";
}

std::optional<std::string> extensionFault(const Record& rebuilt) {
    if (rebuilt.extension.size() != extensionLength)
        return "avcC: rebuilt file has " + std::to_string(rebuilt.extension.size()) +
               " extra bytes, expected the 4-byte chroma/bit-depth extension";
    const std::uint8_t profile = rebuilt.core[1];
    if (std::ranges::find(profilesWithExtension, profile) == profilesWithExtension.end())
        return "avcC: extension added to profile " + std::to_string(profile) +
               ", which does not carry one";
    if (!isWellFormed(rebuilt.extension))
        return "avcC: extension bytes are malformed (" + toHex(rebuilt.extension) + ")";
    return disagreement(rebuilt.extension, rebuilt.firstSet);
}

}  // namespace

std::vector<std::string> compareAVCC(ByteView original, ByteView rebuilt) {
    const auto before = parse(original);
    const auto after = parse(rebuilt);
    if (!before || !after) return {"avcC could not be decoded"};
    if (!std::ranges::equal(before->core, after->core))
        return {"avcC differs in its header, SPS or PPS (not just the extension)"};
    if (!before->extension.empty())
        return {"avcC differs: the original already has extension bytes that changed"};
    if (auto fault = extensionFault(*after)) return {*std::move(fault)};
    return {};
}

}  // namespace marlet
