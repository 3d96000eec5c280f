#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <map>

#include "foundation/errors.h"
#include "helpers/boxes.h"
#include "helpers/matroska_media.h"
#include "helpers/sample_entries.h"
#include "helpers/text_tracks.h"

namespace marlet::ChapterFile {

namespace {

constexpr std::size_t longestTitle = 255;
constexpr std::size_t mostListed = 255;

/// "00:01:05.250"
std::int64_t milliseconds(const std::string& line, std::string_view stamp) {
    std::array<std::int64_t, 3> parts{};
    bool isGood = true;
    for (std::size_t i = 0; i < parts.size(); i++) {
        const char* const end = stamp.data() + stamp.size();
        const auto parsed = std::from_chars(stamp.data(), end, parts[i]);
        const char next = i < 2 ? ':' : '.';
        isGood = isGood && parsed.ec == std::errc() && parsed.ptr != end && *parsed.ptr == next &&
                 parts[i] >= 0 && parts[i] < (i == 0 ? 10'000 : 60);
        if (!isGood) throw MFError("\"" + line + "\" is no start of a chapter");
        stamp.remove_prefix(static_cast<std::size_t>(parsed.ptr - stamp.data()) + 1);
    }
    std::int64_t fraction = 0;
    const auto parsed = std::from_chars(stamp.data(), stamp.data() + stamp.size(), fraction);
    if (stamp.size() != 3 || parsed.ptr != stamp.data() + stamp.size() || fraction < 0)
        throw MFError("\"" + line + "\" is no start of a chapter");
    return ((parts[0] * 60 + parts[1]) * 60 + parts[2]) * 1000 + fraction;
}

/// At most that many bytes, cut between two characters.
std::string_view shortened(std::string_view title, std::size_t most) {
    if (title.size() <= most) return title;
    while (most > 0 && (static_cast<std::uint8_t>(title[most]) & 0xC0) == 0x80) most--;
    return title.substr(0, most);
}

}  // namespace

std::vector<ChapterMark> parse(const std::string& text) {
    std::map<std::string, ChapterMark> marks;  // by number, as it is written
    std::size_t at = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        std::string line = text.substr(at, end - at);
        at = end + 1;
        if (line.ends_with('\r')) line.pop_back();
        const std::size_t equals = line.find('=');
        if (!line.starts_with("CHAPTER") || equals == std::string::npos) continue;
        std::string number = line.substr(7, equals - 7);
        const std::string value = line.substr(equals + 1);
        if (number.ends_with("NAME"))
            marks[number.substr(0, number.size() - 4)].title = value;
        else
            marks[number].startMs = milliseconds(line, value);
    }
    std::vector<ChapterMark> chapters;
    for (auto& [number, mark] : marks) chapters.push_back(std::move(mark));
    std::ranges::stable_sort(chapters, {}, &ChapterMark::startMs);
    if (chapters.empty()) throw MFError("the chapter file has no chapters");
    return chapters;
}

Bytes list(const std::vector<ChapterMark>& chapters) {
    constexpr std::uint64_t unitsPerMs = 10'000;
    Bytes rows;
    const std::size_t count = std::min(chapters.size(), mostListed);
    for (std::size_t i = 0; i < count; i++) {
        BigEndian::put64(rows, static_cast<std::uint64_t>(chapters[i].startMs) * unitsPerMs);
        const std::string_view title = shortened(chapters[i].title, longestTitle);
        rows.push_back(static_cast<std::uint8_t>(title.size()));
        append(rows, viewOf(title));
    }
    const Bytes head = {0, 0, 0, 0, static_cast<std::uint8_t>(count)};
    return Boxes::full(boxCode("chpl"), 1, 0, {head, rows});
}

TrackMedia track(const std::vector<ChapterMark>& chapters, double movieSeconds, NewFile& scratch) {
    TrackMedia media;
    media.handler = boxCode("text");
    media.entry = SampleEntries::chapters();
    media.mediaHeader = MediaHeaders::chapters();
    media.times.timescale = 1000;
    // Tells readers that the text is UTF-8 (QuickTime File Format, "encd").
    const Bytes encoding = Boxes::box(boxCode("encd"), {Boxes::u32s({0x100})});
    const std::int64_t end = std::llround(movieSeconds * 1000);
    for (std::size_t i = 0; i < chapters.size(); i++) {
        const std::string_view title = shortened(chapters[i].title, 0xFFFF);
        Bytes sample = Boxes::u16s({static_cast<std::uint32_t>(title.size())});
        append(sample, viewOf(title));
        append(sample, encoding);
        media.frames.offsets.push_back(scratch.size());
        media.frames.sizes.push_back(static_cast<std::uint32_t>(sample.size()));
        scratch.append(sample);
        const std::int64_t next = i + 1 < chapters.size() ? chapters[i + 1].startMs
                                                          : std::max(end, chapters[i].startMs + 1);
        media.times.durations.push_back(static_cast<std::uint32_t>(next - chapters[i].startMs));
        media.times.length += media.times.durations.back();
    }
    return media;
}

}  // namespace marlet::ChapterFile
