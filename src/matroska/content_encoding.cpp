#include "matroska/content_encoding.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>

namespace marlet::ContentDecoder {

namespace {

using Compression = ContentEncoding::Compression;

std::optional<std::string> obstacle(const ContentEncoding& encoding) {
    if (encoding.type == ContentEncoding::Type::Encryption) return "it is encrypted";
    if (encoding.type == ContentEncoding::Type::Other)
        return "it is stored in a way that Marlet doesn't know";
    switch (encoding.compression) {
        case Compression::Zlib:
        case Compression::HeaderStripping:
            return std::nullopt;
        case Compression::Bzlib:
            return "it is compressed with bzip2, which Marlet can't read";
        case Compression::Lzo:
            return "it is compressed with LZO, which Marlet can't read";
        case Compression::Other:
            break;
    }
    return "it is compressed in a way that Marlet doesn't know";
}

struct Inflated {
    Bytes bytes;
    bool isWhole = false;  ///< to the end of the stream
};

/// As far as the data goes, and no further than `most` bytes.
Inflated inflate(ByteView data, std::size_t most) {
    Inflated result;
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) return result;
    const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&stream, inflateEnd);
    if (data.size() > std::numeric_limits<uInt>::max()) return result;
    stream.next_in = const_cast<Bytef*>(data.data());
    stream.avail_in = static_cast<uInt>(data.size());

    std::array<std::uint8_t, 32768> piece;
    for (int state = Z_OK; state == Z_OK;) {
        stream.next_out = piece.data();
        stream.avail_out = static_cast<uInt>(piece.size());
        state = ::inflate(&stream, Z_NO_FLUSH);
        const std::size_t got = piece.size() - stream.avail_out;
        const std::size_t room = most - result.bytes.size();
        append(result.bytes, ByteView(piece).first(std::min(got, room)));
        if (got > room) return result;
        result.isWhole = state == Z_STREAM_END;
    }
    return result;
}

std::optional<Bytes> undo(const ContentEncoding& encoding, Bytes data, std::size_t most) {
    if (encoding.compression == Compression::Zlib) {
        Inflated inflated = inflate(data, most);
        if (!inflated.isWhole) return std::nullopt;
        return std::move(inflated.bytes);
    }
    if (encoding.settings.size() > most || data.size() > most - encoding.settings.size())
        return std::nullopt;
    data.insert(data.begin(), encoding.settings.begin(), encoding.settings.end());
    return data;
}

/// Those of a scope, the last encoding first.
std::vector<const ContentEncoding*> stepsBack(const ContentEncodings& encodings,
                                              ContentEncoding::Scope scope) {
    std::vector<const ContentEncoding*> steps;
    for (const ContentEncoding& encoding : encodings)
        if ((encoding.scope & scope) != 0) steps.push_back(&encoding);
    std::stable_sort(steps.begin(), steps.end(),
                     [](const auto* a, const auto* b) { return a->order > b->order; });
    return steps;
}

}  // namespace

std::optional<std::string> obstacle(const ContentEncodings& encodings) {
    constexpr std::uint64_t ours = ContentEncoding::frames | ContentEncoding::codecPrivate;
    for (const ContentEncoding& encoding : encodings) {
        if ((encoding.scope & ours) == 0) continue;
        if (auto words = obstacle(encoding)) return words;
    }
    return std::nullopt;
}

std::optional<Bytes> undo(const ContentEncodings& encodings, ContentEncoding::Scope scope,
                          Bytes data, std::size_t most) {
    for (const ContentEncoding* step : stepsBack(encodings, scope)) {
        if (obstacle(*step)) return std::nullopt;
        auto undone = undo(*step, std::move(data), most);
        if (!undone) return std::nullopt;
        data = std::move(*undone);
    }
    return data;
}

Bytes undoBeginning(const ContentEncodings& encodings, ContentEncoding::Scope scope,
                    Bytes beginning, std::size_t most) {
    // Between two steps it may have to be longer than in the end.
    const std::size_t mostBetween = most + (std::size_t{64} << 10);
    for (const ContentEncoding* step : stepsBack(encodings, scope)) {
        if (obstacle(*step)) return {};
        if (step->compression == Compression::Zlib) {
            beginning = inflate(beginning, mostBetween).bytes;
        } else {
            beginning.insert(beginning.begin(), step->settings.begin(), step->settings.end());
        }
    }
    beginning.resize(std::min(most, beginning.size()));
    return beginning;
}

}  // namespace marlet::ContentDecoder
