#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "matroska/mkv_file.h"
#include "support/media.h"

// Real Matroska files, made by FFmpeg and mkvmerge.
namespace marlet::test {

/// mkvmerge's file of these arguments, opened.
inline std::unique_ptr<MKVFile> merge(const std::filesystem::path& file,
                                      const std::vector<std::string>& arguments) {
    mkvmerge(file, arguments);
    return MKVFile::open(file);
}

/// An EBML element of less than 127 bytes.
inline Bytes element(Bytes id, const std::vector<Bytes>& parts) {
    Bytes payload;
    for (const Bytes& part : parts) append(payload, part);
    id.push_back(static_cast<std::uint8_t>(0x80 | payload.size()));
    append(id, payload);
    return id;
}

/// A segment of unknown size with these tracks (their elements) and one cluster behind them.
inline Bytes madeFile(const std::vector<Bytes>& trackEntries, const std::vector<Bytes>& cluster) {
    Bytes file{0x18, 0x53, 0x80, 0x67, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    append(file, element({0x16, 0x54, 0xAE, 0x6B}, trackEntries));
    append(file, element({0x1F, 0x43, 0xB6, 0x75}, cluster));
    return file;
}

inline Bytes trackEntry(std::uint8_t number, std::uint8_t type, const std::string& codec,
                        const std::vector<Bytes>& more = {}) {
    std::vector<Bytes> parts{element({0xD7}, {{number}}), element({0x73, 0xC5}, {{number}}),
                             element({0x83}, {{type}}), element({0x86}, {bytesOf(codec)})};
    parts.insert(parts.end(), more.begin(), more.end());
    return element({0xAE}, parts);
}

}  // namespace marlet::test
