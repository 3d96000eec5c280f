// A Matroska file of any bytes is read or refused: every walk ends, no frame reaches beyond what
// its block claims, and what is read of a frame is what its track's encodings allow.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "matroska/mkv_file.h"

namespace {

using namespace marlet;

void check(bool holds) {
    if (!holds) std::abort();
}

int memoryFile(ByteView content) {
    static const int file = memfd_create("film", MFD_CLOEXEC);
    check(file >= 0 && ftruncate(file, 0) == 0);
    check(pwrite(file, content.data(), content.size(), 0) == static_cast<ssize_t>(content.size()));
    return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const int descriptor = memoryFile(ByteView(data, size));
    const auto file = MKVFile::open("/proc/self/fd/" + std::to_string(descriptor));
    if (!file) return 0;
    check(!file->tracks().empty());
    check(file->segmentStart() <= file->segmentEnd() && file->segmentEnd() <= size);

    std::int64_t frames = 0;
    file->forEachBlock({}, {}, [&](const MKVBlock& block) {
        const auto read = file->data(block);
        check(read.size() == block.frames.size());
        const bool encoded = file->track(block.track) != nullptr;
        for (std::size_t i = 0; i < read.size(); i++) {
            check(block.frames[i].size >= 0);
            const auto told = static_cast<std::size_t>(block.frames[i].size);
            check(encoded || read[i].size() <= told);
        }
        frames += static_cast<std::int64_t>(read.size());
        return true;
    });
    std::int64_t counted = 0;
    for (const auto& [track, stats] : file->blockStats()) counted += stats.count;
    check(counted == frames);
    return 0;
}
