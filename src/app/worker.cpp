#include "app/worker.h"

#include "write/rebuild.h"
#include "write/tag_writer.h"

namespace marlet {

WriteOutcome runJob(const WriteRequest& request, RunControl& control,
                    const StepProgress& progress) {
    if (!request.isConvert()) return TagWriter::write(request, control, progress);
    // Both converters need the media tool before anything else; neither is part of this version.
    WriteOutcome outcome;
    outcome.message = TagWriter::mp4box() ? Rebuild::noConversion : Rebuild::missingForConversion;
    return outcome;
}

}  // namespace marlet
