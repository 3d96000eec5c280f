#include "mp4/box.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "support/box_builder.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

std::int64_t sizeOf(ByteView bytes) {
    return static_cast<std::int64_t>(bytes.size());
}

std::vector<std::string> typesOf(const std::vector<Box>& boxes) {
    std::vector<std::string> types;
    for (const Box& one : boxes) types.push_back(one.type);
    return types;
}

std::string failureOf(const std::filesystem::path& file) {
    try {
        loadMoov(file);
    } catch (const MFError& error) {
        return error.description();
    }
    return "";
}

using Types = std::vector<std::string>;

TEST(Children, GivesTheBoxesOfARangeInOrderWithTheirPlaces) {
    const Bytes data = joined({box("free", Bytes(4)), box("©nam", Bytes(2))});
    const std::vector<Box> boxes = children(data, 0, sizeOf(data));
    EXPECT_EQ(boxes, (std::vector<Box>{{"free", 0, 8, 12}, {"©nam", 12, 20, 22}}));
}

TEST(Children, ASizeOf1IsFollowedByA64BitSizeAndAHeaderOf16Bytes) {
    const Bytes data = joined({largeBox("mdat", Bytes(3)), box("free", Bytes())});
    const std::vector<Box> boxes = children(data, 0, sizeOf(data));
    EXPECT_EQ(boxes, (std::vector<Box>{{"mdat", 0, 16, 19}, {"free", 19, 27, 27}}));
}

TEST(Children, A64BitSizeUnder16EndsTheWalk) {
    const Bytes bad = joined({boxHeader("mdat", 1), be64(15), Bytes(20)});
    const Bytes data = joined({box("free", Bytes()), bad});
    EXPECT_EQ(typesOf(children(data, 0, sizeOf(data))), Types{"free"});
}

TEST(Children, A64BitSizeBeyondTheNumberRangeIsClampedToTheRange) {
    const Bytes data = joined({boxHeader("mdat", 1), be64(~0ULL), Bytes(20)});
    EXPECT_EQ(children(data, 0, sizeOf(data)), (std::vector<Box>{{"mdat", 0, 16, 36}}));
}

TEST(Children, ASizeOf2To7EndsTheWalkWithWhatWasFound) {
    for (std::uint32_t size = 2; size < 8; size++) {
        const Bytes data =
            joined({box("free", Bytes()), boxHeader("skip", size), box("free", Bytes())});
        EXPECT_EQ(typesOf(children(data, 0, sizeOf(data))), Types{"free"}) << size;
    }
}

TEST(Children, ASizeOf0RunsToTheEndOfTheRange) {
    const Bytes data = joined({boxHeader("free", 0), Bytes(30)});
    EXPECT_EQ(children(data, 0, 20), (std::vector<Box>{{"free", 0, 8, 20}}));
}

TEST(Children, ABoxThatPassesTheRangeIsClampedAndEndsTheWalk) {
    const Bytes data = joined({boxHeader("free", 100), Bytes(8)});
    EXPECT_EQ(children(data, 0, sizeOf(data)), (std::vector<Box>{{"free", 0, 8, 16}}));
}

TEST(Children, ARangeOfUnder8BytesIsEmpty) {
    const Bytes data = box("free", Bytes());
    EXPECT_TRUE(children(data, 0, 7).empty());
    EXPECT_TRUE(children(data, 8, 0).empty());
    EXPECT_TRUE(children(data, -8, 8).empty());
}

TEST(Children, ARangePastTheBufferReadsAsOneBoxWithoutAType) {
    EXPECT_EQ(children(Bytes(4), 4, 40), (std::vector<Box>{{"", 4, 12, 40}}));
}

TEST(Children, AMillionEmptyBoxesAreCutToABoundedList) {
    Bytes data;
    for (int i = 0; i < 1'000'000; i++) append(data, boxHeader("free", 8));
    EXPECT_EQ(children(data, 0, sizeOf(data)).size(), 262'144U);
}

TEST(Find, FollowsAPathOfTypes) {
    const Bytes data = box("moov", {box("udta", {box("©nam", bytesOf("x"))})});
    const auto found = find(data, 0, sizeOf(data), {"moov", "udta", "©nam"});
    ASSERT_TRUE(found);
    EXPECT_EQ(*found, (Box{"©nam", 16, 24, 25}));
}

TEST(Find, NeverGoesBackToALaterBoxOfTheSameType) {
    const Bytes data = joined({box("udta", Bytes()), box("udta", {box("meta", Bytes())})});
    EXPECT_FALSE(find(data, 0, sizeOf(data), {"udta", "meta"}));
}

TEST(Find, GivesNothingForAnEmptyPathOrAnImpossibleType) {
    const Bytes data = box("udta", Bytes());
    EXPECT_FALSE(find(data, 0, sizeOf(data), {}));
    EXPECT_FALSE(find(data, 0, sizeOf(data), {"toolong"}));
}

TEST(Find, WalksBoxesNested10000DeepWithoutRecursion) {
    Bytes data;
    for (std::uint32_t depth = 10'000; depth > 0; depth--)
        append(data, boxHeader("moov", depth * 8));
    EXPECT_TRUE(find(data, 0, sizeOf(data), {"moov", "moov", "moov"}));
    EXPECT_EQ(children(data, 0, sizeOf(data)).size(), 1U);
}

TEST(LoadMoov, GivesThePayloadOfTheFirstIndexBox) {
    const TempFolder folder;
    const auto file = folder.write("a.mp4", joined({ftypBox(), box("moov", bytesOf("first")),
                                                    box("moov", bytesOf("second"))}));
    EXPECT_EQ(loadMoov(file), bytesOf("first"));
}

TEST(LoadMoov, FindsTheIndexBehindMediaDataWithA64BitSize) {
    const TempFolder folder;
    const auto file = folder.write("a.mp4", joined({ftypBox(), largeBox("mdat", Bytes(50)),
                                                    largeBox("moov", bytesOf("here"))}));
    EXPECT_EQ(loadMoov(file), bytesOf("here"));
}

TEST(LoadMoov, AnIndexOfSize0RunsToTheEndOfTheFile) {
    const TempFolder folder;
    const auto file =
        folder.write("a.mp4", joined({ftypBox(), boxHeader("moov", 0), bytesOf("to the end")}));
    EXPECT_EQ(loadMoov(file), bytesOf("to the end"));
}

TEST(LoadMoov, AnIndexWithAStatedSizePastTheEndIsReadUpToTheEnd) {
    const TempFolder folder;
    const auto file =
        folder.write("a.mp4", joined({ftypBox(), boxHeader("moov", 5000), bytesOf("short")}));
    EXPECT_EQ(loadMoov(file), bytesOf("short"));
}

TEST(LoadMoov, ATopLevelBoxOfSize2EndsTheSearch) {
    const TempFolder folder;
    const auto file =
        folder.write("a.mp4", joined({ftypBox(), boxHeader("free", 2), box("moov", bytesOf("x"))}));
    EXPECT_EQ(failureOf(file), "no-moov");
}

TEST(LoadMoov, A64BitSizeUnder16EndsTheSearch) {
    const TempFolder folder;
    const auto file =
        folder.write("a.mp4", joined({boxHeader("free", 1), be64(15), box("moov", bytesOf("x"))}));
    EXPECT_EQ(failureOf(file), "no-moov");
}

TEST(LoadMoov, AFileWithoutAnIndexFailsWithNoMoov) {
    const TempFolder folder;
    EXPECT_EQ(failureOf(folder.write("empty.mp4", Bytes())), "no-moov");
    EXPECT_EQ(failureOf(folder.write("short.mp4", Bytes(7))), "no-moov");
    EXPECT_EQ(failureOf(folder.write("other.mp4", joined({ftypBox(), box("mdat", Bytes(9))}))),
              "no-moov");
    EXPECT_EQ(failureOf(folder.write("past.mp4", boxHeader("mdat", 0xFFFFFFFF))), "no-moov");
}

TEST(LoadMoov, AnEmptyIndexHasAnOddSize) {
    const TempFolder folder;
    EXPECT_EQ(failureOf(folder.write("a.mp4", box("moov", Bytes()))), "moov box has an odd size");
}

/// A file of that many payload bytes in its index; only the header takes room on the disk.
std::filesystem::path sparseIndex(const TempFolder& folder, std::uint64_t payload) {
    const auto file =
        folder.write("a.mp4", boxHeader("moov", static_cast<std::uint32_t>(payload + 8)));
    std::filesystem::resize_file(file, payload + 8);
    return file;
}

TEST(LoadMoov, AnIndexOf1GiBHasAnOddSize) {
    const TempFolder folder;
    EXPECT_EQ(failureOf(sparseIndex(folder, 1'073'741'824)), "moov box has an odd size");
}

TEST(LoadMoov, AnIndexOfOneByteLessThan1GiBIsAccepted) {
    const TempFolder folder;
    const auto file = sparseIndex(folder, 1'073'741'823);
    // The first read of the payload is made to fail: the size was accepted, and no GiB is filled.
    const Sys::Fault fault(Sys::Call::Read, EIO, 2);
    EXPECT_EQ(failureOf(file), "read failed: Input/output error");
}

TEST(LoadMoov, AReadInPiecesIsPutTogether) {
    const TempFolder folder;
    const auto file =
        folder.write("a.mp4", joined({ftypBox(), box("moov", bytesOf("whole index"))}));
    const Sys::ShortTransfers transfers(9);
    EXPECT_EQ(loadMoov(file), bytesOf("whole index"));
}

TEST(LoadMoov, ASystemFailurePassesThroughWithItsText) {
    const TempFolder folder;
    EXPECT_EQ(failureOf(folder / "none.mp4"), "cannot open the file: No such file or directory");
    EXPECT_EQ(failureOf(folder.path()), "read failed: Is a directory");
}

TEST(LoadMoov, APipeThatIsNamedLikeAFilmHoldsNothingUp) {
    const TempFolder folder;
    const auto pipe = folder / "a.mp4";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(failureOf(pipe), "cannot tell the file's length: Illegal seek");
}

TEST(TopLevel, ListsTheBoxesOfAFileWithTheirPlaces) {
    const TempFolder folder;
    const auto file =
        folder.write("a.mp4", joined({box("ftyp", Bytes(4)), largeBox("mdat", Bytes(4)),
                                      boxHeader("moov", 0), Bytes(10)}));
    EXPECT_EQ(TagRestore::topLevel(file),
              (std::vector<TagRestore::Top>{
                  {"ftyp", 0, 12, 8}, {"mdat", 12, 20, 16}, {"moov", 32, 18, 8}}));
}

TEST(TopLevel, StopsSilentlyAtABoxThatDoesNotFit) {
    const TempFolder folder;
    const auto file =
        folder.write("a.mp4", joined({box("ftyp", Bytes(4)), boxHeader("mdat", 500), Bytes(20)}));
    EXPECT_EQ(TagRestore::topLevel(file), (std::vector<TagRestore::Top>{{"ftyp", 0, 12, 8}}));
}

TEST(TopLevel, StopsSilentlyAtASizeThatNoBoxHas) {
    const TempFolder folder;
    const auto file =
        folder.write("a.mp4", joined({box("ftyp", Bytes(4)), boxHeader("mdat", 3), Bytes(20)}));
    EXPECT_EQ(TagRestore::topLevel(file).size(), 1U);
}

TEST(TopLevel, AnUnreadableFileHasNoBoxes) {
    const TempFolder folder;
    EXPECT_TRUE(TagRestore::topLevel(folder / "none.mp4").empty());
    EXPECT_TRUE(TagRestore::topLevel(folder.path()).empty());
}

}  // namespace
}  // namespace marlet::test
