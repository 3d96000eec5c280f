#pragma once

#include <exception>
#include <string>
#include <utility>

#include "write/write_request.h"

namespace marlet {

/// Ends a write with another status than `failed`, which every other failure stands for.
class JobEnd : public std::exception {
public:
    JobEnd(WriteOutcome::Status status, std::string message)
        : status_(status), message_(std::move(message)) {}

    static JobEnd stopped(std::string message) {
        return {WriteOutcome::Status::stopped, std::move(message)};
    }
    WriteOutcome::Status status() const { return status_; }
    const std::string& message() const { return message_; }
    const char* what() const noexcept override { return message_.c_str(); }

private:
    WriteOutcome::Status status_;
    std::string message_;
};

}  // namespace marlet
