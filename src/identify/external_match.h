#pragma once

#include "foundation/records.h"
#include "sources/source.h"

namespace marlet {

/// The match that a record of a catalogue beside TMDB makes. Pure.
namespace ExternalMatch {

Match ofFilm(const ExtMovie& film, SourceID source);
Match ofEpisode(const ExtShow& show, const ExtShowInfo& info, const ExtEpisode& episode,
                SourceID source);

}  // namespace ExternalMatch
}  // namespace marlet
