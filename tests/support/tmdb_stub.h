#pragma once

#include <memory>
#include <string>

#include "foundation/preferences.h"
#include "sources/tmdb_client.h"
#include "support/http_stub.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"

namespace marlet::test {

/// A client whose service is a scripted server, with caches and settings of its own.
class TMDBStub {
public:
    HttpStub web;

    TMDBStub()
        : api_("MARLET_TMDB_API", web.root() + "/3"), images_("MARLET_TMDB_IMAGES", web.root()) {
        qtApp();
        Preferences::install(std::make_unique<MemoryPreferences>());
        client = make();
    }
    ~TMDBStub() {
        client.reset();
        Async::settle(std::chrono::seconds(1));
        Preferences::install(std::make_unique<MemoryPreferences>());
    }

    std::shared_ptr<TMDBClient> make(const std::string& token = "token-7",
                                     TMDBClient::Refresh refresh = TMDBClient::Refresh::No,
                                     CancelToken cancel = {}) {
        return TMDBClient::make(token, refresh, cancel);
    }

    std::shared_ptr<TMDBClient> client;

private:
    OwnHome home_;
    ScopedEnv api_;
    ScopedEnv images_;
};

}  // namespace marlet::test
