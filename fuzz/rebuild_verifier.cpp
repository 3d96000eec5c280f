// Two films of any bytes: the proof ends in a report or in a sentence, and a film is its own equal.
//
// The input: four bytes that divide the rest into the two films. Where nothing is left for the
// second one, the first one is compared with itself.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>

#include "foundation/errors.h"
#include "verify/rebuild_verifier.h"

namespace {

using namespace marlet;

/// A film that lies in no folder; one for the whole run, written anew for every input.
class MemoryFile {
public:
    std::filesystem::path write(ByteView bytes) const {
        if (ftruncate(fd_, static_cast<off_t>(bytes.size())) != 0) std::abort();
        if (pwrite(fd_, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
            std::abort();
        return "/proc/self/fd/" + std::to_string(fd_);
    }

private:
    int fd_ = memfd_create("film", MFD_CLOEXEC);
};

/// What can't be proved even of a film and itself.
constexpr std::array<std::string_view, 2> beyondProof = {
    "the file is in fragments, whose samples can't be compared",
    ": samples have data beside them that can't be compared"};

bool isBeyondProof(const std::string& reason) {
    return std::ranges::any_of(
        beyondProof, [&](std::string_view sentence) { return reason.ends_with(sentence); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView input(data, size);
    if (size < 4) return 0;
    const ByteView films = input.subspan(4);
    const std::size_t firstSize = std::min<std::size_t>(BigEndian::u32(input, 0), films.size());
    const ByteView first = films.first(firstSize);
    const ByteView second = films.subspan(firstSize);

    static const MemoryFile original;
    static const MemoryFile rebuilt;
    RebuildTerms terms;
    terms.maxAfter = std::numeric_limits<double>::max();
    RunControl control;
    try {
        const VerifyReport report = verifyRebuild(
            original.write(first), rebuilt.write(second.empty() ? first : second), terms, control);
        if (second.empty() && !std::ranges::all_of(report.reasons, isBeyondProof)) std::abort();
    } catch (const MFError&) {
    }
    return 0;
}
