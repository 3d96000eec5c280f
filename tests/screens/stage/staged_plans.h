#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "app/plan_store.h"
#include "convert/plan_builder.h"

namespace marlet::test {

/// Takes the planner's place for files that have a plan here, by file name.
class StagedPlans {
public:
    enum class Ends { at_once, when_released };

    static PlanStore::Builder of(std::shared_ptr<StagedPlans> plans) {
        return [plans](const PlanStore::Order& order) { return plans->build(order); };
    }
    /// With Ends::when_released the count of its frames stands still at 37 %.
    void put(const std::string& name, ConvertPlan plan, Ends ends = Ends::at_once) {
        const std::lock_guard guard(mutex_);
        plans_[name] = {std::move(plan), ends};
        released_ = false;
    }
    void release() {
        const std::lock_guard guard(mutex_);
        released_ = true;
        changed_.notify_all();
    }

    /// A film with sound and subtitles of several languages, commentary and chapters.
    static ConvertPlan rich() {
        PlanInput input;
        input.duration = 5400;
        input.keepLanguages = {"eng", "fre"};
        input.tracks = {{.number = 1, .type = 1, .codecID = "V_MPEGH/ISO/HEVC"},
                        sound(2, "A_TRUEHD", "eng", 8, ""),
                        sound(3, "A_AC3", "fre", 6, ""),
                        sound(4, "A_AC3", "eng", 2, "Director's Commentary"),
                        sound(5, "A_AC3", "ger", 6, ""),
                        sound(6, "A_AC3", "ita", 6, ""),
                        subtitle(7, "S_TEXT/UTF8", "eng", ""),
                        subtitle(8, "S_HDMV/PGS", "fre", ""),
                        subtitle(9, "S_TEXT/UTF8", "eng", "Forced"),
                        subtitle(10, "S_VOBSUB", "eng", ""),
                        subtitle(11, "S_TEXT/UTF8", "ger", ""),
                        subtitle(12, "S_TEXT/UTF8", "spa", "")};
        input.chapters = {{.startNs = 0, .title = "One"}};
        ConvertPlan plan = PlanBuilder::make(input);
        plan.videoVerdict = VideoVerdict::copy();
        return plan;
    }
    static ConvertPlan refused() {
        ConvertPlan plan = rich();
        plan.video->codecID = "V_VP9";
        plan.videoVerdict = VideoVerdict::unsupported("VP9 video can't be played by Apple TV");
        return plan;
    }

private:
    struct Entry {
        ConvertPlan plan;
        Ends ends = Ends::at_once;
    };

    static MKVTrack sound(int number, const char* codec, const char* language, int channels,
                          const char* name) {
        MKVTrack track{.number = number, .type = 2, .codecID = codec, .language = language};
        track.isDefault = number == 2;
        track.channels = channels;
        track.sampleRate = 48000;
        if (*name != 0) track.name = name;
        return track;
    }
    static MKVTrack subtitle(int number, const char* codec, const char* language,
                             const char* name) {
        MKVTrack track{.number = number, .type = 17, .codecID = codec, .language = language};
        track.isDefault = false;
        if (*name != 0) track.name = name;
        return track;
    }

    std::optional<ConvertPlan> build(const PlanStore::Order& order) {
        std::unique_lock lock(mutex_);
        const auto found = plans_.find(order.file.filename().string());
        if (found == plans_.end()) {
            lock.unlock();
            return PlanStore::build(order);
        }
        ConvertPlan plan = found->second.plan;
        plan.source = order.file;
        const bool waits = found->second.ends == Ends::when_released;
        if (waits && order.depth == PlanStore::Order::Depth::Frames) {
            if (order.progress) order.progress(0.37);
            changed_.wait(lock, [&] { return released_; });
        }
        return plan;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, Entry> plans_;
    bool released_ = false;
};

}  // namespace marlet::test
