#pragma once

#include <utility>
#include <vector>

#include "convert/pgs_parser.h"
#include "matroska/mkv_file.h"
#include "support/memory_file.h"
#include "support/pgs_builder.h"

namespace marlet::test {

/// A film with picture subtitles, open for as long as the object lives.
class OpenPictures {
public:
    explicit OpenPictures(ByteView film) : mkv(MKVFile::open(memory_.write(film))) {}
    explicit OpenPictures(const std::vector<pgs::Timed>& sets) : OpenPictures(pgs::film(sets)) {}

    std::vector<PGSParser::Event> events(int track = 1) const {
        RunControl control;
        return PGSParser::events(*mkv, *mkv->track(track), control);
    }
    PGSParser::ForcedStats forcedStats(int track = 1) const {
        return PGSParser::forcedStats(*mkv, *mkv->track(track));
    }

private:
    MemoryFile memory_;

public:
    std::unique_ptr<MKVFile> mkv;
};

inline std::vector<PGSParser::Event> eventsOf(const std::vector<pgs::Timed>& sets) {
    return OpenPictures(sets).events();
}

/// Segments, one behind the other.
inline Bytes together(const std::vector<Bytes>& segments) {
    Bytes all;
    for (const Bytes& one : segments) append(all, one);
    return all;
}

/// The display set that clears the screen.
inline pgs::Timed clearAt(std::int64_t ms) {
    return {ms, pgs::displaySet({})};
}

/// From 1 to 2 seconds, what these segments show.
inline std::vector<PGSParser::Event> shown(const std::vector<Bytes>& segments) {
    return eventsOf({{1000, together(segments)}, clearAt(2000)});
}

}  // namespace marlet::test
