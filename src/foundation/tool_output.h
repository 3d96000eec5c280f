#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/run_control.h"

namespace marlet {

/// What a media tool prints: the end of it is kept for messages, marks of progress are passed on.
/// Chunks come on the reader's thread, the tail is asked for on another.
class ToolOutput {
public:
    /// Characters are Unicode code points, so that what is kept is bounded in bytes, too.
    static constexpr std::size_t mostCharacters = 2000;

    explicit ToolOutput(Progress progress = {}) : progress_(std::move(progress)) {}

    /// One chunk as it came out of the pipe. A chunk that isn't UTF-8 as a whole is dropped: the
    /// tail is a diagnostic, not a record.
    void take(std::string_view chunk);
    std::string tail() const;

    /// The first mark like "(37/100)" of a chunk, 0.37; never more than 1.
    static std::optional<double> progressIn(std::string_view chunk);
    /// The end of valid UTF-8, at most so many characters; no character is cut.
    static std::string_view lastCharacters(std::string_view text, std::size_t count);

private:
    const Progress progress_;
    mutable std::mutex mutex_;
    std::string tail_;  // guarded by mutex_
};

}  // namespace marlet
