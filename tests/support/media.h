#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "foundation/bytes.h"

// Real files, made by FFmpeg when a test runs, and what FFmpeg reads back from them.
namespace marlet::test {

/// Runs a program of the PATH and gives its standard output; throws when it doesn't end with 0.
std::string runTool(const std::vector<std::string>& arguments);

/// FFmpeg with these arguments, which writes over what is there and tells errors alone; gives its
/// standard output.
std::string ffmpeg(const std::vector<std::string>& arguments);
/// Makes a Matroska file by mkvmerge, with these arguments behind it. Warnings are no failure.
void mkvmerge(const std::filesystem::path& file, const std::vector<std::string>& arguments);
/// Changes a Matroska file in place by mkvpropedit. Warnings are no failure.
void mkvpropedit(const std::filesystem::path& file, const std::vector<std::string>& arguments);

struct RealMovie {
    int seconds = 2;
    int soundTracks = 1;                      ///< AAC, mono, 16 kHz; each of another tone
    std::vector<std::string> soundLanguages;  ///< ISO 639-2, by track
    bool video = true;                        ///< H.264, 64 x 36, 25 frames a second
    bool indexFirst = false;                  ///< moov ahead of mdat
    int padding = 0;  ///< bytes kept free behind moov (needs the index first)
    std::vector<std::pair<std::string, std::string>> tags;  ///< FFmpeg's names: title, show, ...
    bool accountTags = false;                 ///< apID, ownr, purd and akID in the tag block
    std::vector<std::string> extraArguments;  ///< ahead of the output file
};

/// Writes the file; its extension tells FFmpeg the container (mp4, m4v, mov, mkv).
void makeMovie(const std::filesystem::path& file, const RealMovie& movie = {});

/// A digest of each track's packets, in file order ("0,v,SHA256=..."): equal before and after
/// whatever leaves the media alone.
std::vector<std::string> packetHashes(const std::filesystem::path& file);
/// Values of ffprobe, a line each: probeValue(file, "format_tags=title"), probeValue(file,
/// "format=duration"); of one stream alone: probeValue(file, "stream=channels", "a:1").
std::string probeValue(const std::filesystem::path& file, const std::string& entry,
                       const std::string& stream = "");
/// A subtitle track as FFmpeg shows it, as a .srt file without fonts; "s:0" is the first.
std::string shownLines(const std::filesystem::path& film, const std::string& stream);

/// The four account items as an iTunes purchase has them.
std::vector<Bytes> accountItems();

}  // namespace marlet::test
