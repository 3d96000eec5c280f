#pragma once

#include <QImage>
#include <QSize>
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "screens/pictures/art_address.h"
#include "screens/pictures/art_files.h"
#include "screens/pictures/art_memory.h"
#include "sources/async.h"
#include "sources/http_session.h"

namespace marlet {

/// Gets pictures: a few at a time, those asked for last first, since they are what a person who
/// scrolls sees now. Who asks for one that is on its way already waits for the same. Image services
/// ask for no key. Main context only, but for find().
class ArtStore : public std::enable_shared_from_this<ArtStore> {
public:
    /// With a null image where there is no picture.
    using Done = std::function<void(const QImage&)>;

    ArtStore();

    /// What was decoded before. Any thread.
    QImage find(const QString& id, const QSize& wanted) { return memory_.find(keyOf(id, wanted)); }
    /// The number is the asker's own, for drop().
    void ask(std::uint64_t number, const QString& id, const QSize& wanted, Done done);
    /// Nobody waits for that answer any more; what only it wanted ends.
    void drop(std::uint64_t number);
    /// Ends everything; nobody is told.
    void close();

    int underWay() const { return running_[0] + running_[1]; }
    std::int64_t memoryUsed() const { return memory_.used(); }

private:
    struct Asker {
        std::uint64_t number;
        Done done;
    };
    struct Job {
        Art art;
        QSize wanted;
        std::vector<Asker> askers;
        CancelToken cancel;
        bool isRunning = false;
    };

    static QString keyOf(const QString& id, const QSize& wanted);
    static std::size_t laneOf(const Art& art) { return art.kind == Art::Kind::remote ? 0 : 1; }
    void startNext();
    static Task<> run(std::shared_ptr<ArtStore> self, QString key, std::size_t lane,
                      std::shared_ptr<Job> job);
    static Task<QImage> picture(std::shared_ptr<ArtStore> self, QString key,
                                std::shared_ptr<Job> job);
    Task<QImage> remote(QString key, std::shared_ptr<Job> job);
    Task<QImage> local(QString key, std::shared_ptr<Job> job);

    ArtMemory memory_;
    std::shared_ptr<ArtFiles> files_;
    HttpSession session_;  ///< without a cache: that is looked at by workers
    std::unordered_map<QString, std::shared_ptr<Job>> jobs_;
    std::unordered_map<std::uint64_t, QString> keys_;  ///< of each asker
    std::vector<QString> waiting_;                     ///< asked for last stands last
    int running_[2] = {0, 0};                          ///< from the net, from disks
};

}  // namespace marlet
