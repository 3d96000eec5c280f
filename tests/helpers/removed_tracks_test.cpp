// -rem: a track goes, and what others say of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "helpers/laid_out.h"
#include "support/box_reader.h"

namespace marlet::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The film with another box in each `trak`, at its end; the media comes first, so that no offset
/// changes.
Bytes withInTrak(Movie movie, const std::vector<Bytes>& extra) {
    movie.index = Movie::Index::Last;
    const Bytes file = buildMovie(movie);
    const ByteView moov = payloadOf(file, "moov");
    Bytes children;
    std::size_t track = 0;
    for (ByteView rest = moov; !rest.empty();) {
        const std::uint32_t size = BigEndian::u32(rest, 0);
        Bytes child(rest.begin(), rest.begin() + size);
        if (BigEndian::fourCC(child, 4) == "trak")
            child = box("trak", joined({Bytes(child.begin() + 8, child.end()), extra[track++]}));
        append(children, child);
        rest = rest.subspan(size);
    }
    const auto front = static_cast<std::ptrdiff_t>(file.size() - moov.size() - 8);
    return joined({Bytes(file.begin(), file.begin() + front), box("moov", children)});
}

Movie threeTracks() {
    Movie movie;
    movie.tracks = {evenTrack("vide", 100, 30, 40), evenTrack("soun", 200, 20, 20),
                    evenTrack("soun", 400, 10, 20)};
    return movie;
}

Bytes references(std::string_view kind, const std::vector<std::uint32_t>& ids) {
    Bytes content;
    for (const std::uint32_t id : ids) append(content, be32(id));
    return box(kind, content);
}

std::uint32_t movieDuration(ByteView file) {
    return BigEndian::u32(payloadOf(payloadOf(file, "moov"), "mvhd"), 16);
}

std::string text(ByteView bytes) {
    return textOf(bytes);
}

}  // namespace

TEST(RemovedTracks, GoWithTheirMedia) {
    const Bytes file = buildMovie(threeTracks());
    const Bytes result = laidOut(file, {.removedTracks = {2}});
    EXPECT_EQ(countOf(payloadOf(result, "moov"), "trak"), 2);
    EXPECT_EQ(samplesOf(result, 0), samplesOf(file, 0));
    EXPECT_EQ(samplesOf(result, 1), samplesOf(file, 2));
    EXPECT_EQ(
        BigEndian::u32(payloadOf(payloadOf(payloadOf(result, "moov"), "trak", 1), "tkhd"), 12), 3U)
        << "IDs stay";
}

TEST(RemovedTracks, AreTakenOutOfTheReferencesOfOthers) {
    const Bytes file = withInTrak(
        threeTracks(), {box("tref", {references("chap", {2, 3}), references("hint", {2})}), Bytes(),
                        box("tref", {references("sync", {2})})});
    const Bytes result = laidOut(file, {.removedTracks = {2}});
    const ByteView moov = payloadOf(result, "moov");
    EXPECT_EQ(text(payloadOf(payloadOf(moov, "trak", 0), "tref")), text(references("chap", {3})));
    EXPECT_FALSE(hasChild(payloadOf(moov, "trak", 1), "tref"));
    EXPECT_EQ(samplesOf(result, 0), samplesOf(file, 0));
    EXPECT_EQ(samplesOf(result, 1), samplesOf(file, 2));
}

TEST(RemovedTracks, LeaveReferencesToOtherTracksAsTheyAre) {
    const Bytes tref = box("tref", {references("chap", {3}), box("cdsc", ByteView())});
    const Bytes file = withInTrak(threeTracks(), {tref, Bytes(), Bytes()});
    const Bytes result = laidOut(file, {.removedTracks = {2}});
    EXPECT_EQ(text(payloadOf(payloadOf(payloadOf(result, "moov"), "trak"), "tref")),
              text(ByteView(tref).subspan(8)));
    EXPECT_THAT(changedBoxes(file, laidOut(file)), IsEmpty());
}

TEST(RemovedTracks, ShortenTheMovieWhenTheyWereItsLongest) {
    const Bytes file = buildMovie(threeTracks());
    ASSERT_EQ(movieDuration(file), 8000U);
    EXPECT_EQ(movieDuration(laidOut(file, {.removedTracks = {3}})), 4000U);
    EXPECT_EQ(movieDuration(laidOut(file, {.removedTracks = {2}})), 8000U);
}

TEST(RemovedTracks, ShortenTheMovieToWhatTheEditListsShow) {
    Movie movie = threeTracks();
    movie.tracks[0].edits = {{1500, -1}, {4000, 0}};
    movie.tracks[2].edits = {{8000, 0}};
    EXPECT_EQ(movieDuration(laidOut(buildMovie(movie), {.removedTracks = {3}})), 5500U);
}

TEST(RemovedTracks, NeverMakeTheMovieLonger) {
    Bytes file = buildMovie(threeTracks());
    const ByteView mvhd = payloadOf(payloadOf(file, "moov"), "mvhd");
    file = patched(file, static_cast<std::size_t>(mvhd.data() - file.data()) + 16, be32(1234));
    EXPECT_EQ(movieDuration(laidOut(file, {.removedTracks = {3}})), 1234U);
}

TEST(RemovedTracks, MayBeBrokenThemselves) {
    Bytes file = buildMovie(threeTracks());
    file = patched(file, chunksOf(file, 1)[5].entryAt, be32(0xFFFFFFF0));
    const Bytes result = laidOut(file, {.removedTracks = {2}});
    EXPECT_EQ(samplesOf(result, 0), samplesOf(file, 0));
}

TEST(RemovedTracks, ThatTheFileLacksOrHasTwiceAreRefused) {
    Bytes file = buildMovie(threeTracks());
    EXPECT_EQ(refusal(file, {.removedTracks = {2, 9}}), "the file has no track with the number 9");
    EXPECT_EQ(refusal(file, {.removedTracks = {1, 2, 3}}), "the file has no track that could stay");
    const ByteView tkhd = payloadOf(payloadOf(payloadOf(file, "moov"), "trak", 2), "tkhd");
    file = patched(file, static_cast<std::size_t>(tkhd.data() - file.data()) + 12, be32(2));
    EXPECT_EQ(refusal(file, {.removedTracks = {2}}), "two tracks of the file have the number 2");
}

}  // namespace marlet::test
