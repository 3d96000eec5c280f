#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/dates.h"
#include "foundation/errors.h"
#include "sources/async.h"
#include "sources/http_session.h"
#include "sources/tmdb_records.h"

namespace marlet {

class TMDBError : public MFError {
public:
    enum class Kind { http, noKey, badResponse };
    static TMDBError http(int status);
    static TMDBError noKey();
    static TMDBError badResponse();

    Kind kind() const { return kind_; }
    int status() const { return status_; }  ///< for http

private:
    TMDBError(Kind kind, int status, const std::string& text)
        : MFError(text), kind_(kind), status_(status) {}
    Kind kind_;
    int status_;
};

/// The only way to The Movie Database (version 3 API). Immutable; calls may overlap, at most 4
/// connections at a time. Every call throws TMDBError, TransportError, MFError (an answer that
/// doesn't decode) or CancelError.
class TMDBClient {
public:
    enum class Refresh { No, Yes };
    using Query = std::vector<std::pair<std::string, std::string>>;

    /// No client for an absent or empty token. With Refresh::Yes every request passes the cache by.
    static std::shared_ptr<TMDBClient> make(std::optional<std::string> token,
                                            Refresh refresh = Refresh::No, CancelToken cancel = {});

    Task<std::vector<TMDBSearchHit>> searchMovie(std::string query, std::optional<int> year = {});
    Task<std::vector<TMDBSearchHit>> searchShow(std::string query);
    Task<TMDBMovie> movie(std::int64_t id);
    Task<TMDBMovieFull> movieFull(std::int64_t id);
    Task<TMDBShow> show(std::int64_t id);
    Task<TMDBShowFull> showFull(std::int64_t id);
    Task<TMDBSeason> season(int number, std::int64_t show);
    /// At most 20 to a request; a failing request fails the call.
    Task<std::map<int, TMDBSeason>> seasons(std::vector<int> numbers, std::int64_t show);
    Task<TMDBEpisodeFull> episodeFull(std::int64_t show, int season, int episode);
    Task<std::vector<TMDBImage>> seasonPosters(std::int64_t show, int season);
    /// The bytes of a picture; not retried.
    Task<Bytes> imageData(std::string path, std::string size);

    /// Whether the path is a thing that grows as a show airs.
    static bool isList(const std::string& path);
    /// Whether a saved answer with these headers is too old (or tells no date); times in seconds.
    static bool isStale(const std::optional<HttpAnswer>& cached, Moment now, std::int64_t maxAge);

private:
    struct Impl;
    explicit TMDBClient(std::shared_ptr<Impl> impl) : impl_(std::move(impl)) {}
    std::shared_ptr<Impl> impl_;
};

namespace ImageRef {
/// The address of a picture: the image service's root, "/t/p/", the size and the path. A path
/// that begins "http" is one already.
std::string url(const std::string& path, const std::string& size);
}  // namespace ImageRef

}  // namespace marlet
