#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include "convert/line_ends.h"
#include "convert/subtitle_text.h"
#include "foundation/text.h"

namespace marlet::SubtitleText {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view arrow = "-->";
constexpr std::int64_t msPerHour = 3'600'000;
constexpr std::int64_t msPerMinute = 60'000;
constexpr double msPerSecond = 1000;

/// A whole text that is a floating-point number which a time can have.
std::optional<double> seconds(std::string_view text) {
    constexpr double most = 1e12;
    if (text.starts_with('+')) text.remove_prefix(1);
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || !(std::abs(value) < most)) return std::nullopt;
    return value;
}

/// Both ends of "00:00:01,000 --> 00:00:02,500 X1:40 X2:600": what stands behind the end is the
/// place on the picture.
bool readTiming(std::string_view line, Cue& cue) {
    const std::size_t at = line.find(arrow);
    const std::string_view right = line.substr(at + arrow.size());
    if (right.find(arrow) != std::string_view::npos) return false;
    const std::vector<std::string> words = Text::words(right);
    const auto start = ms(std::string(line.substr(0, at)));
    const auto end = words.empty() ? std::nullopt : ms(words.front());
    if (!start || !end) return false;
    cue.startMs = *start;
    cue.endMs = *end;
    return true;
}

std::optional<Cue> readBlock(std::string_view block) {
    const std::vector<std::string> lines = Text::words(block, '\n');
    const auto timing = std::ranges::find_if(
        lines, [](const std::string& line) { return Text::contains(line, arrow); });
    Cue cue;
    if (timing == lines.end() || !readTiming(*timing, cue)) return std::nullopt;
    cue.text = Text::trim(Text::join({timing + 1, lines.end()}, "\n"));
    if (cue.text.empty()) return std::nullopt;
    return cue;
}

std::string digits(std::int64_t value, std::size_t width) {
    const std::string text = std::to_string(value);
    return std::string(width - std::min(width, text.size()), '0') + text;
}

std::string stamp(std::int64_t time) {
    const std::int64_t left = std::max<std::int64_t>(time, 0);
    return digits(left / msPerHour, 2) + ':' + digits(left / msPerMinute % 60, 2) + ':' +
           digits(left / 1000 % 60, 2) + ',' + digits(left % 1000, 3);
}

}  // namespace

std::optional<std::int64_t> ms(const std::string& stamp) {
    const std::vector<std::string> pieces =
        Text::split(Text::replaceAll(Text::trim(stamp), ",", "."), ':');
    if (pieces.size() != 3) return std::nullopt;
    const auto hours = Text::integer(pieces[0]);
    const auto minutes = Text::integer(pieces[1]);
    const auto rest = seconds(pieces[2]);
    if (!hours || !minutes || !rest) return std::nullopt;
    return *hours * msPerHour + *minutes * msPerMinute + std::llround(*rest * msPerSecond);
}

std::vector<Cue> parseSRT(const std::string& text) {
    constexpr std::string_view blank = "\n\n";
    const std::string even = LineEnds::even(Text::replaceAll(text, byteOrderMark, ""));
    std::vector<Cue> cues;
    for (std::string_view rest = even; !rest.empty();) {
        const std::size_t end = rest.find(blank);
        if (auto cue = readBlock(rest.substr(0, end))) cues.push_back(*std::move(cue));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + blank.size());
    }
    return cues;
}

std::string writeSRT(const std::vector<Cue>& cues) {
    std::string out;
    std::size_t number = 0;
    for (const Cue& cue : cues) {
        const std::string text = Text::join(Text::words(LineEnds::even(cue.text), '\n'), "\n");
        out += std::to_string(++number) + '\n' + stamp(cue.startMs) + " --> " + stamp(cue.endMs) +
               '\n' + text + "\n\n";
    }
    return out;
}

}  // namespace marlet::SubtitleText
