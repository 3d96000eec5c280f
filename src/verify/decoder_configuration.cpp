#include "verify/decoder_configuration.h"

#include <algorithm>
#include <array>

#include "mp4/sample_entry.h"
#include "verify/nal_units.h"
#include "verify/sample_descriptions.h"

namespace marlet {

namespace {

using ConvertVerify::NALFormat;
using ConvertVerify::parameterSetsOf;
using ConvertVerify::recordLengthSize;

bool isSamePicture(NALFormat::Codec codec, ByteView original, ByteView rebuilt) {
    const auto wanted = parameterSetsOf(codec, original);
    if (!wanted) return true;  // it tells a decoder nothing in the source either
    const auto told = parameterSetsOf(codec, rebuilt);
    return told && std::ranges::includes(*told, *wanted) &&
           recordLengthSize(codec, original) == recordLengthSize(codec, rebuilt);
}

bool isSameAVC(ByteView original, ByteView rebuilt) {
    return isSamePicture(NALFormat::Codec::avc, original, rebuilt);
}
bool isSameHEVC(ByteView original, ByteView rebuilt) {
    return isSamePicture(NALFormat::Codec::hevc, original, rebuilt);
}

/// Object type, rate, channels and frame length stand in the first two bytes (ISO/IEC 14496-3,
/// 1.6.2.1); what follows extends them.
bool isSameESDS(ByteView original, ByteView rebuilt) {
    constexpr std::size_t core = 2;
    const auto wanted = parseESDS(original);
    if (!wanted || wanted->decoderSpecific.size() < core) return true;
    const auto told = parseESDS(rebuilt);
    return told && told->objectType == wanted->objectType && told->decoderSpecific.size() >= core &&
           std::equal(wanted->decoderSpecific.begin(), wanted->decoderSpecific.begin() + core,
                      told->decoderSpecific.begin());
}

/// A decoder of AC-3 takes what it needs from each frame.
bool isThere(ByteView /*original*/, ByteView /*rebuilt*/) {
    return true;
}

struct Configuration {
    BoxCode type;
    const char* name;
    bool (*isSame)(ByteView original, ByteView rebuilt);
};

constexpr std::array configurations = {
    Configuration{boxCode("avcC"), "avcC", isSameAVC},
    Configuration{boxCode("hvcC"), "hvcC", isSameHEVC},
    Configuration{boxCode("esds"), "esds", isSameESDS},
    Configuration{boxCode("dac3"), "dac3", isThere},
    Configuration{boxCode("dec3"), "dec3", isThere},
};

/// In the entry itself, or in its `wave`.
std::optional<ByteView> find(ByteView stsd, int version, const BoxSpan& entry, BoxCode type) {
    const auto fixed = fixedFieldsLength(stsd, version, entry);
    if (!fixed) return std::nullopt;
    auto box = findSpan(stsd, entry.start + *fixed, entry.end, type);
    if (!box) box = findSpan(stsd, entry.start + *fixed, entry.end, {boxCode("wave"), type});
    if (!box) return std::nullopt;
    return slice(stsd, box->start, box->end);
}

}  // namespace

std::vector<std::string> compareDecoders(ByteView original, ByteView rebuilt) {
    const SampleEntries before = sampleEntries(original);
    const SampleEntries after = sampleEntries(rebuilt);
    std::vector<std::string> reasons;
    for (std::size_t i = 0; i < before.entries.size(); i++) {
        const std::string type = BigEndian::fourCC(original, before.entries[i].boxStart + 4);
        for (const Configuration& each : configurations) {
            const auto wanted = find(original, before.version(), before.entries[i], each.type);
            if (!wanted) continue;
            const auto told = i < after.entries.size()
                                  ? find(rebuilt, after.version(), after.entries[i], each.type)
                                  : std::nullopt;
            if (!told)
                reasons.push_back(type + ": box '" + each.name + "' missing in rebuilt file");
            else if (!each.isSame(*wanted, *told))
                reasons.push_back(type + ": box '" + each.name + "' configures another decoder");
        }
    }
    return reasons;
}

}  // namespace marlet
