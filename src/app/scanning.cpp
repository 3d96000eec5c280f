// How files come into Review.

#include <unordered_set>
#include <utility>

#include "app/app_model.h"
#include "foundation/errors.h"
#include "foundation/paths.h"
#include "foundation/run_mode.h"
#include "identify/asking.h"
#include "identify/scanner.h"
#include "sources/key_store.h"

namespace marlet {

namespace {

std::string alreadyThere(std::size_t known, std::size_t fresh, const std::filesystem::path& first) {
    const std::string count = std::to_string(known);
    if (fresh > 0)
        return count + " of those " + (known == 1 ? "was" : "were") + " already in Review";
    if (known == 1) return first.stem().string() + " is already in Review";
    return "These " + count + " files are already in Review";
}

AppModel::Phase looksThrough() {
    return {AppModel::Phase::Kind::working, 0, 0, "Looking through your files"};
}

}  // namespace

void AppModel::add(std::vector<Path> urls) {
    toLookThrough_.push_back(std::move(urls));
    if (looking_) return;
    looking_ = true;
    if (!isWorking()) setPhase(looksThrough());
    lookThrough();
}

Task<> AppModel::lookThrough() {
    const CancelToken life = life_;
    while (!toLookThrough_.empty()) {
        const std::vector<Path> urls = std::move(toLookThrough_.front());
        toLookThrough_.pop_front();
        std::function<std::vector<Path>()> look = [urls] { return Scanner::videoFiles(urls); };
        const CancelToken cancel = lookCancel_;
        std::optional<std::vector<Path>> found;
        try {
            auto looking = Asking::answer(Async::onWorker(std::move(look)), cancel);
            found = co_await looking;
        } catch (const CancelError&) {
            if (life.isCancelled()) throw;  // the model is gone
            continue;
        }
        take(found.value_or(std::vector<Path>()));
    }
    looking_ = false;
    endPhase();
}

void AppModel::take(const std::vector<Path>& found) {
    std::unordered_set<std::string> inReview;
    review_.forEach([&](const ResolvedFile& file) {
        inReview.insert(Paths::standardised(file.file.url).native());
    });
    std::vector<Path> fresh;
    std::vector<Path> known;
    for (const Path& file : found)
        (inReview.contains(Paths::standardised(file).native()) ? known : fresh).push_back(file);

    if (found.empty()) say("No movies or episodes found there.");
    if (!known.empty()) say(alreadyThere(known.size(), fresh.size(), known.front()));
    if (!fresh.empty()) scan(fresh);
}

void AppModel::scan(std::vector<Path> urls) {
    scanCancel_.cancel();
    scanCancel_ = CancelToken();
    scanning_ = true;
    setPhase(looksThrough());
    scanNow(std::move(urls), scanCancel_);
}

void AppModel::cancelScan() {
    toLookThrough_.clear();
    scanCancel_.cancel();
    scanning_ = false;
    const CancelToken looking = std::exchange(lookCancel_, CancelToken());
    looking.cancel();
    endPhase();
}

void AppModel::place(const std::vector<ResolvedFile>& files) {
    review_.add(files);
    changed();
    analyseAll();
}

void AppModel::endPhase() {
    if (!scanning_) setPhase(looking_ ? looksThrough() : Phase());
}

std::shared_ptr<Matcher> AppModel::matcherFor(std::shared_ptr<TMDBClient> tmdb,
                                              CancelToken cancel) const {
    auto matcher = std::make_shared<Matcher>();
    matcher->tmdb = std::move(tmdb);
    matcher->externals = externals_;
    matcher->ignoreTags = RunMode::hasArgument("--ignore-tags");
    matcher->cancel = cancel;
    return matcher;
}

Task<> AppModel::scanNow(std::vector<Path> urls, CancelToken cancel) {
    auto client = TMDBClient::make(KeyStore::builtIn(), TMDBClient::Refresh::No, cancel);
    const std::shared_ptr<Matcher> matcher = matcherFor(std::move(client), cancel);
    // Reports come from waits of this scan alone, which end before the model does.
    matcher->progress = [this, cancel](int done, int total, const std::string& text) {
        if (cancel.isCancelled() || !isWorking()) return;
        setPhase({Phase::Kind::working, done, total, text});
    };
    std::set<Path> inReview;
    review_.forEach([&](const ResolvedFile& file) { inReview.insert(file.file.url); });

    std::vector<ResolvedFile> fresh;
    try {
        auto resolving = matcher->resolve(std::move(urls), std::move(inReview));
        fresh = co_await resolving;
    } catch (const std::exception&) {
        // Cancelled, or out of memory: Review stays as it was.
    }
    if (cancel.isCancelled()) co_return;
    review_.add(fresh);
    scanning_ = false;
    endPhase();
    analyseAll();
}

void AppModel::analyseAll() {
    review_.forEach([&](const ResolvedFile& file) { plans_.analyse(file.file.url); });
}

}  // namespace marlet
