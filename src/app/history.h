#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/dates.h"
#include "foundation/syscalls.h"

namespace marlet {

/// What was done to one file. Stored as a JSON object under these names.
struct HistoryEntry {
    std::string id;  ///< UUID
    Moment date{};
    std::string path;
    std::string title;
    std::optional<std::string> show;
    std::optional<int> season;
    std::optional<int> episode;
    bool isMovie = false;
    std::string result;            ///< "done", "failed", "skipped", "stopped"
    std::optional<double> before;  ///< sound layout, seconds
    std::optional<double> after;
    std::vector<std::string> changes;
    std::string message;
    std::uint64_t size = 0;
    std::optional<std::string> batchID;
    std::optional<bool> isRestore;
    std::optional<std::string> posterPath;
    std::optional<int> year;
    std::optional<std::string> how;
    std::optional<std::string> summary;
    bool operator==(const HistoryEntry&) const = default;
};

/// The permanent record, newest first, saved as a whole at each append. Main context only.
class HistoryStore {
public:
    static HistoryStore& shared();

    /// Reads Paths::historyFile() when it is first needed: a run that only looks at films doesn't
    /// wait for tens of thousands of entries.
    HistoryStore() = default;
    const std::vector<HistoryEntry>& entries() const;
    /// Never fails. A file that could not be read is kept aside under another name first.
    void append(HistoryEntry entry);
    void clear();
    std::string csv() const;
    /// Told after each change.
    std::function<void()> onChanged;

private:
    static constexpr std::size_t maxFileSize = 1024 * 1024 * 1024;

    void load() const;
    void loadOnce() const;
    void save();
    void encodeAll();
    /// Another running copy of the program may have appended since we last read or wrote.
    void takeInWhatOthersWrote();

    mutable bool loaded_ = false;
    mutable std::vector<HistoryEntry> entries_;
    /// The entries as JSON, for as many as were encoded; emptied when entries_ changes otherwise
    /// than by an append, which encodes one entry and not thousands.
    mutable std::vector<std::string> encoded_;
    mutable bool damaged_ = false;                ///< the file exists but could not be read
    mutable std::optional<Sys::FileStat> stamp_;  ///< of the file as last read or written
};

/// The small pictures that History shows.
namespace HistoryPosters {
/// The path of the saved picture; nothing on failure.
std::optional<std::string> save(ByteView data, const std::string& key);
/// Where save puts the picture of that key.
std::string pathFor(const std::string& key);
void prune();
}  // namespace HistoryPosters

}  // namespace marlet
