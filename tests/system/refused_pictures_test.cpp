// Pictures that Apple TV doesn't play are told in a sentence, and nothing is made of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/box_builder.h"
#include "support/media.h"
#include "support/mkv_builder.h"
#include "system/conversion_run.h"

namespace marlet::test {
namespace {

/// How a film is made, and why it isn't taken.
struct Refused {
    std::string name;
    std::vector<std::string> encoder;  ///< arguments of FFmpeg; none: made by hand
    std::string reason;
};

std::vector<Refused> refusedFilms() {
    const std::string never = ": Apple TV can't play it, and Marlet never re-encodes video";
    const std::string old = "an old video format (Xvid, DivX or VC-1)" + never;
    const std::string wide264 = "H.264 4:2:2 or 4:4:4: Apple TV can't play it";
    const std::string deep264 = "10-bit H.264 (Hi10P): Apple TV can't play it";
    const std::string wide265 = "HEVC 4:2:2 or 4:4:4: Apple TV can't play it";
    const std::vector<std::string> vp9 = {"libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8"};
    const auto x264 = [](const std::string& pixels) {
        return std::vector<std::string>{"libx264", "-preset", "ultrafast", "-pix_fmt", pixels};
    };
    const auto x265 = [](const std::string& pixels) {
        return std::vector<std::string>{
            "libx265",  "-preset", "ultrafast", "-x265-params", "log-level=none:pools=1",
            "-pix_fmt", pixels};
    };
    return {
        {"VP9", vp9, "VP9" + never},
        {"VP8", {"libvpx", "-deadline", "realtime", "-cpu-used", "8"}, "VP8" + never},
        {"AV1", {"libaom-av1", "-cpu-used", "8", "-usage", "realtime"}, "AV1" + never},
        {"MPEG2",
         {"mpeg2video"},
         "MPEG-2 video: not an Apple TV format, and Marlet never re-encodes video"},
        {"MPEG4",
         {"mpeg4"},
         "V_MPEG4/ISO/ASP: not an Apple TV format, and Marlet never re-encodes video"},
        {"VC1", {}, old},
        {"WindowsMedia", {"wmv2"}, old},
        {"H264Of10Bits", x264("yuv420p10le"), deep264},
        {"H264Of422", x264("yuv422p"), wide264},
        {"H264Of444", x264("yuv444p"), wide264},
        {"H264Of422And10Bits", x264("yuv422p10le"), deep264},
        {"HEVCOf422", x265("yuv422p10le"), wide265},
        {"HEVCOf444", x265("yuv444p"), wide265},
        {"HEVCWithoutColour", x265("gray"), wide265},
    };
}

/// VC-1 as Matroska has it: a BITMAPINFOHEADER in front of its sequence header, and frames that
/// nobody decodes.
Bytes vc1() {
    const auto little32 = [](std::uint32_t value) {
        Bytes bytes = be32(value);
        return Bytes(bytes.rbegin(), bytes.rend());
    };
    const Bytes sequence = {0, 0, 0, 1, 0x0F, 0xCA};
    const auto length = static_cast<std::uint32_t>(40 + sequence.size());
    const Bytes format =
        joined({little32(length), little32(64), little32(36), Bytes{1, 0, 24, 0}, bytesOf("WVC1"),
                little32(0), little32(0), little32(0), little32(0), little32(0), sequence});
    const Bytes entry =
        mkv::entry(1, 1, "V_MS/VFW/FOURCC",
                   {mkv::element(0x63A2, format),
                    mkv::element(0xE0, {mkv::number(0xB0, 64), mkv::number(0xBA, 36)})});
    std::vector<Bytes> blocks;
    for (std::int16_t ms = 0; ms < 1000; ms = static_cast<std::int16_t>(ms + 40))
        blocks.push_back(mkv::simpleBlock(1, ms, viewOf("a frame")));
    return joined({mkv::header(), mkv::segment({mkv::info(), mkv::tracks({entry}),
                                                mkv::cluster(0, {joined(blocks)})})});
}

class RefusedPicture : public testing::TestWithParam<Refused> {
protected:
    ConversionRun film_{Bundle::Tools::own};
};

TEST_P(RefusedPicture, IsNotAddedForItsReason) {
    const Refused& film = GetParam();
    if (film.encoder.empty()) {
        writeFile(film_.source(), vc1());
    } else {
        std::vector<std::string> arguments = {"-f", "lavfi", "-i",
                                              "testsrc=size=64x64:rate=25:duration=0.4", "-c:v"};
        arguments.insert(arguments.end(), film.encoder.begin(), film.encoder.end());
        arguments.push_back(film_.source().string());
        ffmpeg(arguments);
    }
    const auto result = film_.convert();
    EXPECT_EQ(result.lines("NOTICE "),
              std::vector<std::string>{"NOTICE Not added: Charade (1963).mkv: " + film.reason})
        << result.output;
    EXPECT_TRUE(result.lines("RESULT ").empty()) << result.output;
    EXPECT_THAT(film_.delivered(), testing::IsEmpty());
    film_.expectUntouched();
}

INSTANTIATE_TEST_SUITE_P(System, RefusedPicture, testing::ValuesIn(refusedFilms()),
                         [](const auto& film) { return film.param.name; });

}  // namespace
}  // namespace marlet::test
