#pragma once

#include <sys/types.h>
#include <functional>
#include <string>
#include <vector>

#include "convert/film_conversion.h"

namespace marlet::test {

/// A second of picture (track 1) and of AC3 5.1 (2), an English subtitle (3) and two chapters;
/// made once a process.
const Bytes& surroundFilm();

/// A moment of a conversion: when a label is reported, at a fraction or later, or inside a media
/// tool whose arguments hold a text.
struct Stage {
    std::string name;
    std::string label;
    double from = 0;
    std::string tool = {};
    bool isOfSurround = false;  ///< comes only while AC3 5.1 is made
    bool isOfStereo = false;    ///< comes only while AAC is made
};
/// All of them, in their order, from the check of the tracks to the saving of the new file. The
/// last one is the only one that nothing can stop or hold.
std::vector<Stage> allStages();
/// Up to the last at which the tools still read the source, and those behind.
bool isWhileToolsRead(const Stage& stage);
bool isSaving(const Stage& stage);

/// A conversion that comes to a stage: its sound is copied, or becomes AC3 5.1 or AAC where the
/// stage is one of those.
class StagedConversion : public FilmConversion {
public:
    explicit StagedConversion(const Stage& stage);
    /// Converts, with an action at a stage: on the job's own thread, or on another while a tool
    /// waits, whose process it is given (0: no tool). Fails the test when the stage never came.
    WriteOutcome runWith(const Stage& stage, const std::function<void(pid_t tool)>& act);
    /// Nothing of Marlet's is left anywhere, and no process.
    void expectTidy() const;
};

}  // namespace marlet::test
