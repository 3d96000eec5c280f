#include "convert/sound_step.h"

#include <string>
#include <string_view>

#include "convert/audio_convert.h"
#include "convert/convert_wording.h"
#include "convert/passing_file.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/languages.h"

namespace marlet::SoundStep {

namespace fs = std::filesystem;

namespace {

using AudioConvert::PassingFile;
using Audio = ConvertPlanSnapshot::Audio;
using Expected = ConvertVerify::Expected;

constexpr double stageStart = 0.05;
constexpr double stageShare = 0.3;

/// One sound track of the plan at work.
class Sound {
public:
    Sound(ConvertJob& job, const Audio& entry, double from, double share)
        : job_(job),
          entry_(entry),
          from_(from),
          share_(share),
          language_(Lang::name(entry.language)) {}

    void run() {
        job_.control.checkpoint();
        if (entry_.copy) copy();
        if (entry_.makeSurround || entry_.makeStereo) convert();
    }

private:
    void copy() {
        add(job_.link(), entry_.name, {.kind = Expected::Kind::audioCopy});
        job_.mux.tracks.back().number = entry_.track;
    }

    void convert() {
        const MKVTrack* const track = job_.mkv->track(entry_.track);
        if (track == nullptr) throw MFError(ConvertWording::noSuchSound(entry_.track));
        if (entry_.makeSurround && entry_.channels != 6 && entry_.channels != 8)
            throw MFError(ConvertWording::surroundChannels);
        report(0);
        Durable::makeFolders(job_.soundFolder());
        const PassingFile wav(file(".wav"));
        decode(*track, wav.path());
        if (entry_.makeSurround) makeSurround(wav.path());
        if (entry_.makeStereo) makeStereo(wav.path());
    }

    void decode(const MKVTrack& track, const fs::path& wav) const {
        if (std::string_view(track.codecID).starts_with("A_PCM")) {
            AudioConvert::pcmToWAV(*job_.mkv, track, wav, job_.control);
            return;
        }
        const PassingFile single(file(".mkv"));
        MKVWriter::extractAudio(*job_.mkv, track, single.path(), job_.control);
        AudioConvert::decodeToWAV(single.path(), entry_.rate, wav, job_.control);
    }

    void makeSurround(const fs::path& wav) {
        const PassingFile flac(file(".flac"));
        AudioConvert::surround51FLAC(wav, flac.path(), job_.control);
        AudioConvert::ac3(flac.path(), file(".ac3"), job_.control);
        add(file(".ac3"), language_ + " · Surround 5.1", {.kind = Expected::Kind::audioAC3});
    }

    void makeStereo(const fs::path& wav) {
        const AudioConvert::Mixed mixed = AudioConvert::aacStereo(
            wav, file(".m4a"), job_.control, [this](double done) { report(done); });
        if (mixed.peakGain < 1) job_.notes.push_back(ConvertWording::mixLowered(mixed.peakGain));
        const std::string name = entry_.channels > 2 ? language_ + " · Stereo" : language_;
        add(file(".m4a"), name,
            {.kind = Expected::Kind::audioAAC, .channels = mixed.inChannels == 1 ? 1 : 2});
    }

    void add(const fs::path& input, const std::string& name, Expected expected) {
        MuxTrack track{.file = input,
                       .language = entry_.language,
                       .name = muxName(name),
                       .delayMs = job_.starts.delayMs(entry_.track),
                       .group = MuxTrack::Group::sound};
        job_.mux.tracks.push_back(std::move(track));
        expected.source = entry_.track;
        expected.language = entry_.language;
        job_.expected.push_back(expected);
    }

    void report(double done) const {
        job_.report("Converting sound (" + language_ + ")", from_ + share_ * done);
    }

    fs::path file(const char* extension) const {
        return job_.soundFolder() / ("t" + std::to_string(entry_.track) + extension);
    }

    ConvertJob& job_;
    const Audio& entry_;
    const double from_;
    const double share_;
    const std::string language_;
};

}  // namespace

void run(ConvertJob& job) {
    const std::vector<Audio>& plan = job.plan().audio;
    const std::size_t firstSound = job.mux.tracks.size();
    std::size_t defaultTrack = firstSound;
    bool hasDefault = false;
    for (std::size_t i = 0; i < plan.size(); i++) {
        const std::size_t first = job.mux.tracks.size();
        const double share = stageShare / static_cast<double>(plan.size());
        Sound(job, plan[i], stageStart + share * static_cast<double>(i), share).run();
        const bool isInTheFilm = job.mux.tracks.size() > first;
        if (!plan[i].isDefault || !isInTheFilm || hasDefault) continue;
        defaultTrack = first;
        hasDefault = true;
    }
    for (std::size_t i = firstSound; i < job.mux.tracks.size(); i++)
        job.mux.tracks[i].isEnabled = i == defaultTrack;
}

}  // namespace marlet::SoundStep
