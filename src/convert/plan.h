#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "convert/video_policy.h"
#include "foundation/convert_records.h"
#include "matroska/mkv_file.h"

namespace marlet {

/// What happens to one sound track. All tracks are listed, kept or not.
struct AudioChoice {
    MKVTrack track;
    bool keep = false;
    std::string label;   ///< what the screen shows, and the track's name in the new file
    std::string codec;   ///< "TrueHD"; the codec id itself when it has no short name
    std::string format;  ///< "Surround 5.1"
    std::optional<std::string> name;  ///< in the source
    bool isCommentary = false;
    bool canCopy = false;  ///< the sound can stay as it is
    bool touched = false;  ///< a person changed `keep`
    bool copyOriginal = false;
    bool makeSurround = false;
    bool makeStereo = false;
    std::string becomes;  ///< the three flags above in words
    bool isDefault = false;
    /// Why the track can't be kept whatever anybody wants.
    std::optional<std::string> unsupportedReason;
    bool operator==(const AudioChoice&) const = default;
};

/// What happens to one subtitle, of the file or beside it.
struct SubChoice {
    std::string id;  ///< unique within the plan
    std::optional<MKVTrack> track;
    std::optional<std::filesystem::path> sidecar;
    SubKind kind = SubKind::text;
    std::string language;
    bool keep = false;
    bool isForced = false;  ///< foreign parts only
    std::string label;
    std::optional<std::string> note;
    std::optional<std::string> unsupportedReason;
    bool splitForced = false;  ///< stands for the forced lines cut out of a picture track
    bool touched = false;      ///< a person changed `keep`
    bool operator==(const SubChoice&) const = default;
};

/// What becomes of a Matroska file: what a person sees and can change before it is converted.
struct ConvertPlan {
    std::filesystem::path source;
    std::optional<double> duration;  ///< seconds
    std::optional<MKVTrack> video;
    VideoVerdict videoVerdict = VideoVerdict::unsupported("no video track");
    std::vector<AudioChoice> audio;  ///< in file order
    std::vector<SubChoice> subs;
    std::vector<MKVChapter> chapters;
    std::vector<std::string> keepLanguages;  ///< in the person's order

    /// Nothing when no conversion can start: no video, or one that can't be carried.
    std::optional<ConvertPlanSnapshot> snapshot() const;
    bool operator==(const ConvertPlan&) const = default;
};

}  // namespace marlet
