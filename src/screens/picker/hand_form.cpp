#include "screens/picker/hand_form.h"

#include <QDate>
#include <QRegularExpression>
#include <algorithm>

#include "foundation/text.h"
#include "foundation/title_match.h"
#include "identify/asking.h"
#include "screens/base/qt_text.h"
#include "sources/details_loader.h"
#include "sources/key_store.h"
#include "sources/tmdb_client.h"

namespace marlet {

namespace {

constexpr int pauseMs = 500;

std::shared_ptr<TMDBClient> client(const CancelToken& cancel) {
    auto made = TMDBClient::make(KeyStore::builtIn(), TMDBClient::Refresh::No, cancel);
    if (!made) throw TMDBError::noKey();
    return made;
}

bool isNamed(const TMDBSearchHit& hit, const std::string& wanted) {
    return TitleMatch::normalise(hit.anyTitle()) == TitleMatch::normalise(wanted);
}

/// The actors in the order of the credits, each once.
std::vector<std::string> actors(const TMDBMovieFull& film) {
    std::vector<std::string> names;
    if (!film.credits || !film.credits->cast) return names;
    std::vector<TMDBPerson> cast = *film.credits->cast;
    const auto place = [](const TMDBPerson& person) { return person.order.value_or(100000); };
    std::stable_sort(cast.begin(), cast.end(),
                     [&](const TMDBPerson& a, const TMDBPerson& b) { return place(a) < place(b); });
    for (const TMDBPerson& person : cast) names.push_back(person.name);
    return DetailsLoader::unique(names);
}

}  // namespace

HandForm::HandForm(AppModel& model, QObject* parent) : PickerAsker(model, parent) {
    pause_.setSingleShot(true);
    pause_.setInterval(pauseMs);
    connect(&pause_, &QTimer::timeout, this,
            [this] { findFilm(fromQt(title_.simplified()), renew(filmSearch_)); });
}

HandForm::~HandForm() {
    blockSignals(true);
    back();
}

QString HandForm::intro() const {
    if (!isTV()) return tr("Not in the database? Type what you know; Marlet keeps your words.");
    return tr("The database has no such episode of %1. Type what you know; Marlet keeps your words "
              "and uses the show's and season's artwork. It stays marked “Check this” until you "
              "say it's right.")
        .arg(toQt(start_.title));
}

void HandForm::begin(const PickerFile& file, Start start) {
    back();
    file_ = file;
    start_ = std::move(start);
    open_ = true;
    const std::optional<int> season = start_.season ? start_.season : file.season;
    season_ = QString::number(season.value_or(1));
    episode_ = file.episode ? QString::number(*file.episode) : QString();
    title_ = isTV() ? toQt(file.episodeTitle) : toQt(start_.title);
    description_.clear();
    date_.clear();
    cast_.clear();
    usedFilm_.reset();
    Q_EMIT edited();
    Q_EMIT changed();
    if (!isTV()) return;
    if (start_.tmdbID == 0) findShow(renew(showSearch_));
    findFilm(fromQt(title_), renew(filmSearch_));
}

void HandForm::back() {
    pause_.stop();
    renew(showSearch_);
    renew(filmSearch_);
    open_ = false;
    film_.reset();
    clearFailure();
    Q_EMIT changed();
}

void HandForm::setTitle(const QString& title) {
    if (title_ == title) return;
    title_ = title;
    if (isTV()) pause_.start();
    Q_EMIT edited();
}

bool HandForm::isDateWrong() const {
    static const QRegularExpression form(QStringLiteral("^\\d{4}-\\d{2}-\\d{2}$"));
    const QString date = date_.trimmed();
    if (date.isEmpty()) return false;
    return !form.match(date).hasMatch() || !QDate::fromString(date, Qt::ISODate).isValid();
}

bool HandForm::canTag() const {
    if (title_.trimmed().isEmpty() || isDateWrong()) return false;
    if (!isTV()) return true;
    const auto isNumber = [](const QString& text) {
        const auto number = Text::integer(fromQt(text.trimmed()));
        return number && *number >= 0 && *number <= 9999;
    };
    return isNumber(season_) && isNumber(episode_);
}

QString HandForm::film() const {
    return film_ && film_->id != usedFilm_ ? toQt(film_->title) : QString();
}

/// The show's pictures, for one that was not found by TMDB's own search.
Task<> HandForm::findShow(CancelToken cancel) {
    try {
        const auto tmdb = client(cancel);
        const std::string wanted = start_.title;
        auto asking = tmdb->searchShow(wanted);
        const std::vector<TMDBSearchHit> hits = co_await asking;
        cancel.check();
        for (const TMDBSearchHit& hit : hits) {
            if (!isNamed(hit, wanted)) continue;
            start_.tmdbID = hit.id;
            start_.year = hit.year();
            start_.poster = hit.poster_path.value_or("");
            break;
        }
    } catch (const std::exception&) {
        // Words without pictures are worth keeping, too.
    }
}

Task<> HandForm::findFilm(std::string title, CancelToken cancel) {
    try {
        film_.reset();
        if (!title.empty()) {
            const auto tmdb = client(cancel);
            auto asking = tmdb->searchMovie(title);
            const std::vector<TMDBSearchHit> hits = co_await asking;
            cancel.check();
            const std::string withShow = start_.title + " " + title;
            for (const TMDBSearchHit& hit : hits) {
                if (!isNamed(hit, title) && !isNamed(hit, withShow)) continue;
                film_ = Film{hit.id, hit.anyTitle()};
                break;
            }
        }
    } catch (const std::exception&) {
        // No offer.
    }
    if (!cancel.isCancelled()) Q_EMIT changed();
}

void HandForm::useFilm() {
    if (film_) takeFilm(*film_, renew(filmSearch_));
}

Task<> HandForm::takeFilm(Film film, CancelToken cancel) {
    const Waiting waiting(*this);
    try {
        clearFailure();
        const auto tmdb = client(cancel);
        auto asking = tmdb->movieFull(film.id);
        const TMDBMovieFull full = co_await asking;
        cancel.check();
        usedFilm_ = film.id;
        title_ = toQt(full.title);
        description_ = toQt(full.overview);
        date_ = toQt(full.release_date);
        cast_ = actors(full);
        Q_EMIT edited();
        Q_EMIT changed();
    } catch (const std::exception& error) {
        if (!cancel.isCancelled()) fail(error);
    }
}

void HandForm::tag() {
    if (!open_ || !canTag()) return;
    HandTag typed;
    typed.kind = isTV() ? MediaKind::tv : MediaKind::movie;
    typed.tmdbID = start_.tmdbID;
    typed.year = start_.year;
    if (!start_.poster.empty()) typed.posterPath = start_.poster;
    if (isTV()) {
        typed.show = start_.title;
        typed.season = Text::integer(fromQt(season_.trimmed()));
        typed.episode = Text::integer(fromQt(episode_.trimmed()));
    } else {
        const auto year = date_.trimmed().left(4).toInt();
        if (year > 0) typed.year = year;
    }
    typed.details.title = fromQt(title_.trimmed());
    typed.details.description = fromQt(description_.trimmed());
    typed.details.releaseDate = fromQt(date_.trimmed());
    typed.details.cast = cast_;
    model().manualTag(file_.url, typed);
    Q_EMIT taken();
}

}  // namespace marlet
