#include "convert/built_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "support/box_builder.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using Range = PictureColour::Range;

Bytes colr(const Bytes& fields) {
    return box("colr", joined({bytesOf("nclx"), fields}));
}

Bytes filmWith(const Bytes& colourBox, const std::string& header = "vmhd") {
    Movie movie;
    movie.tracks = {evenTrack("soun", 5, 10, 40), evenTrack("vide", 5, 10, 40)};
    movie.tracks[1].codec = "avc1";
    movie.tracks[1].entry = joined({Bytes(78), box("avcC", Bytes(7)), colourBox});
    movie.tracks[1].mediaInfo = {fullBox(header, 0, 1, Bytes(8))};
    return buildMovie(movie);
}

class BuiltPictureTest : public testing::Test {
protected:
    /// What the file is when these fields were in it.
    Bytes restored(const Bytes& film) {
        file_ = folder_.write("built.mp4", film);
        BuiltIndex index(file_);
        BuiltPicture::restore(index, source_);
        return readFile(file_);
    }
    TempFolder folder_;
    std::filesystem::path file_;
    MKVTrack source_;
    PictureColour& told_ = source_.picture.colour;
};

TEST_F(BuiltPictureTest, PicturesThatTellNothingAreNotRGB) {
    EXPECT_EQ(restored(filmWith(colr({0, 2, 0, 2, 0, 0, 0}))),
              filmWith(colr({0, 2, 0, 2, 0, 2, 0})));
}

TEST_F(BuiltPictureTest, WhatTheContainerTellsIsPutIn) {
    told_.primaries = 9;
    told_.transfer = 16;
    told_.matrix = 9;
    told_.range = Range::Full;
    EXPECT_EQ(restored(filmWith(colr({0, 2, 0, 2, 0, 0, 0}))),
              filmWith(colr({0, 9, 0, 16, 0, 9, 0x80})));
}

TEST_F(BuiltPictureTest, WhatTheStreamTellsStays) {
    told_.primaries = 9;
    told_.matrix = 9;
    told_.range = Range::Limited;
    EXPECT_EQ(restored(filmWith(colr({0, 1, 0, 2, 0, 1, 0x80}))),
              filmWith(colr({0, 1, 0, 2, 0, 1, 0x80})));
}

TEST_F(BuiltPictureTest, ASourceThatSaysRGBItselfIsNotBelieved) {
    told_.matrix = 0;
    EXPECT_EQ(restored(filmWith(colr({0, 2, 0, 2, 0, 0, 0}))),
              filmWith(colr({0, 2, 0, 2, 0, 2, 0})));
}

TEST_F(BuiltPictureTest, TheSourcesShapeOfPixelsIsPutInWithItsWidth) {
    source_.pixelWidth = 720;
    source_.pixelHeight = 576;
    const auto pasp = [](std::uint32_t width, std::uint32_t height) {
        return box("pasp", joined({be32(width), be32(height)}));
    };
    EXPECT_EQ(restored(filmWith(pasp(1, 1))), filmWith(pasp(1, 1))) << "not told";
    source_.picture.displayWidth = 1024;
    const Bytes before = filmWith(pasp(1, 1));
    const Bytes after = restored(before);
    const Bytes wanted = filmWith(pasp(64, 45));
    const auto widthAt = [](const Bytes& film) {  // of the second track
        const auto tkhd = bytesOf("tkhd");
        const auto first = std::search(film.begin(), film.end(), tkhd.begin(), tkhd.end());
        const auto second = std::search(first + 4, film.end(), tkhd.begin(), tkhd.end());
        return static_cast<std::size_t>(second - film.begin()) + 4 + 76;
    };
    EXPECT_EQ(after, patched(wanted, widthAt(wanted), joined({be32(1024 << 16), be32(576 << 16)})));
    EXPECT_EQ(restored(filmWith(pasp(128, 90))), filmWith(pasp(128, 90))) << "the same shape";
}

TEST_F(BuiltPictureTest, FilesWithoutSuchABoxStay) {
    told_.primaries = 9;
    source_.pixelWidth = source_.pixelHeight = 16;
    source_.picture.displayWidth = 20;
    for (const Bytes& film : {filmWith({}), filmWith(colr({0, 2, 0, 2})),
                              filmWith(box("colr", joined({bytesOf("prof"), Bytes(20)}))),
                              filmWith(colr({0, 2, 0, 2, 0, 0, 0}), "nmhd"), bytesOf("no film")})
        EXPECT_EQ(restored(film), film);
}

TEST_F(BuiltPictureTest, AFileThatCannotBeWrittenFails) {
    const Sys::Fault fault(Sys::Call::Open, EROFS, 2);  // the first opens for reading
    EXPECT_THROW(restored(filmWith(colr({0, 2, 0, 2, 0, 0, 0}))), MFError);
}

}  // namespace
}  // namespace marlet::test
