#include "mp4/dumps.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/box_builder.h"

namespace marlet::test {
namespace {

using Lines = std::vector<std::string>;

Bytes trak(std::string_view handler, const Bytes& stsd) {
    return box("trak", {mdiaBox(handler, 1000, 0, {stsd})});
}

Bytes stsd(const Bytes& entry) {
    return fullBox("stsd", 0, 0, joined({be32(1), entry}));
}

TEST(StsdDump, TellsEveryTracksEntriesAndTheirBoxes) {
    const Bytes picture = box("avc1", joined({Bytes(78), box("avcC", Bytes{1, 100})}));
    const Lines lines =
        stsdDump(joined({trak("vide", stsd(picture)), trak("text", stsd(box("zzzz", Bytes(70))))}));
    EXPECT_EQ(lines, (Lines{"track 1 (vide)", "  'avc1', 96 bytes: " + std::string(128, '0') + "…",
                            "    'avcC', 10 bytes: 0164", "track 2 (text)",
                            "  'zzzz', 78 bytes: " + std::string(128, '0') + "…"}));
}

TEST(StsdDump, TellsWhatIsMissing) {
    EXPECT_EQ(stsdDump(box("trak", Bytes())),
              (Lines{"track 1 (no handler): no sample description"}));
    EXPECT_EQ(stsdDump({}), Lines{});
}

TEST(IlstDump, TellsEveryItemWithItsValue) {
    EXPECT_EQ(ilstDump(udtaBox({textItem("©nam", "A Title"), tagItem("tvsn", 21, be32(3)),
                                freeformItem("org.example", "note", "x"),
                                tagItem("covr", 13, bytesOf("GIF87a"))})),
              (Lines{"©nam (title): \"A Title\"", "tvsn (TV season): type 21 0x00000003",
                     "----:org.example:note (custom item 'note' (org.example)): \"x\"",
                     "covr (cover art): GIF, 6 bytes"}));
    EXPECT_EQ(ilstDump({}), Lines{});
}

TEST(MoovTree, TellsBoxesInBoxes) {
    const Bytes moov = joined({mvhdBox(1000, 0), udtaBox({textItem("©nam", "x")}),
                               box("trak", {stsd(box("mp4a", Bytes(28)))})});
    const Lines lines = moovTree(moov);
    EXPECT_EQ(lines.front(), "'mvhd' 108 bytes");
    EXPECT_NE(std::ranges::find(lines, "    'ilst' 33 bytes"), lines.end());
    EXPECT_NE(std::ranges::find(lines, "      '©nam' 25 bytes"), lines.end());
    EXPECT_EQ(lines.back(), "    'mp4a' 36 bytes");
}

TEST(MoovTree, FindsTheBoxesOfBothFormsOfMeta) {
    const Bytes hdlr = hdlrBox("mdir");
    const Bytes items = ilstBox({});
    EXPECT_EQ(moovTree(box("meta", {hdlr, items})).size(), 3U);
    EXPECT_EQ(moovTree(fullBox("meta", 0, 0, joined({hdlr, items}))).size(), 3U);
}

TEST(Dumps, OfAHugeIndexEndWithAnEllipsis) {
    Bytes boxes;
    Bytes tracks;
    Bytes items;
    for (int i = 0; i < 5000; i++) {
        append(boxes, box("free", Bytes()));
        append(tracks, box("trak", Bytes()));
        append(items, box("©nam", Bytes()));
    }
    for (const Lines& lines : {moovTree(boxes), stsdDump(tracks), ilstDump(udtaBox({items}))}) {
        EXPECT_EQ(lines.size(), 4096U);
        EXPECT_EQ(lines.back(), "…");
    }
}

TEST(Dumps, OfDeepBoxesStopInTime) {
    Bytes nested;
    for (int i = 0; i < 1000; i++) nested = box("udta", nested);
    EXPECT_LT(moovTree(nested).size(), 50U);
}

}  // namespace
}  // namespace marlet::test
