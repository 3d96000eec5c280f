#pragma once

#include <memory>
#include <vector>

#include "identify/season_judging.h"
#include "sources/async.h"
#include "sources/source.h"
#include "sources/tmdb_client.h"

namespace marlet {

/// Finds the show, the season and each file's episode in one catalogue. A show is chosen because
/// its episodes fit the files as a set. One result per file, in that order; throws nothing but
/// CancelError.
namespace SeasonResolver {

Task<std::vector<ResolvedFile>> fromTMDB(std::shared_ptr<TMDBClient> tmdb, SeasonFiles files,
                                         CancelToken cancel);
Task<std::vector<ResolvedFile>> fromExternal(ExternalSource* source, SeasonFiles files,
                                             CancelToken cancel);

}  // namespace SeasonResolver
}  // namespace marlet
