#include "app/shot_options.h"

#include <charconv>

namespace marlet {

namespace {

constexpr int mostPoints = 10000;

std::optional<int> points(const char* begin, const char* end) {
    int number = 0;
    const auto [stopped, failed] = std::from_chars(begin, end, number);
    if (failed != std::errc() || stopped != end || number < 1 || number > mostPoints) return {};
    return number;
}

}  // namespace

std::optional<std::pair<int, int>> parseSize(const std::string& text) {
    const std::size_t cross = text.find('x');
    if (cross == std::string::npos) return std::nullopt;
    const char* const all = text.data();
    const auto width = points(all, all + cross);
    const auto height = points(all + cross + 1, all + text.size());
    if (!width || !height) return std::nullopt;
    return std::pair(*width, *height);
}

}  // namespace marlet
