#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/digest.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "support/box_builder.h"
#include "write/film_job.h"
#include "write/guards.h"
#include "write/tag_builder.h"

namespace marlet::test {

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// A film, and a copy of it with other tags.
class RegionCheck : public testing::Test {
protected:
    void build(const Movie& movie) {
        original_ = folder_.write("original.mp4", buildMovie(movie));
        candidate_ = folder_.write("candidate.mp4", readFile(original_));
        target_ = TagBuilder::merge(IlstEditor::currentIlst(original_), newDetails());
        plan_ = IlstEditor::plan(original_, IlstEditor::ilstBox(target_));
        IlstEditor::apply(plan_, candidate_);
    }
    static Movie front() {
        Movie movie = smallMovie();
        movie.padding = 8000;
        return movie;
    }
    static Movie last() {
        Movie movie = smallMovie();
        movie.index = Movie::Index::Last;
        return movie;
    }
    TagWriter::RegionProof prove() {
        return TagWriter::proveRegionEdit(original_, candidate_, plan_, target_, control_);
    }
    std::vector<std::string> reasons() {
        return TagWriter::verifyRegionEdit(original_, candidate_, plan_, target_, control_);
    }
    /// Where these bytes stand in the candidate.
    std::uint64_t placeOf(std::string_view bytes, int nth = 0) const {
        const std::string text = textOf(readFile(candidate_));
        std::size_t at = text.find(bytes);
        while (nth-- > 0) at = text.find(bytes, at + 1);
        if (at == std::string::npos) throw std::runtime_error("not in the candidate");
        return at;
    }
    void flip(std::string_view behind, std::uint64_t distance, int nth = 0) {
        flipByte(candidate_, placeOf(behind, nth) + distance);
    }

    TempFolder folder_;
    std::filesystem::path original_;
    std::filesystem::path candidate_;
    std::vector<Atom> target_;
    IlstEditor::Plan plan_;
    RunControl control_;
};

TEST_F(RegionCheck, AnEditAsPlannedIsProved) {
    build(front());
    EXPECT_THAT(reasons(), IsEmpty());
    build(last());
    EXPECT_THAT(reasons(), IsEmpty());
}

TEST_F(RegionCheck, TheProofGivesTheDigestOfTheWholeCandidate) {
    for (const Movie& movie : {front(), last()}) {
        build(movie);
        EXPECT_EQ(prove().candidateDigest, sha256Hex(readFile(candidate_)));
    }
}

TEST_F(RegionCheck, TheDigestSpansSeveralPieces) {
    Movie movie = front();
    movie.tracks[0] = evenTrack("vide", 40, 500'000, 100);
    build(movie);
    const auto proof = prove();
    EXPECT_THAT(proof.reasons, IsEmpty());
    EXPECT_EQ(proof.candidateDigest, sha256Hex(readFile(candidate_)));
    flipByte(candidate_, FileOps::size(candidate_) - 1);
    EXPECT_THAT(reasons(), ElementsAre("media data differs"));
}

TEST_F(RegionCheck, AnotherSizeIsTheOnlyReason) {
    build(front());
    Bytes bytes = readFile(candidate_);
    bytes.push_back(0);
    writeFile(candidate_, bytes);
    EXPECT_THAT(prove().reasons,
                ElementsAre("new size " + std::to_string(bytes.size()) + " is not the expected " +
                            std::to_string(plan_.newTotal)));
    EXPECT_EQ(prove().candidateDigest, "");
}

TEST_F(RegionCheck, AChangedByteInTheMediaDataIsFound) {
    build(front());
    flip("mdat", 100);
    EXPECT_THAT(reasons(), ElementsAre("media data differs"));
}

TEST_F(RegionCheck, AChangedByteInTheHeaderIsFound) {
    build(front());
    flipByte(candidate_, 9);
    EXPECT_THAT(reasons(), ElementsAre("the file header differs"));
}

TEST_F(RegionCheck, AChangedByteAheadOfALastIndexIsFound) {
    build(last());
    flip("mdat", 100);
    EXPECT_THAT(reasons(), ElementsAre("bytes before the index box differ"));
}

TEST_F(RegionCheck, AChangedTrackIsFound) {
    build(front());
    flip("tkhd", 20);
    EXPECT_THAT(reasons(), ElementsAre("index box trak differs"));
}

TEST_F(RegionCheck, AnotherOrderOfBoxesIsFound) {
    build(front());
    const std::uint64_t at = placeOf("mvhd");
    Bytes bytes = readFile(candidate_);
    bytes = patched(bytes, at, viewOf("trak"));
    writeFile(candidate_, bytes);
    EXPECT_THAT(reasons(), Contains("index box order differs"));
}

TEST_F(RegionCheck, AMissingBoxIsAnotherStructure) {
    build(front());
    // Its size swallows the next box.
    const std::uint64_t first = placeOf("trak") - 4;
    Bytes bytes = readFile(candidate_);
    const std::uint64_t second = placeOf("trak", 1) - 4;
    const std::uint64_t end = placeOf("udta") - 4;
    ASSERT_LT(second, end);
    bytes = patched(bytes, first, be32(static_cast<std::uint32_t>(end - first)));
    writeFile(candidate_, bytes);
    EXPECT_THAT(reasons(), Contains("the index boxes differ in structure"));
}

TEST_F(RegionCheck, ANewTagBoxInAFileThatHadNonePasses) {
    for (Movie movie : {front(), last()}) {
        movie.hasTagBlock = false;
        build(movie);
        EXPECT_THAT(reasons(), IsEmpty());
    }
}

TEST_F(RegionCheck, AMissingTagBoxIsFound) {
    build(front());
    Movie untagged = front();
    untagged.hasTagBlock = false;
    Bytes bytes = buildMovie(untagged);
    // As large as expected, so that the index is what is looked at.
    if (bytes.size() < plan_.newTotal) bytes.resize(plan_.newTotal);
    plan_.newTotal = bytes.size();
    writeFile(candidate_, bytes);
    const auto found = reasons();
    EXPECT_THAT(found, Contains("the index boxes differ in structure"));
    EXPECT_THAT(found, Contains("no tag block in the result"));
    EXPECT_THAT(found, Contains("udta item meta differs").Times(0));
}

/// A `udta` with another item beside `meta`.
Bytes withUdtaItem(const Movie& movie) {
    Bytes bytes = buildMovie(movie);
    const std::size_t hdlr = textOf(bytes).find("udta");
    const Bytes item = box("cprt", viewOf("somebody"));
    const auto grow = [&](std::size_t at) {
        const std::uint32_t size = BigEndian::u32(bytes, static_cast<std::int64_t>(at));
        bytes = patched(bytes, at, be32(size + static_cast<std::uint32_t>(item.size())));
    };
    grow(textOf(bytes).find("moov") - 4);
    grow(hdlr - 4);
    bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(hdlr) + 4, item.begin(), item.end());
    return bytes;
}

TEST_F(RegionCheck, AChangedItemBesideTheTagsIsFound) {
    build(last());
    writeFile(original_, withUdtaItem(last()));
    writeFile(candidate_, readFile(original_));
    plan_ = IlstEditor::plan(original_, IlstEditor::ilstBox(target_));
    IlstEditor::apply(plan_, candidate_);
    EXPECT_THAT(reasons(), IsEmpty());
    flip("cprt", 5);
    EXPECT_THAT(reasons(), ElementsAre("udta item cprt differs"));
}

TEST_F(RegionCheck, AChangedMetaHeaderIsFound) {
    build(front());
    flip("meta", 4);
    EXPECT_THAT(reasons(), Contains("meta header differs"));
}

TEST_F(RegionCheck, AChangedItemInMetaIsFound) {
    build(front());
    flip("mdir", 0);
    EXPECT_THAT(reasons(), ElementsAre("meta item hdlr differs"));
}

TEST_F(RegionCheck, OtherTagsThanIntendedAreFound) {
    build(front());
    flip("A much longer title", 3);
    EXPECT_THAT(reasons(), ElementsAre("the tag block isn't exactly the intended one"));
}

TEST_F(RegionCheck, AnAccountTagThatWasNotIntendedIsFound) {
    build(front());
    std::erase_if(target_, [](const Atom& atom) { return atom.name == "apID"; });
    EXPECT_THAT(reasons(), ElementsAre("the tag block isn't exactly the intended one",
                                       "an account tag is present"));
}

TEST_F(RegionCheck, TheFilesOwnAccountTagIsFine) {
    build(front());
    ASSERT_THAT(target_, Contains(testing::Field(&Atom::name, "apID")));
    EXPECT_THAT(reasons(), IsEmpty());
}

TEST_F(RegionCheck, ACancelEndsTheProof) {
    build(front());
    control_.cancel();
    EXPECT_THROW(prove(), CancelError);
}

class SameRange : public testing::Test {
protected:
    std::filesystem::path with(const std::string& name, std::uint64_t size, std::uint64_t odd) {
        Bytes bytes(size, 7);
        if (odd < size) bytes[odd] = 8;
        return folder_.write(name, bytes);
    }
    static constexpr std::uint64_t none = ~0ULL;
    TempFolder folder_;
    RunControl control_;
};

TEST_F(SameRange, EqualBytesAreTheSameAndADifferenceOutsideDoesNotCount) {
    const auto a = with("a", 1000, none);
    const auto b = with("b", 1000, 500);
    EXPECT_TRUE(TagWriter::sameRange(a, b, 0, 500, control_));
    EXPECT_FALSE(TagWriter::sameRange(a, b, 0, 501, control_));
    EXPECT_TRUE(TagWriter::sameRange(a, b, 501, 499, control_));
}

TEST_F(SameRange, ADifferenceBehindTheFirstPieceIsFound) {
    const std::uint64_t size = 0x800000 + 10;
    const auto a = with("a", size, none);
    const auto b = with("b", size, 0x800000 + 9);
    EXPECT_FALSE(TagWriter::sameRange(a, b, 0, size, control_));
    EXPECT_TRUE(TagWriter::sameRange(a, b, 0, size - 1, control_));
}

TEST_F(SameRange, NothingIsTheSameAsNothing) {
    const auto a = with("a", 10, none);
    const auto b = with("b", 10, 0);
    EXPECT_TRUE(TagWriter::sameRange(a, b, 0, 0, control_));
}

TEST_F(SameRange, AFileThatIsTooShortIsNotTheSame) {
    const auto a = with("a", 10, none);
    EXPECT_FALSE(TagWriter::sameRange(a, a, 0, 11, control_));
    EXPECT_FALSE(TagWriter::sameRange(a, a, 100, 1, control_));
}

TEST_F(SameRange, ACancelIsPassedOn) {
    const auto a = with("a", 10, none);
    control_.cancel();
    EXPECT_THROW(TagWriter::sameRange(a, a, 0, 10, control_), CancelError);
}

TEST(ReadRange, GivesTheBytesOrFails) {
    const TempFolder folder;
    const auto file = folder.write("a", "0123456789");
    EXPECT_EQ(textOf(TagWriter::readRange(file, 3, 4)), "3456");
    EXPECT_THROW(TagWriter::readRange(file, 3, 8), MFError);
    EXPECT_THROW(TagWriter::readRange(file, ~0ULL, 1), MFError);
    EXPECT_THROW(TagWriter::readRange(folder / "none", 0, 1), MFError);
}

}  // namespace
}  // namespace marlet::test
