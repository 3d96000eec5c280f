#pragma once

#include <QtQml/qqmlregistration.h>
#include <QQmlEngine>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <functional>
#include <vector>

#include "screens/base/screen_part.h"

Q_MOC_INCLUDE("screens/desktop/desktop_model.h")
Q_MOC_INCLUDE("screens/history/history_model.h")
Q_MOC_INCLUDE("screens/inspector/inspector_model.h")
Q_MOC_INCLUDE("screens/picker/picker_model.h")
Q_MOC_INCLUDE("screens/queue/queue_model.h")
Q_MOC_INCLUDE("screens/review/review_model.h")
Q_MOC_INCLUDE("screens/settings/settings_model.h")

namespace marlet {

class AppModel;
class DesktopModel;
class HistoryModel;
class InspectorModel;
class PickerModel;
class QueueModel;
class QuitGate;
class ReviewModel;
class SettingsModel;

/// "App" in QML: the window's own state and the models of all screens. It hears of each change of
/// the application's model and refreshes its parts once for all changes of a turn of the event
/// loop. Main context only; the model outlives it.
class Screens : public QObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(App)
    QML_SINGLETON
    Q_PROPERTY(int tab READ tab WRITE setTab NOTIFY changed)  ///< 0 Review, 1 Queue, 2 History
    Q_PROPERTY(QString reviewCount READ reviewCount NOTIFY changed)
    Q_PROPERTY(QString queueCount READ queueCount NOTIFY changed)
    Q_PROPERTY(QString historyCount READ historyCount NOTIFY changed)
    Q_PROPERTY(QString notice READ notice NOTIFY changed)  ///< empty: none
    Q_PROPERTY(QString toast READ toast NOTIFY changed)    ///< empty: none
    Q_PROPERTY(bool inspectorShown READ inspectorShown WRITE setInspectorShown NOTIFY changed)
    Q_PROPERTY(bool askClearHistory READ askClearHistory NOTIFY changed)
    Q_PROPERTY(bool quitWaits READ quitWaits NOTIFY changed)     ///< ends when the file is written
    Q_PROPERTY(QString filmPatterns READ filmPatterns CONSTANT)  ///< for a panel's filter
    Q_PROPERTY(bool canCheckForUpdates READ canCheckForUpdates CONSTANT)
    Q_PROPERTY(marlet::ReviewModel* review READ review CONSTANT)
    Q_PROPERTY(marlet::InspectorModel* inspector READ inspector CONSTANT)
    Q_PROPERTY(marlet::PickerModel* picker READ picker CONSTANT)
    Q_PROPERTY(marlet::QueueModel* queue READ queue CONSTANT)
    Q_PROPERTY(marlet::HistoryModel* history READ history CONSTANT)
    Q_PROPERTY(marlet::SettingsModel* settings READ settings CONSTANT)
    Q_PROPERTY(marlet::DesktopModel* desktop READ desktop CONSTANT)

public:
    Screens(AppModel& model, QuitGate& gate, QObject* parent = nullptr);
    ~Screens() override;
    /// The one that lives; QML's engine asks for it.
    static Screens* create(QQmlEngine* engine, QJSEngine* scripts);

    int tab() const;
    void setTab(int tab);
    QString reviewCount() const;
    QString queueCount() const;
    QString historyCount() const;
    QString notice() const;
    QString toast() const;
    bool inspectorShown() const;
    void setInspectorShown(bool shown);
    bool askClearHistory() const;
    bool canCheckForUpdates() const;
    /// Of the names of films, in any case: panels tell upper case from lower.
    QString filmPatterns() const;
    bool quitWaits() const { return quitWaits_; }
    ReviewModel* review() const { return review_; }
    InspectorModel* inspector() const { return inspector_; }
    PickerModel* picker() const { return picker_; }
    QueueModel* queue() const { return queue_; }
    HistoryModel* history() const { return history_; }
    SettingsModel* settings() const { return settings_; }
    DesktopModel* desktop() const { return desktop_; }

    /// Files and folders that were dropped on the window or chosen in a panel. What isn't on this
    /// computer is told, and the rest taken.
    Q_INVOKABLE void add(const QList<QUrl>& urls);
    Q_INVOKABLE void closeNotice();
    /// "Clear History…": shows History and asks.
    Q_INVOKABLE void askToClearHistory();
    Q_INVOKABLE void answerClearHistory(bool clear);
    Q_INVOKABLE void openSettings();
    Q_INVOKABLE void openAbout();
    Q_INVOKABLE void checkForUpdates();
    /// The window's close button and Quit. The program ends now, or when no file is being changed.
    Q_INVOKABLE void quit();
    /// The session ends. Work that waits is kept now; the session itself is asked to wait only
    /// while a file is being changed.
    void endSession(const std::function<void()>& askToWait);
    /// Reads the model anew at once instead of at the end of this turn.
    void refreshNow();

Q_SIGNALS:
    void changed();
    void settingsAsked();
    void aboutAsked();

private:
    void refreshSoon();

    AppModel& model_;
    QuitGate& gate_;
    QTimer soon_;
    int settingsTick_ = 0;
    bool quitWaits_ = false;
    ReviewModel* review_;
    InspectorModel* inspector_;
    PickerModel* picker_;
    QueueModel* queue_;
    HistoryModel* history_;
    SettingsModel* settings_;
    DesktopModel* desktop_;
    std::vector<ScreenPart*> parts_;
};

}  // namespace marlet
