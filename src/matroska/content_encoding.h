#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/bytes.h"

namespace marlet {

/// What was done to a track's data before it was stored (RFC 9559, 5.1.4.1.31), as the file tells
/// it.
struct ContentEncoding {
    enum Scope : std::uint64_t { frames = 1, codecPrivate = 2 };
    enum class Type { Compression = 0, Encryption = 1, Other = 2 };
    enum class Compression { Zlib = 0, Bzlib = 1, Lzo = 2, HeaderStripping = 3, Other = 4 };

    std::uint64_t order = 0;
    std::uint64_t scope = frames;
    Type type = Type::Compression;
    Compression compression = Compression::Zlib;
    Bytes settings;  ///< of header stripping: what each frame begins with
};

using ContentEncodings = std::vector<ContentEncoding>;

/// Undoes them.
namespace ContentDecoder {

/// Why frames or CodecPrivate can't be undone, in words; nothing else.
std::optional<std::string> obstacle(const ContentEncodings& encodings);
/// The last encoding of those that concern the scope is undone first. Nothing when the data is
/// damaged, when it can't be undone, or would grow beyond `most` bytes.
std::optional<Bytes> undo(const ContentEncodings& encodings, ContentEncoding::Scope scope,
                          Bytes data, std::size_t most);
/// As far as it goes, when only the beginning of the data is there: what comes out of it, at most
/// `most` bytes. Damage ends it like the end of the data.
Bytes undoBeginning(const ContentEncodings& encodings, ContentEncoding::Scope scope,
                    Bytes beginning, std::size_t most);

}  // namespace ContentDecoder
}  // namespace marlet
