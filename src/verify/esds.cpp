// The rewrite of `esds` (ISO/IEC 14496-1, 7.2.6): the media tool writes the sizes of descriptors
// with or without padding bytes, as it likes. Only what the descriptors say is compared.

#include <algorithm>

#include "verify/sample_descriptions.h"

namespace marlet {

namespace {

constexpr std::uint8_t tagES = 3;
constexpr std::uint8_t tagDecoderConfig = 4;
constexpr std::uint8_t tagDecoderSpecific = 5;
constexpr std::uint8_t tagSLConfig = 6;

/// Takes bytes off the front. What isn't there makes it bad, and reads as 0 or empty.
class Reader {
public:
    explicit Reader(ByteView bytes) : rest_(bytes) {}

    std::uint32_t number(std::size_t bytes) {
        std::uint32_t value = 0;
        for (const std::uint8_t byte : take(bytes)) value = value << 8 | byte;
        return value;
    }
    ByteView take(std::size_t count) {
        if (count > rest_.size()) {
            isBad_ = true;
            return {};
        }
        const ByteView front = rest_.first(count);
        rest_ = rest_.subspan(count);
        return front;
    }
    bool isEmpty() const { return rest_.empty(); }
    bool isBad() const { return isBad_; }
    void setBad() { isBad_ = true; }

private:
    ByteView rest_;
    bool isBad_ = false;
};

struct Descriptor {
    std::uint32_t tag = 0;
    ByteView body;
};

/// Seven bits a byte, the high bit telling that more follow, in at most four bytes.
Descriptor nextDescriptor(Reader& reader) {
    constexpr int longestSize = 4;
    const std::uint32_t tag = reader.number(1);
    std::uint32_t size = 0;
    std::uint32_t byte = 0x80;
    for (int i = 0; i < longestSize && (byte & 0x80) != 0; i++) {
        byte = reader.number(1);
        size = size << 7 | (byte & 0x7F);
    }
    if ((byte & 0x80) != 0) reader.setBad();
    return {tag, reader.take(size)};
}

Bytes copyOf(ByteView bytes) {
    return {bytes.begin(), bytes.end()};
}

bool readDecoderConfig(ByteView body, ESDS& into) {
    Reader reader(body);
    into.objectType = static_cast<int>(reader.number(1));
    into.streamType = static_cast<int>(reader.number(1) >> 2);
    into.bufferSize = reader.number(3);
    into.maxBitrate = reader.number(4);
    into.avgBitrate = reader.number(4);
    bool isFound = false;
    while (!reader.isBad() && !reader.isEmpty()) {
        const Descriptor inner = nextDescriptor(reader);
        if (inner.tag != tagDecoderSpecific || isFound) continue;
        into.decoderSpecific = copyOf(inner.body);
        isFound = true;
    }
    return !reader.isBad();
}

void skipOptionalFields(Reader& reader, std::uint32_t flags) {
    if ((flags & 0x80) != 0) reader.number(2);               // the stream it depends on
    if ((flags & 0x40) != 0) reader.take(reader.number(1));  // URL
    if ((flags & 0x20) != 0) reader.number(2);               // clock reference
}

/// The type of AAC (ISO/IEC 14496-3, 1.6.2.1): 5 bits, or 32 and 6 more bits. 0 for none.
int audioObjectType(const ESDS& value) {
    constexpr int audioStream = 5;
    constexpr int escape = 31;
    const Bytes& config = value.decoderSpecific;
    if (value.streamType != audioStream || config.empty()) return 0;
    const int type = config[0] >> 3;
    if (type != escape) return type;
    return config.size() < 2 ? 0 : 32 + ((config[0] & 7) << 3 | config[1] >> 5);
}

std::string shownHex(const Bytes& bytes) {
    constexpr std::size_t longestShown = 64;
    if (bytes.size() <= longestShown) return toHex(bytes);
    return toHex(ByteView(bytes).first(longestShown)) + "…";
}

}  // namespace

std::string ESDS::text() const {
    std::string text =
        "ES ID " + std::to_string(esID) + ", object type " + std::to_string(objectType) +
        ", stream type " + std::to_string(streamType) + ", buffer " + std::to_string(bufferSize) +
        ", max " + std::to_string(maxBitrate) + ", average " + std::to_string(avgBitrate) +
        ", decoder-specific " + shownHex(decoderSpecific) + ", SL " + shownHex(slConfig);
    if (const int type = audioObjectType(*this); type != 0)
        text += " AAC profile(AOT)=" + std::to_string(type);
    return text;
}

std::optional<ESDS> parseESDS(ByteView payload) {
    Reader box(payload);
    box.take(4);  // version and flags
    const Descriptor es = nextDescriptor(box);
    if (box.isBad() || es.tag != tagES) return std::nullopt;

    Reader reader(es.body);
    ESDS value;
    value.esID = static_cast<int>(reader.number(2));
    skipOptionalFields(reader, reader.number(1));
    bool hasConfig = false;
    bool hasSL = false;
    while (!reader.isBad() && !reader.isEmpty()) {
        const Descriptor inner = nextDescriptor(reader);
        if (inner.tag == tagDecoderConfig && !hasConfig) {
            if (!readDecoderConfig(inner.body, value)) return std::nullopt;
            hasConfig = true;
        } else if (inner.tag == tagSLConfig && !hasSL) {
            value.slConfig = copyOf(inner.body);
            hasSL = true;
        }
    }
    if (reader.isBad() || !hasConfig) return std::nullopt;
    return value;
}

std::vector<std::string> compareESDS(ByteView original, ByteView rebuilt) {
    const auto before = parseESDS(original);
    const auto after = parseESDS(rebuilt);
    if (!before || !after) return {"esds could not be decoded"};
    if (*before == *after) return {};
    return {"esds differs: original {" + before->text() + "} vs rebuilt {" + after->text() + "}"};
}

}  // namespace marlet
