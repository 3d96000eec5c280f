#include "foundation/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace marlet::Text {

std::string replaceAll(std::string text, std::string_view what, std::string_view with) {
    if (what.empty()) return text;
    std::size_t at = text.find(what);
    if (at == std::string::npos) return text;
    std::string out;
    out.reserve(text.size());
    std::size_t done = 0;
    for (; at != std::string::npos; at = text.find(what, done)) {
        out.append(text, done, at - done).append(with);
        done = at + what.size();
    }
    return out.append(text, done);
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    for (std::size_t at = text.find(separator); at != std::string_view::npos;
         at = text.find(separator, start)) {
        pieces.emplace_back(text.substr(start, at - start));
        start = at + 1;
    }
    pieces.emplace_back(text.substr(start));
    return pieces;
}

std::vector<std::string> words(std::string_view text, char separator) {
    std::vector<std::string> pieces = split(text, separator);
    std::erase(pieces, "");
    return pieces;
}

std::string join(const std::vector<std::string>& pieces, std::string_view between) {
    std::string out;
    for (const std::string& piece : pieces) {
        if (&piece != &pieces.front()) out += between;
        out += piece;
    }
    return out;
}

bool contains(std::string_view text, std::string_view what) {
    return text.find(what) != std::string_view::npos;
}

bool startsWith(std::string_view text, std::string_view what) {
    return text.starts_with(what);
}

bool endsWith(std::string_view text, std::string_view what) {
    return text.ends_with(what);
}

std::optional<int> integer(std::string_view text) {
    // from_chars knows "-" but not "+", and must not see "+-1".
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
    return value;
}

std::string fixed(double value, int decimals) {
    // The longest double has 309 digits before the point.
    constexpr int mostDecimals = 60;
    std::array<char, 400> buffer;
    const auto [stop, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed,
                      std::clamp(decimals, 0, mostDecimals));
    return error == std::errc() ? std::string(buffer.data(), stop) : std::string();
}

}  // namespace marlet::Text
