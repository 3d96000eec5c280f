#include "write/ilst_editor.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>

#include "foundation/syscalls.h"
#include "mp4/box.h"
#include "write/small_film.h"

namespace marlet::test {
namespace {

using IlstEditor::Layout;
using IlstEditor::Plan;
using namespace SmallFilm;

const Bytes newBlock = IlstEditor::ilstBox(newTags());

/// The sentence that the call fails with; empty when it doesn't.
std::string failureOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const MFError& error) {
        return error.description();
    }
    return {};
}

class IlstEditorTest : public testing::Test {
protected:
    std::filesystem::path film(std::initializer_list<Bytes> boxes) {
        return folder_.write("film.m4v", joined(boxes));
    }

    std::string layoutFailure(std::initializer_list<Bytes> boxes) {
        const auto file = film(boxes);
        return failureOf([&] { IlstEditor::layout(file); });
    }

    /// Plans, applies and undoes; checks what must hold of every edit.
    Plan expectEditAndUndo(const std::filesystem::path& file,
                           const std::vector<Atom>& tags = newTags()) {
        const Bytes before = readFile(file);
        const std::uint64_t mediaAt = mediaOffset(file);
        const Plan plan = IlstEditor::plan(file, IlstEditor::ilstBox(tags));
        EXPECT_EQ(readFile(file), before);
        EXPECT_EQ(part(before, plan.offset, plan.oldRegion.size()), plan.oldRegion);

        IlstEditor::apply(plan, file);
        EXPECT_EQ(IlstEditor::currentIlst(file), tags);
        EXPECT_EQ(IlstEditor::layout(file).kind, plan.layout.kind);
        const Bytes after = readFile(file);
        EXPECT_EQ(after.size(), plan.newTotal);
        EXPECT_EQ(mediaOffset(file), mediaAt);
        EXPECT_EQ(part(after, mediaAt, mediaSize + 8), mdat());

        IlstEditor::apply(plan.undo(), file);
        EXPECT_EQ(readFile(file), before);
        IlstEditor::apply(plan, file);
        return plan;
    }

    static std::uint64_t mediaOffset(const std::filesystem::path& file) {
        for (const auto& box : TagRestore::topLevel(file))
            if (box.type == "mdat") return box.offset;
        return 0;
    }

    static TagRestore::Top lastBox(const std::filesystem::path& file) {
        return TagRestore::topLevel(file).back();
    }

    TempFolder folder_;
};

// Layout.

TEST_F(IlstEditorTest, MediaThenIndexThenPaddingIsLast) {
    const Bytes index = taggedMoov();
    const auto file = film({ftyp(), mdat(), index, freeBox(50), freeBox(20, "skip")});
    const Layout layout = IlstEditor::layout(file);
    EXPECT_EQ(layout, (Layout{.kind = Layout::Kind::last,
                              .moovPos = ftyp().size() + mediaSize + 8,
                              .moovSize = index.size(),
                              .total = readFile(file).size(),
                              .trailingFree = 70}));
}

TEST_F(IlstEditorTest, LastNeedsNoFileTypeBox) {
    EXPECT_EQ(IlstEditor::layout(film({mdat(), moov()})).kind, Layout::Kind::last);
}

TEST_F(IlstEditorTest, IndexBeforeMediaIsFront) {
    const Bytes index = taggedMoov();
    const auto file = film({ftyp(), freeBox(40), index, freeBox(60), mdat(), freeBox(9)});
    const std::uint64_t gap = ftyp().size();
    EXPECT_EQ(IlstEditor::layout(file), (Layout{.kind = Layout::Kind::front,
                                                .moovPos = gap + 40,
                                                .moovSize = index.size(),
                                                .total = readFile(file).size(),
                                                .gapStart = gap,
                                                .leadingFree = 40,
                                                .mdatPos = gap + 40 + index.size() + 60}));
}

TEST_F(IlstEditorTest, BoxesBehindTheFirstMediaBoxAreNotLookedAt) {
    const auto file = film({ftyp(), moov(), mdat(), IlstEditor::box("uuid", Bytes(30)), mdat()});
    EXPECT_EQ(IlstEditor::layout(file).kind, Layout::Kind::front);
}

TEST_F(IlstEditorTest, AFileNeedsExactlyOneIndex) {
    const std::string refused = "the file has no single index box (moov)";
    EXPECT_EQ(layoutFailure({ftyp(), mdat()}), refused);
    EXPECT_EQ(layoutFailure({ftyp(), moov(), mdat(), moov()}), refused);
    EXPECT_EQ(layoutFailure({}), refused);
    EXPECT_EQ(failureOf([&] { IlstEditor::layout(folder_ / "missing.m4v"); }), refused);
}

TEST_F(IlstEditorTest, AnIndexWithA64BitSizeIsRefused) {
    Bytes wide = IlstEditor::be32(1);
    append(wide, viewOf("moov"));
    BigEndian::put64(wide, 16);
    EXPECT_EQ(layoutFailure({ftyp(), mdat(), wide}), "the index box uses a 64-bit size");
}

TEST_F(IlstEditorTest, AFileNeedsAMediaBox) {
    EXPECT_EQ(layoutFailure({ftyp(), moov()}), "the file has no media data box");
}

TEST_F(IlstEditorTest, AnUnusualOrderIsRefused) {
    const std::string refused = "unusual box order; not edited in place";
    EXPECT_EQ(layoutFailure({ftyp(), mdat(), moov(), mdat()}), refused);
    EXPECT_EQ(layoutFailure({moov(), mdat()}), refused);
    EXPECT_EQ(layoutFailure({freeBox(8), ftyp(), moov(), mdat()}), refused);
    EXPECT_EQ(layoutFailure({ftyp(), mdat(), moov(), IlstEditor::box("uuid", Bytes(8))}), refused);
}

TEST_F(IlstEditorTest, UnexpectedBoxesBesideTheIndexAreRefused) {
    const std::string refused = "unexpected boxes beside the index; not edited in place";
    const Bytes foreign = IlstEditor::box("uuid", Bytes(16));
    EXPECT_EQ(layoutFailure({ftyp(), moov(), foreign, mdat()}), refused);
    EXPECT_EQ(layoutFailure({ftyp(), foreign, moov(), mdat()}), refused);
}

// Reading.

TEST_F(IlstEditorTest, AFileWithoutATagBlockHasEmptyTags) {
    EXPECT_TRUE(IlstEditor::currentIlst(film({ftyp(), mdat(), moov()})).empty());
    EXPECT_TRUE(
        IlstEditor::currentIlst(film({ftyp(), mdat(), moov(IlstEditor::box("udta", {}))})).empty());
    EXPECT_TRUE(IlstEditor::currentIlst(film({ftyp(), mdat(), moov(udta({}))})).empty());
}

TEST_F(IlstEditorTest, CurrentTagsAreThoseOfTheUserDataOnly) {
    const Bytes besideTracks =
        IlstEditor::box("meta", joined({Bytes(4), IlstEditor::ilstBox(newTags())}));
    EXPECT_TRUE(IlstEditor::currentIlst(film({ftyp(), mdat(), moov(besideTracks)})).empty());
    EXPECT_EQ(IlstEditor::currentIlst(film({ftyp(), mdat(), taggedMoov()})), oldTags());
}

TEST_F(IlstEditorTest, AnIndexThatIsCutShortCanNotBeRead) {
    const auto file = film({ftyp(), mdat(), moov()});
    Layout layout = IlstEditor::layout(file);
    layout.moovSize += 1;
    EXPECT_EQ(failureOf([&] { IlstEditor::readMoov(file, layout); }),
              "could not read the index box");
    layout.moovSize = ~0ULL;
    EXPECT_EQ(failureOf([&] { IlstEditor::readMoov(file, layout); }),
              "could not read the index box");
}

TEST_F(IlstEditorTest, AnIndexThatLiesAboutItsSizeIsNeverAllocated) {
    const auto file = film({ftyp(), mdat()});
    // Ten gigabytes of padding without a block on the disk.
    Bytes padding = IlstEditor::be32(1);
    append(padding, viewOf("free"));
    const std::uint64_t huge = 10'000'000'000;
    BigEndian::put64(padding, huge);
    const Bytes head = joined({ftyp(), mdat(), taggedMoov(), padding});
    writeFile(file, head);
    std::filesystem::resize_file(file, head.size() - padding.size() + huge);
    EXPECT_EQ(failureOf([&] { IlstEditor::plan(file, newBlock); }), "could not read the index box");
}

TEST_F(IlstEditorTest, MillionsOfEmptyTagItemsAreRefused) {
    Bytes items;
    for (int i = 0; i < 70000; i++) append(items, IlstEditor::box("xxxx", {}));
    const auto file = film({ftyp(), mdat(), moov(udta(IlstEditor::box("ilst", items)))});
    EXPECT_EQ(failureOf([&] { IlstEditor::currentIlst(file); }), "could not read the index box");
}

// The new index.

TEST_F(IlstEditorTest, MissingContainersAreMadeAtTheEndOfTheirParent) {
    const Bytes block = IlstEditor::ilstBox({IlstEditor::text("©nam", "A")});
    Bytes handler = IlstEditor::box("hdlr", joined({Bytes(8), bytesOf("mdirappl"), Bytes(9)}));
    const Bytes meta = IlstEditor::box("meta", joined({Bytes(4), handler, block}));
    const Bytes chapters = IlstEditor::box("chpl", Bytes(9));

    EXPECT_EQ(IlstEditor::replaceIlst(moov(), block), moov(IlstEditor::box("udta", meta)));
    EXPECT_EQ(IlstEditor::replaceIlst(moov(IlstEditor::box("udta", chapters)), block),
              moov(IlstEditor::box("udta", joined({chapters, meta}))));
    EXPECT_EQ(IlstEditor::replaceIlst(moov(udta(chapters)), block),
              moov(udta(joined({chapters, block}))));
}

TEST_F(IlstEditorTest, OnlyTheTagBlockIsReplaced) {
    const Bytes before = joined({IlstEditor::box("hdlr", Bytes(25))});
    const Bytes behind = IlstEditor::box("xtra", media(33));
    const Bytes more = joined({udta(joined({before, IlstEditor::ilstBox(newTags()), behind})),
                               IlstEditor::box("meta", media(40))});
    const Bytes wanted = joined({udta(joined({before, IlstEditor::ilstBox(oldTags()), behind})),
                                 IlstEditor::box("meta", media(40))});
    EXPECT_EQ(IlstEditor::replaceIlst(moov(more), IlstEditor::ilstBox(oldTags())), moov(wanted));
}

TEST_F(IlstEditorTest, AContainerWithoutA32BitSizeIsNotEdited) {
    const std::string refused = "a tag container uses a 64-bit size; not edited";
    for (const std::uint32_t size : {0U, 1U}) {
        Bytes openEnded =
            moov(IlstEditor::box("udta", joined({IlstEditor::box("chpl", Bytes(16))})));
        const std::size_t at = moov().size();
        const Bytes word = IlstEditor::be32(size);
        std::copy(word.begin(), word.end(), openEnded.begin() + static_cast<std::ptrdiff_t>(at));
        if (size == 1) {
            const Bytes wide = {0, 0, 0, 0, 0, 0, 0, 32};
            std::copy(wide.begin(), wide.end(),
                      openEnded.begin() + static_cast<std::ptrdiff_t>(at + 8));
        }
        EXPECT_EQ(failureOf([&] { IlstEditor::replaceIlst(openEnded, newBlock); }), refused);
    }
    Bytes index = moov();
    index[0] = index[1] = index[2] = index[3] = 0;
    EXPECT_EQ(failureOf([&] { IlstEditor::replaceIlst(index, newBlock); }), refused);
}

TEST_F(IlstEditorTest, ASizeThatWouldOverflowIsNotEdited) {
    Bytes index = moov(IlstEditor::box("udta", {}));
    const auto at = static_cast<std::ptrdiff_t>(moov().size());
    std::fill(index.begin() + at, index.begin() + at + 4, std::uint8_t{0xFF});
    EXPECT_EQ(failureOf([&] { IlstEditor::replaceIlst(index, newBlock); }),
              "a tag container uses a 64-bit size; not edited");
}

// Plans of files with the index last.

TEST_F(IlstEditorTest, ATaggedLastIndexWithoutPaddingMakesTheFileGrow) {
    const auto file = film({ftyp(), mdat(), taggedMoov()});
    const auto before = std::filesystem::file_size(file);
    const Plan plan = expectEditAndUndo(file);
    EXPECT_GT(plan.newTotal, before);
    EXPECT_EQ(plan.newTotal, plan.layout.moovPos + plan.newMoovSize);
}

TEST_F(IlstEditorTest, AnUntaggedLastIndexGetsItsContainers) {
    const auto file = film({ftyp(), mdat(), moov()});
    const auto before = std::filesystem::file_size(file);
    EXPECT_GT(expectEditAndUndo(file).newTotal, before);
}

TEST_F(IlstEditorTest, PaddingBehindALastIndexTakesTheGrowth) {
    const auto file = film({ftyp(), mdat(), taggedMoov(), freeBox(9000)});
    const auto before = std::filesystem::file_size(file);
    const Plan plan = expectEditAndUndo(file);
    EXPECT_EQ(plan.newTotal, before);
    EXPECT_EQ(lastBox(file).type, "free");
    EXPECT_EQ(lastBox(file).size, 9000 - (plan.newMoovSize - plan.layout.moovSize));
}

TEST_F(IlstEditorTest, PaddingThatIsTooSmallIsAbsorbed) {
    const auto file = film({ftyp(), mdat(), taggedMoov(), freeBox(100)});
    const auto before = std::filesystem::file_size(file);
    const Plan plan = expectEditAndUndo(file);
    EXPECT_GT(plan.newTotal, before);
    EXPECT_EQ(lastBox(file).type, "moov");
}

TEST_F(IlstEditorTest, ALastIndexThatShrinksWithoutPaddingMakesTheFileShorter) {
    const auto file = film({ftyp(), mdat(), taggedMoov()});
    const auto before = std::filesystem::file_size(file);
    EXPECT_LT(expectEditAndUndo(file, {oldTags()[0]}).newTotal, before);
}

TEST_F(IlstEditorTest, PaddingBehindALastIndexIsUsedUpToItsLastByte) {
    const std::size_t growth = newBlock.size() - IlstEditor::ilstBox(oldTags()).size();
    for (std::size_t rest = 0; rest <= 9; rest++) {
        const auto file = film({ftyp(), mdat(), taggedMoov(), freeBox(growth + rest)});
        const auto before = std::filesystem::file_size(file);
        const Plan plan = expectEditAndUndo(file);
        const bool isAbsorbed = rest > 0 && rest < 8;
        EXPECT_EQ(plan.newTotal, isAbsorbed ? before - rest : before) << rest;
        EXPECT_EQ(lastBox(file).type, rest < 8 ? "moov" : "free") << rest;
    }
}

TEST_F(IlstEditorTest, BytesThatNoBoxCoversAreNotCutOff) {
    const Bytes whole = joined({ftyp(), mdat(), taggedMoov()});
    for (const Bytes& behind : {Bytes(5), part(mdat(), 0, 300)}) {
        const auto file = film({whole, behind});
        EXPECT_EQ(failureOf([&] { IlstEditor::plan(file, newBlock); }),
                  "unusual box order; not edited in place");
        EXPECT_EQ(IlstEditor::currentIlst(file), oldTags());
    }
}

// Plans of files with the index in front.

TEST_F(IlstEditorTest, PaddingBehindAFrontIndexTakesTheGrowth) {
    const auto file = film({ftyp(), taggedMoov(), freeBox(8000), mdat()});
    const auto before = std::filesystem::file_size(file);
    EXPECT_EQ(expectEditAndUndo(file).newTotal, before);
}

TEST_F(IlstEditorTest, AnUntaggedFrontIndexUsesThePaddingTheSameWay) {
    const auto file = film({ftyp(), moov(), freeBox(8000), mdat()});
    const auto before = std::filesystem::file_size(file);
    EXPECT_EQ(expectEditAndUndo(file).newTotal, before);
}

TEST_F(IlstEditorTest, PaddingBeforeTheIndexStaysWhenItIsNotNeeded) {
    const auto file = film({ftyp(), freeBox(40), taggedMoov(), freeBox(8000), mdat()});
    EXPECT_EQ(expectEditAndUndo(file).offset, ftyp().size());
    EXPECT_EQ(IlstEditor::layout(file).leadingFree, 40U);
}

TEST_F(IlstEditorTest, TheIndexMovesForwardWhenItNeedsThePaddingBeforeIt) {
    const auto file = film({ftyp(), freeBox(8000), taggedMoov(), mdat()});
    expectEditAndUndo(file);
    EXPECT_EQ(IlstEditor::layout(file).leadingFree, 0U);
    EXPECT_EQ(IlstEditor::layout(file).moovPos, ftyp().size());
}

std::string noRoomOf(const std::filesystem::path& file, const Bytes& block) {
    try {
        IlstEditor::plan(file, block);
    } catch (const NoRoom& error) {
        return error.description();
    }
    return {};
}

TEST_F(IlstEditorTest, GrowthWithoutPaddingIsNoRoomAndLeavesTheFileAlone) {
    const auto file = film({ftyp(), taggedMoov(), mdat()});
    const Bytes before = readFile(file);
    const std::size_t growth = newBlock.size() - IlstEditor::ilstBox(oldTags()).size();
    EXPECT_EQ(noRoomOf(file, newBlock), "the tag block grew by " + std::to_string(growth) +
                                            " bytes and the padding beside it is 0 bytes");
    EXPECT_EQ(readFile(file), before);
}

TEST_F(IlstEditorTest, NoRoomNamesAllPaddingBesideTheIndex) {
    const auto file = film({ftyp(), freeBox(20), taggedMoov(), freeBox(30), mdat()});
    const std::size_t growth = newBlock.size() - IlstEditor::ilstBox(oldTags()).size();
    EXPECT_EQ(noRoomOf(file, newBlock), "the tag block grew by " + std::to_string(growth) +
                                            " bytes and the padding beside it is 50 bytes");
}

TEST_F(IlstEditorTest, AShrinkTooSmallForAPaddingBoxIsNoRoom) {
    std::vector<Atom> shorter = oldTags();
    shorter[0] = IlstEditor::text("©nam", "");
    const auto file = film({ftyp(), taggedMoov(), mdat()});
    EXPECT_EQ(noRoomOf(file, IlstEditor::ilstBox(shorter)),
              "the tag block grew by -3 bytes and the padding beside it is 0 bytes");
}

TEST_F(IlstEditorTest, PaddingBeforeTheIndexIsNotGivenUpForARemainderOfAFewBytes) {
    std::vector<Atom> shorter = oldTags();
    shorter[0] = IlstEditor::text("©nam", "");
    const auto file = film({ftyp(), freeBox(100), taggedMoov(), mdat()});
    EXPECT_EQ(noRoomOf(file, IlstEditor::ilstBox(shorter)),
              "the tag block grew by -3 bytes and the padding beside it is 100 bytes");
}

TEST_F(IlstEditorTest, AnIdenticalTagBlockChangesNothing) {
    const Bytes same = IlstEditor::ilstBox(oldTags());
    for (const Bytes& padding : {Bytes(), freeBox(8), freeBox(500)}) {
        const Plan plan = IlstEditor::plan(film({ftyp(), taggedMoov(), padding, mdat()}), same);
        EXPECT_EQ(plan.region, plan.oldRegion);
        EXPECT_EQ(plan.newMoovSize, plan.layout.moovSize);
    }
}

TEST_F(IlstEditorTest, AShrinkOfEightBytesGivesAPaddingBoxWithoutPayload) {
    std::vector<Atom> longer = oldTags();
    longer[0] = IlstEditor::text("©nam", "Old12345");
    const auto file = film({ftyp(), moov(udta(IlstEditor::ilstBox(longer))), mdat()});
    std::vector<Atom> shorter = oldTags();
    shorter[0] = IlstEditor::text("©nam", "");
    const Plan plan = expectEditAndUndo(file, shorter);
    EXPECT_EQ(part(plan.region, plan.region.size() - 8, 8), freeBox(8));
}

// Writing.

class IlstApplyTest : public IlstEditorTest {
protected:
    std::filesystem::path file_ = film({ftyp(), mdat(), taggedMoov()});
    Bytes before_ = readFile(file_);
    Plan plan_ = IlstEditor::plan(file_, newBlock);
    std::string failure() {
        return failureOf([&] { IlstEditor::apply(plan_, file_); });
    }
};

TEST_F(IlstApplyTest, AFileThatCanNotBeOpenedIsLeftAlone) {
    {
        const Sys::Fault fault(Sys::Call::Open, EACCES);
        EXPECT_EQ(failure(), "cannot open the file to write the tags: Permission denied");
    }
    EXPECT_EQ(readFile(file_), before_);
}

TEST_F(IlstApplyTest, AMissingFileIsNotCreated) {
    std::filesystem::remove(file_);
    EXPECT_EQ(failure(), "cannot open the file to write the tags: No such file or directory");
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(IlstApplyTest, AFailedWriteIsAShortWrite) {
    const Sys::Fault fault(Sys::Call::Write, EIO);
    EXPECT_EQ(failure(), "short write of the tag region");
}

TEST_F(IlstApplyTest, AWriteThatIsCutShortIsUndone) {
    {
        const Sys::ShortTransfers limit(plan_.region.size() - 1);
        EXPECT_EQ(failure(), "short write of the tag region");
    }
    EXPECT_NE(readFile(file_), before_);
    IlstEditor::apply(plan_.undo(), file_);
    EXPECT_EQ(readFile(file_), before_);
}

TEST_F(IlstApplyTest, AFailureToSetTheSizeIsUndone) {
    {
        const Sys::Fault fault(Sys::Call::Truncate, EPERM);
        EXPECT_EQ(failure(), "cannot set the final size");
    }
    IlstEditor::apply(plan_.undo(), file_);
    EXPECT_EQ(readFile(file_), before_);
}

TEST_F(IlstApplyTest, AFrontFileIsNeverTruncated) {
    const auto file = film({ftyp(), taggedMoov(), freeBox(8000), mdat(), Bytes(3)});
    const Plan plan = IlstEditor::plan(file, newBlock);
    const Sys::Fault fault(Sys::Call::Truncate, EPERM);
    IlstEditor::apply(plan, file);
    EXPECT_EQ(IlstEditor::currentIlst(file), newTags());
    EXPECT_EQ(std::filesystem::file_size(file), plan.newTotal + 3);
}

TEST_F(IlstApplyTest, AFailedFlushIsNotReported) {
    const Sys::Fault fault(Sys::Call::Flush, EIO);
    EXPECT_EQ(failure(), "");
    EXPECT_EQ(IlstEditor::currentIlst(file_), newTags());
}

}  // namespace
}  // namespace marlet::test
