#include "screens/shots/picture_taker.h"

#include <QBuffer>
#include <QImage>
#include <QQuickItem>
#include <chrono>
#include <functional>

#include "foundation/durable.h"
#include "foundation/errors.h"

namespace marlet {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr auto step = 30ms;
constexpr int quietSteps = 4;
constexpr int mostSteps = 600;
constexpr int watcherSteps = 1000;

/// Whether a picture is still on its way. Image::Loading is 2.
bool isAnyLoading(const QQuickItem& item) {
    constexpr int loading = 2;
    if (!item.isVisible()) return false;
    if (item.inherits("QQuickImageBase") && item.property("status").toInt() == loading) return true;
    for (const QQuickItem* child : item.childItems())
        if (isAnyLoading(*child)) return true;
    return false;
}

bool save(const QImage& picture, const fs::path& file) {
    QByteArray png;
    QBuffer buffer(&png);
    if (!buffer.open(QIODevice::WriteOnly) || !picture.save(&buffer, "PNG")) return false;
    try {
        fs::create_directories(file.parent_path());
        Durable::writeFile(file, {reinterpret_cast<const std::uint8_t*>(png.constData()),
                                  static_cast<std::size_t>(png.size())});
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

}  // namespace

PictureTaker::PictureTaker(QQuickWindow& window, Watcher watcher)
    : window_(window), watcher_(watcher) {}

Task<> PictureTaker::settle() {
    int quiet = 0;
    for (int i = 0; i < mostSteps && quiet < quietSteps; i++) {
        auto waiting = Async::sleep(step);
        co_await waiting;
        const bool isQuiet = window_.isExposed() && !isAnyLoading(*window_.contentItem());
        quiet = isQuiet ? quiet + 1 : 0;
    }
}

QImage PictureTaker::grab(const QString& sheet) const {
    QImage picture = window_.grabWindow();
    if (sheet.isEmpty()) return picture;
    const auto* const object = window_.findChild<QObject*>(sheet);
    if (object == nullptr) return {};
    const auto* const content = object->property("contentItem").value<QQuickItem*>();
    if (content == nullptr || content->parentItem() == nullptr) return {};
    const QQuickItem& frame = *content->parentItem();
    const QRectF place = frame.mapRectToScene(QRectF(QPointF(), frame.size()));
    const double scale = picture.devicePixelRatio();
    return picture.copy(QRectF(place.topLeft() * scale, place.size() * scale).toAlignedRect());
}

Task<bool> PictureTaker::take(fs::path file, QString sheet) {
    auto settling = settle();
    co_await settling;
    const QImage picture = grab(sheet);
    if (picture.isNull()) co_return false;
    std::function<bool()> work = [picture, file] { return save(picture, fs::absolute(file)); };
    auto saving = Async::onWorker(std::move(work));
    const bool isSaved = co_await saving;
    if (isSaved && watcher_ == Watcher::Yes) {
        auto telling = tellWatcher(file);
        co_await telling;
    }
    co_return isSaved;
}

Task<> PictureTaker::tellWatcher(fs::path file) {
    const fs::path request = fs::path(file).replace_extension(".req");
    const fs::path done = fs::path(file).replace_extension(".done");
    std::function<bool()> ask = [request, done] {
        std::error_code none;
        fs::remove(done, none);
        try {
            Durable::writeFile(request, {});
        } catch (const std::exception&) {
            return false;
        }
        return true;
    };
    auto asking = Async::onWorker(std::move(ask));
    const bool isAsked = co_await asking;
    for (int i = 0; isAsked && i < watcherSteps; i++) {
        std::function<bool()> look = [done] {
            std::error_code none;
            return fs::exists(done, none);
        };
        auto looking = Async::onWorker(std::move(look));
        const bool isDone = co_await looking;
        if (isDone) break;
        auto waiting = Async::sleep(step);
        co_await waiting;
    }
    std::function<bool()> tidy = [request, done] {
        std::error_code none;
        fs::remove(request, none);
        return fs::remove(done, none);
    };
    auto tidying = Async::onWorker(std::move(tidy));
    co_await tidying;
}

}  // namespace marlet
