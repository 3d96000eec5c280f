#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "app/history_entry.h"
#include "app/unfinished.h"
#include "app/write_queue.h"

namespace marlet::RestoreJobs {

/// An entry of History whose original details can come back.
struct Restorable {
    HistoryList::Shared entry;
    std::uint64_t size = 0;  ///< of its file
};
/// Those that went well, were no restores, and whose originals were saved and files are there; one
/// a file. Asks the disk.
std::vector<Restorable> among(const HistoryList& entries);

/// The file's size; nothing when its originals were not saved. Asks the disk.
std::optional<std::uint64_t> sizeIfSaved(const std::filesystem::path& file);

WriteQueue::Job of(const UnfinishedRestore& wanted, std::uint64_t size);

}  // namespace marlet::RestoreJobs
