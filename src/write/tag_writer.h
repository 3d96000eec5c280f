#pragma once

#include <optional>
#include <string>

#include "foundation/run_control.h"
#include "write/write_request.h"

namespace marlet {

/// Writes details, fixes the sound layout, or puts the original details back, in one MP4. The
/// file is changed only after the exact result was built and proved on a private copy.
namespace TagWriter {

/// Never throws: every failure becomes a status and a sentence. Runs on a worker thread.
WriteOutcome write(const WriteRequest& request, RunControl& control, const StepProgress& progress);

/// Finishes what a crash cut off. A sentence for the person, or nothing. Never fails; called once
/// at the start, before anything can be queued.
std::optional<std::string> recoverInterruptedWrite();

}  // namespace TagWriter
}  // namespace marlet
