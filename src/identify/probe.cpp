#include "identify/probe.h"

#include <exception>

#include "foundation/syscalls.h"
#include "identify/probe_movie.h"
#include "identify/scanner.h"
#include "mp4/box.h"
#include "mp4/sound_layout.h"
#include "mp4/summary.h"

namespace marlet::Probe {

namespace {

void readMatroska(const std::filesystem::path& file, ScannedFile& into) {
    auto info = EBML::read(file);
    if (!info) return;
    if (info->duration && *info->duration > 0) into.duration = info->duration;
    into.tracks = std::move(info->tracks);
    into.tags.title = std::move(info->title);
}

/// Absent when the index can't be trusted: the file can still be identified.
std::optional<double> soundLayout(ByteView moov) {
    try {
        return measure(parseSummary(moov, Detail::No));
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void readIndex(const std::filesystem::path& file, bool measured, ScannedFile& into) {
    const Bytes moov = loadMoov(file);
    readMovie(moov, into);
    if (measured) into.interleave = soundLayout(moov);
}

}  // namespace

ScannedFile read(const std::filesystem::path& file) {
    ScannedFile result;
    result.url = file;
    if (const auto attributes = Sys::stat(file); attributes && attributes->isRegular)
        result.size = static_cast<std::int64_t>(attributes->size);

    const std::string extension = Scanner::extensionOf(file);
    try {
        if (extension == "mkv")
            readMatroska(file, result);
        else
            readIndex(file, extension == "mp4" || extension == "m4v", result);
    } catch (const std::exception&) {
        // What can't be read is identified by its name alone.
    }
    return result;
}

std::string fourCC(std::uint32_t code) {
    Bytes bytes;
    BigEndian::put32(bytes, code);
    return latin1ToUtf8(bytes);
}

}  // namespace marlet::Probe
