#include "sources/keyring.h"

#include <qt6keychain/keychain.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <cstdlib>
#include <memory>

#include "foundation/paths.h"

namespace marlet::Keyring {
namespace {

constexpr int longestWaitMs = 3000;

struct Answer {
    bool ended = false;
    bool good = false;
    bool absent = false;
    QString secret;
};

/// Runs the job in a nested loop. The job deletes itself when it ends, which may be after we have
/// stopped waiting for it.
template <typename Job>
Answer run(Job* job) {
    auto answer = std::make_shared<Answer>();
    auto loop = std::make_shared<QEventLoop>();
    job->setAutoDelete(true);
    job->setInsecureFallback(false);
    QObject::connect(job, &QKeychain::Job::finished, [answer, loop](QKeychain::Job* done) {
        answer->ended = true;
        answer->good = done->error() == QKeychain::NoError;
        answer->absent = done->error() == QKeychain::EntryNotFound;
        if (auto* reader = qobject_cast<QKeychain::ReadPasswordJob*>(done))
            answer->secret = reader->textData();
        loop->quit();
    });
    QTimer::singleShot(longestWaitMs, loop.get(), &QEventLoop::quit);
    job->start();
    if (!answer->ended) loop->exec();
    return *answer;
}

QString service() {
    return QString::fromStdString(Paths::folderName());
}

}  // namespace

bool isThere() {
    const char* bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    return bus != nullptr && *bus != '\0' && QCoreApplication::instance() != nullptr;
}

std::optional<std::string> read(const std::string& name) {
    if (!isThere()) return std::nullopt;
    auto* job = new QKeychain::ReadPasswordJob(service());
    job->setKey(QString::fromStdString(name));
    const Answer answer = run(job);
    if (!answer.good || answer.secret.isEmpty()) return std::nullopt;
    return answer.secret.toStdString();
}

bool write(const std::string& name, const std::string& secret) {
    if (!isThere()) return false;
    auto* job = new QKeychain::WritePasswordJob(service());
    job->setKey(QString::fromStdString(name));
    job->setTextData(QString::fromStdString(secret));
    return run(job).good;
}

bool remove(const std::string& name) {
    if (!isThere()) return false;
    auto* job = new QKeychain::DeletePasswordJob(service());
    job->setKey(QString::fromStdString(name));
    const Answer answer = run(job);
    return answer.good || answer.absent;
}

}  // namespace marlet::Keyring
