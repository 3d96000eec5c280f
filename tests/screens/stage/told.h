#pragma once

#include <QVariant>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/history_entry.h"
#include "foundation/records.h"
#include "write/write_request.h"

/// What a test tells of a file or a job, as an object of QML, in the program's own records. The
/// names of their members stand at the stage's functions.
namespace marlet::test::Told {

/// Nothing where there is no such member.
std::optional<int> number(const QVariantMap& map, const char* key);
std::optional<std::string> text(const QVariantMap& map, const char* key);
std::vector<std::string> texts(const QVariantMap& map, const char* key);

ResolvedFile resolvedOf(const QVariantMap& map, const std::filesystem::path& path);
std::vector<ArtworkOption> artworkOf(const QVariantMap& map, const char* key,
                                     ArtworkOption::Shape shape);
WriteOutcome::Status statusOf(const QString& name);
/// The index makes its identity and its minute.
HistoryEntry entryOf(const QVariantMap& map, int index, const std::filesystem::path& library);

}  // namespace marlet::test::Told
