#include "screens/picker/picker_show.h"

#include <algorithm>

#include "foundation/text.h"
#include "foundation/title_match.h"
#include "screens/base/qt_text.h"
#include "screens/picker/picker_text.h"
#include "screens/pictures/art_address.h"

namespace marlet {

PickerShow::PickerShow(AppModel& model, PickerSource& source, QObject* parent)
    : PickerAsker(model, parent), source_(source) {}

PickerShow::~PickerShow() {
    blockSignals(true);
    close();
}

QString PickerShow::title() const {
    return show_ ? toQt(show_->title) : QString();
}

QString PickerShow::facts() const {
    return show_ ? PickerText::facts(*show_) : QString();
}

QString PickerShow::poster() const {
    return show_ ? ArtAddress::remote(show_->poster, "w185") : QString();
}

QStringList PickerShow::seasons() const {
    QStringList names;
    for (const int number : numbers_) names += PickerText::seasonName(number);
    return names;
}

std::optional<int> PickerShow::seasonNumber() const {
    if (season_ < 0) return std::nullopt;
    return numbers_[static_cast<std::size_t>(season_)];
}

void PickerShow::start(const PickerFile& file, const PickerTitle& show) {
    close();
    file_ = file;
    show_ = show;
    Q_EMIT changed();
    load(Fresh::No, renew(loading_));
}

void PickerShow::close() {
    // What waits is let go before anything of it is taken away.
    renew(loading_);
    renew(searching_);
    renew(taking_);
    show_.reset();
    season_ = -1;
    takeSeasons({});
    inSeason_.reset();
    inAll_.reset();
    words_.clear();
    whole_ = false;
    clearFailure();
    showRows();
}

void PickerShow::takeSeasons(std::vector<int> numbers) {
    if (numbers == numbers_) return;
    numbers_ = std::move(numbers);
    Q_EMIT seasonsChanged();
}

void PickerShow::chooseFirstSeason() {
    const int wanted = file_.season.value_or(1);
    const auto own = std::find(numbers_.begin(), numbers_.end(), wanted);
    if (own != numbers_.end()) {
        season_ = static_cast<int>(own - numbers_.begin());
        return;
    }
    // The last one that isn't of Specials.
    const auto last = std::max_element(numbers_.begin(), numbers_.end());
    season_ = last == numbers_.end() ? -1 : static_cast<int>(last - numbers_.begin());
}

Task<> PickerShow::load(Fresh fresh, CancelToken cancel) {
    const Waiting waiting(*this);
    const auto before = seasonNumber();
    try {
        clearFailure();
        auto asking = source_.seasons(*show_, fresh, cancel);
        std::vector<int> numbers = co_await asking;
        cancel.check();
        takeSeasons(std::move(numbers));
        show_->seasons = static_cast<int>(
            std::count_if(numbers_.begin(), numbers_.end(), [](int each) { return each > 0; }));
        const auto same =
            before ? std::find(numbers_.begin(), numbers_.end(), *before) : numbers_.end();
        if (same != numbers_.end())
            season_ = static_cast<int>(same - numbers_.begin());
        else
            chooseFirstSeason();
        Q_EMIT changed();
        auto loading = loadSeason(fresh, cancel);
        co_await loading;
        if (cancel.isCancelled() || !failure().isEmpty()) co_return;
        if (fresh == Fresh::Yes) {
            inAll_.reset();
            model().say("Refreshed from TMDB.");
        }
        if (!words_.isEmpty() && !inAll_) loadAll(fresh, renew(searching_));
    } catch (const std::exception& error) {
        if (!cancel.isCancelled()) fail(error);
    }
}

Task<> PickerShow::loadSeason(Fresh fresh, CancelToken cancel) {
    const Waiting waiting(*this);
    try {
        std::vector<PickerEpisode> found;
        if (const auto number = seasonNumber()) {
            auto asking = source_.episodes(*show_, *number, fresh, cancel);
            found = co_await asking;
            cancel.check();
        }
        inSeason_ = std::move(found);
        showRows();
        if (words_.isEmpty()) preselect();
    } catch (const std::exception& error) {
        if (!cancel.isCancelled()) fail(error);
    }
}

void PickerShow::pickSeason(int index) {
    if (index < 0 || index >= static_cast<int>(numbers_.size()) || index == season_) return;
    season_ = index;
    inSeason_.reset();
    words_.clear();
    clearFailure();
    showRows();
    loadSeason(Fresh::No, renew(loading_));
}

void PickerShow::refresh() {
    if (!show_) return;
    load(Fresh::Yes, renew(loading_));
    Q_EMIT changed();
}

void PickerShow::tryAgain() {
    if (!show_) return;
    load(Fresh::No, renew(loading_));
    if (!words_.isEmpty() && !inAll_) loadAll(Fresh::No, renew(searching_));
    Q_EMIT changed();
}

void PickerShow::search(const QString& words) {
    const bool wasSearching = !words_.isEmpty();
    words_ = words.trimmed();
    if (words_.isEmpty()) renew(searching_);
    showRows();
    if (words_.isEmpty())
        preselect();
    else if (!inAll_ && (!wasSearching || !failure().isEmpty()) && !numbers_.empty())
        loadAll(Fresh::No, renew(searching_));
}

Task<> PickerShow::loadAll(Fresh fresh, CancelToken cancel) {
    const Waiting waiting(*this);
    try {
        clearFailure();
        auto asking = source_.all(*show_, numbers_, fresh, cancel);
        auto found = co_await asking;
        cancel.check();
        inAll_ = std::move(found);
        showRows();
    } catch (const std::exception& error) {
        if (!cancel.isCancelled()) fail(error);
    }
}

std::vector<PickerEpisode> PickerShow::hits() const {
    const std::vector<std::string> wanted = Text::words(TitleMatch::normalise(fromQt(words_)));
    std::vector<PickerEpisode> found;
    if (wanted.empty()) return found;
    for (const PickerEpisode& episode : inAll_.value_or(std::vector<PickerEpisode>())) {
        // The one without its article, the other without a change to its marks.
        const std::string title =
            TitleMatch::normalise(episode.title) + " " + Text::fold(episode.title);
        if (std::all_of(wanted.begin(), wanted.end(),
                        [&](const std::string& word) { return Text::contains(title, word); }))
            found.push_back(episode);
    }
    return found;
}

QString PickerShow::fileFor(const PickerEpisode& episode) const {
    QStringList names;
    for (const EpisodeChoice& each : file_.row) {
        const bool isIt = each.episode == episode.number || each.episodeEnd == episode.number;
        if (isIt && (isWhole() || each.file == file_.url)) names += toQt(each.file.filename());
    }
    return names.join(QStringLiteral(", "));
}

void PickerShow::showRows() {
    const bool searching = !words_.isEmpty();
    shownEpisodes_ = searching ? hits() : inSeason_.value_or(std::vector<PickerEpisode>());
    std::vector<PickerEpisodeRow> rows;
    for (const PickerEpisode& each : shownEpisodes_)
        rows.push_back(PickerText::row(each, searching, searching ? QString() : fileFor(each)));
    rows_.set(std::move(rows));
    episode_ = shownEpisodes_.empty() ? -1 : std::clamp(episode_, 0, rows_.count() - 1);
    if (searching && !shownEpisodes_.empty()) episode_ = 0;
    Q_EMIT changed();
}

void PickerShow::preselect() {
    const auto own = std::find_if(shownEpisodes_.begin(), shownEpisodes_.end(),
                                  [&](const auto& each) { return each.number == file_.episode; });
    episode_ = own == shownEpisodes_.end() ? -1 : static_cast<int>(own - shownEpisodes_.begin());
    Q_EMIT changed();
}

void PickerShow::setEpisode(int row) {
    const int chosen = row >= 0 && row < rows_.count() ? row : -1;
    if (episode_ == chosen) return;
    episode_ = chosen;
    Q_EMIT changed();
}

bool PickerShow::has(int episode) const {
    return inSeason_ && std::any_of(inSeason_->begin(), inSeason_->end(),
                                    [&](const auto& each) { return each.number == episode; });
}

QString PickerShow::note() const {
    if (!words_.isEmpty() || !inSeason_ || inSeason_->empty() || !file_.episode) return {};
    // Of another season than the file's, its number says nothing.
    if (file_.season && file_.season != seasonNumber()) return {};
    int last = 0;
    for (const PickerEpisode& each : *inSeason_) last = std::max(last, each.number);
    if (*file_.episode <= last) return {};
    return tr("The database stops at episode %1; this file says episode %2")
        .arg(last)
        .arg(*file_.episode);
}

QString PickerShow::emptyTitle() const {
    if (!failure().isEmpty() || !shownEpisodes_.empty()) return {};
    if (!words_.isEmpty())
        return inAll_ ? tr("No episode in any season or Specials has those words.") : QString();
    if (!inSeason_) return {};
    return source_.id() == SourceID::tmdb
               ? tr("This season has no episodes in the database.")
               : tr("This season has no episodes on %1").arg(toQt(displayName(source_.id())));
}

int PickerShow::wholeCount() const {
    const bool isAmongThem =
        std::any_of(file_.row.begin(), file_.row.end(),
                    [&](const EpisodeChoice& each) { return each.file == file_.url; });
    return isAmongThem && file_.row.size() > 1 ? static_cast<int>(file_.row.size()) : 0;
}

QString PickerShow::wholeText() const {
    return tr("Use this show for all %1 episodes of this season").arg(wholeCount());
}

QString PickerShow::wholeNote() const {
    if (!isWhole() || !inSeason_) return tr("Each file keeps its own episode number.");
    const auto missing = file_.row.size() - fittingRow().size();
    if (missing == 0) return tr("Each file keeps its own episode number.");
    if (missing == 1) return tr("1 file says a number that this season doesn't have; it stays.");
    return tr("%1 files say numbers that this season doesn't have; they stay.").arg(missing);
}

void PickerShow::setWhole(bool whole) {
    whole_ = whole;
    showRows();
}

std::vector<EpisodeChoice> PickerShow::fittingRow() const {
    std::vector<EpisodeChoice> fitting;
    for (EpisodeChoice choice : file_.row) {
        if (!has(choice.episode)) continue;
        if (choice.episodeEnd && !has(*choice.episodeEnd)) choice.episodeEnd.reset();
        fitting.push_back(std::move(choice));
    }
    return fitting;
}

bool PickerShow::canUse() const {
    if (!show_) return false;
    return isWhole() ? !fittingRow().empty() : episode_ >= 0;
}

void PickerShow::use() {
    if (!canUse()) return;
    if (isWhole()) {
        take(fittingRow(), *seasonNumber(), renew(taking_));
        return;
    }
    const PickerEpisode& chosen = shownEpisodes_[static_cast<std::size_t>(episode_)];
    std::vector<EpisodeChoice> one = {{file_.url, chosen.number, {}}};
    take(std::move(one), chosen.season, renew(taking_));
}

void PickerShow::take(std::vector<EpisodeChoice> files, int season, CancelToken cancel) {
    choose([this, files = std::move(files), season,
            cancel] { return source_.takeEpisodes(files, *show_, season, cancel); },
           cancel);
}

}  // namespace marlet
