#include "screens/pictures/art_store.h"

#include <algorithm>
#include <utility>

#include "screens/pictures/picture_decoder.h"
#include "sources/tmdb_client.h"

namespace marlet {

namespace {

constexpr std::int64_t mostMemory = std::int64_t{48} * 1024 * 1024;
constexpr int mostAtOnce[] = {4, 3};

/// Stands for "there is none", so that a list that scrolls doesn't ask again and again.
QImage noPicture() {
    QImage none(1, 1, QImage::Format_ARGB32_Premultiplied);
    none.fill(Qt::transparent);
    return none;
}

}  // namespace

ArtStore::ArtStore() : memory_(mostMemory), files_(std::make_shared<ArtFiles>()) {}

QString ArtStore::keyOf(const QString& id, const QSize& wanted) {
    return QStringLiteral("%1 %2x%3").arg(id).arg(wanted.width()).arg(wanted.height());
}

void ArtStore::ask(std::uint64_t number, const QString& id, const QSize& wanted, Done done) {
    const auto art = ArtAddress::parse(id);
    if (!art) {
        done({});
        return;
    }
    const QString key = keyOf(id, wanted);
    std::shared_ptr<Job>& job = jobs_[key];
    if (!job) {
        job = std::make_shared<Job>();
        job->art = *art;
        job->wanted = wanted;
    }
    job->askers.push_back({number, std::move(done)});
    keys_[number] = key;
    if (!job->isRunning) {
        std::erase(waiting_, key);
        waiting_.push_back(key);
        startNext();
    }
}

void ArtStore::drop(std::uint64_t number) {
    const auto asker = keys_.find(number);
    if (asker == keys_.end()) return;
    const QString key = asker->second;
    keys_.erase(asker);
    const auto found = jobs_.find(key);
    if (found == jobs_.end()) return;
    const std::shared_ptr<Job> job = found->second;
    std::erase_if(job->askers, [&](const Asker& each) { return each.number == number; });
    if (!job->askers.empty()) return;
    jobs_.erase(found);
    std::erase(waiting_, key);
    job->cancel.cancel();
}

void ArtStore::close() {
    waiting_.clear();
    keys_.clear();
    const auto jobs = std::exchange(jobs_, {});
    for (const auto& [key, job] : jobs) {
        job->askers.clear();
        job->cancel.cancel();
    }
}

void ArtStore::startNext() {
    for (auto place = waiting_.end(); place != waiting_.begin();) {
        --place;
        const QString key = *place;
        const std::shared_ptr<Job> job = jobs_.at(key);
        const std::size_t lane = laneOf(job->art);
        if (running_[lane] >= mostAtOnce[lane]) continue;
        place = waiting_.erase(place);
        job->isRunning = true;
        running_[lane]++;
        run(shared_from_this(), key, lane, job);
        // It may have ended at once and begun others.
        place = waiting_.end();
    }
}

Task<> ArtStore::run(std::shared_ptr<ArtStore> self, QString key, std::size_t lane,
                     std::shared_ptr<Job> job) {
    QImage image;
    try {
        Task<QImage> getting = picture(self, key, job);
        image = co_await getting;
    } catch (const std::exception&) {
        // No line, no host, no such file: whoever shows it goes on with the placeholder.
    }
    self->running_[lane]--;
    // Dropped, and perhaps asked for anew meanwhile: that is another job.
    const auto found = self->jobs_.find(key);
    if (found != self->jobs_.end() && found->second == job) self->jobs_.erase(found);
    for (const Asker& asker : std::exchange(job->askers, {})) {
        self->keys_.erase(asker.number);
        asker.done(image);
    }
    self->startNext();
}

Task<QImage> ArtStore::picture(std::shared_ptr<ArtStore> self, QString key,
                               std::shared_ptr<Job> job) {
    Task<QImage> getting =
        job->art.kind == Art::Kind::remote ? self->remote(key, job) : self->local(key, job);
    QImage image = co_await getting;
    if (image.size() == QSize(1, 1)) image = QImage();
    co_return image;
}

Task<QImage> ArtStore::remote(QString key, std::shared_ptr<Job> job) {
    const std::string url = ImageRef::url(job->art.place, job->art.size);
    const auto files = files_;
    const QSize wanted = job->wanted;
    std::function<QImage()> look = [files, url, wanted] { return files->fetched(url, wanted); };
    auto looking = Async::onWorker(std::move(look));
    QImage image = co_await looking;
    job->cancel.check();
    if (image.isNull()) {
        HttpRequest request;
        request.url = url;
        request.maxBody = PictureDecoder::mostBytes;
        auto asking = session_.get(request, HttpSession::Use::IgnoreCache, job->cancel);
        HttpAnswer answer = co_await asking;
        if (answer.status == 200) {
            std::function<QImage()> take = [files, url, wanted, answer = std::move(answer)] {
                return files->take(url, answer, wanted);
            };
            auto taking = Async::onWorker(std::move(take));
            image = co_await taking;
        }
        if (image.isNull()) image = noPicture();
    }
    memory_.keep(key, image);
    co_return image;
}

Task<QImage> ArtStore::local(QString, std::shared_ptr<Job> job) {
    // Kept by the state of the file, which only a worker may ask for.
    std::function<QImage()> read = [this, held = shared_from_this(), job] {
        const std::string stamp = ArtFiles::stampOf(job->art.place);
        if (stamp.empty()) return QImage();
        const QString key =
            keyOf(QString::fromStdString(std::to_string(laneOf(job->art)) + stamp + job->art.place),
                  job->wanted);
        QImage image = memory_.find(key);
        if (!image.isNull()) return image;
        image = ArtFiles::local(job->art, job->wanted);
        memory_.keep(key, image.isNull() ? noPicture() : image);
        return image;
    };
    auto reading = Async::onWorker(std::move(read));
    QImage image = co_await reading;
    co_return image;
}

}  // namespace marlet
