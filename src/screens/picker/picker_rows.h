#pragma once

#include <QObject>
#include <QString>

namespace marlet {

/// A film or show that a search found, as a row.
struct PickerTitleRow {
    Q_GADGET
    Q_PROPERTY(QString key MEMBER key)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString facts MEMBER facts)
    Q_PROPERTY(QString overview MEMBER overview)
    Q_PROPERTY(QString poster MEMBER poster)
    Q_PROPERTY(bool fits MEMBER fits)
    Q_PROPERTY(QString spoken MEMBER spoken)

public:
    QString key;
    QString title;
    QString facts;  ///< "1963 · 113 min", "2017 · 2 seasons"
    QString overview;
    QString poster;
    bool fits = false;  ///< plays as long as the file
    QString spoken;     ///< the row as one sentence
    bool operator==(const PickerTitleRow&) const = default;
};

/// An episode, as a row.
struct PickerEpisodeRow {
    Q_GADGET
    Q_PROPERTY(QString key MEMBER key)
    Q_PROPERTY(QString number MEMBER number)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString facts MEMBER facts)
    Q_PROPERTY(QString still MEMBER still)
    Q_PROPERTY(QString file MEMBER file)
    Q_PROPERTY(QString spoken MEMBER spoken)

public:
    QString key;
    QString number;  ///< "3" in its season, "S01E03" among all seasons
    QString title;
    QString facts;  ///< "22 min · 3 Jul 2026"
    QString still;
    QString file;  ///< names of the files that say this number
    QString spoken;
    bool operator==(const PickerEpisodeRow&) const = default;
};

}  // namespace marlet
