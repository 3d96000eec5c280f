#include "screens/desktop/desktop_model.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>
#include <QPalette>
#include <QWindow>
#include <algorithm>

#include "app/settings.h"
#include "screens/desktop/file_manager.h"

namespace marlet {

namespace {

constexpr qreal usualTextPixels = 13;

bool othersAreDark() {
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

}  // namespace

DesktopModel::DesktopModel(AppModel& model, QObject* parent)
    : ScreenPart(parent), portal_(QDBusConnection::sessionBus()), run_(model) {
    const QString inter = QStringLiteral("Inter");
    family_ = QFontDatabase::hasFamily(inter) ? inter : QGuiApplication::font().family();
    connect(&portal_, &SettingsPortal::changed, this, &DesktopModel::refresh);
    connect(qGuiApp, &QGuiApplication::layoutDirectionChanged, this, &DesktopModel::refresh);
    qGuiApp->installEventFilter(this);
    connect(&run_, &RunWatch::queueAsked, this, [this] {
        for (QWindow* window : QGuiApplication::topLevelWindows()) {
            if (!window->isVisible()) continue;
            window->raise();
            window->requestActivate();
        }
        Q_EMIT queueAsked();
    });
    refresh();
}

void DesktopModel::refresh() {
    const qreal pixels = QFontInfo(QGuiApplication::font()).pixelSize();
    const bool scaled = take(textScale_, std::clamp(pixels / usualTextPixels, 0.8, 2.0));
    const bool wanted = posedDark_.value_or(
        SettingsPortal::isDark(Settings::effectiveAppearance(), portal_.scheme(), othersAreDark()));
    const bool shaded = take(dark_, wanted);
    const bool calmed = take(reducedMotion_, posed_ || portal_.isCalm());
    const bool turned = take(mirrored_, QGuiApplication::isRightToLeft());
    if (scaled || shaded || calmed || turned) Q_EMIT looksChanged();
    run_.refresh();
}

bool DesktopModel::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ApplicationFontChange) refresh();
    return ScreenPart::eventFilter(watched, event);
}

void DesktopModel::pose(std::optional<bool> dark) {
    posed_ = true;
    posedDark_ = dark;
    refresh();
}

void DesktopModel::showInFolder(const QList<QUrl>& files) {
    FileManager::show(files);
}

}  // namespace marlet
