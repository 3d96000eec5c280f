#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "convert/pgs_parser.h"
#include "foundation/digest.h"
#include "foundation/run_control.h"

namespace marlet {

class PictureReader;

/// Reads pictures side by side as they come in: four readers at most, no more than there are cores
/// or pictures, with an engine each. No more pictures wait than are being read, so that a film's
/// fit into little memory.
class ReadingCrew {
public:
    /// `language` is a recognition language. Makes the first engine.
    ReadingCrew(std::string language, RunControl& control);
    /// Ends at once; what waits isn't read.
    ~ReadingCrew();
    ReadingCrew(const ReadingCrew&) = delete;
    ReadingCrew& operator=(const ReadingCrew&) = delete;

    /// Whether the language can be read here; otherwise no picture gives any text.
    bool canRead() const { return canRead_; }

    struct Line {
        std::int64_t startMs = 0;
        std::int64_t endMs = 0;
        std::string text;  ///< empty when none could be read
    };

    /// Waits for room. Throws what stopped a reader: CancelError mostly.
    void hand(PGSParser::Event event);
    /// One line for each event, in the order of `hand`. Throws like it.
    std::vector<Line> finish();

private:
    using Mark = std::array<std::uint8_t, 32>;
    struct Waiting {
        std::size_t index = 0;
        PGSParser::Event event;
    };

    void startReader();
    void work();
    void readAll();
    /// The first engine for whoever asks first, then new ones; null when the language can't be
    /// read.
    std::unique_ptr<PictureReader> engine();
    std::string textOf(PictureReader* reader, const PGSParser::Event& event);
    void throwFailure();

    const std::string language_;
    RunControl& control_;
    const std::size_t most_;
    std::unique_ptr<PictureReader> first_;  // guarded by mutex_ once there are readers
    const bool canRead_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Waiting> waiting_;        // this and all below: guarded by mutex_
    std::vector<Line> lines_;            // by index
    std::map<Mark, std::string> known_;  // texts of pictures that were read
    std::size_t idle_ = 0;               // readers that wait for a picture
    bool isComplete_ = false;            // no more will be handed
    bool isStopped_ = false;             // nobody waits for the rest
    std::exception_ptr failure_;         // of the first reader that failed
    std::vector<std::thread> readers_;   // touched by the job's thread only
};

}  // namespace marlet
