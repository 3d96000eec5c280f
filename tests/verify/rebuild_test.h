#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/errors.h"
#include "support/temp_folder.h"
#include "verify/film_edits.h"
#include "verify/rebuild_verifier.h"

namespace marlet::test {

/// A film, and the same film laid out anew; a test tells one of them a lie.
class RebuildVerifier : public testing::Test {
protected:
    VerifyReport verify(ByteView original, ByteView rebuilt) {
        return verifyRebuild(folder_.write("original.mp4", original),
                             folder_.write("rebuilt.mp4", rebuilt), terms_, control_, progress_);
    }
    /// The reasons against a rebuild that changed these bytes.
    std::vector<std::string> reasonsFor(const BoxPath& path, std::size_t at, ByteView with) {
        return verify(original_, edited(rebuilt_, path, at, with)).reasons;
    }
    std::string failureOf(ByteView original, ByteView rebuilt) {
        try {
            verify(original, rebuilt);
        } catch (const MFError& failure) {
            return failure.description();
        }
        return "no failure";
    }

    TempFolder folder_;
    RebuildTerms terms_;
    RunControl control_;
    StepProgress progress_;
    Bytes original_ = buildMovie(film());
    Bytes rebuilt_ = buildMovie(interleaved(film()));
};

}  // namespace marlet::test
