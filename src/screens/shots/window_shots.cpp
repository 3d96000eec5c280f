#include "screens/shots/window_shots.h"

#include <QScreen>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "foundation/dates.h"
#include "foundation/run_mode.h"
#include "foundation/text.h"
#include "screens/base/qt_text.h"
#include "screens/desktop/desktop_model.h"
#include "screens/frame/screens.h"
#include "screens/history/history_model.h"
#include "screens/inspector/inspector_model.h"
#include "screens/picker/picker_model.h"
#include "screens/review/review_model.h"
#include "screens/shots/demo_source.h"

namespace marlet {

namespace {

using namespace std::chrono_literals;

constexpr QSize largeSize(1440, 900);
constexpr int mostWaits = 1000;
constexpr auto wait = 20ms;

PictureTaker::Watcher watcherOf(const ShotOptions& options) {
    return options.watcher || std::getenv("MARLET_SHOT_WATCHER") != nullptr
               ? PictureTaker::Watcher::Yes
               : PictureTaker::Watcher::No;
}

/// A run that was told its look keeps to it.
std::vector<std::optional<bool>> looksOf() {
    if (RunMode::hasArgument("--appearance")) return {std::nullopt};
    return {false, true};
}

HistoryList::Shared madeUpFailure() {
    HistoryEntry entry;
    entry.id = "sample";
    entry.date = Dates::now();
    entry.path = "/made-up/The Paper Lantern (1962).mp4";
    entry.title = "The Paper Lantern";
    entry.isMovie = true;
    entry.year = 1962;
    entry.result = "failed";
    entry.message = "verification failed: the sound of track 2 differs";
    entry.size = 1'400'000'000;
    entry.batchID = "sample";
    entry.how = "Changed in place";
    return std::make_shared<const HistoryEntry>(std::move(entry));
}

/// A name for a file, of one of another file.
std::string plainName(const LibraryItem& item) {
    std::string name = item.title;
    std::ranges::replace(name, '/', '_');
    if (item.season) name += " S" + std::to_string(*item.season);
    return name;
}

/// Ends when it holds, or after some seconds.
Task<> until(std::function<bool()> holds) {
    for (int i = 0; i < mostWaits && !holds(); i++) {
        auto waiting = Async::sleep(wait);
        co_await waiting;
    }
}

void centre(QQuickWindow& window, QSize size) {
    window.resize(size);
    if (window.screen() == nullptr) return;
    QRect place(QPoint(), size);
    place.moveCenter(window.screen()->availableGeometry().center());
    window.setPosition(place.topLeft());
}

}  // namespace

WindowShots::WindowShots(AppModel& model, Screens& screens, QQuickWindow& window,
                         const Headless::Options& options)
    : model_(model),
      screens_(screens),
      window_(window),
      options_(options.shots),
      scans_(options.tag.empty() && !options.scan.empty()),
      taker_(window, watcherOf(options_)),
      looks_(looksOf()) {
    screens_.desktop()->pose(std::nullopt);
    if (options_.sampleFailure) model_.sampleEntry = madeUpFailure();
    if (options_.window)
        if (const auto size = parseSize(*options_.window))
            centre(window_, QSize(size->first, size->second));
}

Task<bool> WindowShots::take(Moment moment) {
    allSaved_ = true;
    const bool reviewed = moment == Moment::reviewed;
    const std::string base = options_.review.value_or("marlet");
    if (moment == Moment::about) {
        auto taking = takeAbout();
        co_await taking;
    }
    if (moment == Moment::empty && options_.emptyShots) {
        auto taking = takeEmpty(*options_.emptyShots);
        co_await taking;
    }
    if (scans_ && options_.snapshots && (reviewed || moment == Moment::empty)) {
        if (reviewed) {
            auto selecting = select();
            co_await selecting;
        }
        auto taking = one(*options_.snapshots / (reviewed ? "2-list.png" : "1-drop.png"));
        co_await taking;
    }
    if (reviewed && options_.shots) {
        auto taking = takeAll(*options_.shots, base);
        co_await taking;
    }
    if (reviewed && options_.websiteShots) {
        auto taking = takeForOthers(*options_.websiteShots);
        co_await taking;
    }
    if (reviewed && options_.posterPicks) {
        auto taking = takePosters(*options_.posterPicks);
        co_await taking;
    }
    if (reviewed && options_.pickerDemo) {
        auto taking = takeDemo(*options_.pickerDemo);
        co_await taking;
    }
    if (moment == Moment::queued || moment == Moment::written) {
        auto taking = takeQueue(moment == Moment::queued ? "queue" : "finished");
        co_await taking;
    }
    putBack();
    co_return allSaved_;
}

Task<> WindowShots::takeAbout() {
    if (options_.aboutWindow) {
        // By the command that a person would use.
        auto* const entry = window_.findChild<QObject*>(QStringLiteral("menuAbout"));
        if (entry != nullptr) QMetaObject::invokeMethod(entry, "triggered");
        auto taking = one(*options_.aboutWindow);
        co_await taking;
    } else {
        screens_.openAbout();
        auto taking = one(*options_.about, QStringLiteral("aboutSheet"));
        co_await taking;
    }
    auto shutting = shut(QStringLiteral("aboutSheet"));
    co_await shutting;
}

Task<> WindowShots::takeEmpty(Path folder) {
    const char* const names[] = {"review.png", "queue.png", "history.png"};
    model_.forceEmptyHistory = true;
    for (int tab = 0; tab < 3; tab++) {
        show(tab);
        auto taking = inBothLooks(folder / names[tab]);
        co_await taking;
    }
    model_.forceEmptyHistory = false;
}

Task<> WindowShots::takeAll(Path folder, std::string base) {
    const auto file = [&](const char* name) { return folder / (base + "-" + name + ".png"); };
    auto selecting = select();
    co_await selecting;
    auto takingList = inBothLooks(file("review"));
    co_await takingList;
    const char* const pages[] = {"details", "tracks", "artwork"};
    for (int page = 0; model_.inspectorFile && page < 3; page++) {
        auto inspecting = inspect(page);
        co_await inspecting;
        auto taking = inBothLooks(file(pages[page]));
        co_await taking;
    }
    if (model_.inspectorFile) {
        auto picking = pick(*model_.inspectorFile, file("match"), 0);
        co_await picking;
    }
    show(2);
    auto takingHistory = inBothLooks(file("history"));
    co_await takingHistory;
    show(0);
    auto takingSettings = underSheet(
        "settingsSheet", [this] { screens_.openSettings(); }, file("settings"));
    co_await takingSettings;
    auto takingAbout = underSheet(
        "aboutSheet", [this] { screens_.openAbout(); }, file("about"));
    co_await takingAbout;
}

Task<> WindowShots::takeForOthers(Path folder) {
    const QSize before = window_.size();
    centre(window_, largeSize);
    auto selecting = select();
    co_await selecting;
    if (model_.inspectorFile) {
        auto inspecting = inspect(InspectorModel::detailsPage);
        co_await inspecting;
        auto taking = inBothLooks(folder / "review.png");
        co_await taking;
        auto inspectingArtwork = inspect(InspectorModel::artworkPage);
        co_await inspectingArtwork;
        auto takingArtwork = inBothLooks(folder / "artwork.png");
        co_await takingArtwork;
        auto picking = pick(*model_.inspectorFile, folder / "match.png", 0);
        co_await picking;
    }
    show(2);
    auto taking = inBothLooks(folder / "history.png");
    co_await taking;
    centre(window_, before);
}

Task<> WindowShots::takePosters(Path folder) {
    const std::vector<LibraryItem> items = model_.items();
    for (const LibraryItem& item : items) {
        if (!item.files.front().match) continue;
        auto loading = model_.loadDrafts(item);
        co_await loading;
        model_.reviewID = item.id;
        model_.inspectorFile = item.files.front().file.url;
        auto inspecting = inspect(InspectorModel::artworkPage);
        co_await inspecting;
        auto taking = inBothLooks(folder / (plainName(item) + ".png"));
        co_await taking;
    }
}

Task<> WindowShots::takeDemo(Path folder) {
    const ResolvedFile film = DemoSource::film();
    const ResolvedFile episode = DemoSource::episode();
    model_.place({film, episode});
    auto pickingFilm = pick(film.file.url, folder / "film.png", 0);
    co_await pickingFilm;
    auto pickingShow = pick(episode.file.url, folder / "show.png", 1);
    co_await pickingShow;
    model_.removeFromReview({film.file.url, episode.file.url});
}

Task<> WindowShots::takeQueue(std::string name) {
    if (!options_.shots && !options_.websiteShots) co_return;
    show(1);
    // What was said about it would lie over the picture.
    model_.say({});
    if (options_.shots) {
        auto taking = inBothLooks(*options_.shots /
                                  (options_.review.value_or("marlet") + "-" + name + ".png"));
        co_await taking;
    }
    if (!options_.websiteShots) co_return;
    const QSize before = window_.size();
    centre(window_, largeSize);
    auto taking = inBothLooks(*options_.websiteShots / (name + ".png"));
    co_await taking;
    centre(window_, before);
}

Task<> WindowShots::inBothLooks(Path file) {
    for (const std::optional<bool>& dark : looks_) {
        screens_.desktop()->pose(dark);
        const std::string name =
            file.stem().string() + (dark.value_or(false) ? "-dark.png" : ".png");
        auto taking = one(file.parent_path() / name);
        co_await taking;
    }
    screens_.desktop()->pose(looks_.front());
}

Task<> WindowShots::one(Path file, QString sheet) {
    screens_.refreshNow();
    auto taking = taker_.take(file, sheet);
    const bool isTaken = co_await taking;
    if (isTaken) co_return;
    allSaved_ = false;
    std::fputs(("marlet: can't write " + file.string() + "\n").c_str(), stderr);
}

Task<> WindowShots::inspect(int page) {
    model_.inspectorShown = true;
    show(0);
    screens_.inspector()->setPage(page);
    screens_.refreshNow();
    auto waiting = until([this] { return !screens_.inspector()->isLoading(); });
    co_await waiting;
    if (page != InspectorModel::tracksPage || !model_.inspectorFile) co_return;
    const Path file = *model_.inspectorFile;
    if (PlanStore::needsPlan(file)) {
        auto planning = model_.planFor(file);
        co_await planning;
    } else {
        auto loading = model_.tracks().load(file);
        co_await loading;
    }
}

Task<> WindowShots::pick(Path file, Path picture, int shownEpisodes) {
    model_.matchPickerURL = file;
    screens_.refreshNow();
    PickerModel* const picker = screens_.picker();
    if (picker->isOpen()) {
        auto waiting = until([picker] {
            return picker->pane()->results()->rowCount() > 0 || picker->pane()->isNothing();
        });
        co_await waiting;
        if (shownEpisodes > 0) {
            picker->pane()->setResult(0);
            picker->pane()->use();
        }
        auto taking = inBothLooks(picture);
        co_await taking;
        if (picker->isOpen()) picker->close();
    }
    model_.matchPickerURL.reset();
    screens_.refreshNow();
    auto settling = taker_.settle();
    co_await settling;
}

Task<> WindowShots::underSheet(const char* sheet, std::function<void()> open, Path picture) {
    const QString name = QString::fromLatin1(sheet);
    open();
    auto taking = inBothLooks(picture);
    co_await taking;
    auto shutting = shut(name);
    co_await shutting;
}

Task<> WindowShots::shut(QString sheet) {
    auto* const object = window_.findChild<QObject*>(sheet);
    if (object != nullptr) QMetaObject::invokeMethod(object, "close");
    auto settling = taker_.settle();
    co_await settling;
}

const LibraryItem* WindowShots::chosenItem() const {
    const auto& items = model_.items();
    if (items.empty()) return nullptr;
    const auto isChosen = [&](const LibraryItem& item) {
        if (options_.select) return Text::contains(item.title, *options_.select);
        return options_.inspectFile && std::ranges::any_of(item.files, [&](const auto& file) {
                   return Text::contains(file.file.url.filename().string(), *options_.inspectFile);
               });
    };
    const auto found = std::ranges::find_if(items, isChosen);
    return found == items.end() ? &items.front() : &*found;
}

Task<> WindowShots::select() {
    show(0);
    const LibraryItem* const chosen = chosenItem();
    if (chosen == nullptr) co_return;
    const LibraryItem item = *chosen;
    model_.reviewID = item.id;
    Path file = item.files.front().file.url;
    for (const ResolvedFile& each : item.files)
        if (options_.inspectFile &&
            Text::contains(each.file.url.filename().string(), *options_.inspectFile))
            file = each.file.url;
    model_.inspectorFile = file;
    screens_.refreshNow();
    auto loading = model_.loadDrafts(item);
    co_await loading;
}

void WindowShots::show(int tab) {
    screens_.setTab(tab);
    screens_.refreshNow();
}

void WindowShots::putBack() {
    model_.tab = AppModel::Tab::review;
    model_.inspectorShown = false;
    screens_.desktop()->pose(std::nullopt);
    screens_.refreshNow();
}

}  // namespace marlet
