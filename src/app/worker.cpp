#include "app/worker.h"

#include "convert/converter.h"
#include "write/tag_writer.h"

namespace marlet {

WriteOutcome runJob(const WriteRequest& request, RunControl& control,
                    const StepProgress& progress) {
    if (const auto* const convert = std::get_if<ConvertRequest>(&request.mode))
        return Converter::runAny(*convert, control, progress);
    return TagWriter::write(request, control, progress);
}

}  // namespace marlet
