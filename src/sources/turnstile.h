#pragma once

#include <deque>
#include <memory>

#include "sources/async.h"

namespace marlet {

/// Lets so many in at a time, the others in the order in which they came. Main context only.
class Turnstile {
public:
    explicit Turnstile(int width) : width_(width) {}

    /// Being inside; leaves when the last copy goes.
    using Place = std::shared_ptr<const void>;

    /// Ends when inside; throws CancelError when cancelled in the queue, which then closes up.
    static Task<Place> enter(std::shared_ptr<Turnstile> turnstile, CancelToken cancel);

private:
    void leave();
    void letNextIn();

    int width_;
    int inside_ = 0;
    std::deque<Gate> waiting_;
};

}  // namespace marlet
