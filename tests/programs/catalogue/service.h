#pragma once

#include <memory>

#include "catalogue/answer.h"
#include "catalogue/catalogue.h"

namespace marlet::catalogue {

/// Answers questions as the real services would: "/3/..." with JSON and "/t/p/..." with pictures,
/// "/uts/v3/..." and "/itunes/..." as the other services, whose pictures lie at "/image/thumb/...".
/// May be asked from several threads.
class Service {
public:
    explicit Service(Catalogue catalogue);
    ~Service();

    Answer answer(const Question& question) const;

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace marlet::catalogue
