#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <vector>

namespace marlet {

/// One key and what it does.
struct KeyRow {
    Q_GADGET
    Q_PROPERTY(QString key MEMBER key)
    Q_PROPERTY(QString place MEMBER place)
    Q_PROPERTY(QStringList caps MEMBER caps)
    Q_PROPERTY(QString does MEMBER does)
    Q_PROPERTY(QString spoken MEMBER spoken)

public:
    QString key;       ///< its place in the table
    QString place;     ///< the heading: where the key holds
    QStringList caps;  ///< "Ctrl", "Shift", "O"
    QString does;
    QString spoken;  ///< "Ctrl+Shift+O: Add a folder"
    bool operator==(const KeyRow&) const = default;
};

/// All keys of all screens. The screens define them; a test holds this table against what they
/// define.
namespace KeyTable {

struct Entry {
    const char* folder;  ///< of the screen, below src/screens
    const char* place;
    const char* keys;  ///< as QKeySequence writes them: "Ctrl+Shift+O"
    const char* does;
};

const std::vector<Entry>& entries();
std::vector<KeyRow> rows();

}  // namespace KeyTable
}  // namespace marlet
