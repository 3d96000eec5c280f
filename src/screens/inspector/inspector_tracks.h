#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>
#include <vector>

#include "screens/base/row_list.h"
#include "screens/inspector/inspected.h"

namespace marlet {

/// One sound track or subtitle, with a person's tick.
struct TrackRow {
    Q_GADGET
    Q_PROPERTY(QString key MEMBER key)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString note MEMBER note)
    Q_PROPERTY(bool keep MEMBER keep)
    Q_PROPERTY(bool possible MEMBER possible)  ///< it can be kept at all
    Q_PROPERTY(bool playsFirst MEMBER playsFirst)

public:
    QString key;
    QString title;
    QString note;
    bool keep = true;
    bool possible = true;
    bool playsFirst = false;
    bool operator==(const TrackRow&) const = default;
};

/// What becomes of a file's tracks, by its container.
class InspectorTracks : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App.inspector has it")
    Q_PROPERTY(QAbstractItemModel* sounds READ sounds CONSTANT)
    Q_PROPERTY(QAbstractItemModel* subtitles READ subtitles CONSTANT)
    Q_PROPERTY(QString container READ container NOTIFY changed)  ///< "mp4", "mov", "mkv"
    Q_PROPERTY(QString busy READ busy NOTIFY changed)            ///< while there is nothing yet
    Q_PROPERTY(QString refusal READ refusal NOTIFY changed)      ///< why there is no new file
    Q_PROPERTY(QString picture READ picture NOTIFY changed)      ///< the codec
    Q_PROPERTY(QString pictureNote READ pictureNote NOTIFY changed)
    Q_PROPERTY(QString noSounds READ noSounds NOTIFY changed)
    Q_PROPERTY(QString noSubtitles READ noSubtitles NOTIFY changed)
    Q_PROPERTY(QString moreSounds READ moreSounds NOTIFY changed)
    Q_PROPERTY(QString moreSubtitles READ moreSubtitles NOTIFY changed)
    Q_PROPERTY(bool open READ isOpen WRITE setOpen NOTIFY changed)  ///< shows those, too
    Q_PROPERTY(QString checking READ checking NOTIFY changed)
    Q_PROPERTY(double checked READ checked NOTIFY changed)  ///< 0 to 1
    Q_PROPERTY(QString foot READ foot NOTIFY changed)
    Q_PROPERTY(QString leavesOut READ leavesOut NOTIFY changed)  ///< what ticks have come to

public:
    explicit InspectorTracks(AppModel& model, QObject* parent = nullptr);
    ~InspectorTracks() override { life_.cancel(); }
    void refresh(const Inspected& now);

    Q_INVOKABLE void keepSound(const QString& key, bool keep);
    Q_INVOKABLE void keepSubtitle(const QString& key, bool keep);

    RowListBase* sounds() { return &sounds_; }
    RowListBase* subtitles() { return &subtitles_; }
    QString container() const { return shown_.container; }
    QString busy() const { return shown_.busy; }
    QString refusal() const { return shown_.refusal; }
    QString picture() const { return shown_.picture; }
    QString pictureNote() const { return shown_.pictureNote; }
    QString noSounds() const { return shown_.noSounds; }
    QString noSubtitles() const { return shown_.noSubtitles; }
    QString moreSounds() const { return shown_.moreSounds; }
    QString moreSubtitles() const { return shown_.moreSubtitles; }
    QString checking() const { return shown_.checking; }
    double checked() const { return shown_.checked; }
    QString foot() const { return shown_.foot; }
    QString leavesOut() const { return shown_.leavesOut; }
    bool isOpen() const { return open_; }
    void setOpen(bool open);

Q_SIGNALS:
    void changed();

private:
    struct Shown {
        QString container, busy, refusal, picture, pictureNote, noSounds, noSubtitles, moreSounds,
            moreSubtitles, checking, foot, leavesOut;
        double checked = 0;
        bool operator==(const Shown&) const = default;
    };
    struct Rows {
        std::vector<TrackRow> sounds;
        std::vector<TrackRow> subtitles;
    };
    Shown ofMP4(Rows& rows);
    Shown ofMKV(Rows& rows);
    void showPlan(const ConvertPlan& plan, Shown& shown, Rows& rows) const;
    void showSounds(const ConvertPlan& plan, Shown& shown, Rows& rows) const;
    void showSubtitles(const ConvertPlan& plan, Shown& shown, Rows& rows) const;
    void again();
    static Task<> readTracks(InspectorTracks* self, std::filesystem::path file, CancelToken life);

    AppModel& model_;
    std::filesystem::path file_;  ///< empty: none
    std::filesystem::path reading_;
    Shown shown_;
    bool open_ = false;
    RowList<TrackRow> sounds_;
    RowList<TrackRow> subtitles_;
    CancelToken life_;
};

}  // namespace marlet
