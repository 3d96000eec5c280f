#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <vector>

#include "helpers/build_movie.h"
#include "helpers/new_file.h"
#include "helpers/source_file.h"
#include "helpers/track_box.h"

namespace marlet {

/// A film whose index is ready but for its chunk tables, which tell of places in the sources.
struct AssembledMovie {
    /// Where the samples of a track lie, in the order of the index.
    struct Media {
        std::size_t file = 0;  ///< position in `files`
        Bytes prefix;          ///< stands in front of each sample, and is part of its size
    };
    Bytes moov;
    std::vector<Media> media;
    std::deque<SourceFile> files;
};

/// Scratch files of one run, removed with this object.
class ScratchFolder {
public:
    explicit ScratchFolder(std::filesystem::path folder) : folder_(std::move(folder)) {}
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::filesystem::path next();

private:
    std::filesystem::path folder_;
    std::vector<std::filesystem::path> files_;
};

namespace MovieAssembly {

/// Opens all sources and makes the index.
AssembledMovie make(const BuildMovie::Request& request, ScratchFolder& scratch);

}  // namespace MovieAssembly
}  // namespace marlet
