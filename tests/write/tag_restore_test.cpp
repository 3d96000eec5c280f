#include "write/tag_restore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <optional>

#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "support/box_builder.h"
#include "support/box_reader.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

constexpr std::uint32_t aheadSize = 100;  // media data ahead of the index

Bytes title(std::size_t length, char letter = 'N') {
    return textItem("©nam", std::string(length, letter));
}

/// A track that is nothing but its tables.
Bytes trakOf(const Bytes& tables) {
    return box("trak", {box("mdia", {box("minf", {box("stbl", tables)})})});
}

/// ftyp, mdat, moov, mdat: one table of places in the file and the tag block.
struct Film {
    Bytes tables;
    Bytes userData = udtaBox({title(10)});
    Bytes (*index)(std::string_view, ByteView) = box;
    Bytes behind = box("mdat", Bytes(300, 0xBB));

    Bytes moov() const {
        return index("moov", joined({mvhdBox(1000, 1000), trakOf(tables), userData}));
    }
    static Bytes ahead() { return joined({ftypBox(), box("mdat", Bytes(aheadSize, 0xAA))}); }
    std::uint64_t moovAt() const { return ahead().size(); }
    std::uint64_t moovEnd() const { return moovAt() + moov().size(); }
    Bytes bytes() const { return joined({ahead(), moov(), behind}); }
};

class TagRestoreTest : public testing::Test {
protected:
    static Bytes tagged(const std::vector<Bytes>& items) {
        Film film;
        film.userData = udtaBox(items);
        return film.bytes();
    }

    bool restore(const Progress& progress = {}) {
        original_ = folder_.write("original.mp4", before_);
        rebuilt_ = folder_.write("rebuilt.mp4", after_);
        fs::remove(output_);
        return TagRestore::restore(original_, rebuilt_, output_, control_, progress);
    }
    Bytes restored() {
        EXPECT_TRUE(restore());
        return readFile(output_);
    }
    void expectNothingDone() {
        EXPECT_FALSE(restore());
        EXPECT_FALSE(fs::exists(output_));
    }
    std::string failure(const Progress& progress = {}) {
        try {
            restore(progress);
            return "";
        } catch (const MFError& error) {
            return error.description();
        }
    }

    /// Two places in the file, ahead of the index and behind it, with a block of `change` bytes
    /// more or less than the tool left.
    void growBy(int change, bool wide = false) {
        Film film;
        const auto tables = [&](std::uint64_t behind) {
            const std::uint64_t first = ftypBox().size() + 8;
            if (wide) return co64Box({first, behind});
            return stcoBox({static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(behind)});
        };
        film.tables = tables(0);
        film.tables = tables(film.moovEnd() + 8);
        after_ = film.bytes();
        film.userData = udtaBox({title(static_cast<std::size_t>(10 + change), 'O')});
        before_ = film.bytes();
        rebuiltFilm_ = film;
        rebuiltFilm_.userData = udtaBox({title(10)});
    }
    std::vector<std::uint64_t> offsets(ByteView file, std::string_view table = "stco") const {
        const ByteView stbl = payloadOf(
            payloadOf(payloadOf(payloadOf(payloadOf(file, "moov"), "trak"), "mdia"), "minf"),
            "stbl");
        const ByteView payload = payloadOf(stbl, table);
        std::vector<std::uint64_t> values;
        for (std::uint32_t i = 0; i < BigEndian::u32(payload, 4); i++)
            values.push_back(table == "stco" ? BigEndian::u32(payload, 8 + 4 * i)
                                             : BigEndian::u64(payload, 8 + 8 * i));
        return values;
    }

    TempFolder folder_;
    RunControl control_;
    fs::path original_;
    fs::path rebuilt_ = folder_ / "rebuilt.mp4";
    fs::path output_ = folder_ / "output.mp4";
    Bytes before_ = tagged({title(110, 'O')});
    Bytes after_ = tagged({title(10)});
    Film rebuiltFilm_;
};

TEST_F(TagRestoreTest, EqualTagsGiveFalseAndNoFile) {
    after_ = before_;
    expectNothingDone();
}

TEST_F(TagRestoreTest, EqualItemsInAnotherOrderAreNoDifference) {
    before_ = tagged({title(10), textItem("©ART", "Someone")});
    after_ = tagged({textItem("©ART", "Someone"), title(10)});
    expectNothingDone();
}

TEST_F(TagRestoreTest, AFileWithoutATagBlockIsLeftAlone) {
    Film bare;
    bare.userData = {};
    before_ = bare.bytes();
    expectNothingDone();
    before_ = tagged({title(10, 'O')});
    after_ = bare.bytes();
    expectNothingDone();
    bare.userData = box("udta", {box("name", viewOf("Film"))});
    after_ = bare.bytes();
    expectNothingDone();
}

TEST_F(TagRestoreTest, ABlockThatGrewBy100RaisesEveryOffsetBehindTheIndexBy100) {
    growBy(100);
    const Bytes result = restored();
    EXPECT_THAT(offsets(result), ElementsAre(ftypBox().size() + 8, rebuiltFilm_.moovEnd() + 108));
    EXPECT_EQ(result.size(), after_.size() + 100);
    // What the last offset points at is the media data.
    EXPECT_EQ(result.at(offsets(result)[1]), 0xBB);
    EXPECT_EQ(result.at(offsets(result)[1] - 4), 'm');
}

TEST_F(TagRestoreTest, TheResultIsTheRebuiltFileWithTheOriginalsBlockAndNothingElse) {
    growBy(100);
    Film wanted = rebuiltFilm_;
    wanted.userData = udtaBox({title(110, 'O')});
    wanted.tables = stcoBox({static_cast<std::uint32_t>(ftypBox().size() + 8),
                             static_cast<std::uint32_t>(rebuiltFilm_.moovEnd() + 108)});
    EXPECT_EQ(restored(), wanted.bytes());
    EXPECT_EQ(readFile(original_), before_);
    EXPECT_EQ(readFile(rebuilt_), after_);
}

TEST_F(TagRestoreTest, ABlockThatShrankLowersTheOffsets) {
    growBy(-7);
    const Bytes result = restored();
    EXPECT_THAT(offsets(result), ElementsAre(ftypBox().size() + 8, rebuiltFilm_.moovEnd() + 1));
    EXPECT_EQ(result.size(), after_.size() - 7);
}

TEST_F(TagRestoreTest, ABlockOfTheSameSizeMovesNothing) {
    growBy(0);
    const Bytes result = restored();
    EXPECT_EQ(result, before_);
    EXPECT_EQ(offsets(result), offsets(after_));
}

TEST_F(TagRestoreTest, WideOffsetsMoveToo) {
    growBy(100, true);
    EXPECT_THAT(offsets(restored(), "co64"),
                ElementsAre(ftypBox().size() + 8, rebuiltFilm_.moovEnd() + 108));
}

TEST_F(TagRestoreTest, TheEndOfTheIndexIsTheFirstPlaceThatMoves) {
    growBy(100);
    const auto end = static_cast<std::uint32_t>(rebuiltFilm_.moovEnd());
    // One entry more than before: the index ends four bytes later.
    rebuiltFilm_.tables = stcoBox({end + 3, end + 4, end + 5});
    after_ = rebuiltFilm_.bytes();
    EXPECT_THAT(offsets(restored()), ElementsAre(end + 3, end + 104, end + 105));
}

TEST_F(TagRestoreTest, AnIndexAtTheEndMovesNothing) {
    growBy(100);
    rebuiltFilm_.behind = {};
    rebuiltFilm_.tables = stcoBox({1, 2});
    after_ = rebuiltFilm_.bytes();
    const Bytes result = restored();
    EXPECT_THAT(offsets(result), ElementsAre(1, 2));
    EXPECT_EQ(result.size(), after_.size() + 100);
}

TEST_F(TagRestoreTest, PlacesOfEncryptedTracksMoveAsTheirChunksDo) {
    growBy(100);
    const auto tables = [](std::uint64_t at) {
        const auto narrow = static_cast<std::uint32_t>(at);
        return joined({stcoBox({narrow, 1}), fullBox("saio", 0, 0, joined({be32(1), be32(narrow)})),
                       fullBox("saio", 1, 1,
                               joined({bytesOf("cenc"), be32(0), be32(2), be64(at), be64(1)}))});
    };
    rebuiltFilm_.tables = tables(0);
    rebuiltFilm_.tables = tables(rebuiltFilm_.moovEnd());
    after_ = rebuiltFilm_.bytes();
    rebuiltFilm_.tables = tables(rebuiltFilm_.moovEnd() + 100);
    rebuiltFilm_.userData = udtaBox({title(110, 'O')});
    EXPECT_EQ(restored(), rebuiltFilm_.bytes());
}

TEST_F(TagRestoreTest, ALongHeaderOfTheIndexStaysLong) {
    Film film;
    film.index = largeBox;
    film.tables = stcoBox({0});
    const auto end = static_cast<std::uint32_t>(film.moovEnd());
    film.tables = stcoBox({end});
    after_ = film.bytes();
    film.tables = stcoBox({end + 100});
    film.userData = udtaBox({title(110, 'O')});
    EXPECT_EQ(restored(), film.bytes());
}

TEST_F(TagRestoreTest, LongHeadersAroundTheBlockGrowWithIt) {
    const auto around = [](const Bytes& item) {
        return largeBox("udta", largeBox("meta", joined({Bytes(4), ilstBox({item})})));
    };
    Film film;
    film.userData = around(title(10));
    after_ = film.bytes();
    film.userData = around(title(110, 'O'));
    EXPECT_EQ(restored(), film.bytes());
}

TEST_F(TagRestoreTest, AQuickTimeTagBlockHasNoVersionAheadOfIt) {
    const auto around = [](const Bytes& item) {
        return box("udta", {box("meta", {hdlrBox("mdir"), ilstBox({item})})});
    };
    Film film;
    film.userData = around(title(10));
    after_ = film.bytes();
    film.userData = around(title(110, 'O'));
    EXPECT_EQ(restored(), film.bytes());
}

TEST_F(TagRestoreTest, SizesThatRunToTheEndStayOpen) {
    const auto open = [](Bytes bytes) { return patched(std::move(bytes), 0, be32(0)); };
    const auto around = [&](const Bytes& ilst) {
        return open(box("udta", {open(box("meta", {Bytes(4), ilst}))}));
    };
    Film film;
    film.userData = around(open(ilstBox({title(10)})));
    after_ = film.bytes();
    film.userData = around(open(ilstBox({title(110, 'O')})));
    before_ = film.bytes();
    // The block itself gets a size: elsewhere it needn't be the last.
    film.userData = around(ilstBox({title(110, 'O')}));
    EXPECT_EQ(restored(), film.bytes());
}

TEST_F(TagRestoreTest, ABlockWithALongHeaderGoesOverAsItIs) {
    Film film;
    film.userData = box("udta", {box("meta", {Bytes(4), largeBox("ilst", title(110, 'O'))})});
    before_ = film.bytes();
    film.userData = box("udta", {box("meta", {Bytes(4), ilstBox({title(10)})})});
    after_ = film.bytes();
    EXPECT_EQ(restored(), before_);
}

TEST_F(TagRestoreTest, AnIndexThatDoesNotFitItsFileIsLeftAlone) {
    after_ = Film().bytes();
    after_.resize(Film().moovEnd() - 1);
    expectNothingDone();
}

TEST_F(TagRestoreTest, AFileWithoutAnIndexIsAFailure) {
    after_ = ftypBox();
    EXPECT_EQ(failure(), "no-moov");
}

TEST_F(TagRestoreTest, ATableThatClaimsMoreThanItsBoxHoldsIsRefused) {
    Film film;
    const Bytes count = be32(3);
    const auto claim = [&](Bytes table, std::size_t at) {
        film.tables = patched(std::move(table), at, count);
        after_ = film.bytes();
        EXPECT_EQ(failure(), "bad chunk offset table");
        EXPECT_FALSE(fs::exists(output_));
    };
    claim(stcoBox({1, 2}), 12);
    claim(co64Box({1, 2}), 12);
    claim(fullBox("saio", 0, 0, joined({be32(0), be32(1)})), 12);
    film.tables = patched(stcoBox({1}), 12, be32(0xFFFFFFFF));
    after_ = film.bytes();
    EXPECT_EQ(failure(), "bad chunk offset table");
    film.tables = box("stco", Bytes(6));
    after_ = film.bytes();
    EXPECT_EQ(failure(), "bad chunk offset table");
}

TEST_F(TagRestoreTest, AnOffsetThatWouldPass4GBIsRefused) {
    Film film;
    film.tables = stcoBox({0xFFFFFFFF - 99});
    after_ = film.bytes();
    EXPECT_EQ(failure(), "chunk offset would exceed 4 GB");
    film.tables = stcoBox({0xFFFFFFFF - 100});
    after_ = film.bytes();
    EXPECT_THAT(offsets(restored()), ElementsAre(0xFFFFFFFF));
}

TEST_F(TagRestoreTest, AWideOffsetThatWouldWrapIsRefused) {
    Film film;
    film.tables = co64Box({~std::uint64_t{0} - 99});
    after_ = film.bytes();
    EXPECT_EQ(failure(), "bad chunk offset table");
}

TEST_F(TagRestoreTest, ARebuiltFileThatCannotBeOpenedIsToldSo) {
    // Its index and its top level are read before.
    const Sys::Fault fault(Sys::Call::Open, EACCES, 3, false, rebuilt_);
    EXPECT_EQ(failure(), "cannot open rebuilt file: Permission denied");
    EXPECT_FALSE(fs::exists(output_));
}

TEST_F(TagRestoreTest, AnOutputThatIsThereIsNeverReplaced) {
    original_ = folder_.write("original.mp4", before_);
    folder_.write("rebuilt.mp4", after_);
    folder_.write("output.mp4", "mine");
    try {
        TagRestore::restore(original_, rebuilt_, output_, control_);
        FAIL() << "no failure";
    } catch (const MFError& error) {
        EXPECT_EQ(error.description(), "cannot create output.mp4: File exists");
    }
    EXPECT_EQ(textOf(readFile(output_)), "mine");
}

TEST_F(TagRestoreTest, AFileThatEndsEarlyIsAFailureOfReading) {
    const auto shorten = [&](double) { fs::resize_file(rebuilt_, Film().moovEnd()); };
    EXPECT_EQ(failure(shorten), "read failed while restoring tags");
}

TEST_F(TagRestoreTest, AReadThatFailsReadsTheSame) {
    std::optional<Sys::Fault> fault;
    const auto arm = [&](double) {
        if (!fault) fault.emplace(Sys::Call::Read, EIO, 1, true, rebuilt_);
    };
    EXPECT_EQ(failure(arm), "read failed while restoring tags");
}

TEST_F(TagRestoreTest, AWriteThatFailsTellsTheSystemsWords) {
    const Sys::Fault fault(Sys::Call::Write, ENOSPC);
    EXPECT_EQ(failure(), "write failed: No space left on device");
}

TEST_F(TagRestoreTest, AFlushThatFailsIsAFailureOfWriting) {
    const Sys::Fault fault(Sys::Call::Flush, EIO);
    EXPECT_EQ(failure(), "write failed: Input/output error");
}

TEST_F(TagRestoreTest, ShortReadsAndWritesMakeTheSameFile) {
    growBy(100);
    const Bytes wanted = restored();
    const Sys::ShortTransfers most(37);
    EXPECT_EQ(restored(), wanted);
}

TEST_F(TagRestoreTest, ProgressRisesToOne) {
    std::vector<double> steps;
    restore([&](double done) { steps.push_back(done); });
    EXPECT_TRUE(std::ranges::is_sorted(steps));
    EXPECT_GT(steps.front(), 0);
    EXPECT_EQ(steps.back(), 1);
}

TEST_F(TagRestoreTest, ACancelStopsBetweenTwoPieces) {
    EXPECT_THROW(restore([&](double) { control_.cancel(); }), CancelError);
}

class RealTagRestore : public testing::Test {
protected:
    static void SetUpTestSuite() {
        RealMovie movie;
        movie.soundTracks = 2;
        movie.indexFirst = true;
        movie.seconds = 1;
        movie.tags = {{"title", "A title of the original that is rather long"},
                      {"comment", "and a comment"}};
        makeMovie(folder() / "original.m4v", movie);
        movie.tags = {{"title", "Short"}};
        makeMovie(folder() / "rebuilt.m4v", movie);
    }
    static const TempFolder& folder() {
        static const TempFolder shared;
        return shared;
    }
};

TEST_F(RealTagRestore, ARealFilmPlaysAsBeforeWithTheOriginalsTags) {
    const TempFolder own;
    RunControl control;
    const fs::path rebuilt = folder() / "rebuilt.m4v";
    const fs::path output = own / "output.m4v";
    ASSERT_TRUE(TagRestore::restore(folder() / "original.m4v", rebuilt, output, control));
    EXPECT_EQ(packetHashes(output), packetHashes(rebuilt));
    EXPECT_EQ(probeValue(output, "format_tags=title"),
              "A title of the original that is rather long");
    for (int track = 0; track < 3; track++)
        EXPECT_EQ(samplesOf(readFile(output), track), samplesOf(readFile(rebuilt), track));
    EXPECT_FALSE(TagRestore::restore(folder() / "original.m4v", output, own / "2", control));
}

}  // namespace
}  // namespace marlet::test
