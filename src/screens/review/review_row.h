#pragma once

#include <QObject>
#include <QString>
#include <string>
#include <string_view>

#include "foundation/records.h"

namespace marlet {

class AppModel;

/// One row of Review, as it is drawn and read aloud.
struct ReviewRow {
    Q_GADGET
    Q_PROPERTY(QString key MEMBER key)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString year MEMBER year)  ///< empty when unknown
    Q_PROPERTY(QString sign READ sign)    ///< of the symbol: "ready", "look" or "none"
    Q_PROPERTY(QString verdict READ verdict)
    Q_PROPERTY(QString line MEMBER line)           ///< what else there is to say of it
    Q_PROPERTY(bool lineIsName MEMBER lineIsName)  ///< the line is a file's name
    Q_PROPERTY(QString poster READ poster)         ///< the address of its picture
    Q_PROPERTY(bool series MEMBER series)
    Q_PROPERTY(QString badge READ badge)
    Q_PROPERTY(bool selected MEMBER selected)
    Q_PROPERTY(QString spoken READ spoken)  ///< the row in one sentence

public:
    enum class State { ready, look, none };

    static ReviewRow of(const LibraryItem& item, const AppModel& model);
    /// The name of an item among the rows. No text for people: any bytes have one of their own.
    static QString keyOf(const std::string& itemID);
    static std::string itemOf(const QString& key);

    QString sign() const;
    QString verdict() const;
    QString poster() const;
    QString badge() const;
    QString spoken() const;

    QString key;
    QString title;
    QString year;
    QString line;
    std::string posterPath;
    State is = State::ready;
    int files = 1;
    int toLookAt = 0;  ///< files that aren't ready
    bool series = false;
    bool lineIsName = false;
    bool becomesM4V = false;
    bool selected = false;

    bool operator==(const ReviewRow&) const = default;
};

}  // namespace marlet
