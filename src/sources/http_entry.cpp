#include "sources/http_entry.h"

#include <string_view>

#include "foundation/digest.h"
#include "foundation/text.h"

namespace marlet::HttpEntry {
namespace {

constexpr std::string_view mark = "marlet-http-1\n";
constexpr std::size_t digestLength = 64;                         // hexadecimal
constexpr std::size_t headLength = mark.size() + 4 + 4 + 4 + 8;  // status, key, headers, body

std::string headerText(const HttpHeaders& headers) {
    std::string text;
    for (const auto& [name, value] : headers) text += name + ": " + value + "\n";
    return text;
}

HttpHeaders headersOf(const std::string& text) {
    HttpHeaders headers;
    for (const std::string& line : Text::words(text, '\n')) {
        const auto colon = line.find(": ");
        if (colon != std::string::npos)
            headers.emplace_back(line.substr(0, colon), line.substr(colon + 2));
    }
    return headers;
}

}  // namespace

Bytes encode(const std::string& key, const HttpAnswer& answer) {
    const std::string headers = headerText(answer.headers);
    Bytes bytes;
    bytes.reserve(headLength + key.size() + headers.size() + answer.body.size() + digestLength);
    append(bytes, viewOf(mark));
    BigEndian::put32(bytes, static_cast<std::uint32_t>(answer.status));
    BigEndian::put32(bytes, static_cast<std::uint32_t>(key.size()));
    BigEndian::put32(bytes, static_cast<std::uint32_t>(headers.size()));
    BigEndian::put64(bytes, answer.body.size());
    append(bytes, viewOf(key));
    append(bytes, viewOf(headers));
    append(bytes, answer.body);
    append(bytes, viewOf(sha256Hex(bytes)));
    return bytes;
}

std::optional<HttpAnswer> decode(ByteView bytes, const std::string& key) {
    if (bytes.size() < headLength + digestLength) return std::nullopt;
    if (textOf(bytes.first(mark.size())) != mark) return std::nullopt;
    const auto field = static_cast<std::int64_t>(mark.size());
    const std::uint64_t keyLength = BigEndian::u32(bytes, field + 4);
    const std::uint64_t headersLength = BigEndian::u32(bytes, field + 8);
    const std::uint64_t bodyLength = BigEndian::u64(bytes, field + 12);
    const std::uint64_t content = bytes.size() - headLength - digestLength;
    if (bodyLength > content || keyLength + headersLength != content - bodyLength)
        return std::nullopt;
    const ByteView signedPart = bytes.first(bytes.size() - digestLength);
    if (textOf(bytes.last(digestLength)) != sha256Hex(signedPart)) return std::nullopt;
    const ByteView rest = signedPart.subspan(headLength);
    if (textOf(rest.first(keyLength)) != key) return std::nullopt;

    HttpAnswer answer;
    answer.status = static_cast<int>(BigEndian::u32(bytes, field));
    answer.headers = headersOf(textOf(rest.subspan(keyLength, headersLength)));
    const ByteView body = rest.subspan(keyLength + headersLength);
    answer.body.assign(body.begin(), body.end());
    answer.fromCache = true;
    return answer;
}

}  // namespace marlet::HttpEntry
