// Colours out of the parameter sets of real encoders.

#include "helpers/stream_colour.h"

#include <gtest/gtest.h>

#include "helpers/sample_entries.h"
#include "support/avc_builder.h"
#include "support/box_builder.h"
#include "support/box_reader.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

using Range = PictureColour::Range;

/// The first track of what FFmpeg's encoder makes of a few pictures.
MKVTrack encoded(const std::string& encoder, const std::string& parameters,
                 const std::string& pixels = "yuv420p", const std::string& size = "64x64") {
    const TempFolder folder;
    const std::string film = (folder / "film.mkv").string();
    const bool isAVC = encoder == "libx264";
    ffmpeg({"-f", "lavfi", "-i", "testsrc2=rate=25:duration=0.4:size=" + size, "-c:v", encoder,
            "-preset", "ultrafast", "-pix_fmt", pixels, isAVC ? "-x264-params" : "-x265-params",
            (isAVC ? "threads=1:" : "log-level=none:pools=1:") + parameters, film});
    return MKVFile::open(film)->tracks().front();
}

void expectColour(const MKVTrack& track, int primaries, int transfer, int matrix, Range range) {
    const PictureColour colour = StreamColour::of(track);
    EXPECT_EQ(colour.primaries, primaries);
    EXPECT_EQ(colour.transfer, transfer);
    EXPECT_EQ(colour.matrix, matrix);
    EXPECT_EQ(colour.range, range);
}

constexpr const char* hdr = "colorprim=bt2020:transfer=smpte2084:colormatrix=bt2020nc";

TEST(StreamColour, IsToldByH264OfAnyMake) {
    for (const std::string& more :
         {std::string("bframes=3:ref=4"), std::string("tff=1"), std::string("cqm=jvt:8x8dct=1"),
          std::string("sar=64/45:nal-hrd=vbr:vbv-maxrate=900:vbv-bufsize=900"),
          std::string("cabac=0:keyint=1")})
        expectColour(encoded("libx264", std::string(hdr) + ":" + more), 9, 16, 9, Range::Limited);
    expectColour(encoded("libx264", hdr, "yuv420p", "62x46"), 9, 16, 9, Range::Limited);
}

TEST(StreamColour, IsToldByHEVCOfAnyMake) {
    for (const std::string& more :
         {std::string("bframes=4:ref=4"), std::string("temporal-layers=2"),
          std::string("scaling-list=default"), std::string("sar=3:overscan=show:amp=1:rect=1"),
          std::string("interlace=tff"), std::string("hrd=1:vbv-maxrate=900:vbv-bufsize=900")})
        expectColour(encoded("libx265", std::string(hdr) + ":" + more), 9, 16, 9, Range::Limited);
    expectColour(encoded("libx265", hdr, "yuv420p10le", "62x46"), 9, 16, 9, Range::Limited);
}

TEST(StreamColour, HasTheFullRange) {
    expectColour(encoded("libx264", "colormatrix=smpte170m", "yuvj420p"), 2, 2, 6, Range::Full);
    expectColour(encoded("libx265", "range=full:colormatrix=bt709"), 2, 2, 1, Range::Full);
}

TEST(StreamColour, OfASetThatTellsNoneIsNotTold) {
    EXPECT_EQ(StreamColour::of(encoded("libx264", "ref=1")), PictureColour());
    EXPECT_EQ(StreamColour::of(MKVTrack{}), PictureColour());
    MKVTrack other;
    other.codecID = "V_VP9";
    other.codecPrivate = Bytes(100, 0xFF);
    EXPECT_EQ(StreamColour::of(other), PictureColour());
}

TEST(StreamColour, OfACutOrBrokenSetIsNotToldOrWhatItSays) {
    for (const char* encoder : {"libx264", "libx265"}) {
        const MKVTrack whole = encoded(encoder, hdr);
        const PictureColour colour = StreamColour::of(whole);
        MKVTrack cut = whole;
        while (!cut.codecPrivate.empty()) {
            cut.codecPrivate.pop_back();
            const PictureColour found = StreamColour::of(cut);
            EXPECT_TRUE(found == colour || found == PictureColour()) << cut.codecPrivate.size();
        }
        // No value makes the reading endless.
        for (std::size_t at = 0; at < whole.codecPrivate.size(); at++) {
            for (const std::uint8_t value : {0x00, 0xFF, 0x55}) {
                MKVTrack broken = whole;
                broken.codecPrivate[at] = value;
                StreamColour::of(broken);
            }
        }
    }
}

TEST(StreamColour, StandsInTheEntryWhereTheContainerIsSilent) {
    MKVTrack track = encoded("libx264", hdr);
    track.picture = {};
    const auto fieldsOf = [](const MKVTrack& of) {
        constexpr std::size_t fixedFields = 8 + 78;
        const Bytes entry = SampleEntries::video(of);
        return textOf(payloadOf(ByteView(entry).subspan(fixedFields), "colr")).substr(4);
    };
    EXPECT_EQ(fieldsOf(track), std::string("\0\x09\0\x10\0\x09\0", 7));
    track.picture.colour.primaries = 1;
    EXPECT_EQ(fieldsOf(track), std::string("\0\x01\0\x10\0\x09\0", 7)) << "the container's word";
}

}  // namespace
}  // namespace marlet::test
