#pragma once

#include <memory>
#include <string>
#include <vector>

#include "sources/source.h"

namespace marlet {

/// The iTunes Store's public search. No key, but a tight limit on requests: one at a time, a second
/// apart, every answer kept for six hours. It knows shows by the collections of their seasons.
///
/// Main context only. Calls under way keep what they need alive. Every call throws SourceError,
/// TransportError, MFError (an answer that is no JSON) or CancelError.
class ITunesSource : public ExternalSource {
public:
    ITunesSource();
    ~ITunesSource() override;
    ITunesSource(const ITunesSource&) = delete;
    ITunesSource& operator=(const ITunesSource&) = delete;

    SourceID id() const override { return SourceID::itunes; }
    Task<std::vector<ExtShow>> searchShows(std::string title, CancelToken cancel) override;
    Task<ExtShowInfo> showInfo(ExtShow show, CancelToken cancel) override;
    Task<std::vector<int>> seasons(ExtShow show, CancelToken cancel) override;
    Task<std::vector<ExtEpisode>> episodes(int season, ExtShow show, CancelToken cancel) override;
    Task<std::vector<ExtMovie>> searchMovies(std::string title, CancelToken cancel) override;
    /// The film as it is: a search tells all there is.
    Task<ExtMovie> movieDetails(ExtMovie movie, CancelToken cancel) override;

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace marlet
