#pragma once

#include <QString>

#include "app/write_queue.h"

namespace marlet {

/// The words above the list of jobs. Each is empty where it doesn't apply.
namespace RunWords {

/// "Making files Apple TV ready", "Writing details", "Putting original details back".
QString running(const WriteQueue& queue);
/// "about 3 minutes left".
QString timeLeft(const WriteQueue& queue);
/// The running job and its step.
QString now(const WriteQueue& queue);
/// Where files go: "the folder of the original", or a folder's name.
QString whereTo(const WriteQueue& queue);
/// "All done" or "Finished, 1 failed".
QString finished(const WriteQueue& queue);
/// "3 done, 1 failed (the originals are untouched), 1 skipped".
QString counts(const WriteQueue& queue);

}  // namespace RunWords
}  // namespace marlet
