#include "screens/stage/told.h"

#include "foundation/dates.h"
#include "screens/base/qt_text.h"

namespace marlet::test::Told {

std::optional<int> number(const QVariantMap& map, const char* key) {
    const auto found = map.find(QString::fromLatin1(key));
    if (found == map.end()) return {};
    return found->toInt();
}

std::optional<std::string> text(const QVariantMap& map, const char* key) {
    const auto found = map.find(QString::fromLatin1(key));
    if (found == map.end()) return {};
    return fromQt(found->toString());
}

std::vector<std::string> texts(const QVariantMap& map, const char* key) {
    std::vector<std::string> list;
    for (const QString& each : map.value(QString::fromLatin1(key)).toStringList())
        list.push_back(fromQt(each));
    return list;
}

namespace {

std::optional<ManualDetails> manualOf(const QVariantMap& map) {
    const auto source = text(map, "source");
    if (!source || *source == "tmdb") return {};
    ManualDetails manual;
    manual.title = text(map, "title").value_or("");
    if (*source != "hand") manual.source = sourceFromRaw(*source);
    return manual;
}

Match matchOf(const QVariantMap& map) {
    static std::int64_t lastID = 1000;
    Match match;
    match.kind = map.contains(QStringLiteral("show")) ? MediaKind::tv : MediaKind::movie;
    // Episodes of one show are one show.
    const auto show = text(map, "show");
    match.tmdbID = show ? static_cast<std::int64_t>(qHash(toQt(*show)) % 100000 + 1) : ++lastID;
    if (const auto id = number(map, "id")) match.tmdbID = *id;
    match.title = show ? *show : text(map, "title").value_or("");
    match.year = number(map, "year");
    match.season = number(map, "season");
    match.episode = number(map, "episode");
    match.episodeEnd = number(map, "episodeEnd");
    match.episodeTitle = text(map, "episodeTitle");
    match.runtimeMinutes = number(map, "runtime");
    match.posterPath = text(map, "poster");
    match.manual = manualOf(map);
    return match;
}

}  // namespace

ResolvedFile resolvedOf(const QVariantMap& map, const std::filesystem::path& path) {
    ResolvedFile file;
    file.file.url = path;
    file.file.size = 1'000'000;
    if (map.contains(QStringLiteral("duration")))
        file.file.duration = map.value(QStringLiteral("duration")).toDouble();
    const bool matched = map.value(QStringLiteral("match"), true).toBool();
    if (matched) file.match = matchOf(map);
    const auto show = text(map, "show");
    Guess guess;
    guess.kind = show ? MediaKind::tv : MediaKind::movie;
    guess.title = show ? *show : text(map, "title").value_or(path.stem().string());
    guess.year = number(map, "year");
    guess.season = number(map, "season");
    guess.episode = number(map, "episode");
    file.guess = guess;
    const auto reasons = texts(map, "reasons");
    file.verdict = matched && reasons.empty() ? Verdict::certain() : Verdict::needsLook(reasons);
    return file;
}

std::vector<ArtworkOption> artworkOf(const QVariantMap& map, const char* key,
                                     ArtworkOption::Shape shape) {
    std::vector<ArtworkOption> options;
    for (const std::string& path : texts(map, key))
        options.push_back({.shape = shape, .path = path});
    return options;
}

WriteOutcome::Status statusOf(const QString& name) {
    using Status = WriteOutcome::Status;
    for (const Status status :
         {Status::done, Status::failed, Status::skipped, Status::cancelled, Status::stopped})
        if (toQt(marlet::name(status)) == name) return status;
    return Status::failed;
}

HistoryEntry entryOf(const QVariantMap& map, int index, const std::filesystem::path& library) {
    HistoryEntry entry;
    entry.id = "entry " + std::to_string(index);
    entry.date = Dates::now() - std::chrono::hours(24) * number(map, "daysAgo").value_or(0) -
                 std::chrono::minutes(index);
    entry.title = text(map, "title").value_or("");
    entry.path = (library / text(map, "name").value_or(entry.title + ".mp4")).string();
    entry.show = text(map, "show");
    entry.season = number(map, "season");
    entry.episode = number(map, "episode");
    entry.year = number(map, "year");
    entry.isMovie = !entry.show;
    entry.result = text(map, "result").value_or("done");
    entry.message = text(map, "message").value_or("");
    entry.changes = texts(map, "changes");
    entry.how = text(map, "how");
    entry.summary = text(map, "summary");
    if (map.contains(QStringLiteral("before")))
        entry.before = map.value(QStringLiteral("before")).toDouble();
    if (map.contains(QStringLiteral("after")))
        entry.after = map.value(QStringLiteral("after")).toDouble();
    entry.batchID = text(map, "batch").value_or("run 1");
    if (map.value(QStringLiteral("restore")).toBool()) entry.isRestore = true;
    return entry;
}

}  // namespace marlet::test::Told
