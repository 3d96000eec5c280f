// ContentEncodings (RFC 9559, 5.1.4.1.31).

#include <algorithm>

#include "matroska/element_ids.h"
#include "matroska/mkv_headers.h"

namespace marlet::MKVHeaders {

namespace {

/// More than any file stacks upon one another.
constexpr std::size_t mostEncodings = 16;

/// The numbers of the file, and the last of the names for those that have none.
template <typename Name>
Name nameOf(std::uint64_t number, Name last) {
    return static_cast<Name>(std::min(number, static_cast<std::uint64_t>(last)));
}

void readCompression(HeaderReader& reader, const Element& parent, ContentEncoding& encoding) {
    ElementWalk walk = reader.children(parent);
    while (const auto child = walk.next()) {
        if (child->id == ElementID::contentCompAlgo)
            encoding.compression =
                nameOf(reader.number(*child), ContentEncoding::Compression::Other);
        if (child->id == ElementID::contentCompSettings) encoding.settings = reader.bytes(*child);
    }
}

ContentEncoding readEncoding(HeaderReader& reader, const Element& parent) {
    ContentEncoding encoding;
    ElementWalk walk = reader.children(parent);
    while (const auto child = walk.next()) {
        if (child->id == ElementID::contentEncodingOrder) encoding.order = reader.number(*child);
        if (child->id == ElementID::contentEncodingScope) encoding.scope = reader.number(*child);
        if (child->id == ElementID::contentEncodingType)
            encoding.type = nameOf(reader.number(*child), ContentEncoding::Type::Other);
        if (child->isMaster(ElementID::contentCompression))
            readCompression(reader, *child, encoding);
    }
    return encoding;
}

}  // namespace

ContentEncodings readEncodings(HeaderReader& reader, const Element& parent) {
    ContentEncodings encodings;
    ElementWalk walk = reader.children(parent);
    while (const auto child = walk.next())
        if (child->isMaster(ElementID::contentEncoding) && encodings.size() < mostEncodings)
            encodings.push_back(readEncoding(reader, *child));
    return encodings;
}

}  // namespace marlet::MKVHeaders
