// The one instance of each catalogue, for as long as the application object lives: their sessions
// end with it, and not when tables that they use are already gone.

#include <QCoreApplication>
#include <QEvent>
#include <memory>

#include "sources/apple_tv.h"
#include "sources/itunes.h"

namespace marlet {
namespace {

struct Shared {
    AppleTVSource appleTV;
    ITunesSource itunes;
};

std::unique_ptr<Shared>& shared() {
    static std::unique_ptr<Shared> sources;
    return sources;
}

void letGo() {
    shared().reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

Shared& made() {
    if (!shared()) {
        shared() = std::make_unique<Shared>();
        qAddPostRoutine(letGo);
    }
    return *shared();
}

}  // namespace

ExternalSource* sharedSource(SourceID id) {
    switch (id) {
        case SourceID::appleTV:
            return &made().appleTV;
        case SourceID::itunes:
            return &made().itunes;
        case SourceID::tmdb:
            break;  // driven through its own client
    }
    return nullptr;
}

}  // namespace marlet
