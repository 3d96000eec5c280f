// How a reviewed file becomes a job that reads no screen's state again, and how it comes back.

#include <algorithm>

#include "app/app_model.h"
#include "app/settings.h"
#include "foundation/errors.h"
#include "foundation/text.h"
#include "foundation/work_area.h"
#include "identify/asking.h"
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

/// Nothing when it can't be had: a picture is no reason to go without the details.
Task<std::optional<Bytes>> picture(std::shared_ptr<TMDBClient> tmdb, std::string path,
                                   std::string size, CancelToken cancel) {
    auto fetching = Asking::answer(tmdb->imageData(path, size), cancel, tmdb);
    std::optional<Bytes> data = co_await fetching;
    co_return data;
}

Task<std::optional<CoverImage>> fetchCover(std::shared_ptr<TMDBClient> tmdb,
                                           std::optional<ArtworkOption> option,
                                           CancelToken cancel) {
    if (!option || option->path.empty()) co_return std::nullopt;
    auto fetching = picture(tmdb, option->path, sizeFor(*option), cancel);
    std::optional<Bytes> data = co_await fetching;
    if (!data) co_return std::nullopt;
    co_return coverFrom(std::move(*data));
}

Task<std::optional<std::string>> historyPoster(std::shared_ptr<TMDBClient> tmdb,
                                               std::optional<std::string> path,
                                               CancelToken cancel) {
    if (!path) co_return std::nullopt;
    const std::string saved = HistoryPosters::pathFor(*path);
    std::function<bool()> look = [saved] {
        std::error_code none;
        return fs::exists(saved, none);
    };
    auto looking = Asking::orCancelled(Async::onWorker(std::move(look)), cancel);
    const bool isThere = co_await looking;
    if (isThere) co_return saved;
    auto fetching = picture(tmdb, *path, "w92", cancel);
    const std::optional<Bytes> data = co_await fetching;
    if (!data || !coverFrom(*data)) co_return std::nullopt;
    using Saved = std::optional<std::string>;
    std::function<Saved()> save = [data = *data, path = *path] {
        return HistoryPosters::save(data, path);
    };
    auto saving = Asking::orCancelled(Async::onWorker(std::move(save)), cancel);
    Saved answer = co_await saving;
    co_return answer;
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

std::string wordsOf(const ConvertPlan& refused) {
    const std::string words = refused.videoVerdict.message();
    return words.empty() ? "can't be converted" : words;
}

std::string stillToLookAt(std::size_t count) {
    return std::to_string(count) + " file" + (count == 1 ? "" : "s") +
           " still need a look and weren't added.";
}

/// The list of a run that is on is closed.
constexpr const char* queueIsRunning = "the queue is running. Add these files when it's finished.";

/// Counts a queueing under way, on every way out.
class UnderWay {
public:
    explicit UnderWay(int& count) : count_(count) { count_++; }
    ~UnderWay() { count_--; }
    UnderWay(const UnderWay&) = delete;
    UnderWay& operator=(const UnderWay&) = delete;

private:
    int& count_;
};

}  // namespace

std::string AppModel::label(const Details& details, const Path& file) {
    if (details.kind == MediaKind::tv && !details.show.empty()) {
        const std::string number = details.episodeLabel();
        return details.show + " · " + (number.empty() ? details.title : number);
    }
    return details.title.empty() ? file.stem().string() : details.title;
}

std::string AppModel::summary(const ConvertPlan& plan) {
    const auto sounds = std::ranges::count(plan.audio, false, &AudioChoice::keep);
    const auto subtitles = std::ranges::count_if(plan.subs, [](const SubChoice& choice) {
        // A file beside the film stays where it is.
        return !choice.keep && choice.track && !choice.splitForced;
    });
    std::vector<std::string> parts;
    if (sounds > 0) parts.push_back(std::to_string(sounds) + " sound");
    if (subtitles > 0) parts.push_back(std::to_string(subtitles) + " subtitle");
    return parts.empty() ? "" : Text::join(parts, ", ") + " removed";
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
    {
        const UnderWay adding(adding_);
        changed();
        auto working = addReady(readyOf(items), tmdb);
        co_await working;
    }
    changed();
}

AppModel::Ready AppModel::readyOf(const std::vector<LibraryItem>& items) const {
    Ready ready;
    for (const LibraryItem& item : items)
        for (const ResolvedFile& file : item.files) {
            if (!isConfirmed(file))
                ready.toLookAt++;
            else if (file.match && !isLocked(file))
                ready.files.push_back(file);
        }
    return ready;
}

Task<> AppModel::addReady(Ready ready, std::shared_ptr<TMDBClient> tmdb) {
    notice.reset();
    if (ready.toLookAt > 0) notice = stillToLookAt(ready.toLookAt);
    if (ready.files.empty()) co_return;
    if (queue_.active()) {
        tellAdded(0, {queueIsRunning});
        co_return;
    }
    const bool fixLayout = Settings::fixForAppleTV();
    LibraryItem wanted;
    wanted.files = ready.files;
    auto loading = loadDrafts(std::move(wanted));
    co_await loading;

    std::vector<Job> jobs;
    std::vector<std::string> reasons;
    for (const ResolvedFile& file : ready.files) {
        auto preparing = prepareOrTell(file, tmdb, fixLayout);
        Prepared prepared = co_await preparing;
        // Gone or chosen anew meanwhile: what was prepared is not what the person wants now.
        if (!isStill(file)) continue;
        if (prepared.job)
            jobs.push_back(std::move(*prepared.job));
        else
            reasons.push_back(prepared.reason);
    }
    std::erase_if(jobs, [&](const Job& job) { return review_.find(job.request.file) == nullptr; });
    if (queue_.active() && !jobs.empty()) {
        jobs.clear();
        reasons.push_back(queueIsRunning);
    }
    std::vector<Path> moved;
    for (const Job& job : jobs) moved.push_back(job.request.file);
    queue_.add(std::move(jobs));
    moveToQueue(moved);
    tellAdded(moved.size(), reasons);
}

bool AppModel::isStill(const ResolvedFile& file) const {
    const ResolvedFile* now = review_.find(file.file.url);
    return now != nullptr && now->match == file.match;
}

Task<AppModel::Prepared> AppModel::prepareOrTell(ResolvedFile file,
                                                 std::shared_ptr<TMDBClient> tmdb, bool fixLayout) {
    Prepared prepared;
    try {
        auto preparing = prepare(file, tmdb, fixLayout);
        prepared = co_await preparing;
    } catch (const CancelError&) {
        throw;
    } catch (const std::exception& failure) {
        prepared.reason = file.file.url.filename().string() + ": " + failure.what();
    }
    co_return prepared;
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
    const bool isMP4 = extension == "mp4" || extension == "m4v";
    if (tracks_.isWished(url)) {
        const CancelToken life = life_;
        auto loading = tracks_.load(url);
        co_await loading;
        life.check();
    }
    // Read here: a later change of a tick belongs to the next job.
    const std::vector<int> dropped = tracks_.dropped(url);
    const std::vector<InPlaceTrack>* tracks = tracks_.find(url);
    std::string summary =
        dropped.empty() || tracks == nullptr ? "" : InPlaceTracks::summary(*tracks);
    std::optional<ConvertPlanSnapshot> conversion;
    if (PlanStore::needsPlan(url)) {
        const CancelToken life = life_;
        auto planning = plans_.planFor(url);
        const std::optional<ConvertPlan> plan = co_await planning;
        life.check();
        if (!plan) co_return Prepared{{}, fileName + ": this file can't be read"};
        conversion = plan->snapshot();
        if (!conversion) co_return Prepared{{}, fileName + ": " + wordsOf(*plan)};
        summary = AppModel::summary(*plan);
    }
    if (summary.empty()) summary = "details and cover art";

    const auto option = draft.chosen(Settings::artworkStyle());
    auto fetching = fetchCover(tmdb, option, life_);
    const std::optional<CoverImage> cover = co_await fetching;
    const std::vector<Atom> atoms = TagBuilder::atoms(draft.details, cover);
    const Path newFiles = Settings::outputSameFolder() ? url.parent_path() : outputFolder();

    Job job;
    job.id = newUUID();
    job.request.file = url;
    job.request.fixLayout = fixLayout;
    job.request.outputDir = newFiles;
    job.request.dropTracks = dropped;
    if (isMP4)
        job.request.mode = WriteRequest::WriteDetails{atoms};
    else
        job.request.mode = ConvertRequest{url, conversion, atoms, newFiles};
    describe(job, draft.details, file);
    auto savingPoster = historyPoster(tmdb, file.match->posterPath, life_);
    job.posterPath = co_await savingPoster;
    job.how = isMP4 && dropped.empty() ? "Changed in place" : "New .m4v";
    job.summary = summary;
    co_return Prepared{std::move(job), {}};
}

void AppModel::moveToQueue(const std::vector<Path>& files) {
    for (const Path& file : files)
        if (const ResolvedFile* resolved = review_.find(file)) {
            queuedFiles_[file] = *resolved;
            unfinished_.touch(file);
        }
    unfinished_.forget(files);
    review_.remove({files.begin(), files.end()});
    dropGoneSelection();
    changed();
}

void AppModel::returnToReview(const std::vector<Path>& files) {
    std::vector<ResolvedFile> back;
    for (const Path& file : files) {
        const auto found = queuedFiles_.find(file);
        if (found == queuedFiles_.end()) continue;
        unfinished_.touch(file);
        back.push_back(found->second);
        queuedFiles_.erase(found);
    }
    if (!back.empty()) review_.add(back);
    changed();
}

void AppModel::finishQueued(const Path& file) {
    queuedFiles_.erase(file);
    forget({file});
    changed();
}

}  // namespace marlet
