#include "sources/turnstile.h"

#include <utility>

namespace marlet {

Task<Turnstile::Place> Turnstile::enter(std::shared_ptr<Turnstile> turnstile, CancelToken cancel) {
    cancel.check();
    while (turnstile->inside_ >= turnstile->width_) {
        Gate turn;
        turnstile->waiting_.push_back(turn);
        const auto registration = cancel.onCancel([turn] { turn.open(); });
        co_await turn;
        if (cancel.isCancelled()) {
            // The turn may have been given to this caller as it was cancelled.
            turnstile->letNextIn();
            cancel.check();
        }
    }
    turnstile->inside_++;
    Turnstile* const left = turnstile.get();
    Place place(left, [turnstile](const void*) { turnstile->leave(); });
    co_return place;
}

void Turnstile::leave() {
    inside_--;
    letNextIn();
}

void Turnstile::letNextIn() {
    // An open gate is that of a caller who was cancelled and has left the queue. The next one is
    // inside before open() returns.
    while (inside_ < width_ && !waiting_.empty()) {
        const Gate next = waiting_.front();
        waiting_.pop_front();
        if (next.isOpen()) continue;
        next.open();
        return;
    }
}

}  // namespace marlet
