#pragma once

#include <filesystem>

#include "app/app_model.h"
#include "foundation/records.h"
#include "screens/inspector/present_file.h"

namespace marlet {

/// What the inspector shows: the pages read it at each refresh and keep none of it. Null where
/// there is no such thing.
struct Inspected {
    const LibraryItem* item = nullptr;
    const ResolvedFile* file = nullptr;
    const FileDraft* draft = nullptr;
    const PresentFile* present = nullptr;  ///< null while it is being read

    enum class Kind { mp4, mov, mkv };
    static Kind kindOf(const std::filesystem::path& file);
    Kind kind() const { return kindOf(file->file.url); }
    /// Its tags are changed, or copied along: what no write of details touches stays.
    bool keepsTags() const { return kind() == Kind::mp4; }
};

}  // namespace marlet
