#pragma once

#include <memory>
#include <string>
#include <vector>

#include "sources/http_address.h"
#include "sources/source.h"

namespace marlet {

/// The catalogue behind Apple's TV app, by the web interface of its own client. An unofficial way
/// in, so: one request at a time, a gap between requests, patience after failures, answers kept for
/// six hours, and the key that the service hands out is held in memory only.
///
/// Main context only. Calls under way keep what they need alive. Every call throws SourceError,
/// TransportError, MFError (an answer that is no JSON) or CancelError.
class AppleTVSource : public ExternalSource {
public:
    AppleTVSource();
    ~AppleTVSource() override;
    AppleTVSource(const AppleTVSource&) = delete;
    AppleTVSource& operator=(const AppleTVSource&) = delete;

    SourceID id() const override { return SourceID::appleTV; }
    Task<std::vector<ExtShow>> searchShows(std::string title, CancelToken cancel) override;
    Task<ExtShowInfo> showInfo(ExtShow show, CancelToken cancel) override;
    Task<std::vector<int>> seasons(ExtShow show, CancelToken cancel) override;
    /// Only those of the season asked for.
    Task<std::vector<ExtEpisode>> episodes(int season, ExtShow show, CancelToken cancel) override;
    Task<std::vector<ExtMovie>> searchMovies(std::string title, CancelToken cancel) override;
    Task<ExtMovie> movieDetails(ExtMovie movie, CancelToken cancel) override;

    /// What a saved answer is found by. Language, store and question are part of it; the service's
    /// key is not, even when the query holds one.
    static std::string cacheKey(const std::string& path, HttpAddress::Query query);

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace marlet
