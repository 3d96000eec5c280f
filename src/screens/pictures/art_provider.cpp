#include "screens/pictures/art_provider.h"

#include <QLoggingCategory>
#include <QQuickTextureFactory>
#include <atomic>
#include <mutex>

#include "screens/pictures/art_store.h"

namespace marlet {

namespace {

std::atomic<std::uint64_t> lastNumber = 0;

/// Lets the main context reach a response for as long as that lives.
struct Reach {
    std::mutex lock;
    QQuickImageResponse* response = nullptr;
};

/// Lives on the thread of QML's picture reader. It ends exactly once, cancelled or not.
class ArtResponse : public QQuickImageResponse {
public:
    ArtResponse(std::shared_ptr<ArtStore> store, const QString& id, const QSize& wanted)
        : store_(std::move(store)), number_(++lastNumber) {
        reach_->response = this;
        const QImage known = store_->find(id, wanted);
        if (!known.isNull()) {
            endSoon(known);
            return;
        }
        ArtStore::Done done = [reach = reach_](const QImage& image) {
            const std::lock_guard guard(reach->lock);
            if (auto* self = static_cast<ArtResponse*>(reach->response)) self->endSoon(image);
        };
        Async::post([asked = std::weak_ptr(store_), number = number_, id, wanted, done] {
            if (const auto living = asked.lock()) living->ask(number, id, wanted, done);
        });
    }
    ~ArtResponse() override {
        const std::lock_guard guard(reach_->lock);
        reach_->response = nullptr;
    }

    QQuickTextureFactory* textureFactory() const override {
        return QQuickTextureFactory::textureFactoryForImage(image_);
    }
    void cancel() override {
        Async::post([asked = std::weak_ptr(store_), number = number_] {
            if (const auto living = asked.lock()) living->drop(number);
        });
        endSoon({});
    }

private:
    /// Any thread. Whoever asked has yet to listen, or is in the middle of cancelling.
    void endSoon(const QImage& image) {
        QMetaObject::invokeMethod(
            this, [this, image] { end(image); }, Qt::QueuedConnection);
    }
    void end(const QImage& image) {
        if (std::exchange(hasEnded_, true)) return;
        image_ = image;
        if (image_.isNull()) {
            image_ = QImage(1, 1, QImage::Format_ARGB32_Premultiplied);
            image_.fill(Qt::transparent);
        }
        Q_EMIT finished();
    }

    std::shared_ptr<ArtStore> store_;
    std::uint64_t number_;
    std::shared_ptr<Reach> reach_ = std::make_shared<Reach>();
    QImage image_;
    bool hasEnded_ = false;
};

}  // namespace

ArtProvider::ArtProvider() : store_(std::make_shared<ArtStore>()) {
    // A picture that can't be shown is nothing that anybody at a console could do something about.
    QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio*=false"));
}

ArtProvider::~ArtProvider() {
    store_->close();
}

QQuickImageResponse* ArtProvider::requestImageResponse(const QString& id, const QSize& wanted) {
    return new ArtResponse(store_, id, wanted);
}

}  // namespace marlet
