#include <algorithm>
#include <array>
#include <cstdio>
#include <set>

#include "helpers/boxes.h"
#include "helpers/matroska_media.h"
#include "helpers/sample_entries.h"
#include "helpers/text_tracks.h"

namespace marlet::SubtitleTrack {

namespace {

struct Line {
    std::int64_t startMs = 0;
    std::int64_t endMs = 0;
    std::string text;
};

/// A stretch of characters in another style.
struct Style {
    std::uint32_t from = 0;
    std::uint32_t to = 0;
    std::uint8_t face = 0;  // bits: bold, italic, underlined
};

struct StyledText {
    std::string text;
    std::vector<Style> styles;
};

/// A line of the file, without its end.
std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        lines.push_back(line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

/// "00:00:01,000 --> 00:00:02,000"
bool readTimes(std::string_view line, Line& cue) {
    std::array<int, 8> n{};
    const std::string text(line.substr(0, 64));
    const int got = std::sscanf(text.c_str(), "%4d:%2d:%2d%*[,.]%3d --> %4d:%2d:%2d%*[,.]%3d",
                                &n[0], &n[1], &n[2], &n[3], &n[4], &n[5], &n[6], &n[7]);
    if (got != 8 || std::ranges::any_of(n, [](int part) { return part < 0; })) return false;
    const auto ms = [&n](std::size_t at) {
        return ((std::int64_t{n[at]} * 60 + n[at + 1]) * 60 + n[at + 2]) * 1000 + n[at + 3];
    };
    cue.startMs = ms(0);
    cue.endMs = ms(4);
    return cue.endMs > cue.startMs;
}

std::vector<Line> parse(const std::string& text) {
    std::vector<Line> cues;
    std::string_view rest = text;
    if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
    Line* open = nullptr;
    Line next;
    for (const std::string_view line : linesOf(rest)) {
        if (readTimes(line, next)) {
            next.text.clear();
            open = &cues.emplace_back(next);
        } else if (line.empty()) {
            open = nullptr;
        } else if (open != nullptr) {
            if (!open->text.empty()) open->text += '\n';
            open->text += line;
        }
    }
    std::ranges::stable_sort(cues, {}, &Line::startMs);
    return cues;
}

std::uint8_t faceOf(std::string_view tag) {
    return tag == "b" ? 1 : tag == "i" ? 2 : tag == "u" ? 4 : 0;
}

/// Text without its tags. "<" that begins no tag stays.
StyledText styled(std::string_view text) {
    StyledText result;
    std::uint8_t face = 0;
    std::uint32_t from = 0;
    std::uint32_t at = 0;  // characters so far
    const auto turn = [&](std::uint8_t to) {
        if (face != 0 && at > from) result.styles.push_back({from, at, face});
        face = to;
        from = at;
    };
    while (!text.empty()) {
        const std::size_t end = text[0] == '<' ? text.find('>') : std::string_view::npos;
        const bool isTag = end != std::string_view::npos && end > 1 &&
                           (text[1] == '/' || (text[1] >= 'a' && text[1] <= 'z') ||
                            (text[1] >= 'A' && text[1] <= 'Z'));
        if (isTag) {
            const bool closes = text[1] == '/';
            const std::uint8_t bit = faceOf(text.substr(closes ? 2 : 1, end - (closes ? 2 : 1)));
            if (bit != 0) turn(static_cast<std::uint8_t>(closes ? face & ~bit : face | bit));
            text.remove_prefix(end + 1);
            continue;
        }
        if ((static_cast<std::uint8_t>(text[0]) & 0xC0) != 0x80) at++;
        result.text.push_back(text[0]);
        text.remove_prefix(1);
    }
    turn(0);
    return result;
}

/// A sample (5.17): length, text, and boxes that modify it.
Bytes sampleOf(const std::string& lines, std::uint8_t fontSize, bool isForced) {
    constexpr std::size_t longestText = 0xFFFF;
    constexpr std::size_t mostStyles = 1000;
    StyledText text = styled(lines);
    if (text.text.size() > longestText) text.text.resize(longestText);
    if (text.styles.size() > mostStyles) text.styles.clear();
    Bytes sample = Boxes::u16s({static_cast<std::uint32_t>(text.text.size())});
    append(sample, viewOf(text.text));
    if (!text.styles.empty()) {
        Bytes rows = Boxes::u16s({static_cast<std::uint32_t>(text.styles.size())});
        for (const Style& style : text.styles) {
            append(rows, Boxes::u16s({style.from, style.to, 1}));
            append(rows, Bytes{style.face, fontSize, 0xFF, 0xFF, 0xFF, 0xFF});
        }
        append(sample, Boxes::box(boxCode("styl"), {rows}));
    }
    // Where only some samples are forced, each of them says so (QuickTime File Format, "frcd").
    if (isForced && !text.text.empty()) append(sample, Boxes::box(boxCode("frcd"), {}));
    return sample;
}

/// Calls back with each stretch of time and what is shown in it, gaps as an empty text.
template <typename Body>
void forEachStretch(const std::vector<Line>& cues, const Body& body) {
    std::int64_t at = 0;
    std::vector<const Line*> shown;
    std::size_t next = 0;
    while (next < cues.size() || !shown.empty()) {
        while (next < cues.size() && cues[next].startMs <= at) shown.push_back(&cues[next++]);
        std::erase_if(shown, [at](const Line* cue) { return cue->endMs <= at; });
        if (next == cues.size() && shown.empty()) return;
        std::int64_t until = next < cues.size() ? cues[next].startMs : shown.front()->endMs;
        std::string text;
        for (const Line* cue : shown) {
            until = std::min(until, cue->endMs);
            if (!text.empty()) text += '\n';
            text += cue->text;
        }
        body(until - at, text);
        at = until;
    }
}

}  // namespace

TrackMedia fromSRT(const std::string& text, std::uint32_t flags, std::uint32_t width,
                   std::uint32_t height, NewFile& scratch) {
    // 3GPP TS 26.245: some samples are forced, or all are.
    constexpr std::uint32_t forced = 0xC0000000;
    TrackMedia media;
    media.handler = boxCode("sbtl");
    media.width = width;
    media.height = height;
    media.entry = SampleEntries::subtitle(flags, static_cast<std::uint16_t>(width),
                                          static_cast<std::uint16_t>(height));
    media.mediaHeader = MediaHeaders::subtitle();
    media.times.timescale = 1000;
    const std::uint8_t fontSize = SampleEntries::subtitleSize(static_cast<std::uint16_t>(height));
    const auto add = [&](std::int64_t length, const std::string& shown) {
        const Bytes sample = sampleOf(shown, fontSize, (flags & forced) != 0);
        media.frames.offsets.push_back(scratch.size());
        media.frames.sizes.push_back(static_cast<std::uint32_t>(sample.size()));
        media.times.durations.push_back(static_cast<std::uint32_t>(length));
        media.times.length += static_cast<std::uint64_t>(length);
        scratch.append(sample);
    };
    forEachStretch(parse(text), add);
    // Some players show the last sample until the end of the film.
    add(0, "");
    return media;
}

}  // namespace marlet::SubtitleTrack
