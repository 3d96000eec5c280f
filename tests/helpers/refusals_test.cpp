// What can't be laid out anew is refused with a sentence, and leaves nothing behind.

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "helpers/laid_out.h"
#include "support/box_reader.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace {

constexpr std::uint32_t mediaAt = 8192;
constexpr std::uint32_t mediaBytes = 100;

/// The parts of a file of one track with ten samples of ten bytes; each may be replaced.
struct Parts {
    Bytes stsd = stsdBox("mp4a");
    Bytes stts = sttsBox({{10, 100}});
    Bytes stsc = stscBox({{1, 5}});
    Bytes stsz = stszBox(10, 10);
    Bytes offsets = stcoBox({mediaAt, mediaAt + 50});
    Bytes inStbl;
    Bytes inMinf;
    Bytes inTrak;
    Bytes inMoov;
    Bytes atTop;  ///< behind the media

    Bytes file() const {
        const Bytes stbl = box("stbl", {stsd, stts, stsc, stsz, offsets, inStbl});
        const Bytes mdia =
            box("mdia", {mdhdBox(1000, 1000), hdlrBox("soun"), box("minf", {stbl, inMinf})});
        const Bytes moov =
            box("moov", {mvhdBox(1000, 1000), box("trak", {tkhdBox(1), mdia, inTrak}), inMoov});
        const Bytes ftyp = ftypBox();
        const std::size_t padding = mediaAt - 8 - ftyp.size() - moov.size();
        return joined(
            {ftyp, moov, box("free", Bytes(padding - 8)), box("mdat", Bytes(mediaBytes)), atTop});
    }
};

std::string refusalOf(const std::function<void(Parts&)>& change) {
    Parts parts;
    change(parts);
    return refusal(parts.file());
}

Bytes drefBox(std::uint32_t flags) {
    return box("dinf", {fullBox("dref", 0, 0, joined({be32(1), fullBox("url ", 0, flags, {})}))});
}

/// An item in the file itself (version 0 has no other kind), one extent.
Bytes ilocBox(std::uint16_t extents = 1) {
    return fullBox(
        "iloc", 0, 0,
        joined({be16(0x4400), be16(1), be16(1), be16(0), be16(extents), be32(0), be32(9)}));
}

Bytes metaBox(const Bytes& children) {
    return fullBox("meta", 0, 0, joined({hdlrBox("pict"), children}));
}

constexpr const char* items =
    "the file keeps items by their place in the file (iloc), which can't be laid out anew";
constexpr const char* overlap = "tracks of the file share media data";
constexpr const char* outside = "a track's data lies outside the media data of the file";
constexpr const char* backwards =
    "a track's chunk table (stsc) doesn't run forward from the first chunk";

}  // namespace

TEST(Refusals, TheFileThatTheyChangeIsLaidOut) {
    EXPECT_TRUE(samplesEqual(Parts().file(), laidOut(Parts().file()), 1));
}

TEST(Refusals, FragmentedFiles) {
    for (const char* type : {"moof", "mfra", "sidx", "ssix"})
        EXPECT_EQ(
            refusalOf([&](Parts& parts) { parts.atTop = box(type, Bytes(8)); }),
            "the file is fragmented (" + std::string(type) + "), which can't be laid out anew");
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.inMoov = box("mvex", Bytes(8)); }),
              "the file is fragmented (mvex), which can't be laid out anew");
}

TEST(Refusals, EncryptedSampleEntries) {
    for (const char* type : {"encv", "enca", "encs", "enct", "drms", "drmi"})
        EXPECT_EQ(
            refusalOf([&](Parts& parts) {
                parts.stsd = fullBox(
                    "stsd", 0, 0, joined({be32(2), box("mp4a", Bytes(28)), box(type, Bytes(28))}));
            }),
            "the file is encrypted (" + std::string(type) + "), so it can't be laid out anew");
}

TEST(Refusals, MediaInOtherFiles) {
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.inMinf = drefBox(0); }),
              "media of the file lies in another file (dref)");
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.inMoov = box("rmra", Bytes(8)); }),
              "media of the file lies in another file (rmra)");
    Parts here;
    here.inMinf = drefBox(1);
    EXPECT_TRUE(samplesEqual(here.file(), laidOut(here.file()), 1));
}

TEST(Refusals, ACompressedIndex) {
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.inMoov = box("cmov", Bytes(8)); }),
              "the file's index is compressed (cmov), which isn't read");
}

TEST(Refusals, OffsetsIntoTheFileBesidesTheChunkTables) {
    const Bytes meta = metaBox(ilocBox());
    EXPECT_EQ(refusalOf([&](Parts& parts) { parts.atTop = meta; }), items);
    EXPECT_EQ(refusalOf([&](Parts& parts) { parts.inMoov = meta; }), items);
    EXPECT_EQ(refusalOf([&](Parts& parts) { parts.inTrak = meta; }), items);
    EXPECT_EQ(refusalOf([&](Parts& parts) { parts.inMoov = box("udta", {meta}); }), items);
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.inStbl = box("saio", Bytes(12)); }),
              "the file keeps data beside its samples (saio), which can't be laid out anew");
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.atTop = metaBox(box("iloc", Bytes(7))); }),
              "the file has a broken table of item locations (iloc)");
}

TEST(Refusals, NotItemsThatLieInTheMetadataItself) {
    const Bytes inside = fullBox(
        "iloc", 1, 0,
        joined({be16(0x4400), be16(1), be16(1), be16(1), be16(0), be16(1), be32(0), be32(9)}));
    Parts parts;
    parts.inMoov = metaBox(inside);
    parts.atTop = metaBox(ilocBox(0));
    EXPECT_TRUE(changedBoxes(parts.file(), laidOut(parts.file())).empty());
}

TEST(Refusals, ChunksThatShareBytes) {
    EXPECT_EQ(refusalOf([](Parts& parts) {
                  parts.offsets = stcoBox({mediaAt, mediaAt + 49});
              }),
              overlap);
    EXPECT_EQ(refusalOf([](Parts& parts) {
                  parts.offsets = stcoBox({mediaAt + 49, mediaAt});
              }),
              overlap);
    Movie movie;
    movie.tracks = {evenTrack("vide", 2, 10, 100), evenTrack("soun", 2, 10, 100)};
    Bytes file = buildMovie(movie);
    const std::vector<StoredChunk> chunks = chunksOf(file, 1);
    const std::uint64_t other = chunksOf(file, 0)[1].offset;
    file = patched(file, chunks[1].entryAt, be32(static_cast<std::uint32_t>(other)));
    EXPECT_EQ(refusal(file), overlap);
}

TEST(Refusals, ChunksOutsideTheMedia) {
    for (const std::uint32_t at : {0U, mediaAt - 1, mediaAt + 51, mediaAt + 5000, 0xFFFFFFFFU})
        EXPECT_EQ(refusalOf([&](Parts& parts) {
                      parts.offsets = stcoBox({mediaAt, at});
                  }),
                  outside)
            << at;
    EXPECT_EQ(refusalOf([](Parts& parts) {
                  parts.offsets = co64Box({mediaAt, 0xFFFFFFFFFFFFFFFFULL});
              }),
              outside);
    // What no chunk holds is not read, wherever it points.
    Parts empty;
    empty.stsc = stscBox({{1, 10}, {2, 0}});
    empty.offsets = stcoBox({mediaAt, 0xFFFFFFFF});
    EXPECT_TRUE(samplesEqual(empty.file(), laidOut(empty.file()), 1));
}

TEST(Refusals, ChunkTablesThatDontRunForwardFromTheFirstChunk) {
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.stsc = stscBox({{0, 5}}); }), backwards);
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.stsc = stscBox({{2, 5}}); }), backwards);
    EXPECT_EQ(refusalOf([](Parts& parts) {
                  parts.stsc = stscBox({{1, 5}, {2, 5}, {1, 5}});
              }),
              backwards);
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.stsc = stscBox({{1, 5}, {1, 5}}); }), backwards);
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.stsc = stscBox({{1, 5}, {0, 5}}); }), backwards);
    EXPECT_EQ(refusalOf([](Parts& parts) {
                  parts.stsc = stscBox({{1, 5}, {9, 5}});
              }),
              "a track's chunk table (stsc) names chunks that have no offset");
}

TEST(Refusals, ChunksAndSamplesThatDontFitEachOther) {
    EXPECT_EQ(refusalOf([](Parts& parts) {
                  parts.stsc = stscBox({{1, 6}});
              }),
              "sample table inconsistent");
    EXPECT_EQ(refusalOf([](Parts& parts) {
                  parts.stsc = stscBox({{1, 0xFFFFFFFF}});
              }),
              "sample table inconsistent");
    EXPECT_EQ(refusalOf([](Parts& parts) {
                  parts.stsc = stscBox({{1, 4}});
              }),
              "a track has samples that no chunk holds");
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.stsc = stscBox({}); }),
              "a track has samples that no chunk holds");
}

TEST(Refusals, AbsurdCounts) {
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.stsz = stszBox(1, 0xFFFFFFFF); }),
              "a track claims more samples than a film can have");
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.stsz = stszBox(1, 67'108'865); }),
              "a track claims more samples than a film can have");
    const auto lying = [](std::string_view type) {
        return fullBox(type, 0, 0, joined({be32(0xFFFFFFFF), Bytes(16)}));
    };
    const auto sentence = [](const std::string& type) {
        return "a sample table (" + type + ") doesn't fit into its box";
    };
    EXPECT_EQ(refusalOf([&](Parts& parts) { parts.stsc = lying("stsc"); }), sentence("stsc"));
    EXPECT_EQ(refusalOf([&](Parts& parts) { parts.stts = lying("stts"); }), sentence("stts"));
    EXPECT_EQ(refusalOf([&](Parts& parts) { parts.offsets = lying("stco"); }), sentence("stco"));
    EXPECT_EQ(refusalOf([&](Parts& parts) { parts.offsets = lying("co64"); }), sentence("co64"));
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.stsz = stszBox(0, 10); }), sentence("stsz"));
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.stsz = box("stsz", Bytes(7)); }),
              sentence("stsz"));
}

TEST(Refusals, SampleTablesThatAreMissingOrThereTwice) {
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.stsc = Bytes(); }), "incomplete sample table");
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.offsets = Bytes(); }), "incomplete sample table");
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.inStbl = co64Box({mediaAt}); }),
              "a track has two tables of chunk offsets");
    EXPECT_EQ(refusalOf([](Parts& parts) {
                  parts.inStbl = stscBox({{1, 5}});
              }),
              "the index has two \"stsc\" boxes in one place");
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.inTrak = box("mdia", Bytes(8)); }),
              "the index has two \"mdia\" boxes in one place");
    EXPECT_EQ(refusalOf([](Parts& parts) {
                  parts.stsz = fullBox("stz2", 0, 0, joined({be32(8), be32(10), Bytes(10, 10)}));
              }),
              "a track tells its sample sizes in the compact form (stz2), which isn't read");
}

TEST(Refusals, BoxesThatLieAboutTheirSize) {
    const Bytes good = Parts().file();
    const std::size_t mdat = good.size() - mediaBytes - 8;
    constexpr const char* top = "the file ends inside a box, or a box of it tells a wrong size";
    EXPECT_EQ(refusal(patched(good, mdat, be32(mediaBytes + 9))), top);
    EXPECT_EQ(refusal(patched(good, mdat, be32(7))), top);
    EXPECT_EQ(refusal(Bytes(good.begin(), good.end() - 1)), top);
    Bytes wide = good;
    append(wide, joined({boxHeader("uuid", 1), be64(0xFFFFFFFFFFFFFFF0ULL)}));
    EXPECT_EQ(refusal(wide), top);
    constexpr const char* inIndex = "a box of the index runs past its end";
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.inMoov = boxHeader("abcd", 4000); }), inIndex);
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.inStbl = boxHeader("abcd", 9); }), inIndex);
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.inMoov = boxHeader("abcd", 5); }), inIndex);
    EXPECT_EQ(refusalOf([](Parts& parts) {
                  parts.inMoov = joined({boxHeader("abcd", 1), be64(15)});
              }),
              inIndex);
}

TEST(Refusals, FilesWithoutAnIndexOrWithTwo) {
    EXPECT_EQ(refusal(joined({ftypBox(), box("mdat", Bytes(9))})), "the file has no index (moov)");
    EXPECT_EQ(refusal({}), "the file has no index (moov)");
    EXPECT_EQ(refusalOf([](Parts& parts) { parts.atTop = box("moov", {mvhdBox(1, 1)}); }),
              "the file has two indexes (moov)");
    EXPECT_EQ(refusal(joined({ftypBox(), box("moov", Bytes()), box("mdat", Bytes(9))})),
              "the file has no track that could stay");
}

TEST(Refusals, SamplesSoFarApartThatTheirTablesWouldGrowWithoutEnd) {
    // Twelve bytes of tables for 1.2 million samples a minute apart.
    constexpr std::uint32_t samples = 1'200'000;
    Parts parts;
    parts.stts = sttsBox({{samples, 60'000}});
    parts.stsc = stscBox({{1, samples}});
    parts.stsz = stszBox(1, samples);
    parts.offsets = stcoBox({mediaAt});
    Bytes file = parts.file();
    file.resize(file.size() - mediaBytes - 8);
    append(file, box("mdat", Bytes(samples)));
    EXPECT_EQ(refusal(file), "the file's samples lie too far apart in time to be laid out anew");
}

TEST(Refusals, AnInputThatIsMissingOrNoFile) {
    const TempFolder folder;
    const auto failure = [&](const std::filesystem::path& input) {
        try {
            Relayout::run({.input = input, .output = folder / "out.mp4"});
        } catch (const std::exception& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_EQ(failure(folder / "none.mp4"), "cannot open the input: No such file or directory");
    EXPECT_EQ(failure(folder.path()), "the input is not a file");
    EXPECT_EQ(failure(folder.write("out.mp4", Parts().file())), "the output is the input");
}

}  // namespace marlet::test
