#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "convert/audio_convert.h"
#include "convert/tones.h"
#include "foundation/errors.h"
#include "foundation/tool_runner.h"
#include "foundation/tool_sandbox.h"
#include "support/bundle.h"
#include "support/temp_folder.h"

namespace marlet::test {

/// A job's work folder, and media tools: Marlet's own, or GPAC's where they are installed.
class SoundJob {
public:
    explicit SoundJob(Bundle::Tools tools) : bundle_(tools), helpers_(bundle_.helpers()) {}

    std::filesystem::path in(const std::string& name) const { return folder_ / name; }
    const std::filesystem::path& folder() const { return folder_.path(); }
    /// The names of all that lies in the work folder, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            all.push_back(entry.path().filename().string());
        std::sort(all.begin(), all.end());
        return all;
    }
    /// In the place of gpac: a shell script, which gets its command line.
    void putScript(const std::string& script) const {
        const auto tool = bundle_.helpers() / "gpac";
        std::filesystem::remove(tool);
        writeFile(tool, viewOf("#!/bin/sh\n" + script + "\n"));
        std::filesystem::permissions(tool, std::filesystem::perms::owner_all);
    }
    const Bundle& bundle() const { return bundle_; }

    RunControl control;

private:
    Bundle bundle_;
    MP4BoxLocator::HelpersAt helpers_;
    TempFolder folder_;
};

/// Every test of it runs with Marlet's own tool and with GPAC's.
class WithEachTool : public testing::TestWithParam<Bundle::Tools> {
protected:
    void SetUp() override {
        if (GetParam() == Bundle::Tools::gpac && !gpacOnPath())
            GTEST_SKIP() << "no GPAC on the PATH";
        job_ = std::make_unique<SoundJob>(GetParam());
    }

    /// A Matroska file's sound, as the conversion of a film decodes it: cut out, decoded.
    std::filesystem::path decoded(const std::filesystem::path& film) {
        const auto mkv = MKVFile::open(film);
        if (!mkv) throw std::runtime_error("no Matroska file");
        const MKVTrack& track = mkv->tracks().at(0);
        const auto single = job_->in("t1.mkv");
        const auto wav = job_->in("t1.wav");
        MKVWriter::extractAudio(*mkv, track, single, job_->control);
        AudioConvert::decodeToWAV(single, track.sampleRate, wav, job_->control);
        return wav;
    }

    std::unique_ptr<SoundJob> job_;
};

inline std::string toolName(const testing::TestParamInfo<Bundle::Tools>& info) {
    return info.param == Bundle::Tools::own ? "OwnTool" : "GPAC";
}

#define INSTANTIATE_WITH_EACH_TOOL(Suite)  \
    INSTANTIATE_TEST_SUITE_P(Tools, Suite, \
                             testing::Values(Bundle::Tools::own, Bundle::Tools::gpac), toolName)

template <class Work>
std::string failureOf(Work work) {
    try {
        work();
    } catch (const MFError& failure) {
        return failure.description();
    }
    return "no failure";
}

}  // namespace marlet::test
