// A proof is worth what it refuses: real films, laid out anew, with one lie told in each.
#include <algorithm>
#include <array>
#include <functional>
#include <iostream>
#include <map>
#include <random>
#include <set>

#include "support/box_reader.h"
#include "support/media.h"
#include "support/memory_file.h"
#include "verify/played_film.h"
#include "verify/rebuild_test.h"

namespace marlet::test {
namespace {

using Random = std::mt19937;

std::size_t below(Random& random, std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
}

/// Three seconds with two chapters, as FFmpeg writes them: picture, sound and chapter text.
Bytes realFilm(const TempFolder& folder) {
    const auto chapters = folder.write("chapters.txt",
                                       ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\n"
                                       "END=1500\ntitle=One\n[CHAPTER]\nTIMEBASE=1/1000\n"
                                       "START=1500\nEND=3000\ntitle=Two\n");
    RealMovie movie;
    movie.seconds = 3;
    movie.soundLanguages = {"eng"};
    movie.tags = {{"title", "A Film"}, {"artist", "A Person"}, {"date", "2011"}};
    makeMovie(folder / "plain.mp4", movie);
    ffmpeg({"-i", (folder / "plain.mp4").string(), "-i", chapters.string(), "-map", "0",
            "-map_metadata", "0", "-map_chapters", "1", "-c", "copy", "-movflags", "+faststart",
            (folder / "film.mp4").string()});
    return readFile(folder / "film.mp4");
}

class Mutations : public testing::Test {
protected:
    static void SetUpTestSuite() {
        const TempFolder folder;
        // Sound at the end is what a rebuild is for.
        unfit_ = storedTrackByTrack(realFilm(folder));
        runTool({builtProgram("marlet-mux"), "-tmp", folder.path(), "-inter", "250", "-moovpad",
                 "4096", folder.write("unfit.mp4", unfit_), "-out", folder / "rebuilt.mp4"});
        film_ = readFile(folder / "rebuilt.mp4");
        proved_ = playedFilm(film_);
    }

    struct Verdict {
        bool accepted = false;
        std::string words;  ///< reasons, or the failure
    };
    Verdict judge(ByteView rebuilt) {
        RebuildTerms terms;
        terms.maxAfter = 100;
        RunControl control;
        try {
            const auto report = verifyRebuild(original_, rebuilt_.write(rebuilt), terms, control);
            std::string words;
            for (const std::string& reason : report.reasons) words += reason + "\n";
            return {report.reasons.empty(), words};
        } catch (const MFError& failure) {
            return {false, failure.description()};
        }
    }
    bool isAlike(ByteView rebuilt) const { return playedFilm(rebuilt) == proved_; }

    static inline Bytes unfit_;
    static inline Bytes film_;  ///< laid out anew
    static inline std::vector<std::string> proved_;
    MemoryFile rebuilt_;
    MemoryFile originalFile_;
    std::filesystem::path original_ = originalFile_.write(unfit_);
};

TEST_F(Mutations, TheFilmItselfIsProvedAndBothReadersCallItAlike) {
    const Verdict verdict = judge(film_);
    EXPECT_TRUE(verdict.accepted) << verdict.words;
    EXPECT_EQ(playedFilm(readFile(original_)), proved_);
    EXPECT_GT(proved_.size(), 130U) << "the naive reader saw too little";
}

// --- lies of a known kind ---

/// One kind of lie; the proof has to say one of the sentences.
struct Lie {
    std::string name;
    std::function<Bytes(Bytes film, Random& random)> tell;
    std::vector<std::string> sentences;
};

constexpr int picture = 0;
constexpr int sound = 1;
constexpr int chapterText = 2;

Bytes turned(Bytes film, std::size_t at, Random& random) {
    film.at(at) ^= static_cast<std::uint8_t>(1 + below(random, 255));
    return film;
}

/// Any byte of the range of the box's payload.
auto anyByte(BoxPath path, std::size_t from, std::size_t to) {
    return [=](Bytes film, Random& random) {
        const std::size_t at = payloadAt(film, path) + from + below(random, to - from);
        return turned(std::move(film), at, random);
    };
}

/// One 32-bit word of one row; only its low bits, so that the table stays one, and not the last, so
/// that a 1 does not become a 0.
auto anyRow(BoxPath path, std::size_t head, std::size_t width, std::size_t word) {
    return [=](Bytes film, Random& random) {
        const std::size_t rows = (payloadIn(film, path).size() - head) / width;
        const std::size_t at = payloadAt(film, path) + head + below(random, rows) * width + word;
        film.at(at + 3) ^= static_cast<std::uint8_t>(2 + 2 * below(random, 7));
        return film;
    };
}

auto anySample(int track) {
    return [=](Bytes film, Random& random) {
        const auto chunks = chunksOf(film, track);
        const StoredChunk& chunk = chunks[below(random, chunks.size())];
        return turned(std::move(film), chunk.offset + below(random, chunk.bytes()), random);
    };
}

Bytes swappedTags(Bytes film, Random& random) {
    const BoxPath path = {{"moov"}, {"udta"}, {"meta"}, {"ilst"}};
    const std::size_t at = payloadAt(film, path);
    const ByteView items = payloadIn(film, path);
    std::vector<Bytes> boxes;
    for (std::int64_t pos = 0; pos < static_cast<std::int64_t>(items.size());) {
        const ByteView item = slice(items, pos, pos + BigEndian::u32(items, pos));
        boxes.emplace_back(item.begin(), item.end());
        pos += static_cast<std::int64_t>(item.size());
    }
    const std::size_t first = below(random, boxes.size() - 1);
    std::swap(boxes[first], boxes[first + 1 + below(random, boxes.size() - first - 1)]);
    return patched(std::move(film), at, joined(boxes));
}

Bytes turnedTagValue(Bytes film, Random& random) {
    const BoxPath path = {{"moov"}, {"udta"}, {"meta"}, {"ilst"}, {"©nam"}, {"data"}};
    return anyByte(path, 8, payloadIn(film, path).size())(film, random);
}

Bytes turnedChapterTitle(Bytes film, Random& random) {
    const auto chunks = chunksOf(film, chapterText);
    const StoredChunk& chunk = chunks[below(random, chunks.size())];
    return turned(std::move(film), chunk.offset + 2 + below(random, 3), random);
}

Bytes cut(Bytes film, Random& random) {
    film.resize(film.size() - 1 - below(random, film.size() / 2));
    return film;
}

Bytes lostTrack(Bytes film, Random& random) {
    return edited(std::move(film), trackPath(static_cast<int>(below(random, 3)), {{"mdia"}}), 4,
                  viewOf("free"));
}

/// The two bytes that tell the AAC decoder all: descriptor 5 of `esds`, its last but one.
Bytes turnedSoundSetup(Bytes film, Random& random) {
    const BoxPath path = tablePath(sound, "stsd");
    const ByteView entry = payloadIn(film, path);
    const Bytes tag = {0x05, 0x80, 0x80, 0x80, 0x05};
    const auto found = std::ranges::search(entry, tag);
    if (found.empty()) throw std::runtime_error("no decoder set-up");
    const auto at = static_cast<std::size_t>(found.begin() - entry.begin()) + tag.size();
    return turned(film, payloadAt(film, path) + at + below(random, tag.back()), random);
}

std::vector<Lie> lies() {
    const BoxPath mvhd = {{"moov"}, {"mvhd"}};
    const BoxPath chpl = {{"moov"}, {"udta"}, {"chpl"}};
    const auto tkhd = [](int track) { return trackPath(track, {{"tkhd"}}); };
    const auto mdhd = [](int track) { return mediaPath(track, {{"mdhd"}}); };
    const auto elst = [](int track) { return trackPath(track, {{"edts"}, {"elst"}}); };
    const std::vector<std::string> moved = {"sample data differs", "runs past end of file",
                                            "outside the media data"};
    return {
        {"picture sample", anySample(picture), {"track 1 (vide avc1): sample data differs"}},
        {"sound sample", anySample(sound), {"track 2 (soun mp4a): sample data differs"}},
        {"picture sizes", anyRow(tablePath(picture, "stsz"), 12, 4, 0), {"count or sizes differ"}},
        {"sound sizes", anyRow(tablePath(sound, "stsz"), 12, 4, 0), {"count or sizes differ"}},
        {"picture times", anyRow(tablePath(picture, "stts"), 8, 8, 4), {"sample timing differs"}},
        {"sound times", anyRow(tablePath(sound, "stts"), 8, 8, 4), {"sample timing differs"}},
        {"run of times", anyRow(tablePath(sound, "stts"), 8, 8, 0), {"sample timing differs"}},
        {"composition", anyRow(tablePath(picture, "ctts"), 8, 8, 4), {"composition offsets"}},
        {"run of composition",
         anyRow(tablePath(picture, "ctts"), 8, 8, 0),
         {"composition offsets"}},
        {"keyframes", anyRow(tablePath(picture, "stss"), 8, 4, 0), {"keyframe table differs"}},
        {"samples of a chunk",
         anyRow(tablePath(picture, "stsc"), 8, 12, 4),
         {"sample data differs", "sample table inconsistent", "past end of file", "descriptions"}},
        {"first chunk",
         anyRow(tablePath(picture, "stsc"), 8, 12, 0),
         {"sample data differs", "sample table inconsistent", "past end of file", "bad stsc",
          "descriptions"}},
        {"description",
         anyRow(tablePath(picture, "stsc"), 8, 12, 8),
         {"use of the sample descriptions differs"}},
        {"picture places", anyRow(tablePath(picture, "stco"), 8, 4, 0), moved},
        {"sound places", anyRow(tablePath(sound, "stco"), 8, 4, 0), moved},
        {"tag value", turnedTagValue, {"title differs: "}},
        {"tag order", swappedTags, {"iTunes metadata differs in its order or structure"}},
        {"enabled",
         [](Bytes film, Random& random) {
             film.at(payloadAt(film, trackPath(static_cast<int>(below(random, 3)), {{"tkhd"}})) +
                     3) ^= 1;
             return film;
         },
         {"enabled flag differs"}},
        {"in the film",
         [](Bytes film, Random& random) {
             film.at(payloadAt(film, trackPath(static_cast<int>(below(random, 2)), {{"tkhd"}})) +
                     3) ^= 2;
             return film;
         },
         {"use in the film"}},
        {"language", anyByte(mdhd(sound), 20, 22), {"language differs (English vs "}},
        {"after the language", anyByte(mdhd(picture), 22, 24), {"language differs"}},
        {"media dates", anyByte(mdhd(sound), 4, 12), {"media header dates differ"}},
        {"track dates", anyByte(tkhd(picture), 4, 12), {"track header dates differ"}},
        {"group", anyByte(tkhd(sound), 34, 36), {"alternate group differs"}},
        {"matrix", anyByte(tkhd(picture), 36, 84), {"matrix or display size differ"}},
        {"movie matrix", anyByte(mvhd, 36, 72), {"movie header rate, volume or matrix differ"}},
        {"edit list", anyByte(elst(picture), 8, 20), {"edit list differs"}},
        {"sound's edit list", anyByte(elst(sound), 8, 20), {"edit list differs"}},
        {"picture set-up",
         anyByte(tablePath(picture, "stsd"), 0, 160),
         {"codec configuration", "codec differs"}},
        {"sound set-up", turnedSoundSetup, {"codec configuration: esds differs"}},
        {"time scale", anyByte(mdhd(sound), 12, 16), {"time scale differs"}},
        {"movie's time scale", anyByte(mvhd, 12, 16), {"duration differs", "edit list differs"}},
        {"handler", anyByte(mediaPath(picture, {{"hdlr"}}), 8, 12), {"type differs"}},
        {"chapter track's handler",
         anyByte(mediaPath(chapterText, {{"hdlr"}}), 8, 12),
         {"type differs"}},
        {"chapter list's time", anyByte(chpl, 10, 15), {"chapter list (chpl) differs"}},
        {"chapter list's title", anyByte(chpl, 18, 21), {"chapter list (chpl) differs"}},
        {"chapter's title", turnedChapterTitle, {"chapter titles or times differ in track 3"}},
        {"chapter's time",
         [](Bytes film, Random& random) {
             const std::size_t at = payloadAt(film, tablePath(chapterText, "stts")) + 12;
             const std::uint32_t units = BigEndian::u32(film, static_cast<std::int64_t>(at));
             // A thirtieth at least, where ten milliseconds are allowed.
             return patched(
                 std::move(film), at,
                 be32(units + units / 30 + static_cast<std::uint32_t>(below(random, units))));
         },
         {"chapter titles or times differ in track 3"}},
        {"reference",
         anyByte(trackPath(picture, {{"tref"}, {"chap"}}), 0, 4),
         {"references to other tracks differ", "chapter titles or times differ"}},
        {"place of the media",
         [](Bytes film, Random& random) {
             const auto track = static_cast<int>(below(random, 2));
             film.at(payloadAt(film, mediaPath(track, {{"minf"}, {"dinf"}, {"dref"}})) + 19) ^= 1;
             return film;
         },
         {"media data is said to lie outside the file"}},
        {"end of the file",
         cut,
         {"track data runs past end of file", "chapter titles or times differ"}},
        {"a track", lostTrack, {"track count differs (3 vs 2)"}},
    };
}

TEST_F(Mutations, EveryLieIsRefusedInItsOwnWords) {
    constexpr int turns = 16;
    Random random(20'110'405);
    int told = 0;
    for (const Lie& lie : lies()) {
        for (int turn = 0; turn < turns; turn++) {
            const Bytes rebuilt = lie.tell(film_, random);
            if (rebuilt == film_) continue;
            SCOPED_TRACE(lie.name + ", turn " + std::to_string(turn));
            told++;
            EXPECT_FALSE(isAlike(rebuilt)) << "no lie at all";
            const Verdict verdict = judge(rebuilt);
            EXPECT_FALSE(verdict.accepted);
            EXPECT_TRUE(std::ranges::any_of(lie.sentences, [&](const std::string& sentence) {
                return verdict.words.find(sentence) != std::string::npos;
            })) << verdict.words;
        }
    }
    EXPECT_GE(told, 500);
}

// --- any byte of the file ---

/// What the proof knowingly lets differ: bytes of a box's payload from `from` up to `to`.
struct Uncompared {
    std::string_view box;
    std::int64_t from;
    std::int64_t to;
    std::string_view what;
};

constexpr std::int64_t header = -8;
constexpr std::int64_t end = 1 << 30;

constexpr std::array uncompared = {
    Uncompared{"ftyp", 4, end, "version and further brands"},
    Uncompared{"free", header, end, "padding"},
    Uncompared{"mdat", 0, end, "bytes that no sample uses"},
    Uncompared{"moov/mvhd", 1, 4, "flags"},
    Uncompared{"moov/mvhd", 4, 12, "dates of the movie"},
    Uncompared{"moov/mvhd", 16, 20, "duration, up to a tenth of a second"},
    Uncompared{"moov/mvhd", 72, 100, "preview, poster, selection, next number"},
    Uncompared{"moov/trak/tkhd", 1, 4, "other flags"},
    Uncompared{"moov/trak/tkhd", 12, 16, "the number, as long as it is its own"},
    Uncompared{"moov/trak/tkhd", 16, 20, "reserved"},
    Uncompared{"moov/trak/tkhd", 20, 24, "duration, up to a tenth of a second"},
    Uncompared{"moov/trak/tkhd", 24, 32, "reserved"},
    Uncompared{"moov/trak/mdia/mdhd", 1, 4, "flags"},
    Uncompared{"moov/trak/mdia/mdhd", 16, 20, "duration, up to a tenth of a second"},
    Uncompared{"moov/trak/mdia/hdlr", 0, 8, "flags and predefined"},
    Uncompared{"moov/trak/mdia/hdlr", 12, end, "reserved and name"},
    Uncompared{"moov/trak/mdia/minf/vmhd", 0, end, "graphics mode"},
    Uncompared{"moov/trak/mdia/minf/smhd", 0, end, "balance"},
    Uncompared{"moov/trak/mdia/minf/gmhd", header, end, "header of a text track"},
    Uncompared{"moov/trak/mdia/minf/dinf/dref", 0, end, "all but the flag of an entry"},
    Uncompared{"moov/trak/mdia/minf/stbl/stsd", 0, end, "how an esds is laid out"},
    Uncompared{"moov/trak/mdia/minf/stbl/stts", 1, 4, "flags"},
    Uncompared{"moov/trak/mdia/minf/stbl/ctts", 0, 4, "version and flags"},
    Uncompared{"moov/trak/mdia/minf/stbl/stss", 1, 4, "flags"},
    Uncompared{"moov/trak/mdia/minf/stbl/stsc", 1, 4, "flags"},
    Uncompared{"moov/trak/mdia/minf/stbl/stsz", 1, 4, "flags"},
    Uncompared{"moov/trak/mdia/minf/stbl/stco", 1, 4, "flags"},
    Uncompared{"moov/trak/mdia/minf/stbl/sgpd", -4, end, "sample groups"},
    Uncompared{"moov/trak/mdia/minf/stbl/sbgp", -4, end, "sample groups"},
    Uncompared{"moov/udta/meta", 0, 4, "version and flags"},
    Uncompared{"moov/udta/meta/hdlr", 0, end, "all but the type of the tag block's handler"},
    Uncompared{"moov/udta/chpl", 1, 9, "flags and reserved"},
    Uncompared{"moov/udta/chpl", 9, end, "times, up to ten milliseconds"},
};

/// Of a chapter text track only what it tells is proved: its titles and their times.
constexpr std::array uncomparedOfChapterText = {
    Uncompared{"moov/trak/edts", -4, end, "a track whose times are the same without its edits"},
    Uncompared{"moov/trak/edts/elst", -4, end, "edits that leave the times as they are"},
    Uncompared{"moov/trak/mdia/mdhd", 12, 16, "time scale, up to ten milliseconds"},
    Uncompared{"moov/trak/mdia/minf/stbl/stsz", 4, end, "samples that hold the same text"},
    Uncompared{"moov/trak/mdia/minf/stbl/stts", 4, end, "times of the same chapters"},
    Uncompared{"moov/trak/mdia/minf/stbl/stsc", 4, end, "chunks that hold the same text"},
    Uncompared{"moov/trak/mdia/minf/stbl/stco", 4, end, "places that hold the same text"},
};

const Uncompared* ruleFor(const BytePlace& place) {
    const auto holds = [&](const Uncompared& row) {
        return row.box == place.box && row.from <= place.at && place.at < row.to;
    };
    const auto rule = std::ranges::find_if(uncompared, holds);
    if (rule != uncompared.end()) return rule;
    const auto text = std::ranges::find_if(uncomparedOfChapterText, holds);
    const bool isText = place.track == chapterText && text != uncomparedOfChapterText.end();
    return isText ? text : nullptr;
}

TEST_F(Mutations, AnyByteOfTheIndexThatTurnsIsRefusedOrChangesNothingThatPlays) {
    const std::size_t indexEnd = payloadAt(film_, {{"moov"}}) + payloadOf(film_, "moov").size();
    Random random(7);
    std::map<std::string, int> accepted;
    for (std::size_t at = 0; at < indexEnd; at++) {
        const Bytes rebuilt = turned(film_, at, random);
        const Verdict verdict = judge(rebuilt);
        if (!verdict.accepted) {
            EXPECT_FALSE(verdict.words.empty());
            continue;
        }
        const BytePlace place = placeOf(film_, at);
        const Uncompared* rule = ruleFor(place);
        const std::string name = place.box + " byte " + std::to_string(place.at);
        EXPECT_NE(rule, nullptr) << name << " is let through";
        if (rule == nullptr) continue;
        accepted[std::string(rule->box) + ": " + std::string(rule->what)]++;
        EXPECT_TRUE(isAlike(rebuilt)) << name << " changes the film";
    }
    for (const auto& [what, count] : accepted)
        std::cout << "let through " << count << " in " << what << "\n";
}

TEST_F(Mutations, AnyByteOfTheRestThatTurnsIsRefusedOrBelongsToNoSample) {
    const std::size_t indexEnd = payloadAt(film_, {{"moov"}}) + payloadOf(film_, "moov").size();
    Random random(8);
    for (int turn = 0; turn < 500; turn++) {
        const std::size_t at = indexEnd + below(random, film_.size() - indexEnd);
        const Bytes rebuilt = turned(film_, at, random);
        if (!judge(rebuilt).accepted) continue;
        const BytePlace place = placeOf(film_, at);
        EXPECT_NE(ruleFor(place), nullptr) << place.box << " byte " << place.at;
        EXPECT_TRUE(isAlike(rebuilt)) << place.box << " byte " << place.at;
    }
}

}  // namespace
}  // namespace marlet::test
