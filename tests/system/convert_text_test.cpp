// Subtitles of every kind, within the film and beside it, and chapters as odd as they come, go
// through the real programs: each line is shown when it is in the source, each flag says the same.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "mp4/sound_layout.h"
#include "mp4/summary.h"
#include "support/media.h"
#include "system/conversion_run.h"
#include "system/film_readers.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;
using testing::ElementsAre;
using testing::HasSubstr;
using Tools = Bundle::Tools;

constexpr const char* plain =
    "1\n00:00:00,200 --> 00:00:00,900\nHello, it's me 😀\n\n"
    "2\n00:00:01,000 --> 00:00:01,500\n<i>Two</i>\nlines & signs\n\n";
constexpr const char* overlapping =
    "1\n00:00:00,200 --> 00:00:01,500\nOne\n\n2\n00:00:00,800 --> 00:00:01,800\nTwo\n\n";
constexpr const char* foreign = "1\n00:00:00,300 --> 00:00:01,000\nForeign\n\n";
constexpr const char* styled =
    "[Script Info]\nScriptType: v4.00+\n\n[V4+ Styles]\nFormat: Name, Fontname, Fontsize\n"
    "Style: Default,Arial,16\n\n[Events]\n"
    "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n"
    "Dialogue: 0,0:00:00.20,0:00:00.90,Default,,0,0,0,,{\\an8\\i1}Hallo{\\i0}\\NWelt, du\n"
    "Dialogue: 0,0:00:01.00,0:00:01.50,Default,,0,0,0,,{\\p1}m 0 0 l 9 9{\\p0}\n"
    "Dialogue: 0,0:00:01.00,0:00:01.50,Default,,0,0,0,,Oben\\hda\n";
constexpr const char* web =
    "WEBVTT\n\n00:00:00.200 --> 00:00:00.900 line:0 position:20%\nBonjour <c.yellow>jaune</c>\n\n"
    "id\n00:00:01.000 --> 00:00:01.500\nDeux\nlignes\n";
constexpr const char* beside = "1\n00:00:00,300 --> 00:00:01,200\nÇa, größer\n\n";

/// Nested, hidden, in two languages, without a title, and of another edition.
constexpr const char* chapters = R"(<?xml version="1.0" encoding="UTF-8"?>
<Chapters><EditionEntry>
<ChapterAtom><ChapterTimeStart>00:00:00.000</ChapterTimeStart>
 <ChapterDisplay><ChapterString>One: the "start"</ChapterString></ChapterDisplay>
 <ChapterDisplay><ChapterString>Eins</ChapterString><ChapterLanguage>ger</ChapterLanguage>
 </ChapterDisplay>
 <ChapterAtom><ChapterTimeStart>00:00:00.400</ChapterTimeStart>
  <ChapterDisplay><ChapterString>Nested 😀</ChapterString></ChapterDisplay></ChapterAtom>
</ChapterAtom>
<ChapterAtom><ChapterTimeStart>00:00:01.000</ChapterTimeStart>
 <ChapterFlagHidden>1</ChapterFlagHidden>
 <ChapterDisplay><ChapterString>Hidden</ChapterString></ChapterDisplay>
 <ChapterAtom><ChapterTimeStart>00:00:01.200</ChapterTimeStart>
  <ChapterDisplay><ChapterString>Within it</ChapterString></ChapterDisplay></ChapterAtom>
</ChapterAtom>
<ChapterAtom><ChapterTimeStart>00:00:01.500</ChapterTimeStart>
 <ChapterDisplay><ChapterString>日本語</ChapterString></ChapterDisplay></ChapterAtom>
</EditionEntry><EditionEntry>
<ChapterAtom><ChapterTimeStart>00:00:00.700</ChapterTimeStart>
 <ChapterDisplay><ChapterString>Another edition</ChapterString></ChapterDisplay></ChapterAtom>
</EditionEntry></Chapters>)";

std::string utf16(const std::string& text, bool isBigEndian) {
    const std::u16string wide = [&] {
        std::u16string letters(1, u'\xFEFF');
        for (std::size_t i = 0; i < text.size(); i++) {
            const auto byte = static_cast<unsigned char>(text[i]);
            // Two bytes of UTF-8 at most.
            letters += byte < 0x80 ? static_cast<char16_t>(byte)
                                   : static_cast<char16_t>((byte & 0x1F) << 6 | (text[++i] & 0x3F));
        }
        return letters;
    }();
    std::string bytes;
    for (const char16_t letter : wide) {
        const char high = static_cast<char>(letter >> 8);
        const char low = static_cast<char>(letter & 0xFF);
        bytes += isBigEndian ? high : low;
        bytes += isBigEndian ? low : high;
    }
    return bytes;
}

std::string windows1252(const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i++) {
        const auto byte = static_cast<unsigned char>(text[i]);
        bytes += byte < 0x80 ? text[i] : static_cast<char>((byte & 0x1F) << 6 | (text[++i] & 0x3F));
    }
    return bytes;
}

struct Subtitle {
    std::string text;
    std::string extension;
    std::string language;
    std::string name;
    bool isDefault = false;
    bool isForced = false;
};

const std::vector<Subtitle>& subtitles() {
    static const std::vector<Subtitle> all = {
        {.text = plain, .extension = ".srt", .language = "eng", .isDefault = true},
        {.text = styled, .extension = ".ass", .language = "ger", .name = "Full"},
        {.text = foreign, .extension = ".srt", .language = "eng", .isForced = true},
        {.text = foreign, .extension = ".srt", .language = "spa", .name = "Spanish Forced"},
        {.text = overlapping, .extension = ".srt", .language = "jpn"},
        // FFmpeg's Matroska has it in a form that nothing else knows.
        {.text = web, .extension = ".vtt", .language = "fre"}};
    return all;
}

/// A track of the new film as its header and its entry tell it.
struct Shown {
    std::string language;
    bool isForced = false;
    bool isEnabled = false;
    std::string text;
    bool operator==(const Shown&) const = default;
};
void PrintTo(const Shown& shown, std::ostream* out) {
    *out << shown.language << (shown.isForced ? " forced" : "")
         << (shown.isEnabled ? " enabled: " : ": ") << shown.text;
}

class TextConversion : public testing::TestWithParam<Tools> {
protected:
    void SetUp() override {
        ffmpeg({"-f", "lavfi", "-i", "testsrc=size=64x36:rate=25:duration=2", "-f", "lavfi", "-i",
                "sine=440:duration=2:sample_rate=48000", "-c:v", "libx264", "-bf", "2", "-pix_fmt",
                "yuv420p", "-c:a", "ac3", "-metadata:s:a:0", "language=eng", part("film.mkv")});
        for (std::size_t i = 0; i < subtitles().size(); i++)
            parts_.write(std::to_string(i) + subtitles()[i].extension,
                         std::string_view(subtitles()[i].text));
        parts_.write("c.xml", std::string_view(chapters));
    }
    std::string part(const std::string& name) const { return (parts_ / name).string(); }

    void mergeByMkvmerge() {
        Strings words = {"--chapters", part("c.xml"), part("film.mkv")};
        for (std::size_t i = 0; i < subtitles().size(); i++) {
            const Subtitle& each = subtitles()[i];
            words.insert(
                words.end(),
                {"--language", "0:" + each.language, "--track-name", "0:" + each.name,
                 "--default-track-flag", each.isDefault ? "0:1" : "0:0", "--forced-display-flag",
                 each.isForced ? "0:1" : "0:0", part(std::to_string(i) + each.extension)});
        }
        mkvmerge(film_.source(), words);
    }
    void mergeByFFmpeg() {
        Strings words = {"-i", part("film.mkv")};
        Strings maps = {"-map", "0", "-c", "copy"};
        for (std::size_t i = 0; i < subtitles().size(); i++) {
            const Subtitle& each = subtitles()[i];
            const std::string stream = ":s:s:" + std::to_string(i);
            words.insert(words.end(), {"-i", part(std::to_string(i) + each.extension)});
            maps.insert(maps.end(), {"-map", std::to_string(i + 1), "-metadata" + stream,
                                     "language=" + each.language, "-metadata" + stream,
                                     "title=" + each.name, "-disposition" + stream.substr(2),
                                     each.isDefault  ? "default"
                                     : each.isForced ? "forced"
                                                     : "0"});
        }
        words.insert(words.end(), maps.begin(), maps.end());
        words.push_back(film_.source().string());
        ffmpeg(words);
    }
    void writeSidecars() {
        const auto put = [&](const char* end, const std::string& bytes) {
            writeFile(film_.library() / ("Charade (1963)" + std::string(end)), viewOf(bytes));
        };
        put(".de.srt", utf16(beside, false));
        put(".es.srt", utf16(beside, true));
        put(".fr.forced.srt", windows1252(beside));
        put(".srt", "\xEF\xBB\xBF" + std::string(beside));
        put("-jpn.srt", "no subtitle at all");
    }

    std::string convert(const Strings& languages) { return film_.convertKeeping(languages).output; }

    std::vector<Shown> shown() const {
        constexpr std::size_t flagsAt = 24;  // behind the head of `stsd` and that of its entry
        constexpr std::uint32_t forced = 0x40000000;
        std::vector<Shown> all;
        for (const Track& track : parseSummary(loadMoov(made_), Detail::Yes).tracks) {
            if (track.handler != "sbtl") continue;
            EXPECT_EQ(track.altGroup, 2);
            const std::uint32_t flags = BigEndian::u32(track.stsd, flagsAt);
            EXPECT_EQ(flags & ~forced, 0U);
            all.push_back({track.language, flags == forced, (track.tkhdFlags & 1) != 0,
                           shownLines(made_, "s:" + std::to_string(all.size()))});
        }
        return all;
    }

    TempFolder parts_;
    ConversionRun film_{GetParam()};
    const fs::path made_ = film_.made();
};

std::string srt(std::initializer_list<std::pair<const char*, const char*>> cues) {
    std::string text;
    int number = 0;
    for (const auto& [times, lines] : cues)
        text += std::to_string(++number) + "\n" + times + "\n" + lines + "\n\n";
    return text;
}

const std::string plainShown =
    srt({{"00:00:00,200 --> 00:00:00,900", "Hello, it's me 😀"},
         {"00:00:01,000 --> 00:00:01,500", "<i>Two</i>\nlines & signs"}});
const std::string styledShown = srt({{"00:00:00,200 --> 00:00:00,900", "Hallo\nWelt, du"},
                                     {"00:00:01,000 --> 00:00:01,500", "Oben da"}});
const std::string foreignShown = srt({{"00:00:00,300 --> 00:00:01,000", "Foreign"}});
/// GPAC has no room for two lines at once: the second waits.
std::string overlappingShown(Tools tools) {
    if (tools == Tools::gpac)
        return srt(
            {{"00:00:00,200 --> 00:00:01,500", "One"}, {"00:00:01,500 --> 00:00:01,800", "Two"}});
    return srt({{"00:00:00,200 --> 00:00:00,800", "One"},
                {"00:00:00,800 --> 00:00:01,500", "One\nTwo"},
                {"00:00:01,500 --> 00:00:01,800", "Two"}});
}
const std::string webShown = srt({{"00:00:00,200 --> 00:00:00,900", "Bonjour jaune"},
                                  {"00:00:01,000 --> 00:00:01,500", "Deux\nlignes"}});
const std::string besideShown = srt({{"00:00:00,300 --> 00:00:01,200", "Ça, größer"}});

TEST_P(TextConversion, SubtitlesOfEveryKindAreShownAsTheyAre) {
    mergeByMkvmerge();
    writeSidecars();
    const std::string said = convert({"eng", "ger", "spa", "jpn", "fre"});
    ASSERT_TRUE(fs::exists(made_)) << said;
    EXPECT_THAT(said, HasSubstr("Japanese: no subtitle lines could be read; left out"));
    EXPECT_THAT(
        shown(),
        ElementsAre(Shown{"eng", false, false, plainShown}, Shown{"ger", false, false, styledShown},
                    Shown{"eng", true, true, foreignShown}, Shown{"spa", true, false, foreignShown},
                    Shown{"jpn", false, false, overlappingShown(GetParam())},
                    Shown{"fre", false, false, webShown}, Shown{"ger", false, false, besideShown},
                    Shown{"spa", false, false, besideShown}, Shown{"fre", true, false, besideShown},
                    Shown{"eng", false, false, besideShown}));
    EXPECT_EQ(complaintsOf(made_), "");
    EXPECT_LE(measureInterleave(made_), 1.0);
}

TEST_P(TextConversion, SubtitlesOfFFmpegsOwnMakingAreShownAsTheyAre) {
    mergeByFFmpeg();
    const std::string said = convert({"eng", "ger", "jpn"});
    ASSERT_TRUE(fs::exists(made_)) << said;
    EXPECT_THAT(shown(), ElementsAre(Shown{"eng", false, false, plainShown},
                                     Shown{"ger", false, false, styledShown},
                                     Shown{"eng", true, true, foreignShown},
                                     Shown{"jpn", false, false, overlappingShown(GetParam())}));
    EXPECT_EQ(complaintsOf(made_), "");
}

TEST_P(TextConversion, ChaptersComeAlongWithWhatIsNestedAndWithoutWhatIsHidden) {
    mergeByMkvmerge();
    const std::string said = convert({"eng"});
    ASSERT_TRUE(fs::exists(made_)) << said;
    const Chapters wanted = {
        {0, "One: the \"start\""}, {0.4, "Nested 😀"}, {1.2, "Within it"}, {1.5, "日本語"}};
    EXPECT_EQ(chaptersOf(made_), wanted);
    EXPECT_EQ(complaintsOf(made_), "");
}

TEST_P(TextConversion, ChaptersBehindTheFilmComeAlong) {
    mergeByMkvmerge();
    std::string many = "<?xml version=\"1.0\"?><Chapters><EditionEntry>";
    for (int i = 0; i < 100; i++)
        many += "<ChapterAtom><ChapterTimeStart>00:00:" + std::string(i < 50 ? "00." : "01.") +
                std::to_string(100 + i % 50) +
                "</ChapterTimeStart><ChapterDisplay><ChapterString>" + std::string(60, 'x') +
                std::to_string(i) + "</ChapterString></ChapterDisplay></ChapterAtom>";
    // There is no room for so many where the old ones stood.
    const fs::path file = parts_.write("many.xml", many + "</EditionEntry></Chapters>");
    mkvpropedit(film_.source(), {"--chapters", file.string()});
    const std::string said = convert({"eng"});
    ASSERT_TRUE(fs::exists(made_)) << said;
    const Chapters made = chaptersOf(made_);
    ASSERT_EQ(made.size(), 100U);
    EXPECT_EQ(made[99].first, 1.149);
    EXPECT_EQ(made[99].second, std::string(60, 'x') + "99");
}

INSTANTIATE_TEST_SUITE_P(Own, TextConversion, testing::Values(Tools::own));
INSTANTIATE_TEST_SUITE_P(Gpac, TextConversion, testing::Values(Tools::gpac));

}  // namespace
}  // namespace marlet::test
