#pragma once

#include "foundation/bytes.h"
#include "foundation/errors.h"
#include "sources/tmdb_records.h"

namespace marlet {

/// From the bytes of an answer to a record. What is not JSON, nests too deep, lacks a required
/// field or has one of another type is an MFError that names the field; absent and null optional
/// fields are the same; unknown ones are ignored.
namespace TMDBDecode {

/// For each record of tmdb_records.h that is a whole answer, and for the two below.
template <typename Record>
Record decode(ByteView json);

struct SearchResponse {
    std::vector<TMDBSearchHit> results;
};

struct SeasonImages {
    std::optional<std::vector<TMDBImage>> posters;
};

}  // namespace TMDBDecode
}  // namespace marlet
