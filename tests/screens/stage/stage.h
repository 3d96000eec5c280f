#pragma once

#include <QJsonObject>
#include <QMimeData>
#include <QObject>
#include <QPointF>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QStringList>
#include <QVariant>
#include <filesystem>
#include <list>
#include <memory>
#include <string>

#include "app/app_model.h"
#include "app/quit_gate.h"
#include "screens/frame/screens.h"
#include "screens/stage/staged_plans.h"
#include "screens/staged_worker.h"
#include "support/catalogue.h"
#include "support/temp_folder.h"

namespace marlet::test {

/// What a screen's test stands on: the real model and the real "App" over made-up files, with the
/// sample catalogue, and a worker that does what it is told. In QML it is the singleton `Stage` of
/// the module MarletTest. A person sits at the keyboard: the run isn't automated.
class Stage : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString library READ library CONSTANT)  ///< folder of the made-up files

public:
    explicit Stage(QObject* parent = nullptr);
    ~Stage() override;

    AppModel& model() { return *model_; }
    Screens& screens() { return *screens_; }
    StagedWorker& worker() { return *worker_; }
    HistoryStore& history() { return history_; }
    CatalogueServer& catalogue() { return server_; }
    QString library() const;
    std::filesystem::path path(const std::string& name) const;

    /// Everything as at a first start: no files, jobs, History, messages or settings. "App" stays.
    Q_INVOKABLE void clear();
    /// Puts files into Review. Each is an object: name (below the library, required; it is made
    /// with a few bytes), title, year, show, season, episode, episodeTitle, runtime (minutes),
    /// duration (seconds), poster, source ("tmdb", "appleTV", "itunes", "hand"), reasons (a list:
    /// it needs a look), match (false: none).
    Q_INVOKABLE void place(const QVariantList& files);
    /// So many made-up films; every tenth needs a look.
    Q_INVOKABLE void placeMany(int count);
    /// A draft for a placed file: fields as Details has them, "cast" etc. as lists, "wide" and
    /// "tall" as lists of picture paths.
    Q_INVOKABLE void draft(const QString& name, const QVariantMap& fields);
    /// Makes a placed file a real film, by FFmpeg. FFmpeg's names of tags, and: "sounds" and
    /// "subtitles" (lists of languages), "cover" (the name of a colour), "minutes" (a second
    /// otherwise; then without sound unless "sounds" tell some).
    Q_INVOKABLE void film(const QString& name, const QVariantMap& tags);
    /// What becomes of a placed MKV: "rich", "refused", or "checking", whose second look goes on
    /// until the stage is cleared.
    Q_INVOKABLE void plan(const QString& name, const QString& kind);
    /// Opens the inspector for the row that has this file, and waits until all of it is read.
    Q_INVOKABLE void inspect(const QString& name);
    Q_INVOKABLE void untilQuiet();
    /// Of the file's draft: fields as draft() takes them, "style" ("wide", "tall" or ""), and the
    /// pictures chosen, "chosenWide" and "chosenTall".
    Q_INVOKABLE QVariantMap draftOf(const QString& name) const;
    /// Adds files or folders below the library by the ordinary road and waits until it has ended.
    Q_INVOKABLE void addAndWait(const QStringList& names);
    Q_INVOKABLE void makeFile(const QString& name);
    /// The address of a picture of one colour that was made for this.
    Q_INVOKABLE QString madePicture() const;
    Q_INVOKABLE bool exists(const QString& name) const;
    /// What an earlier run of the program left: files that waited for its queue, and others that
    /// a person had corrected. It is offered then.
    Q_INVOKABLE void leaveUnfinished(const QStringList& queued, const QStringList& corrected);
    /// Jobs that wait, by name; each keeps running once started until endJob.
    Q_INVOKABLE void queueJobs(const QStringList& names);
    Q_INVOKABLE void reportStep(const QString& step, double fraction);
    Q_INVOKABLE void setCritical(bool on);
    /// status: "done", "failed", "skipped", "cancelled", "stopped".
    Q_INVOKABLE void endJob(const QString& status, const QString& message);
    /// The same with before and after (seconds) and output (a file of the library).
    Q_INVOKABLE void endJobWith(const QVariantMap& outcome);
    /// Keeps the original details of a file, as a first write does.
    Q_INVOKABLE void keepOriginal(const QString& name);
    /// Entries, newest first: title, show, season, episode, year, result, message, changes, how,
    /// summary, before, after, batch, restore, daysAgo, name (of the file).
    Q_INVOKABLE void addHistory(const QVariantList& entries);
    Q_INVOKABLE int historyCount() const;
    Q_INVOKABLE void say(const QString& text);
    Q_INVOKABLE void setNotice(const QString& text);
    Q_INVOKABLE void setSetting(const QString& key, const QVariant& value);
    Q_INVOKABLE QVariant setting(const QString& key) const;
    /// Makes "App" read the model at once.
    Q_INVOKABLE void settle();
    Q_INVOKABLE QStringList fileNames() const;    ///< in Review, in order
    Q_INVOKABLE QStringList queuedNames() const;  ///< files of the jobs, in order
    Q_INVOKABLE bool isConfirmed(const QString& name) const;
    Q_INVOKABLE QString matchedTitle(const QString& name) const;
    /// title, season, episode, episodeTitle, source ("tmdb", ...), byHand; empty without a match.
    Q_INVOKABLE QVariantMap match(const QString& name) const;
    /// Opens the match picker for a file.
    Q_INVOKABLE void openPicker(const QString& name);
    /// A fault of the catalogue, as `marlet-catalogue --help` tells; empty takes them away.
    Q_INVOKABLE void setFault(const QString& json);
    /// Drags what has these addresses, line by line, to a place in the window; true when it would
    /// be taken. dropThere() lets go of it: true when it was taken. dragAway() leaves the window.
    Q_INVOKABLE bool dragOver(QQuickWindow* window, const QStringList& addresses, qreal x, qreal y);
    Q_INVOKABLE bool dropThere(QQuickWindow* window);
    Q_INVOKABLE void dragAway(QQuickWindow* window);
    Q_INVOKABLE int requestCount(const QString& pathRegex) const;
    /// The system's text size (1: as usual) and the way its language is read. clear() puts both
    /// back.
    Q_INVOKABLE void setTextScale(qreal factor);
    Q_INVOKABLE void setRightToLeft(bool on);
    /// What a screen reader finds in a window, in its order: objects with role, name, description,
    /// value (-1: none), depth, focusable, focused, pressable, selected, checked, shown (in
    /// sight), place (in the window) and objectName.
    Q_INVOKABLE QVariantList heard(QObject* window) const;
    /// Presses, as a screen reader does, the first that is so named; whether there was one that
    /// can be pressed.
    Q_INVOKABLE bool pressHeard(QObject* window, const QString& name) const;

public Q_SLOTS:
    /// Called by Qt Quick Test for each engine: registers Marlet and Stage.
    void qmlEngineAvailable(QQmlEngine* engine);

private:
    void make();
    AppModel::Parts parts();
    const ResolvedFile* find(const QString& name) const;

    OwnHome home_;
    TempFolder library_;
    CatalogueServer server_;
    std::list<ScopedEnv> environment_;
    HistoryStore history_;
    std::shared_ptr<StagedWorker> worker_;
    std::shared_ptr<StagedPlans> plans_ = std::make_shared<StagedPlans>();
    std::unique_ptr<AppModel> model_;
    std::unique_ptr<QuitGate> gate_;
    std::unique_ptr<Screens> screens_;
    std::unique_ptr<QMimeData> dragged_;
    QPointF draggedTo_;
};

}  // namespace marlet::test
