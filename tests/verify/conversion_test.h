#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/errors.h"
#include "support/memory_file.h"
#include "verify/conversion_films.h"
#include "verify/conversion_verifier.h"
#include "verify/film_edits.h"

namespace marlet::test {

using ConvertVerify::Expected;
using ConvertVerify::Report;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class ConversionTest : public testing::Test {
protected:
    Report verify() { return verify(mkvBytes(source_), built()); }
    /// With the lengths of the edit lists in the track headers.
    Bytes built() const {
        Bytes file = buildMovie(movie_);
        for (std::size_t i = 0; i < movie_.tracks.size(); i++) {
            std::uint32_t length = 0;
            for (const EditRow& edit : movie_.tracks[i].edits) length += edit.first;
            constexpr std::size_t duration = 20;
            file = edited(std::move(file), trackPath(static_cast<int>(i), {{"tkhd"}}), duration,
                          be32(length));
        }
        return file;
    }
    Report verify(ByteView source, ByteView built) {
        const auto mkv = MKVFile::open(sourceFile_.write(source));
        if (!mkv) throw std::runtime_error("no Matroska file");
        return ConvertVerify::run(*mkv, plan_, builtFile_.write(built), expected_, control_,
                                  progress_);
    }
    std::vector<std::string> reasons() { return verify().reasons; }
    std::string failure() {
        try {
            verify();
            return "no failure";
        } catch (const MFError& failure) {
            return failure.description();
        }
    }

    SourceFilm source_ = sourceFilm();
    Movie movie_ = builtFilm(source_);
    ConvertPlanSnapshot plan_{.hasChapters = true};
    std::vector<Expected> expected_{
        {.kind = Expected::Kind::video, .source = 1},
        {.kind = Expected::Kind::audioCopy, .source = 2, .language = "eng"}};
    RunControl control_;
    StepProgress progress_;
    MemoryFile sourceFile_;
    MemoryFile builtFile_;
};

}  // namespace marlet::test
