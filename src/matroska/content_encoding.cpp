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

std::optional<Bytes> inflate(ByteView data, std::size_t most) {
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) return std::nullopt;
    const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&stream, inflateEnd);
    if (data.size() > std::numeric_limits<uInt>::max()) return std::nullopt;
    stream.next_in = const_cast<Bytef*>(data.data());
    stream.avail_in = static_cast<uInt>(data.size());

    Bytes result;
    std::array<std::uint8_t, 32768> piece;
    for (int state = Z_OK; state != Z_STREAM_END;) {
        stream.next_out = piece.data();
        stream.avail_out = static_cast<uInt>(piece.size());
        state = ::inflate(&stream, Z_NO_FLUSH);
        if (state != Z_OK && state != Z_STREAM_END) return std::nullopt;
        const std::size_t got = piece.size() - stream.avail_out;
        if (got > most - result.size()) return std::nullopt;
        append(result, ByteView(piece).first(got));
    }
    return result;
}

std::optional<Bytes> undo(const ContentEncoding& encoding, Bytes data, std::size_t most) {
    if (encoding.compression == Compression::Zlib) return inflate(data, most);
    if (encoding.settings.size() > most || data.size() > most - encoding.settings.size())
        return std::nullopt;
    data.insert(data.begin(), encoding.settings.begin(), encoding.settings.end());
    return data;
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
    std::vector<const ContentEncoding*> steps;
    for (const ContentEncoding& encoding : encodings)
        if ((encoding.scope & scope) != 0) steps.push_back(&encoding);
    std::stable_sort(steps.begin(), steps.end(),
                     [](const auto* a, const auto* b) { return a->order > b->order; });
    for (const ContentEncoding* step : steps) {
        if (obstacle(*step)) return std::nullopt;
        auto undone = undo(*step, std::move(data), most);
        if (!undone) return std::nullopt;
        data = std::move(*undone);
    }
    return data;
}

}  // namespace marlet::ContentDecoder
