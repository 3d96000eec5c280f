#pragma once

#include <QtQml/qqmlregistration.h>
#include <QList>
#include <QString>
#include <QUrl>
#include <optional>

#include "screens/base/screen_part.h"
#include "screens/desktop/run_watch.h"
#include "screens/desktop/settings_portal.h"

namespace marlet {

class AppModel;

/// What the desktop does for the program and the program for the desktop: its colours, sleep,
/// notifications, the task bar, the file manager.
class DesktopModel : public marlet::ScreenPart {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("App has it")
    Q_PROPERTY(bool dark READ dark NOTIFY looksChanged)
    Q_PROPERTY(qreal textScale READ textScale NOTIFY looksChanged)  ///< 1 for text of usual size
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY looksChanged)
    Q_PROPERTY(QString family READ family CONSTANT)              ///< of all text
    Q_PROPERTY(bool mirrored READ mirrored NOTIFY looksChanged)  ///< rows begin at the right

public:
    explicit DesktopModel(AppModel& model, QObject* parent = nullptr);
    void refresh() override;
    /// The system's font, and with it the size of all text, may change at any time.
    bool eventFilter(QObject* watched, QEvent* event) override;

    bool dark() const { return dark_; }
    qreal textScale() const { return textScale_; }
    bool reducedMotion() const { return reducedMotion_; }
    QString family() const { return family_; }
    bool mirrored() const { return mirrored_; }
    /// The file manager opens with these files selected.
    Q_INVOKABLE void showInFolder(const QList<QUrl>& files);
    /// For pictures: this look whatever is set, and nothing moves. Nothing ends it.
    void pose(std::optional<bool> dark);

Q_SIGNALS:
    void looksChanged();
    /// A click on the message about a run's end: the window has come to the front.
    void queueAsked();

private:
    SettingsPortal portal_;
    RunWatch run_;
    std::optional<bool> posedDark_;
    bool posed_ = false;
    bool dark_ = false;
    qreal textScale_ = 1;
    bool reducedMotion_ = false;
    bool mirrored_ = false;
    QString family_;
};

}  // namespace marlet
