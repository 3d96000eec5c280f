#include "screens/desktop/desktop_model.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>
#include <algorithm>

#include "app/app_model.h"
#include "app/settings.h"
#include "screens/desktop/file_manager.h"

namespace marlet {

namespace {

constexpr qreal usualTextPixels = 13;

}  // namespace

DesktopModel::DesktopModel(AppModel& model, QObject* parent) : ScreenPart(parent), model_(model) {
    const QString inter = QStringLiteral("Inter");
    family_ = QFontDatabase::hasFamily(inter) ? inter : QGuiApplication::font().family();
    refresh();
}

void DesktopModel::refresh() {
    const qreal pixels = QFontInfo(QGuiApplication::font()).pixelSize();
    const bool scaled = take(textScale_, std::clamp(pixels / usualTextPixels, 0.8, 2.0));
    const bool shaded = take(dark_, Settings::appearance() == Settings::Appearance::dark);
    if (scaled || shaded) Q_EMIT looksChanged();
}

void DesktopModel::showInFolder(const QStringList& paths) {
    FileManager::show(paths);
}

}  // namespace marlet
