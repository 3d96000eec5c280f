// Answers of the database from anywhere: every record is decoded from the same bytes, and what
// decodes is asked its questions. The cache's own entries are read from them too.

#include <cstddef>
#include <cstdint>
#include <string>

#include "sources/http_entry.h"
#include "sources/tmdb_decode.h"

using namespace marlet;

namespace {

template <typename Record, typename Use>
void tryDecode(ByteView bytes, Use use) {
    try {
        use(TMDBDecode::decode<Record>(bytes));
    } catch (const MFError&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteView bytes(data, size);
    tryDecode<TMDBDecode::SearchResponse>(bytes, [](const auto& response) {
        for (const TMDBSearchHit& hit : response.results) (void)hit.year();
    });
    tryDecode<TMDBDecode::SeasonImages>(bytes, [](const auto&) {});
    tryDecode<TMDBMovie>(bytes, [](const auto& film) { (void)film.year(); });
    tryDecode<TMDBShow>(bytes, [](const auto& show) { (void)show.year(); });
    tryDecode<TMDBSeason>(bytes, [](const auto&) {});
    tryDecode<TMDBSeasonBundle>(bytes, [](const auto&) {});
    tryDecode<TMDBMovieFull>(bytes, [](const auto& film) { (void)film.certification(); });
    tryDecode<TMDBShowFull>(bytes, [](const auto& show) { (void)show.certification(); });
    tryDecode<TMDBEpisodeFull>(bytes, [](const auto&) {});
    (void)HttpEntry::decode(bytes, "GET https://a/\n");
    return 0;
}
