#pragma once

#include <QtQml/qqmlregistration.h>
#include <QString>
#include <QUrl>
#include <string>

#include "screens/base/screen_part.h"
#include "screens/settings/credits.h"
#include "screens/settings/guess_settings.h"
#include "screens/settings/key_settings.h"
#include "screens/settings/key_table.h"
#include "screens/settings/source_order.h"
#include "screens/settings/typed_text.h"
#include "screens/settings/work_files.h"

namespace marlet {

class AppModel;

/// The settings as the screen shows them; each is stored as soon as it changes. Also what About
/// tells, and the keys.
class SettingsModel : public marlet::ScreenPart {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App has it")
    Q_PROPERTY(int appearance READ appearance WRITE setAppearance NOTIFY changed)  ///< as stored
    Q_PROPERTY(int artwork READ artwork WRITE setArtwork NOTIFY changed)  ///< 0 wide, 1 tall
    Q_PROPERTY(QString languages READ languages WRITE setLanguages NOTIFY changed)
    Q_PROPERTY(bool fixForAppleTV READ fixForAppleTV WRITE setFixForAppleTV NOTIFY changed)
    /// Turned on for the first time, it stays off until the question is answered.
    Q_PROPERTY(bool libraryWrites READ libraryWrites WRITE setLibraryWrites NOTIFY changed)
    Q_PROPERTY(bool sameFolder READ sameFolder WRITE setSameFolder NOTIFY changed)
    Q_PROPERTY(QString folder READ folder NOTIFY changed)  ///< for showing: "~/Desktop"
    Q_PROPERTY(QUrl folderPlace READ folderPlace NOTIFY changed)
    Q_PROPERTY(bool notifyAtEnd READ notifyAtEnd WRITE setNotifyAtEnd NOTIFY changed)
    Q_PROPERTY(QString versionLine READ versionLine CONSTANT)
    Q_PROPERTY(QString builtLine READ builtLine CONSTANT)
    Q_PROPERTY(QString updates READ updates CONSTANT)
    Q_PROPERTY(marlet::SourceOrder* sources READ sources CONSTANT)
    Q_PROPERTY(marlet::KeySettings* key READ key CONSTANT)
    Q_PROPERTY(marlet::GuessSettings* guessing READ guessing CONSTANT)
    Q_PROPERTY(marlet::WorkFiles* workFiles READ workFiles CONSTANT)
    Q_PROPERTY(marlet::Credits* credits READ credits CONSTANT)
    Q_PROPERTY(marlet::RowListBase* keys READ keys CONSTANT)

public:
    explicit SettingsModel(AppModel& model, QObject* parent = nullptr);
    void refresh() override;

    int appearance() const { return shown_.appearance; }
    void setAppearance(int look);
    int artwork() const { return shown_.artwork; }
    void setArtwork(int style);
    QString languages() const { return languages_.text(); }
    void setLanguages(const QString& list);
    bool fixForAppleTV() const { return shown_.fixForAppleTV; }
    void setFixForAppleTV(bool on);
    bool libraryWrites() const { return shown_.libraryWrites; }
    void setLibraryWrites(bool on);
    bool sameFolder() const { return shown_.sameFolder; }
    void setSameFolder(bool on);
    QString folder() const;
    QUrl folderPlace() const;
    bool notifyAtEnd() const { return shown_.notifyAtEnd; }
    void setNotifyAtEnd(bool on);
    QString versionLine() const;
    QString builtLine() const;
    QString updates() const;
    SourceOrder* sources() { return &sources_; }
    KeySettings* key() { return &key_; }
    GuessSettings* guessing() { return &guessing_; }
    WorkFiles* workFiles() { return &workFiles_; }
    Credits* credits() { return &credits_; }
    RowListBase* keys() { return &keys_; }

    /// The screen comes up: finds out what only asking tells.
    Q_INVOKABLE void open();
    /// The answer to libraryQuestion. Either one means that it isn't asked again.
    Q_INVOKABLE void answerLibraryQuestion(bool allow);
    /// A folder of this computer; new files go there from now on, not beside the original.
    Q_INVOKABLE void saveNewFilesTo(const QUrl& folder);

Q_SIGNALS:
    void changed();
    /// "Allow changes to your Media Library?"
    void libraryQuestion();

private:
    struct Shown {
        int appearance = 0;
        int artwork = 0;
        bool fixForAppleTV = true;
        bool libraryWrites = false;
        bool sameFolder = false;
        bool notifyAtEnd = true;
        std::string folder;
        bool operator==(const Shown&) const = default;
    };
    static Shown read();
    /// Something was stored: every screen reads anew.
    void stored();

    AppModel& model_;
    Shown shown_;
    TypedText languages_;
    SourceOrder sources_;
    KeySettings key_;
    GuessSettings guessing_;
    WorkFiles workFiles_;
    Credits credits_;
    RowList<KeyRow> keys_;
};

}  // namespace marlet
