#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <variant>

#include "helpers/build_movie.h"
#include "helpers/relayout.h"

namespace marlet::MuxOptions {

struct ShowVersion {};
struct ShowInfo {
    std::filesystem::path file;
};
using Command = std::variant<ShowVersion, ShowInfo, Relayout::Request, BuildMovie::Request>;

/// The command lines of MP4Box that Marlet uses, and no others, in the order in which it gives
/// them:
///   -version
///   -info FILE
///   -tmp DIR -inter MS -moovpad N [-rem ID]... IN -out OUT
///   -tmp DIR -add TRACK [-add TRACK]... [-chap FILE] -inter MS -moovpad N -new OUT
/// Every place has one meaning, so that a path is never read as an option, whatever it begins
/// with. Anything else is an MFError that says so.
Command parse(std::span<const std::string> arguments);

}  // namespace marlet::MuxOptions
