#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/history_entry.h"
#include "app/history_file.h"
#include "foundation/bytes.h"
#include "sources/async.h"

namespace marlet {

/// The permanent record, newest first, in one file. Main context only. What waits for the disk has
/// a sister that doesn't: the windows use those alone.
class HistoryStore {
public:
    static HistoryStore& shared();
    /// A JSON array of the entries, newest first.
    static std::filesystem::path file();

    HistoryStore() = default;
    /// What was handed over is written all the same, if the program goes on.
    ~HistoryStore();
    HistoryStore(const HistoryStore&) = delete;
    HistoryStore& operator=(const HistoryStore&) = delete;

    /// Reads the file when it is first needed: a run that only looks at films doesn't wait for tens
    /// of thousands of entries.
    const HistoryList& entries() const;
    /// The same without waiting: none until the file was read.
    const HistoryList& known() const { return entries_; }
    bool isLoaded() const { return isLoaded_; }
    /// Ends when known() holds what the file does.
    Task<> load();

    /// Never fails. A file that could not be read is kept aside under another name first.
    void append(HistoryEntry entry);
    void clear();
    // On a worker; end when it is written. What was appended before the file was read comes on top
    // of what is in there.
    Task<> appendSoon(HistoryEntry entry);
    Task<> clearSoon();
    /// Writes at once what a worker hasn't got round to.
    void keepNow();

    std::string csv() const { return csvOf(entries()); }
    /// Of a copy of the entries, so that a worker can do it.
    static std::string csvOf(const HistoryList& entries);
    /// Told after each change.
    std::function<void()> onChanged;
    void setPatience(HistoryPatience patience) { file_->setPatience(std::move(patience)); }

private:
    void take(HistoryFile::Content content) const;
    void tell() const;
    Task<> writeSoon();

    /// Shared with workers, which may outlive the store.
    std::shared_ptr<HistoryFile> file_ = std::make_shared<HistoryFile>();
    mutable HistoryList entries_;
    mutable std::uint64_t revision_ = 0;
    mutable bool isLoaded_ = false;
    CancelToken life_;
};

/// The small pictures that History shows.
namespace HistoryPosters {
std::filesystem::path dir();
/// The path of the saved picture; nothing on failure.
std::optional<std::string> save(ByteView data, const std::string& key);
/// Where save puts the picture of that key.
std::string pathFor(const std::string& key);
/// Removes those that are older than 180 days.
void prune();
}  // namespace HistoryPosters

}  // namespace marlet
