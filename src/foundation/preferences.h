#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace marlet {

/// The person's stored settings, read by key at the time they are needed.
/// A value of another type than asked for counts as absent. Readable from every thread.
class Preferences {
public:
    virtual ~Preferences() = default;

    virtual std::optional<bool> boolean(const std::string& key) const = 0;
    virtual std::optional<std::string> text(const std::string& key) const = 0;
    virtual std::optional<std::vector<std::string>> texts(const std::string& key) const = 0;
    virtual void setBoolean(const std::string& key, bool value) = 0;
    virtual void setText(const std::string& key, const std::string& value) = 0;
    virtual void setTexts(const std::string& key, const std::vector<std::string>& value) = 0;
    virtual void remove(const std::string& key) = 0;
    /// Returns when everything set so far is where a later run finds it. The end of a store does
    /// the same.
    virtual void flush() {}

    /// The store in force; an empty one in memory until another is installed. Installing ends the
    /// old store, so it is done before other threads run.
    static Preferences& current();
    static void install(std::unique_ptr<Preferences> store);
};

/// Lives in memory only: tests, and programs without settings.
class MemoryPreferences : public Preferences {
public:
    std::optional<bool> boolean(const std::string& key) const override;
    std::optional<std::string> text(const std::string& key) const override;
    std::optional<std::vector<std::string>> texts(const std::string& key) const override;
    void setBoolean(const std::string& key, bool value) override;
    void setText(const std::string& key, const std::string& value) override;
    void setTexts(const std::string& key, const std::vector<std::string>& value) override;
    void remove(const std::string& key) override;

private:
    template <typename Value>
    std::optional<Value> value(const std::string& key) const;

    mutable std::mutex lock_;
    // guarded by lock_
    std::map<std::string, std::variant<bool, std::string, std::vector<std::string>>> values_;
};

}  // namespace marlet
