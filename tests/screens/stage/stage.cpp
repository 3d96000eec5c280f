#include "screens/stage/stage.h"

#include <QImage>
#include <QQmlContext>
#include <deque>

#include "foundation/preferences.h"
#include "foundation/run_mode.h"
#include "screens/base/qt_text.h"
#include "screens/desktop/desktop_model.h"
#include "screens/pictures/art_address.h"
#include "screens/pictures/art_provider.h"
#include "screens/stage/told.h"
#include "write/restore_points.h"

extern void qml_register_types_Marlet();

namespace marlet::test {

using namespace std::chrono_literals;
using namespace Told;

Stage::Stage(QObject* parent) : QObject(parent) {
    Preferences::install(std::make_unique<MemoryPreferences>());
    RunMode::setArguments({});
    for (const auto& [name, value] : server_.environment()) environment_.emplace_back(name, value);
    environment_.emplace_back("MARLET_NO_KEYCHAIN", "");
    RunMode::setArguments({});
    make();
}

Stage::~Stage() {
    plans_->release();
    screens_.reset();
    model_.reset();
    Async::settle(20s);
}

void Stage::make() {
    screens_.reset();
    model_.reset();
    Preferences::install(std::make_unique<MemoryPreferences>());
    Preferences::current().setBoolean("sourceOn.appleTV", false);
    worker_ = std::make_shared<StagedWorker>();
    model_ = std::make_unique<AppModel>(parts());
    if (!gate_) {
        gate_ = std::make_unique<QuitGate>();
        // Nothing else is cleared up at such an end.
        gate_->onEnd = [this] {
            std::error_code none;
            std::filesystem::remove_all(library_.path(), none);
            std::filesystem::remove_all(home_.path(), none);
        };
    }
    screens_ = std::make_unique<Screens>(*model_, *gate_);
    // Most tests needn't see a sheet fade; those that watch motion set this.
    if (!qEnvironmentVariableIsSet("MARLET_STAGE_MOVES")) screens_->desktop()->pose(std::nullopt);
}

AppModel::Parts Stage::parts() {
    AppModel::Parts parts;
    parts.worker = StagedWorker::of(worker_);
    parts.planBuilder = StagedPlans::of(plans_);
    parts.history = &history_;
    return parts;
}

void Stage::qmlEngineAvailable(QQmlEngine* engine) {
    // Each file of tests has an engine of its own, and so a model of its own.
    make();
    history_.clear();
    qml_register_types_Marlet();
    engine->addImageProvider(QLatin1String(ArtProvider::name), new ArtProvider);
    engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    qmlRegisterSingletonInstance("MarletTest", 1, 0, "Stage", this);
}

QString Stage::library() const {
    return toQt(library_.path());
}

std::filesystem::path Stage::path(const std::string& name) const {
    return library_ / name;
}

void Stage::clear() {
    plans_->release();
    // A run that was left on ends first.
    worker_->letGo();
    while (model_->queue().active()) Async::wait(Async::sleep(2ms));
    std::vector<AppModel::Path> files;
    for (const ResolvedFile& file : model_->allFiles()) files.push_back(file.file.url);
    model_->queue().dismiss();
    model_->removeFromReview(files);
    files.clear();
    for (const ResolvedFile& file : model_->allFiles()) files.push_back(file.file.url);
    model_->removeFromReview(files);
    history_.clear();
    model_->discardUnfinished();
    model_->notice.reset();
    model_->tab = AppModel::Tab::review;
    model_->reviewID.reset();
    model_->inspectorFile.reset();
    model_->inspectorPage = 0;
    model_->inspectorShown = false;
    model_->matchPickerURL.reset();
    model_->historyFilter = 0;
    model_->historyQuery.clear();
    model_->historyOpen.clear();
    model_->askClearHistory = false;
    worker_->held.clear();
    worker_->outcomes.clear();
    server_.clearFaults();
    setTextScale(1);
    setRightToLeft(false);
    Preferences::install(std::make_unique<MemoryPreferences>());
    Preferences::current().setBoolean("sourceOn.appleTV", false);
    settle();
}

void Stage::place(const QVariantList& files) {
    std::vector<ResolvedFile> placed;
    for (const QVariant& each : files) {
        const QVariantMap map = each.toMap();
        const std::string name = text(map, "name").value_or("");
        placed.push_back(resolvedOf(map, library_.write(name, std::string_view("not a film"))));
    }
    model_->place(placed);
    settle();
}

void Stage::placeMany(int count) {
    std::vector<ResolvedFile> placed;
    placed.reserve(static_cast<std::size_t>(count));
    for (int film = 0; film < count; film++) {
        QVariantMap map{{QStringLiteral("title"), QStringLiteral("Film %1").arg(film)},
                        {QStringLiteral("year"), 1920 + film % 100}};
        if (film % 10 == 0)
            map.insert(QStringLiteral("reasons"),
                       QStringList{QStringLiteral("The length differs by 12 minutes")});
        placed.push_back(resolvedOf(map, library_ / ("Film " + std::to_string(film) + ".mp4")));
    }
    model_->place(placed);
    settle();
}

void Stage::draft(const QString& name, const QVariantMap& fields) {
    FileDraft draft;
    Details& details = draft.details;
    details.title = text(fields, "title").value_or("");
    details.description = text(fields, "description").value_or("");
    details.longDescription = text(fields, "longDescription").value_or("");
    details.cast = texts(fields, "cast");
    details.directors = texts(fields, "directors");
    details.writers = texts(fields, "writers");
    details.genre = text(fields, "genre").value_or("");
    details.rating = text(fields, "rating").value_or("");
    details.releaseDate = text(fields, "releaseDate").value_or("");
    details.show = text(fields, "show").value_or("");
    details.kind = details.show.empty() ? MediaKind::movie : MediaKind::tv;
    details.season = number(fields, "season");
    details.episode = number(fields, "episode");
    details.episodeEnd = number(fields, "episodeEnd");
    draft.original = details;
    draft.wide = artworkOf(fields, "wide", ArtworkOption::Shape::wide);
    draft.tall = artworkOf(fields, "tall", ArtworkOption::Shape::tall);
    draft.seasonKey = text(fields, "seasonKey");
    model_->drafts().put(path(fromQt(name)), draft);
    settle();
}

void Stage::leaveUnfinished(const QStringList& queued, const QStringList& corrected) {
    {
        AppModel earlier(parts());
        Async::wait(earlier.openUnfinished());
        std::vector<ResolvedFile> files;
        // Of the sample catalogue: their details are asked for when they come back.
        std::deque<int> ids = {196301, 201001, 194501, 196801, 192201};
        for (const QString& name : queued + corrected) {
            const int id = ids.front();
            ids.pop_front();
            ids.push_back(id);
            const QVariantMap map{
                {QStringLiteral("id"), id},
                {QStringLiteral("title"), toQt(std::filesystem::path(fromQt(name)).stem())},
                {QStringLiteral("reasons"), QStringList{QStringLiteral("The length differs")}}};
            makeFile(name);
            files.push_back(resolvedOf(map, path(fromQt(name))));
            // It is recognised by its size.
            files.back().file.size =
                static_cast<std::int64_t>(std::filesystem::file_size(files.back().file.url));
        }
        earlier.place(files);
        for (const ResolvedFile& file : files) earlier.confirm(file.file.url);
        for (const QString& name : queued) {
            FileDraft draft;
            draft.details.title = fromQt(name);
            draft.original = draft.details;
            earlier.drafts().put(path(fromQt(name)), draft);
        }
        std::vector<LibraryItem> items;
        for (const LibraryItem& item : earlier.items())
            if (queued.contains(toQt(item.files.front().file.url.filename())))
                items.push_back(item);
        if (!items.empty()) Async::wait(earlier.addToQueueNow(items));
        earlier.keepUnfinished();
    }
    Async::settle(20s);
    Async::wait(model_->openUnfinished());
    settle();
}

void Stage::addAndWait(const QStringList& names) {
    std::vector<AppModel::Path> urls;
    for (const QString& name : names) urls.push_back(path(fromQt(name)));
    model_->add(urls);
    while (model_->isWorking()) Async::wait(Async::sleep(2ms));
    settle();
}

void Stage::makeFile(const QString& name) {
    library_.write(fromQt(name), std::string_view("not much of a film"));
}

QString Stage::madePicture() const {
    const std::filesystem::path file = library_ / "a picture.png";
    QImage picture(60, 90, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    picture.save(toQt(file));
    return ArtAddress::saved(file);
}

bool Stage::exists(const QString& name) const {
    return std::filesystem::exists(path(fromQt(name)));
}

void Stage::queueJobs(const QStringList& names) {
    std::vector<WriteQueue::Job> jobs;
    for (const QString& name : names) {
        worker_->held.insert(fromQt(name));
        jobs.push_back(stagedJob(fromQt(name)));
    }
    model_->queue().add(std::move(jobs));
    settle();
}

void Stage::reportStep(const QString& step, double fraction) {
    worker_->report(fromQt(step), fraction);
    Async::wait(Async::sleep(5ms));
    settle();
}

void Stage::setCritical(bool on) {
    worker_->setCritical(on);
    settle();
}

void Stage::endJob(const QString& status, const QString& message) {
    endJobWith({{QStringLiteral("status"), status}, {QStringLiteral("message"), message}});
}

void Stage::endJobWith(const QVariantMap& told) {
    WriteOutcome outcome{.status = statusOf(told.value(QStringLiteral("status")).toString())};
    outcome.message = text(told, "message").value_or("");
    if (const auto before = told.find(QStringLiteral("before")); before != told.end())
        outcome.before = before->toDouble();
    if (const auto after = told.find(QStringLiteral("after")); after != told.end())
        outcome.after = after->toDouble();
    if (const auto output = text(told, "output")) outcome.output = path(*output);
    const WriteQueue& queue = model_->queue();
    const std::string id = queue.current() == nullptr ? "" : queue.current()->id;
    worker_->end(std::move(outcome));
    // Until its record is in History, and the next job runs or the run has ended.
    while (queue.active() && (queue.current() == nullptr || queue.current()->id == id))
        Async::wait(Async::sleep(1ms));
    settle();
}

void Stage::keepOriginal(const QString& name) {
    RestorePoints::saveIfMissing(path(fromQt(name)), {}, 1);
}

void Stage::addHistory(const QVariantList& entries) {
    for (qsizetype index = entries.size(); index-- > 0;)
        history_.append(entryOf(entries[index].toMap(), static_cast<int>(index), library_.path()));
    settle();
}

int Stage::historyCount() const {
    return static_cast<int>(model_->history().entries().size());
}

void Stage::say(const QString& words) {
    model_->say(fromQt(words));
    settle();
}

void Stage::setNotice(const QString& words) {
    if (words.isEmpty())
        model_->notice.reset();
    else
        model_->notice = fromQt(words);
    settle();
}

void Stage::setSetting(const QString& key, const QVariant& value) {
    Preferences& preferences = Preferences::current();
    if (value.typeId() == QMetaType::Bool)
        preferences.setBoolean(fromQt(key), value.toBool());
    else
        preferences.setText(fromQt(key), fromQt(value.toString()));
    settle();
}

QVariant Stage::setting(const QString& key) const {
    const Preferences& preferences = Preferences::current();
    if (const auto on = preferences.boolean(fromQt(key))) return *on;
    if (const auto words = preferences.text(fromQt(key))) return toQt(*words);
    return {};
}

void Stage::settle() {
    screens_->refreshNow();
}

QStringList Stage::fileNames() const {
    QStringList names;
    for (const ResolvedFile& file : model_->allFiles())
        names.append(toQt(file.file.url.filename()));
    return names;
}

QStringList Stage::queuedNames() const {
    QStringList names;
    for (const WriteQueue::Job& job : model_->queue().jobs())
        names.append(toQt(job.request.file.filename()));
    return names;
}

const ResolvedFile* Stage::find(const QString& name) const {
    for (const LibraryItem& item : model_->items())
        for (const ResolvedFile& file : item.files)
            if (file.file.url == path(fromQt(name))) return &file;
    return nullptr;
}

bool Stage::isConfirmed(const QString& name) const {
    const ResolvedFile* file = find(name);
    return file != nullptr && model_->isConfirmed(*file);
}

QString Stage::matchedTitle(const QString& name) const {
    const ResolvedFile* file = find(name);
    return file != nullptr && file->match ? toQt(file->match->title) : QString();
}

QVariantMap Stage::match(const QString& name) const {
    const ResolvedFile* file = find(name);
    if (file == nullptr || !file->match) return {};
    const Match& match = *file->match;
    return {{QStringLiteral("title"), toQt(match.title)},
            {QStringLiteral("season"), match.season.value_or(-1)},
            {QStringLiteral("episode"), match.episode.value_or(-1)},
            {QStringLiteral("episodeTitle"), toQt(match.episodeTitle)},
            {QStringLiteral("source"), toQt(rawValue(match.sourceID()))},
            {QStringLiteral("byHand"), match.byHand()}};
}

void Stage::openPicker(const QString& name) {
    model_->matchPickerURL = library_ / fromQt(name);
    settle();
}

void Stage::setFault(const QString& json) {
    if (json.isEmpty())
        server_.clearFaults();
    else
        server_.fault(fromQt(json));
}

int Stage::requestCount(const QString& pathRegex) const {
    return server_.requestCount(fromQt(pathRegex));
}

}  // namespace marlet::test
