#include "app/worker.h"

#include "write/tag_writer.h"

namespace marlet {

WriteOutcome runJob(const WriteRequest& request, RunControl& control,
                    const StepProgress& progress) {
    if (!request.isConvert()) return TagWriter::write(request, control, progress);
    // Both converters need the media tool before anything else, and this build carries none.
    WriteOutcome outcome;
    outcome.message = "the media tool (MP4Box) is missing from this copy of Marlet";
    return outcome;
}

}  // namespace marlet
