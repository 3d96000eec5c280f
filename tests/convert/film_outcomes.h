#pragma once

#include <string>

#include "convert/film_conversion.h"

// What several tests expect of a conversion that gives no new file.
namespace marlet::test {

/// Converts: it fails in these words, delivers nothing, and the original is what it was.
void expectFailure(FilmConversion& film, const std::string& message);
/// It was cancelled: the promised words, nothing is delivered, the original is what it was.
void expectCancelled(const FilmConversion& film, const WriteOutcome& outcome);
/// Gives its source another date when a stage is reported.
void touchSourceAt(FilmConversion& film, const std::string& stage);
/// Converts: the source changed meanwhile, and nothing is delivered or left.
void expectChangedMeanwhile(FilmConversion& film);

}  // namespace marlet::test
