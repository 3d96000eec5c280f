#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "convert/quicktime_copy.h"
#include "foundation/syscalls.h"
#include "mp4/box.h"
#include "mp4/sound_layout.h"
#include "mp4/summary.h"
#include "support/box_builder.h"
#include "support/media.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using Status = WriteOutcome::Status;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// Refused although not a byte of disk space is to be had, before any stage.
void expectRefusal(const Bytes& mov, const std::string& message) {
    Copy film(mov);
    const Sys::Fault full(Sys::Call::Space, EIO, 1, true);
    const Sys::Fault noFolder(Sys::Call::MakeFolder, ENOSPC, 1, true);
    expectFailure(film, message);
    EXPECT_THAT(film.labels, IsEmpty());
}

/// Finds the box by its type and changes bytes of its payload.
Bytes changed(Bytes film, std::string_view type, std::size_t at, std::uint8_t mask) {
    const Bytes code = bytesOf(type);
    const auto found = std::search(film.begin(), film.end(), code.begin(), code.end());
    EXPECT_NE(found, film.end()) << type;
    *(found + 4 + static_cast<std::ptrdiff_t>(at)) ^= mask;
    return film;
}

// --- what is copied

TEST(QuickTimeCopy, CopiesAFilmAndTellsWhatItIs) {
    Copy film;
    const WriteOutcome outcome = film.run();
    ASSERT_EQ(outcome.status, Status::done) << outcome.message;
    const fs::path made = film.output() / "Movie.m4v";
    EXPECT_EQ(outcome.message, "New file Movie.m4v · every sample checked against the .mov");
    EXPECT_EQ(outcome.output, made);
    EXPECT_EQ(outcome.size, fs::file_size(made));
    EXPECT_FALSE(outcome.rebuilt);
    EXPECT_FALSE(outcome.before);
    EXPECT_EQ(outcome.after, measureInterleave(made));
    EXPECT_EQ(outcome.changes.front(), "converted to Movie.m4v");
    EXPECT_THAT(outcome.changes,
                Contains("track 2 (soun mp4a): sample description rewritten for MP4 (mp4a sample "
                         "entry header fields differ)"));
    EXPECT_THAT(film.labels, ElementsAre("Building the new file", "Writing details", "Verifying",
                                         "Saving the new file", "Done"));
    EXPECT_EQ(IlstEditor::currentIlst(made), film.request.atoms);
    EXPECT_EQ(packetHashes(made), packetHashes(film.request.source));
    EXPECT_TRUE(film.isUntouched());
}

TEST(QuickTimeCopy, AC3SoundWithH264PictureIsCopiedAndTheMessageSaysItWasChecked) {
    Copy film(withSound({"-c:a", "ac3", "-ac", "6"}));
    EXPECT_THAT(film.run().message, EndsWith(" · every sample checked against the .mov"));
    EXPECT_EQ(probeValue(film.output() / "Movie.m4v", "stream=codec_name"), "h264\nac3");
}

TEST(QuickTimeCopy, TagsOfTheSourceAreNotKept) {
    for (const char* flags : {"faststart", "use_metadata_tags"}) {
        Copy film(withSound({"-c:a", "aac", "-movflags", flags, "-metadata", "title=Old",
                             "-metadata", "artist=Somebody", "-metadata", "comment=Words"}));
        ASSERT_EQ(probeValue(film.request.source, "format_tags=title"), "Old");
        expectDone(film);
        const fs::path made = film.output() / "Movie.m4v";
        EXPECT_EQ(IlstEditor::currentIlst(made), film.request.atoms);
        EXPECT_EQ(probeValue(made, "format_tags=title"), "Charade");
        EXPECT_EQ(probeValue(made, "format_tags=artist,comment"), "");
    }
}

TEST(QuickTimeCopy, AnExtensionInCapitalsIsAQuickTimeFilmToo) {
    FilmConversion film("Movie.MOV", plainMOV());
    film.useOwnTools();
    expectDone(film);
}

TEST(QuickTimeCopy, APlanIsNotLookedAt) {
    Copy film;
    film.request.plan = ConvertPlanSnapshot{.video = 77};
    expectDone(film);
}

TEST(QuickTimeCopy, OnlyTheLinkIsNamedToTheToolAndNoTrackIsRenamed) {
    FilmConversion film("A: b #2.mov", plainMOV());
    film.useTool("exit 1");
    const std::string arguments = film.arguments();
    EXPECT_THAT(arguments, HasSubstr("/source.mov#1\n-add\n"));
    EXPECT_THAT(arguments, HasSubstr("/source.mov#2\n-inter\n500\n-moovpad\n"));
    EXPECT_THAT(arguments, StartsWith("-tmp\n"));
    EXPECT_THAT(arguments, HasSubstr("\n-new\n"));
    EXPECT_THAT(arguments, EndsWith("/built.mp4\n"));
    EXPECT_THAT(arguments, Not(HasSubstr("A: b")));
    EXPECT_THAT(arguments, Not(HasSubstr("name=")));
    const Bytes ilst = IlstEditor::ilstBox(film.request.atoms);
    EXPECT_THAT(arguments, HasSubstr("-moovpad\n" + std::to_string(ilst.size() + 4096) + "\n"));
}

/// The same boxes with chunk offsets of 64 bits.
Bytes withWideOffsets(ByteView boxes) {
    Bytes all;
    for (const Box& each : children(boxes, 0, static_cast<std::int64_t>(boxes.size()))) {
        const ByteView payload = slice(boxes, each.start, each.end);
        const std::array folders = {"moov", "trak", "mdia", "minf", "stbl"};
        if (std::ranges::find(folders, each.type) != folders.end()) {
            append(all, box(each.type, withWideOffsets(payload)));
        } else if (each.type == "stco") {
            std::vector<std::uint64_t> offsets;
            for (std::int64_t at = 8; at + 4 <= static_cast<std::int64_t>(payload.size()); at += 4)
                offsets.push_back(BigEndian::u32(payload, at));
            append(all, co64Box(offsets));
        } else {
            append(all, slice(boxes, each.boxStart, each.end));
        }
    }
    return all;
}

TEST(QuickTimeCopy, OffsetsAndMediaDataOf64BitsAreRead) {
    // QuickTime keeps eight bytes free ahead of its media data for a size of that length.
    Bytes film = plainMOV();
    const Bytes code = bytesOf("wide");
    const auto wide = std::search(film.begin(), film.end(), code.begin(), code.end());
    ASSERT_NE(wide, film.end());
    const std::size_t at = static_cast<std::size_t>(wide - film.begin()) - 4;
    const std::uint64_t size = BigEndian::u32(film, static_cast<std::int64_t>(at) + 8) + 8;
    film = patched(film, at, joined({be32(1), bytesOf("mdat"), be64(size)}));
    film = withWideOffsets(film);
    Copy copy(film);
    expectDone(copy);
    EXPECT_EQ(packetHashes(copy.output() / "Movie.m4v"), packetHashes(copy.request.source));
}

TEST(QuickTimeCopy, TheWorkFolderStaysWhenItIsAskedFor) {
    Copy film;
    const ScopedEnv keep("MARLET_KEEP_WORK", "");
    EXPECT_EQ(film.run().status, Status::done);
    ASSERT_TRUE(film.hasWorkFolders());
    EXPECT_TRUE(fs::exists(film.workFolder() / "built.mp4"));
    EXPECT_EQ(fs::read_symlink(film.workFolder() / "source.mov"), film.request.source);
}

TEST(QuickTimeCopy, DatesAndLanguagesThatTheToolChangedArePutBack) {
    Copy film;
    const Bytes built = builtOf(plainMOV(), {1, 2});
    // The first media header: its creation date, and its language.
    film.toolMakes({{0, changed(changed(built, "mdhd", 5, 0x55), "mdhd", 20, 0x04)}});
    const WriteOutcome outcome = film.run();
    ASSERT_EQ(outcome.status, Status::done) << outcome.message;
    ASSERT_GE(outcome.changes.size(), 2U);
    EXPECT_THAT(outcome.changes[1], StartsWith("restored language ("));
    EXPECT_THAT(outcome.changes[1], EndsWith("), media dates"));
}

// --- what is refused

TEST(QuickTimeCopy, ATimecodeTrackIsRefusedBeforeDiskSpaceIsNeeded) {
    expectRefusal(withSound({"-c:a", "aac", "-timecode", "00:00:00:00"}),
                  "this .mov has extra tracks (timecode or similar); they can't be carried over "
                  "yet");
}

TEST(QuickTimeCopy, ATrackThatDoesNotSayItsKindIsAnExtraTrack) {
    expectRefusal(changed(plainMOV(), "hdlr", 8, 0x20),
                  "this .mov has extra tracks (timecode or similar); they can't be carried over "
                  "yet");
    // Its media box is called otherwise, so that the index tells nothing of it.
    const Bytes film = plainMOV();
    Bytes other = film;
    const Bytes code = bytesOf("mdia");
    const auto found = std::search(other.begin(), other.end(), code.begin(), code.end());
    *found = 'x';
    expectRefusal(other,
                  "this .mov has extra tracks (timecode or similar); they can't be carried over "
                  "yet");
}

TEST(QuickTimeCopy, AnotherPictureIsRefusedWithItsCode) {
    const std::string rest =
        ", not H.264 or HEVC: Apple TV can't play it, and Marlet never re-encodes video";
    expectRefusal(movFilm({"-map", "0", "-map", "1", "-c:v", "prores", "-c:a", "aac"}),
                  "the picture is apcn" + rest);
    expectRefusal(movFilm({"-map", "0", "-map", "1", "-c:v", "mpeg4", "-c:a", "aac"}),
                  "the picture is mp4v" + rest);
    expectRefusal(
        movFilm({"-map", "0", "-map", "1", "-c:v", "mjpeg", "-pix_fmt", "yuvj420p", "-c:a", "aac"}),
        "the picture is jpeg" + rest);
}

TEST(QuickTimeCopy, AnotherSoundIsRefusedWithItsCode) {
    const std::string rest = ": only AAC, AC3 and E-AC3 are copied from a .mov";
    expectRefusal(withSound({"-c:a", "pcm_s16le"}), "the sound is sowt" + rest);
    expectRefusal(withSound({"-c:a", "pcm_s24be"}), "the sound is in24" + rest);
    expectRefusal(withSound({"-c:a", "pcm_s24le", "-ar", "96000"}), "the sound is lpcm" + rest);
    expectRefusal(withSound({"-c:a", "alac"}), "the sound is alac" + rest);
    // FFmpeg keeps Opus out of QuickTime; its entry would be called so.
    Bytes opus = plainMOV();
    const Bytes code = bytesOf("mp4a");
    const Bytes name = bytesOf("Opus");
    for (auto at = opus.begin();
         (at = std::search(at, opus.end(), code.begin(), code.end())) != opus.end();)
        at = std::copy(name.begin(), name.end(), at);
    expectRefusal(opus, "the sound is Opus" + rest);
}

TEST(QuickTimeCopy, ExtraTracksAreToldBeforeThePictureAndThePictureBeforeTheSound) {
    expectRefusal(movFilm({"-map", "0", "-map", "1", "-c:v", "prores", "-c:a", "pcm_s16le",
                           "-timecode", "00:00:00:00"}),
                  "this .mov has extra tracks (timecode or similar); they can't be carried over "
                  "yet");
    expectRefusal(movFilm({"-map", "0", "-map", "1", "-c:v", "prores", "-c:a", "pcm_s16le"}),
                  "the picture is apcn, not H.264 or HEVC: Apple TV can't play it, and Marlet "
                  "never re-encodes video");
}

TEST(QuickTimeCopy, ASecondSoundTrackIsLookedAtToo) {
    expectRefusal(movFilm(avc({"-map", "0", "-map", "1", "-map", "2", "-c:a:0", "aac", "-c:a:1",
                               "pcm_s16le"})),
                  "the sound is sowt: only AAC, AC3 and E-AC3 are copied from a .mov");
}

TEST(QuickTimeCopy, AnIndexWithoutTracksIsRefused) {
    Bytes film = ftypBox();
    append(film, box("moov", {mvhdBox(1000, 1000)}));
    expectRefusal(film, "this .mov has no picture or sound that could be copied");
}

TEST(QuickTimeCopy, WithoutTheToolItSaysSo) {
    FilmConversion film("Movie.mov", plainMOV());
    expectFailure(film, "the media tool (MP4Box) is missing from this copy of Marlet");
}

TEST(QuickTimeCopy, NothingGoesIntoALockedMediaLibrary) {
    Copy film;
    film.request.outputDir = film.output() / "Media Library";
    expectFailure(film,
                  "This file is in your Media Library and “Allow changes to my Media Library” is "
                  "off in Settings");
}

TEST(QuickTimeCopy, ASourceThatIsNotThereCannotBeRead) {
    Copy film;
    film.request.source = film.beside("none.mov");
    EXPECT_EQ(film.run().message, "the original can't be read");
    EXPECT_FALSE(film.hasWorkFolders());
}

TEST(QuickTimeCopy, WhatIsNoQuickTimeFilmFails) {
    Copy film(bytesOf("not much of a film at all"));
    const WriteOutcome outcome = film.run();
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_FALSE(outcome.message.empty());
    EXPECT_TRUE(film.isUntouched());
    EXPECT_THAT(film.labels, IsEmpty());
}

TEST(QuickTimeCopy, AFilmInFragmentsEndsInASentence) {
    Copy film(withSound({"-c:a", "aac", "-movflags", "frag_keyframe+empty_moov"}));
    const WriteOutcome outcome = film.run();
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_THAT(outcome.message, HasSubstr("fragment"));
    EXPECT_THAT(film.delivered(), IsEmpty());
    EXPECT_TRUE(film.isUntouched());
}

// --- room

TEST(QuickTimeCopy, AFullWorkDiskIsTold) {
    Copy film;
    const Sys::Fault full(Sys::Call::Space, EIO, 1);
    expectFailure(film, "Not enough free space on the internal disk for the temporary files.");
}

TEST(QuickTimeCopy, AFullOutputFolderIsTold) {
    Copy film;
    const Sys::Fault full(Sys::Call::Space, EIO, 2);
    expectFailure(film, "Not enough free space in the output folder.");
}

// --- what the tool makes

TEST(QuickTimeCopy, AToolThatMakesNothingFails) {
    Copy film;
    film.useTool("exit 0");
    expectFailure(film, "MP4Box produced no output");
    film.useTool(": > \"$out\"");
    expectFailure(film, "MP4Box produced no output");
}

TEST(QuickTimeCopy, AToolThatFailsIsTold) {
    Copy film;
    film.useTool("echo oh no; exit 3");
    expectFailure(film, "MP4Box failed (exit 3): oh no");
}

TEST(QuickTimeCopy, DetailsThatDoNotComeBackAsTheyWereAreNotSaved) {
    Copy film;
    film.request.atoms[0].name = "©xyz";  // its bytes say ©nam
    expectFailure(film, "the details were not written exactly; nothing was saved");
}

TEST(QuickTimeCopy, OneOtherByteInASampleIsNotSaved) {
    Copy film;
    Bytes built = builtOf(plainMOV(), {1, 2});
    built[built.size() - 100] ^= 0xFF;
    film.toolMakes({{0, built}});
    const WriteOutcome outcome = film.run();
    EXPECT_THAT(outcome.message, StartsWith("verification failed: track "));
    EXPECT_THAT(outcome.message, EndsWith("): sample data differs"));
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_THAT(film.delivered(), IsEmpty());
    EXPECT_TRUE(film.isUntouched());
}

TEST(QuickTimeCopy, ADecoderThatWouldBeConfiguredOtherwiseIsNotSaved) {
    const Bytes built = builtOf(plainMOV(), {1, 2});
    Copy film;
    film.toolMakes({{0, changed(built, "avcC", 10, 0x01)}});  // in the first parameter set
    expectFailure(film,
                  "verification failed: track 1 (vide avc1): codec configuration: avc1: box 'avcC' "
                  "configures another decoder");
    film.toolMakes({{0, built}});
    expectDone(film);
    Copy lost;
    lost.toolMakes({{0, changed(built, "esds", static_cast<std::size_t>(-4), 0x20)}});
    expectFailure(lost,
                  "verification failed: track 2 (soun mp4a): codec configuration: mp4a: box 'esds' "
                  "missing in rebuilt file");
}

TEST(QuickTimeCopy, ATrackThatIsMissingIsNotSaved) {
    Copy film;
    film.toolMakes({{0, builtOf(plainMOV(), {1})}});
    expectFailure(film, "verification failed: track count differs (2 vs 1)");
}

TEST(QuickTimeCopy, AllThatDiffersIsTold) {
    Copy film;
    film.toolMakes({{0, builtOf(plainMOV(), {2, 1})}});
    const std::string message = film.run().message;
    EXPECT_THAT(message, StartsWith("verification failed: track 1 (vide avc1): type differs (soun);"
                                    " track 1 (vide avc1): codec differs (mp4a); "));
    EXPECT_TRUE(film.isUntouched());
}

TEST(QuickTimeCopy, SoundInLongStretchesIsNotSaved) {
    Copy film;
    film.toolMakes({{0, builtOf(plainMOV(), {1, 2}, 1600)}});
    const std::string message = film.run().message;
    EXPECT_THAT(message, StartsWith("verification failed: rebuilt file still measures 1."));
    EXPECT_THAT(message, EndsWith(" s (limit 1.0 s)"));
    EXPECT_THAT(film.delivered(), IsEmpty());
}

TEST(QuickTimeCopy, HeadersThatCannotBePutBackEndTheRun) {
    Copy film;
    film.toolMakes({{0, changed(builtOf(plainMOV(), {1, 2}), "mdhd", 5, 0x55)}});
    std::optional<Sys::Fault> readOnly;
    film.at("Writing details", [&] {
        readOnly.emplace(Sys::Call::Flush, EIO, 2, true, film.workFolder() / "built.mp4");
    });
    const WriteOutcome outcome = film.run();
    EXPECT_EQ(outcome.message, "could not restore header fields: Input/output error");
    EXPECT_THAT(film.delivered(), IsEmpty());
}

TEST(QuickTimeCopy, AProofThatCannotBeReadRefuses) {
    Copy film;
    film.at("Verifying", [&] { writeFile(film.workFolder() / "built.mp4", bytesOf("gone")); });
    const WriteOutcome outcome = film.run();
    EXPECT_EQ(outcome.status, Status::failed);
    EXPECT_THAT(outcome.message, StartsWith("verification failed: "));
    EXPECT_GT(outcome.message.size(), std::string("verification failed: ").size());
    EXPECT_THAT(film.delivered(), IsEmpty());
    EXPECT_TRUE(film.isUntouched());
}

}  // namespace
}  // namespace marlet::test
