// How a reviewed file becomes a job that reads no screen's state again, and how it comes back.

#include <algorithm>

#include "app/app_model.h"
#include "app/settings.h"
#include "foundation/text.h"
#include "foundation/work_area.h"
#include "identify/scanner.h"
#include "sources/key_store.h"
#include "write/tag_builder.h"

namespace marlet {

namespace {

namespace fs = std::filesystem;
using Job = WriteQueue::Job;

bool startsWith(ByteView data, std::initializer_list<std::uint8_t> magic) {
    return data.size() >= magic.size() && std::equal(magic.begin(), magic.end(), data.begin());
}

/// A cover is a JPEG or a PNG; what a service sends instead of a picture is none.
std::optional<CoverImage> coverFrom(Bytes data) {
    const bool isPNG = startsWith(data, {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A});
    if (!isPNG && !startsWith(data, {0xFF, 0xD8, 0xFF})) return std::nullopt;
    return CoverImage{std::move(data), isPNG};
}

std::string sizeFor(const ArtworkOption& option) {
    if (option.shape == ArtworkOption::Shape::tall) return "w780";
    return option.isStill ? "original" : "w1280";
}

Task<std::optional<CoverImage>> fetchCover(std::shared_ptr<TMDBClient> tmdb,
                                           std::optional<ArtworkOption> option) {
    if (!option || option->path.empty()) co_return std::nullopt;
    try {
        auto fetching = tmdb->imageData(option->path, sizeFor(*option));
        Bytes data = co_await fetching;
        co_return coverFrom(std::move(data));
    } catch (const MFError&) {
        co_return std::nullopt;
    }
}

Task<std::optional<std::string>> historyPoster(std::shared_ptr<TMDBClient> tmdb,
                                               std::optional<std::string> path) {
    if (!path) co_return std::nullopt;
    const std::string saved = HistoryPosters::pathFor(*path);
    std::error_code none;
    if (fs::exists(saved, none)) co_return saved;
    try {
        auto fetching = tmdb->imageData(*path, "w92");
        const Bytes data = co_await fetching;
        if (!coverFrom(data)) co_return std::nullopt;
        co_return HistoryPosters::save(data, *path);
    } catch (const MFError&) {
        co_return std::nullopt;
    }
}

void describe(Job& job, const Details& details, const ResolvedFile& file) {
    job.label = AppModel::label(details, file.file.url);
    job.title = details.title;
    job.isMovie = details.kind == MediaKind::movie;
    if (!job.isMovie) {
        job.show = details.show;
        job.season = details.season;
        job.episode = details.episode;
    }
    job.year = file.match->year;
    job.size = static_cast<std::uint64_t>(std::max<std::int64_t>(file.file.size, 0));
}

std::string plural(std::size_t count) {
    return count == 1 ? "" : "s";
}

}  // namespace

std::string AppModel::label(const Details& details, const Path& file) {
    if (details.kind == MediaKind::tv && !details.show.empty()) {
        const std::string number = details.episodeLabel();
        return details.show + " · " + (number.empty() ? details.title : number);
    }
    return details.title.empty() ? file.stem().string() : details.title;
}

void AppModel::addToQueue(std::vector<LibraryItem> items) {
    addToQueueNow(std::move(items));
}

Task<> AppModel::addToQueueNow(std::vector<LibraryItem> items) {
    const auto tmdb = TMDBClient::make(KeyStore::builtIn());
    if (!tmdb) {
        say("Add your TMDB key in Settings first.");
        co_return;
    }
    adding_ = true;
    changed();

    std::size_t toLookAt = 0;
    std::vector<ResolvedFile> ready;
    for (const LibraryItem& item : items)
        for (const ResolvedFile& file : item.files) {
            if (!isConfirmed(file))
                toLookAt++;
            else if (file.match && !isLocked(file))
                ready.push_back(file);
        }
    notice.reset();
    if (toLookAt > 0)
        notice = std::to_string(toLookAt) + " file" + plural(toLookAt) +
                 " still need a look and weren't added.";

    const bool fixLayout = Settings::fixForAppleTV();
    LibraryItem wanted;
    wanted.files = ready;
    auto loading = loadDrafts(wanted);
    co_await loading;

    std::vector<Job> jobs;
    std::vector<Path> moved;
    std::vector<std::string> reasons;
    for (const ResolvedFile& file : ready) {
        auto preparing = prepare(file, tmdb, fixLayout);
        Prepared prepared = co_await preparing;
        if (!prepared.job) {
            reasons.push_back(prepared.reason);
            continue;
        }
        jobs.push_back(std::move(*prepared.job));
        moved.push_back(file.file.url);
    }
    const std::size_t added = jobs.size();
    queue_.add(std::move(jobs));
    moveToQueue(moved);
    tellAdded(added, reasons);
    adding_ = false;
    changed();
}

void AppModel::tellAdded(std::size_t added, const std::vector<std::string>& reasons) {
    if (added > 0 && reasons.empty())
        say(added == 1 ? "Added to Queue" : std::to_string(added) + " added to Queue");
    if (!reasons.empty()) {
        const std::string text = "Not added: " + Text::join(reasons, " ");
        notice = notice ? *notice + " " + text : text;
        say(text);
    }
    if (added > 0 && notice) *notice += " " + std::to_string(added) + " added to the queue.";
}

Task<AppModel::Prepared> AppModel::prepare(ResolvedFile file, std::shared_ptr<TMDBClient> tmdb,
                                           bool fixLayout) {
    const Path url = file.file.url;
    const std::string fileName = url.filename().string();
    const FileDraft* loaded = drafts_.find(url);
    // Details that could not be loaded are never written as empty ones.
    if (loaded == nullptr) co_return Prepared{{}, fileName + ": its details couldn't be loaded"};
    const FileDraft draft = *loaded;

    const std::string extension = Scanner::extensionOf(url);
    const bool inPlace = extension == "mp4" || extension == "m4v";
    if (PlanStore::needsPlan(url)) {
        auto planning = plans_.finish(url);
        co_await planning;
        const ConvertPlan* plan = plans_.find(url);
        if (plan == nullptr) co_return Prepared{{}, fileName + ": this file can't be read"};
        if (plan->refusal) co_return Prepared{{}, fileName + ": " + *plan->refusal};
    }

    const auto option = draft.chosen(Settings::artworkStyle());
    auto fetching = fetchCover(tmdb, option);
    const std::optional<CoverImage> cover = co_await fetching;
    const std::vector<Atom> atoms = TagBuilder::atoms(draft.details, cover);
    const Path newFiles = Settings::outputSameFolder() ? url.parent_path() : outputFolder();

    Job job;
    job.id = newUUID();
    job.request.file = url;
    job.request.fixLayout = fixLayout;
    job.request.outputDir = newFiles;
    if (inPlace)
        job.request.mode = WriteRequest::WriteDetails{atoms};
    else
        job.request.mode = ConvertRequest{url, atoms, newFiles};
    describe(job, draft.details, file);
    auto savingPoster = historyPoster(tmdb, file.match->posterPath);
    job.posterPath = co_await savingPoster;
    job.how = inPlace ? "Changed in place" : "New .m4v";
    job.summary = "details and cover art";
    co_return Prepared{std::move(job), {}};
}

void AppModel::moveToQueue(const std::vector<Path>& files) {
    for (const Path& file : files)
        if (const ResolvedFile* resolved = review_.find(file)) queuedFiles_[file] = *resolved;
    review_.remove({files.begin(), files.end()});
    if (reviewID && review_.item(*reviewID) == nullptr) reviewID.reset();
    changed();
}

void AppModel::returnToReview(const std::vector<Path>& files) {
    std::vector<ResolvedFile> back;
    for (const Path& file : files) {
        const auto found = queuedFiles_.find(file);
        if (found == queuedFiles_.end()) continue;
        back.push_back(found->second);
        queuedFiles_.erase(found);
    }
    if (!back.empty()) review_.add(back);
    changed();
}

void AppModel::finishQueued(const Path& file) {
    queuedFiles_.erase(file);
    forget(file);
    changed();
}

}  // namespace marlet
