// How names are put in order.
#include <unicode/coll.h>

#include <memory>

#include "foundation/icu_text.h"
#include "foundation/text.h"

namespace marlet::Text {
namespace {

/// Made once; comparing is const and may run on any thread.
const icu::Collator* numericCollator() {
    static const std::unique_ptr<const icu::Collator> collator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::Collator> made(
            icu::Collator::createInstance(IcuText::localeOfPerson(), status));
        if (made) made->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        return U_SUCCESS(status) ? std::move(made) : nullptr;
    }();
    return collator.get();
}

int sign(int value) {
    return (value > 0) - (value < 0);
}

}  // namespace

int compareNatural(std::string_view a, std::string_view b) {
    UErrorCode status = U_ZERO_ERROR;
    int order = 0;
    if (const icu::Collator* const collator = numericCollator()) {
        order = collator->compareUTF8(
            icu::StringPiece(a.data(), static_cast<std::int32_t>(a.size())),
            icu::StringPiece(b.data(), static_cast<std::int32_t>(b.size())), status);
    }
    // Names that differ only in what the locale ignores still need one order ("1" and "01"); the
    // bytes of UTF-8 stand in the order of the code points.
    return order != 0 ? sign(order) : sign(a.compare(b));
}

}  // namespace marlet::Text
