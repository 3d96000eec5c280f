#pragma once

#include <QString>
#include <QVariant>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <thread>

#include "foundation/preferences.h"

namespace marlet {

/// The settings in one INI file. It is read once, and a change holds at once; a thread of the
/// store's own writes it a moment later, since a person types more than one letter and nobody
/// should wait for a disk while typing. What other running copies wrote in between is taken in.
class StoredPreferences : public Preferences {
public:
    /// A program that is killed loses no more than what was set within this time.
    static constexpr std::chrono::milliseconds longestPause{250};

    explicit StoredPreferences(const std::filesystem::path& file,
                               std::chrono::milliseconds pause = longestPause);
    /// Writes what isn't written yet.
    ~StoredPreferences() override;

    std::optional<bool> boolean(const std::string& key) const override;
    std::optional<std::string> text(const std::string& key) const override;
    std::optional<std::vector<std::string>> texts(const std::string& key) const override;
    void setBoolean(const std::string& key, bool value) override;
    void setText(const std::string& key, const std::string& value) override;
    void setTexts(const std::string& key, const std::vector<std::string>& value) override;
    void remove(const std::string& key) override;
    void flush() override;

private:
    struct Value {
        QVariant value;
        /// Of a list: as it stands in the file, where a text with commas may be written without
        /// quotes.
        std::optional<std::string> line;
    };
    /// By key; an invalid value is one to be removed.
    using Changes = std::map<QString, QVariant>;

    std::map<QString, Value> readFile() const;
    QVariant read(const std::string& key) const;
    void set(const std::string& key, const QVariant& value);
    void apply(const Changes& changes);
    void writeInTime();

    const std::filesystem::path file_;
    const std::chrono::milliseconds pause_;
    std::mutex writing_;  ///< one at a time; taken before mutex_
    mutable std::mutex mutex_;
    // guarded by mutex_
    std::map<QString, Value> values_;
    Changes changes_;    ///< to be written
    Changes unwritten_;  ///< could not be written; tried again with the next change
    bool ends_ = false;
    std::condition_variable wake_;
    std::thread writer_;  ///< runs from the first change on
};

}  // namespace marlet
