#pragma once

#include <functional>
#include <string>

#include "sources/async.h"

namespace marlet {

/// The field of the Settings screen that takes, tries and removes the person's own TMDB token. It
/// holds no token itself: what was typed goes to TMDB and into the keyring and is gone. Main
/// context only.
class KeyField {
public:
    KeyField() = default;
    /// Whatever is under way ends here and touches nothing afterwards.
    ~KeyField();
    KeyField(const KeyField&) = delete;
    KeyField& operator=(const KeyField&) = delete;

    /// Where the token in use comes from, in words.
    std::string origin() const;
    /// What became of the last keep, tryKey or remove; empty before the first.
    const std::string& result() const { return result_; }
    bool isBusy() const { return busy_; }

    /// Tries what was typed and puts it into the keyring, unless TMDB rejects it: a token that is
    /// no good takes no good one's place. One that couldn't be tried is kept.
    Task<> keep(std::string typed);
    /// Tries the token in use.
    Task<> tryKey();
    /// Takes the token out of the keyring.
    void remove();

    /// Told after each change that the screen would show.
    std::function<void()> onChanged;

private:
    void begin();
    void end(std::string result);
    void changed() const;

    CancelToken life_;
    bool busy_ = false;
    std::string result_;
};

}  // namespace marlet
