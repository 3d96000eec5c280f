#pragma once

#include <exception>
#include <string>
#include <utility>

namespace marlet {

/// Nearly every failure of the program: one sentence that a person will read.
/// The wording is an interface, because PlainText::explain recognises phrases in it.
class MFError : public std::exception {
public:
    explicit MFError(std::string description) : description_(std::move(description)) {}

    const std::string& description() const noexcept { return description_; }
    const char* what() const noexcept override { return description_.c_str(); }

private:
    std::string description_;
};

/// The person cancelled. Ends a job, never explains anything.
class CancelError : public std::exception {
public:
    const char* what() const noexcept override { return "cancelled"; }
};

}  // namespace marlet
