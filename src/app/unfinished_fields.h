#pragma once

// For the two .cpp files that write and read unfinished work: what its records hold, told once for
// both directions. What holds its default isn't written, and what isn't there keeps its default.

#include <array>
#include <concepts>
#include <type_traits>

#include "app/unfinished.h"

namespace marlet::UnfinishedJson {

// Another meaning of what is written is another version, and older ones are not read.
inline constexpr int version = 1;

/// The values of an enumeration as they are written, in its order.
template <typename T>
inline constexpr std::array<const char*, 0> namesOf{};
template <>
inline constexpr std::array namesOf<MediaKind>{"movie", "tv"};
template <>
inline constexpr std::array namesOf<SourceID>{"appleTV", "tmdb", "itunes"};
template <>
inline constexpr std::array namesOf<TrackInfo::Kind>{"video", "audio", "subtitle", "other"};
template <>
inline constexpr std::array namesOf<Guess::Source>{"rules", "ai"};
template <>
inline constexpr std::array namesOf<ArtworkOption::Shape>{"wide", "tall"};
template <>
inline constexpr std::array namesOf<ArtworkStyle>{"wide", "tall"};

template <typename T, typename Record>
concept Is = std::same_as<std::remove_const_t<T>, Record>;

template <typename A, Is<TrackInfo> T>
void fields(A& a, T& it) {
    a("kind", it.kind);
    a("codec", it.codec);
    a("language", it.language);
    a("name", it.name);
}

template <typename A, Is<ExistingTags> T>
void fields(A& a, T& it) {
    a("title", it.title);
    a("show", it.show);
    a("season", it.season);
    a("episode", it.episode);
    a("year", it.year);
}

template <typename A, Is<ScannedFile> T>
void fields(A& a, T& it) {
    a("path", it.url);
    a("size", it.size);
    a("duration", it.duration);
    a("tracks", it.tracks);
    a("tags", it.tags);
    a("interleave", it.interleave);
}

template <typename A, Is<Guess> T>
void fields(A& a, T& it) {
    a("kind", it.kind);
    a("title", it.title);
    a("year", it.year);
    a("season", it.season);
    a("episode", it.episode);
    a("episodeTitle", it.episodeTitle);
    a("source", it.source);
    a("conflict", it.conflict);
    a("compact", it.compact);
    a("movieTitle", it.movieTitle);
    a("movieYear", it.movieYear);
}

template <typename A, Is<ManualDetails> T>
void fields(A& a, T& it) {
    a("title", it.title);
    a("description", it.description);
    a("releaseDate", it.releaseDate);
    a("cast", it.cast);
    a("directors", it.directors);
    a("writers", it.writers);
    a("source", it.source);
    a("genre", it.genre);
    a("rating", it.rating);
    a("wide", it.wide);
    a("tall", it.tall);
}

template <typename A, Is<Match> T>
void fields(A& a, T& it) {
    a("id", it.tmdbID);
    a("kind", it.kind);
    a("title", it.title);
    a("year", it.year);
    a("season", it.season);
    a("episode", it.episode);
    a("episodeEnd", it.episodeEnd);
    a("episodeTitle", it.episodeTitle);
    a("runtimeMinutes", it.runtimeMinutes);
    a("posterPath", it.posterPath);
    a("cut", it.cut);
    a("manual", it.manual);
}

template <typename A, Is<ArtworkOption> T>
void fields(A& a, T& it) {
    a("shape", it.shape);
    a("path", it.path);
    a("language", it.language);
    a("isStill", it.isStill);
}

template <typename A, Is<Details> T>
void fields(A& a, T& it) {
    forEachDetailsField([&](const char* name, auto field) { a(name, it.*field); });
}

template <typename A, Is<ResolvedFile> T>
void fields(A& a, T& it) {
    a("file", it.file);
    a("guess", it.guess);
    a("match", it.match);
    a("verdict", it.verdict);
    a("ambiguous", it.ambiguous);
}

template <typename A, Is<DraftCorrections> T>
void fields(A& a, T& it) {
    a("details", it.details);
    a("wide", it.wide);
    a("tall", it.tall);
    a("style", it.style);
    a("isApart", it.isApart);
}

template <typename A, Is<PlanTicks> T>
void fields(A& a, T& it) {
    a("sounds", it.sounds);
    a("subtitles", it.subtitles);
}

template <typename A, Is<UnfinishedFile> T>
void fields(A& a, T& it) {
    a("resolved", it.resolved);
    a("isAccepted", it.isAccepted);
    a("draft", it.draft);
    a("dropped", it.dropped);
    a("ticks", it.ticks);
}

template <typename A, Is<UnfinishedRestore> T>
void fields(A& a, T& it) {
    a("path", it.file);
    a("details", it.details);
    a("year", it.year);
}

template <typename A, Is<FilmMark> T>
void fields(A& a, T& it) {
    a("size", it.size);
    a("modified", it.modified);
}

}  // namespace marlet::UnfinishedJson
