#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "foundation/paths.h"
#include "sources/source_cache.h"
#include "support/clock_hands.h"
#include "support/http_stub.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"

namespace marlet::test {

/// A scripted server in place of the catalogues beside TMDB, with a cache of its own and a clock
/// whose hands a test turns. The person is in the United States.
class SourceStub {
public:
    SourceStub() { qtApp(); }
    ~SourceStub() {
        SourceCache::setNotBefore(SourceCache::Instant::min());
        Async::settle(std::chrono::seconds(1));
    }

    HttpStub web;
    ClockHands hands;

    /// All that the cache holds, in one text.
    static std::string cached() {
        std::string all;
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(Paths::sourceCacheDir(), none))
            all += entry.path().filename().string() + textOf(readFile(entry.path()));
        return all;
    }
    /// A configurations answer with this key.
    void giveKey(const std::string& utsk) {
        web.answer("/uts/v3/configurations",
                   R"({"data":{"x":[{"utsk":")" + utsk + R"(","pfm":"web"}]}})");
    }
    /// The value of an item in a target's query; empty without one.
    static std::string item(const std::string& target, const std::string& name) {
        for (const std::string& mark : {"?" + name + "=", "&" + name + "="}) {
            const auto at = target.find(mark);
            if (at == std::string::npos) continue;
            const auto from = at + mark.size();
            return target.substr(from, target.find('&', from) - from);
        }
        return {};
    }

private:
    OwnHome home_;
    ScopedEnv apple_{"MARLET_APPLE_TV_API", web.root() + "/uts/v3/"};
    ScopedEnv itunes_{"MARLET_ITUNES_API", web.root() + "/"};
    ScopedEnv locale_{"LC_ALL", "en_US.UTF-8"};
};

}  // namespace marlet::test
