#include "matroska/header_reader.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "foundation/text.h"

namespace marlet {

namespace {

constexpr std::uint64_t longestText = std::uint64_t{1} << 20;
/// Subtitles with fonts in their header are the longest.
constexpr std::uint64_t longestBytes = std::uint64_t{32} << 20;

}  // namespace

int HeaderReader::integer(const Element& element) {
    constexpr std::uint64_t greatest = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(number(element), greatest));
}

double HeaderReader::real(const Element& element) {
    double value = 0;
    if (element.length() == 8)
        value = std::bit_cast<double>(number(element));
    else if (element.length() == 4)
        value = std::bit_cast<float>(static_cast<std::uint32_t>(number(element)));
    return std::isfinite(value) ? value : 0;
}

std::string HeaderReader::text(const Element& element) {
    const Bytes all = payload(element, longestText);
    const auto end = std::find(all.begin(), all.end(), std::uint8_t{0});
    return Text::repairUtf8(ByteView(all).first(static_cast<std::size_t>(end - all.begin())));
}

Bytes HeaderReader::bytes(const Element& element) {
    return payload(element, longestBytes);
}

Bytes HeaderReader::payload(const Element& element, std::uint64_t most) {
    const std::uint64_t length = std::min({element.length(), most, left_});
    left_ -= length;
    constexpr std::uint64_t fitsTheWindow = 4096;
    if (length <= fitsTheWindow) {
        const ByteView view = window_.at(element.payload, static_cast<std::size_t>(length));
        return {view.begin(), view.end()};
    }
    Bytes result(static_cast<std::size_t>(length));
    result.resize(readWhatIsThere(window_.fd(), element.payload, result));
    return result;
}

}  // namespace marlet
