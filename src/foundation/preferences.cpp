#include "foundation/preferences.h"

namespace marlet {

namespace {

std::mutex storeLock;

std::unique_ptr<Preferences>& store() {
    static std::unique_ptr<Preferences> instance = std::make_unique<MemoryPreferences>();
    return instance;
}

}  // namespace

Preferences& Preferences::current() {
    const std::lock_guard guard(storeLock);
    return *store();
}

void Preferences::install(std::unique_ptr<Preferences> replacement) {
    if (!replacement) replacement = std::make_unique<MemoryPreferences>();
    {
        const std::lock_guard guard(storeLock);
        store().swap(replacement);
    }
    // The old store ends here, outside the lock: it may write itself to disk.
}

template <typename Value>
std::optional<Value> MemoryPreferences::value(const std::string& key) const {
    const std::lock_guard guard(lock_);
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    const Value* held = std::get_if<Value>(&found->second);
    if (held == nullptr) return std::nullopt;
    return *held;
}

std::optional<bool> MemoryPreferences::boolean(const std::string& key) const {
    return value<bool>(key);
}

std::optional<std::string> MemoryPreferences::text(const std::string& key) const {
    return value<std::string>(key);
}

std::optional<std::vector<std::string>> MemoryPreferences::texts(const std::string& key) const {
    return value<std::vector<std::string>>(key);
}

void MemoryPreferences::setBoolean(const std::string& key, bool value) {
    const std::lock_guard guard(lock_);
    values_[key] = value;
}

void MemoryPreferences::setText(const std::string& key, const std::string& value) {
    const std::lock_guard guard(lock_);
    values_[key] = value;
}

void MemoryPreferences::setTexts(const std::string& key, const std::vector<std::string>& value) {
    const std::lock_guard guard(lock_);
    values_[key] = value;
}

void MemoryPreferences::remove(const std::string& key) {
    const std::lock_guard guard(lock_);
    values_.erase(key);
}

}  // namespace marlet
