#include "write/write_request.h"

namespace marlet {

std::string name(WriteOutcome::Status status) {
    switch (status) {
        case WriteOutcome::Status::done:
            return "done";
        case WriteOutcome::Status::failed:
            return "failed";
        case WriteOutcome::Status::skipped:
            return "skipped";
        case WriteOutcome::Status::cancelled:
            return "cancelled";
        case WriteOutcome::Status::stopped:
            return "stopped";
    }
    return "failed";
}

}  // namespace marlet
