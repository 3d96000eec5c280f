#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "write/write_job.h"

/// What a write has to pass before the first byte is copied.
namespace marlet::WriteGate {

/// Kind of file, protected places, a file that is there. Nothing is made on disk.
void checkRequest(WriteJob& job);
/// Programs that have the file open for writing, and an earlier write that isn't finished.
void checkNoOtherWriter(const WriteRequest& request);

/// Ends the job as stopped while a journal names the only whole copy of another file: a new
/// journal would take its place.
void requireNoPendingWrite();

enum class Way { Edit, Rebuild };
/// The sentence when the disk of the temporary files is too full.
std::optional<std::string> spaceProblem(std::uint64_t fileSize, Way way,
                                        const std::filesystem::path& workFolder);
/// Ends the job as stopped when there is a space problem.
void requireSpace(const WriteJob& job, Way way);

}  // namespace marlet::WriteGate
