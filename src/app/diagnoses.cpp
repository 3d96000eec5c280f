// Short accounts of one file, for scripts.

#include "app/headless.h"
#include "convert/audio_convert.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/text.h"
#include "matroska/mkv_file.h"

namespace marlet::Headless {

namespace {

std::string words(bool value) {
    return value ? "true" : "false";
}

std::string trackLine(const MKVTrack& track, std::int64_t blocks) {
    return "track " + std::to_string(track.number) + " type " + std::to_string(track.type) + " " +
           track.codecID + " lang " + track.language + " default " + words(track.isDefault) +
           " forced " + words(track.isForced) + " name " + track.name.value_or("-") + " ch " +
           std::to_string(track.channels) + " blocks " + std::to_string(blocks) + "\n";
}

std::string chapterWords(const std::vector<MKVChapter>& chapters) {
    std::string text = std::to_string(chapters.size());
    for (const MKVChapter& chapter : chapters) text += " - " + chapter.title;
    return text;
}

std::string wavLine(const AudioConvert::WAV& wav) {
    return "wav: " + std::to_string(wav.channels) + " ch, " + Text::fixed(wav.sampleRate, 0) +
           " Hz, " + std::to_string(wav.bits) + "-bit, float " + words(wav.isFloat) + ", data " +
           std::to_string(wav.dataSize) + " bytes at " + std::to_string(wav.dataOffset) + "\n";
}

/// Picture, sound or subtitles: what stays, and how many are left out.
template <typename Choice, typename Words>
std::string kept(const std::vector<Choice>& choices, Words wordsOf) {
    std::vector<std::string> list;
    std::size_t out = 0;
    for (const Choice& choice : choices) {
        if (choice.keep)
            list.push_back(wordsOf(choice));
        else
            out++;
    }
    std::string text = list.empty() ? "none" : Text::join(list, ", ");
    if (out > 0) text += " (" + std::to_string(out) + " left out)";
    return text;
}

std::string soundWords(const AudioChoice& choice) {
    return choice.label + " [" + choice.becomes + "]";
}

std::string subtitleWords(const SubChoice& choice) {
    return choice.label;
}

}  // namespace

std::string mkvAccount(const std::filesystem::path& file) {
    const auto mkv = MKVFile::open(file);
    if (!mkv) return "not readable\n";
    std::string text = "duration " + Text::fixed(mkv->durationSeconds().value_or(0), 3) +
                       " s, chapters " + chapterWords(mkv->chapters()) + "\n";
    const auto stats = mkv->blockStats();
    for (const MKVTrack& track : mkv->tracks()) {
        const auto found = stats.find(track.number);
        text += trackLine(track, found == stats.end() ? 0 : found->second.count);
    }
    return text;
}

std::string audioTest(const std::filesystem::path& wav) {
    std::string text;
    try {
        text = wavLine(AudioConvert::readWAVHeader(wav));
        std::filesystem::path out = wav;
        out.replace_extension("test.m4a");
        RunControl control;
        const AudioConvert::Mixed mixed = AudioConvert::aacStereo(wav, out, control);
        return text + "aac: in " + std::to_string(mixed.inChannels) + " ch, gain " +
               Text::fixed(mixed.peakGain, 4) + ", size " + std::to_string(FileOps::size(out)) +
               "\n";
    } catch (const std::exception& failure) {
        return text + "failed: " + failure.what() + "\n";
    }
}

std::string planLine(const ConvertPlan& plan) {
    const std::string name = "plan: " + plan.source.filename().string() + " -> ";
    if (!plan.snapshot()) return name + plan.videoVerdict.message();
    return name + "picture " + plan.video->codecID + " copied; sound " +
           kept(plan.audio, soundWords) + "; subtitles " + kept(plan.subs, subtitleWords) +
           "; chapters " + std::to_string(plan.chapters.size());
}

}  // namespace marlet::Headless
