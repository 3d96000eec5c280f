#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace marlet {

// The plain records that carry a file from the first look to the write. An absent optional means
// "unknown"; 0 or an empty text is not the same unless the field says so.

enum class MediaKind { movie, tv };

/// The catalogues that can be asked, in their default order.
enum class SourceID { appleTV, tmdb, itunes };

/// "appleTV", "tmdb", "itunes": how a source is stored and named on the command line.
std::string rawValue(SourceID id);
std::optional<SourceID> sourceFromRaw(const std::string& raw);
/// "Apple TV", "TMDB", "iTunes Store".
std::string displayName(SourceID id);

struct TrackInfo {
    enum class Kind { video, audio, subtitle, other };
    Kind kind = Kind::other;
    std::string codec;
    std::optional<std::string> language;
    std::optional<std::string> name;
    auto operator<=>(const TrackInfo&) const = default;
};

/// What a file already says about itself.
struct ExistingTags {
    std::optional<std::string> title;
    std::optional<std::string> show;
    std::optional<int> season;
    std::optional<int> episode;
    std::optional<int> year;
    auto operator<=>(const ExistingTags&) const = default;
};

struct ScannedFile {
    std::filesystem::path url;
    std::int64_t size = 0;           ///< bytes
    std::optional<double> duration;  ///< seconds
    std::vector<TrackInfo> tracks;
    ExistingTags tags;
    std::optional<double> interleave;  ///< sound layout in seconds; absent when not measured
    bool operator==(const ScannedFile&) const = default;
};

/// What a file is taken to be before any source is asked.
struct Guess {
    enum class Source { rules, ai };
    MediaKind kind = MediaKind::movie;
    std::string title;  ///< the show for tv, the film for movie
    std::optional<int> year;
    std::optional<int> season;
    std::optional<int> episode;
    std::optional<std::string> episodeTitle;
    Source source = Source::rules;
    std::optional<std::string> conflict;    ///< a guard's note on the reading
    bool compact = false;                   ///< "106" read as season 1, episode 6
    std::optional<std::string> movieTitle;  ///< the reading as a film, for a compact guess
    std::optional<int> movieYear;
    auto operator<=>(const Guess&) const = default;
};

/// Details typed by hand, or taken from another source than TMDB.
struct ManualDetails {
    std::string title;
    std::string description;
    std::string releaseDate;
    std::vector<std::string> cast;
    std::vector<std::string> directors;
    std::vector<std::string> writers;
    std::optional<SourceID> source;  ///< absent for details typed by hand
    std::string genre;
    std::string rating;
    std::vector<std::string> wide;  ///< artwork locations
    std::vector<std::string> tall;
    bool operator==(const ManualDetails&) const = default;
};

/// What a source says the file is.
struct Match {
    std::int64_t tmdbID = 0;  ///< negative for a match from another source
    MediaKind kind = MediaKind::movie;
    std::string title;  ///< the show or the film
    std::optional<int> year;
    std::optional<int> season;
    std::optional<int> episode;
    std::optional<int> episodeEnd;  ///< only for a double episode
    std::optional<std::string> episodeTitle;
    std::optional<int> runtimeMinutes;
    std::optional<std::string> posterPath;
    std::optional<std::string> cut;  ///< edition of a film, from the file's name
    std::optional<ManualDetails> manual;

    SourceID sourceID() const;
    bool byHand() const { return manual && !manual->source; }
    bool operator==(const Match&) const = default;
};

/// Certain, or the reasons why a person must look, shown word for word.
class Verdict {
public:
    static Verdict certain() { return Verdict(true, {}); }
    static Verdict needsLook(std::vector<std::string> reasons) {
        return Verdict(false, std::move(reasons));
    }
    Verdict() : Verdict(false, {}) {}

    bool isCertain() const { return certain_; }
    const std::vector<std::string>& reasons() const { return reasons_; }
    bool operator==(const Verdict&) const = default;

private:
    Verdict(bool certain, std::vector<std::string> reasons)
        : certain_(certain), reasons_(std::move(reasons)) {}
    bool certain_;
    std::vector<std::string> reasons_;
};

struct ResolvedFile {
    ScannedFile file;
    std::optional<Guess> guess;
    std::optional<Match> match;
    Verdict verdict;
    /// Keeps its match but is shown under its own name until a person has chosen.
    bool ambiguous = false;
    bool operator==(const ResolvedFile&) const = default;
};

/// One row of Review: a season of a show with all its files, or one film or unknown file.
struct LibraryItem {
    std::string id;
    MediaKind kind = MediaKind::movie;
    std::string title;
    std::optional<int> year;
    std::optional<int> season;
    std::optional<std::string> posterPath;
    std::vector<ResolvedFile> files;
    bool operator==(const LibraryItem&) const = default;
};

/// Every descriptive field that can be written to a file: the form that a person edits.
struct Details {
    MediaKind kind = MediaKind::movie;
    std::string title;
    std::string description;
    std::string longDescription;
    std::vector<std::string> cast;
    std::vector<std::string> directors;
    std::vector<std::string> writers;
    std::string genre;
    std::string rating;
    std::string releaseDate;
    std::string show;
    std::optional<int> season;
    std::optional<int> episode;
    std::optional<int> episodeEnd;

    /// "S2E5", "S2E5-6" for a double episode; empty when either number is missing.
    std::string episodeLabel() const;
    bool operator==(const Details&) const = default;
};

/// One picture on offer.
struct ArtworkOption {
    enum class Shape { wide, tall };
    Shape shape = Shape::wide;
    std::string path;  ///< a source's path or a full location
    std::optional<std::string> language;
    bool isStill = false;  ///< a frame of the episode rather than a designed picture

    /// The choice of none: nothing is fetched or written, so that the cover which a file has stays.
    static ArtworkOption fileKeepsIts(Shape shape) { return {shape, "", std::nullopt, false}; }
    bool keepsFiles() const { return path.empty(); }
    auto operator<=>(const ArtworkOption&) const = default;
};

/// The shape of cover that the person prefers.
enum class ArtworkStyle { wide, tall };

/// The editable state of one file in Review.
struct FileDraft {
    Details details;
    Details original;  ///< as loaded, so that a change can be told
    std::vector<ArtworkOption> wide;
    std::vector<ArtworkOption> tall;
    std::optional<ArtworkOption> chosenWide;
    std::optional<ArtworkOption> chosenTall;
    std::optional<ArtworkStyle> styleOverride;
    std::optional<std::string> seasonKey;  ///< season whose artwork this file shares

    /// The picture to write: the chosen one of the style's shape, else the first of that shape.
    /// The other shape is never taken in its place.
    std::optional<ArtworkOption> chosen(ArtworkStyle defaultStyle) const;
    bool operator==(const FileDraft&) const = default;
};

}  // namespace marlet
