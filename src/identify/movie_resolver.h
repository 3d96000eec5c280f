#pragma once

#include <memory>

#include "foundation/records.h"
#include "sources/async.h"
#include "sources/source.h"
#include "sources/tmdb_client.h"

namespace marlet {

/// Decides which film of one catalogue a file is. Throws nothing but CancelError.
namespace MovieResolver {

Task<ResolvedFile> fromTMDB(std::shared_ptr<TMDBClient> tmdb, ScannedFile file, Guess guess,
                            CancelToken cancel);
Task<ResolvedFile> fromExternal(ExternalSource* source, ScannedFile file, Guess guess,
                                CancelToken cancel);

/// The match that a film of TMDB makes, without a cut. Pure.
Match matchOf(const TMDBMovie& movie);

}  // namespace MovieResolver
}  // namespace marlet
