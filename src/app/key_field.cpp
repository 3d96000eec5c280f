#include "app/key_field.h"

#include <utility>

#include "foundation/errors.h"
#include "foundation/text.h"
#include "sources/key_check.h"
#include "sources/key_store.h"

namespace marlet {

namespace {

using KeyCheck::Result;

constexpr const char* notKept =
    "The keyring didn't take the key, so it isn't stored anywhere. Is a keyring running and open?";
constexpr const char* notRemoved = "The keyring couldn't be changed. Is it running and open?";
constexpr const char* removed = "The key was removed from your keyring.";

}  // namespace

KeyField::~KeyField() {
    life_.cancel();
}

std::string KeyField::origin() const {
    switch (KeyStore::origin()) {
        case KeyStore::Origin::environment:
            return "The key in MARLET_TMDB_TOKEN is used, whatever the keyring holds.";
        case KeyStore::Origin::keyring:
            return "The key in your keyring is used.";
        case KeyStore::Origin::compiledIn:
            return "Marlet's own key is used.";
        case KeyStore::Origin::none:
            break;
    }
    return KeyCheck::sentence(Result::none);
}

Task<> KeyField::keep(std::string typed) {
    if (busy_) co_return;
    const CancelToken life = life_;
    begin();
    const std::string token = Text::trim(typed);
    Result tried = Result::none;
    try {
        auto checking = KeyCheck::check(token, life);
        tried = co_await checking;
    } catch (const CancelError&) {
        co_return;  // the field is gone
    }
    std::string words = KeyCheck::sentence(tried);
    const bool wanted = tried == Result::works || tried == Result::unreachable;
    if (wanted && !KeyStore::keep(token)) words = notKept;
    if (!life.isCancelled()) end(std::move(words));
}

Task<> KeyField::tryKey() {
    if (busy_) co_return;
    const CancelToken life = life_;
    begin();
    Result tried = Result::none;
    try {
        auto checking = KeyCheck::check(KeyStore::builtIn(), life);
        tried = co_await checking;
    } catch (const CancelError&) {
        co_return;
    }
    end(KeyCheck::sentence(tried));
}

void KeyField::remove() {
    if (busy_) return;
    const CancelToken life = life_;
    begin();
    const bool gone = KeyStore::forget();
    if (!life.isCancelled()) end(gone ? removed : notRemoved);
}

void KeyField::begin() {
    busy_ = true;
    changed();
}

void KeyField::end(std::string result) {
    busy_ = false;
    result_ = std::move(result);
    changed();
}

void KeyField::changed() const {
    if (onChanged) onChanged();
}

}  // namespace marlet
