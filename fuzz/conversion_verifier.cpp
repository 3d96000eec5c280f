// A source and a new film of any bytes: the proof ends in a report or in a sentence, and every step
// of it stands any bytes.
//
// The input: a byte that chooses what the tracks should be, four bytes that divide the rest into
// the source and the new film.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "foundation/errors.h"
#include "mp4/track_parser.h"
#include "verify/conversion_parts.h"

namespace {

using namespace marlet;
using ConvertVerify::Expected;

void check(bool holds) {
    if (!holds) std::abort();
}

class MemoryFile {
public:
    std::filesystem::path write(ByteView bytes) const {
        check(ftruncate(fd_, 0) == 0);
        check(pwrite(fd_, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
        return "/proc/self/fd/" + std::to_string(fd_);
    }

private:
    int fd_ = memfd_create("film", MFD_CLOEXEC);
};

std::vector<Expected> expectations(std::uint8_t choice) {
    const auto second = static_cast<Expected::Kind>(choice % 5);
    std::vector<Expected> expected{{.kind = Expected::Kind::video, .source = 1},
                                   {.kind = second, .source = 2, .language = "eng"},
                                   {.kind = Expected::Kind::sub, .forced = true}};
    expected.resize(1 + choice / 5 % 3);
    return expected;
}

void tryParts(ByteView bytes) {
    for (const ConvertVerify::TrakDetail& detail : ConvertVerify::trakDetails(bytes))
        check(detail.realEdits >= 0);
    check(movieTimescale(bytes) > 0);
    for (const std::size_t length : {0, 1, 4})
        for (const char* codec : {"V_MPEG4/ISO/AVC", "V_MPEGH/ISO/HEVC"})
            ConvertVerify::frameDigest(bytes, ConvertVerify::nalFilter(codec), length);
    MKVTrack track;
    track.codecID = "V_MPEGH/ISO/HEVC";
    track.codecPrivate.assign(bytes.begin(), bytes.end());
    check(ConvertVerify::lengthSize(track) <= 4);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView input(data, size);
    if (size < 5) return 0;
    const ByteView films = input.subspan(5);
    const std::size_t sourceSize = std::min<std::size_t>(BigEndian::u32(input, 1), films.size());
    static const MemoryFile sourceFile;
    static const MemoryFile builtFile;
    tryParts(films.subspan(sourceSize));

    const auto mkv = MKVFile::open(sourceFile.write(films.first(sourceSize)));
    if (!mkv) return 0;
    check(std::isfinite(ConvertVerify::mkvSpan(*mkv, 1)));
    ConvertPlanSnapshot plan;
    plan.hasChapters = true;
    RunControl control;
    try {
        const auto report = ConvertVerify::run(
            *mkv, plan, builtFile.write(films.subspan(sourceSize)), expectations(data[0]), control);
        for (const std::string& reason : report.reasons) check(!reason.empty());
    } catch (const MFError& failure) {
        check(!failure.description().empty());
    }
    return 0;
}
