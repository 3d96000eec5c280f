#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace marlet {

/// Where the lines of a subtitle come from. The numbers are what is stored.
enum class SubKind { text = 0, picture = 1, sidecar = 2 };

/// What a conversion shall do, as a queued job carries it: all that is left out is not in it.
struct ConvertPlanSnapshot {
    struct Audio {
        int track = 0;         ///< number in the source
        std::string language;  ///< three letters, "und" when unknown
        std::string name;
        bool copy = false;
        bool makeSurround = false;  ///< AC3 5.1
        bool makeStereo = false;    ///< AAC
        int channels = 0;           ///< of the source
        double rate = 0;            ///< Hz, of the source
        bool isDefault = false;
        bool operator==(const Audio&) const = default;
    };
    struct Sub {
        std::string id;            ///< unique within the plan
        std::optional<int> track;  ///< number in the source
        std::optional<std::filesystem::path> sidecar;
        int kind = 0;  ///< SubKind
        std::string language;
        std::string name;
        bool forced = false;
        bool splitForced = false;  ///< only the forced lines of a picture track
        bool operator==(const Sub&) const = default;
    };
    int video = 0;  ///< track number in the source
    std::string videoCodec;
    std::optional<double> duration;  ///< seconds
    std::vector<Audio> audio;
    std::vector<Sub> subs;
    bool hasChapters = false;
    bool operator==(const ConvertPlanSnapshot&) const = default;
};

}  // namespace marlet
