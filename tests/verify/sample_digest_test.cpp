#include "verify/sample_digest.h"

#include <dirent.h>

#include <cerrno>
#include <numeric>
#include <thread>

#include "foundation/digest.h"
#include "foundation/syscalls.h"
#include "support/box_reader.h"
#include "verify/rebuild_test.h"

namespace marlet::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

class SampleDigests : public RebuildVerifier {
protected:
    std::vector<std::string> digestsOf(ByteView file) {
        const auto path = folder_.write("film.mp4", file);
        const Bytes moov = loadMoov(path);
        return sampleDigests(path, parseSummary(moov, path, Detail::Yes), control_, {});
    }
    static std::vector<std::string> naiveDigests(ByteView file, int tracks) {
        std::vector<std::string> digests;
        for (int i = 0; i < tracks; i++) digests.push_back(sha256Hex(joined(samplesOf(file, i))));
        return digests;
    }
    /// Every chunk of the sound pointed to another one's bytes, the last first.
    static Bytes backwards(Bytes file) {
        const auto chunks = chunksOf(file, 1);
        for (std::size_t i = 0; i < chunks.size(); i++)
            file = patched(file, chunks[i].entryAt,
                           be32(static_cast<std::uint32_t>(chunks[chunks.size() - 1 - i].offset)));
        return file;
    }
    static std::size_t openFiles() {
        std::size_t count = 0;
        DIR* folder = opendir("/proc/self/fd");
        while (readdir(folder) != nullptr) count++;
        closedir(folder);
        return count;
    }
    /// A film whose picture fills several pieces.
    static Movie largeFilm() {
        Movie movie = film();
        movie.tracks[0].sizes.assign(40, 600'000);
        return movie;
    }
};

TEST_F(SampleDigests, AreOfTheSamplesInTheirOrderWhereverTheyLie) {
    EXPECT_EQ(digestsOf(original_), naiveDigests(original_, 3));
    EXPECT_EQ(digestsOf(rebuilt_), naiveDigests(original_, 3));
    const Bytes turned = backwards(rebuilt_);
    EXPECT_EQ(digestsOf(turned), naiveDigests(turned, 3));
}

TEST_F(SampleDigests, OverlappingChunksAreReadAsTheyAreStated) {
    Bytes file = rebuilt_;
    const auto chunks = chunksOf(file, 0);
    // Two tracks, and two chunks of one track, over the same bytes.
    file = patched(file, chunksOf(file, 1).at(0).entryAt,
                   be32(static_cast<std::uint32_t>(chunks.at(3).offset + 7)));
    file = patched(file, chunks.at(5).entryAt,
                   be32(static_cast<std::uint32_t>(chunks.at(4).offset + 1)));
    EXPECT_EQ(digestsOf(file), naiveDigests(file, 3));
}

TEST_F(SampleDigests, LargeFilmsAreReadPieceByPieceOnBothSides) {
    const Bytes original = buildMovie(largeFilm());
    const Bytes rebuilt = buildMovie(interleaved(largeFilm()));
    std::size_t reports = 0;
    const auto job = std::this_thread::get_id();
    progress_ = [&](const std::string&, double) {
        reports++;
        EXPECT_EQ(std::this_thread::get_id(), job);
    };
    EXPECT_THAT(verify(original, rebuilt).reasons, IsEmpty());
    EXPECT_GT(reports, 3U);
    const std::size_t last = chunksOf(rebuilt, 0).at(39).offset + 599'999;
    EXPECT_THAT(verify(original, flipped(rebuilt, last)).reasons,
                ElementsAre("track 1 (vide avc1): sample data differs"));
}

TEST_F(SampleDigests, ShortReadsChangeNothing) {
    const Bytes original = buildMovie(largeFilm());
    const Sys::ShortTransfers shortReads(333'333);
    EXPECT_THAT(verify(original, buildMovie(interleaved(largeFilm()))).reasons, IsEmpty());
}

TEST_F(SampleDigests, AChunkPastTheEndOfTheFileIsAFailure) {
    const auto chunks = chunksOf(rebuilt_, 0);
    const Bytes beyond = patched(rebuilt_, chunks.back().entryAt,
                                 be32(static_cast<std::uint32_t>(rebuilt_.size() - 299)));
    EXPECT_EQ(failureOf(original_, beyond), "track data runs past end of file");
    const Bytes farBeyond = patched(rebuilt_, chunks.back().entryAt, be32(0xFFFFFFFF));
    EXPECT_EQ(failureOf(original_, farBeyond), "track data runs past end of file");
    EXPECT_EQ(failureOf(farBeyond, original_), "track data runs past end of file");
}

TEST_F(SampleDigests, ATruncatedFileIsAFailure) {
    Bytes cut = rebuilt_;
    cut.resize(cut.size() - 1);
    EXPECT_EQ(failureOf(original_, cut), "track data runs past end of file");
}

TEST_F(SampleDigests, TheLastByteOfTheFileStillCounts) {
    const Bytes atTheEnd = flipped(rebuilt_, rebuilt_.size() - 1);
    EXPECT_EQ(verify(original_, atTheEnd).reasons.size(), 1U);
}

TEST_F(SampleDigests, AFileThatShrinksMeanwhileEndsUnexpectedly) {
    const auto path = folder_.write("film.mp4", rebuilt_);
    const MP4Summary summary = parseSummary(loadMoov(path), path, Detail::Yes);
    Movie large = largeFilm();
    const auto growing = folder_.write("large.mp4", buildMovie(large));
    const MP4Summary largeSummary = parseSummary(loadMoov(growing), growing, Detail::Yes);
    try {
        sampleDigests(growing, largeSummary, control_,
                      [&](std::uint64_t) { std::filesystem::resize_file(growing, 9'000'000); });
        FAIL() << "no failure";
    } catch (const MFError& failure) {
        EXPECT_EQ(failure.description(), "unexpected end of file");
    }
}

TEST_F(SampleDigests, AFileThatCanNotBeOpenedOrReadIsAFailure) {
    const auto path = folder_.write("film.mp4", rebuilt_);
    const MP4Summary summary = parseSummary(loadMoov(path), path, Detail::Yes);
    const auto failure = [&](Sys::Call call, int error) -> std::string {
        const Sys::Fault fault(call, error, 1, true, path);
        try {
            sampleDigests(path, summary, control_, {});
        } catch (const MFError& problem) {
            return problem.description();
        }
        return "no failure";
    };
    EXPECT_THAT(failure(Sys::Call::Open, EACCES), StartsWith("cannot open film.mp4"));
    EXPECT_THAT(failure(Sys::Call::Read, EIO), StartsWith("read failed"));
    EXPECT_EQ(failureOf(original_, bytesOf("no film")), "no-moov");
    EXPECT_EQ(failureOf(bytesOf("no film"), original_), "no-moov");
}

TEST_F(SampleDigests, AReadBrokenByASignalIsRepeated) {
    const auto path = folder_.write("film.mp4", rebuilt_);
    const MP4Summary summary = parseSummary(loadMoov(path), path, Detail::Yes);
    const Sys::Fault fault(Sys::Call::Read, EINTR, 1, false, path);
    EXPECT_EQ(sampleDigests(path, summary, control_, {}), naiveDigests(rebuilt_, 3));
}

TEST_F(SampleDigests, TracksThatClaimFarMoreThanTheFileHoldsAreAFailure) {
    Movie movie = film();
    movie.tracks = {evenTrack("soun", 4000, 1000, 1)};
    movie.userData = {};
    Bytes file = buildMovie(movie);
    const auto chunks = chunksOf(file, 0);
    for (const StoredChunk& chunk : chunks)
        file = patched(std::move(file), chunk.entryAt,
                       be32(static_cast<std::uint32_t>(chunks[0].offset)));
    file.resize(chunks[0].offset + 1000);
    EXPECT_EQ(failureOf(file, file), "the tracks claim far more data than the file holds");
}

TEST_F(SampleDigests, CancelEndsTheRunOnBothSidesAndEveryFileIsClosed) {
    const std::size_t before = openFiles();
    for (const Movie& movie : {film(), largeFilm()}) {
        RunControl cancelled;
        cancelled.cancel();
        const auto original = folder_.write("original.mp4", buildMovie(movie));
        const auto rebuilt = folder_.write("rebuilt.mp4", buildMovie(interleaved(movie)));
        EXPECT_THROW(verifyRebuild(original, rebuilt, terms_, cancelled), CancelError);
    }
    EXPECT_EQ(openFiles(), before);
}

TEST_F(SampleDigests, TheFailureOfEitherSideIsToldAndEveryFileIsClosed) {
    const std::size_t before = openFiles();
    const Bytes original = buildMovie(largeFilm());
    const Bytes rebuilt = buildMovie(interleaved(largeFilm()));
    folder_.write("original.mp4", original);
    folder_.write("rebuilt.mp4", rebuilt);
    for (const char* name : {"original.mp4", "rebuilt.mp4"}) {
        // The index is read first; a later piece of the samples fails.
        const Sys::Fault fault(Sys::Call::Read, EIO, 7, true, folder_ / name);
        EXPECT_THAT(failureOf(original, rebuilt), EndsWith("Input/output error"));
    }
    EXPECT_EQ(openFiles(), before);
}

}  // namespace
}  // namespace marlet::test
