#include <unicode/regex.h>
#include <unicode/utf8.h>

#include <array>
#include <cstdint>
#include <mutex>
#include <utility>

#include "foundation/icu_text.h"
#include "foundation/text.h"

namespace marlet {
namespace {

/// Steps of the matching engine, in ICU's unit of about a millisecond of work. A file name is done
/// in a few hundredths of one; only a text made to hurt comes near.
constexpr std::int32_t timeLimit = 500;

/// A text as ICU wants it. A short ASCII one, which nearly all are, needs no heap.
class Subject {
public:
    explicit Subject(std::string_view text) : bytes_(text), ascii_(IcuText::isAscii(text)) {
        if (ascii_ && text.size() <= units_.size()) {
            std::copy(text.begin(), text.end(), units_.begin());
            text_.setTo(false, units_.data(), static_cast<std::int32_t>(text.size()));
        } else {
            text_ = IcuText::utf16(text);
        }
    }
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    const icu::UnicodeString& text() const { return text_; }

    /// Where in the UTF-8 text a UTF-16 position lies.
    std::size_t byteOffset(std::int32_t unit) const {
        if (ascii_) return static_cast<std::size_t>(unit);
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(bytes_.data());
        const auto length = static_cast<std::int32_t>(bytes_.size());
        std::int32_t at = 0;
        for (std::int32_t units = 0; units < unit && at < length;) {
            UChar32 c = 0;
            U8_NEXT_OR_FFFD(bytes, at, length, c);
            units += U16_LENGTH(c);
        }
        return static_cast<std::size_t>(at);
    }

    std::string slice(std::int32_t from, std::int32_t to) const {
        if (from < 0) return {};  // the group took no part
        if (ascii_) {
            return std::string(
                bytes_.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(to - from)));
        }
        return IcuText::utf8(text_.tempSubStringBetween(from, to));
    }

private:
    std::string_view bytes_;
    bool ascii_;
    std::array<char16_t, 256> units_;
    icu::UnicodeString text_;
};

}  // namespace

/// The compiled pattern, and the matchers that are not at work: a matcher costs more to make than
/// most matches, but serves one thread at a time.
struct Regex::Pattern {
    std::unique_ptr<icu::RegexPattern> compiled;  ///< none when it doesn't compile
    mutable std::mutex lock;
    mutable std::vector<std::unique_ptr<icu::RegexMatcher>> idle;  ///< guarded by lock

    Pattern(std::string_view source, Case sensitivity) {
        UErrorCode status = U_ZERO_ERROR;
        UParseError where;
        compiled.reset(icu::RegexPattern::compile(
            IcuText::utf16(source), sensitivity == Case::Insensitive ? UREGEX_CASE_INSENSITIVE : 0,
            where, status));
        if (U_FAILURE(status)) compiled.reset();
    }

    std::unique_ptr<icu::RegexMatcher> take() const {
        {
            const std::lock_guard hold(lock);
            if (!idle.empty()) {
                auto matcher = std::move(idle.back());
                idle.pop_back();
                return matcher;
            }
        }
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::RegexMatcher> matcher(compiled->matcher(status));
        if (matcher) matcher->setTimeLimit(timeLimit, status);
        return U_SUCCESS(status) ? std::move(matcher) : nullptr;
    }

    void giveBack(std::unique_ptr<icu::RegexMatcher> matcher) const {
        const std::lock_guard hold(lock);
        idle.push_back(std::move(matcher));
    }

    /// Calls `use` with a matcher that stands on a match; false when there is none.
    template <class Use>
    bool atFirstMatch(const Subject& subject, Use use) const {
        if (!compiled) return false;
        auto matcher = take();
        if (!matcher) return false;
        UErrorCode status = U_ZERO_ERROR;
        matcher->reset(subject.text());
        const bool found = matcher->find(status) && U_SUCCESS(status);
        if (found) use(*matcher);
        giveBack(std::move(matcher));
        return found;
    }
};

Regex::Regex(std::string_view pattern, Case sensitivity)
    : pattern_(std::make_shared<const Pattern>(pattern, sensitivity)) {}
Regex::~Regex() = default;
Regex::Regex(Regex&&) noexcept = default;
Regex& Regex::operator=(Regex&&) noexcept = default;

std::optional<RegexMatch> Regex::firstMatch(std::string_view text) const {
    const Subject subject(text);
    std::optional<RegexMatch> match;
    pattern_->atFirstMatch(subject, [&](const icu::RegexMatcher& matcher) {
        UErrorCode status = U_ZERO_ERROR;
        match.emplace();
        match->start = subject.byteOffset(matcher.start(status));
        match->end = subject.byteOffset(matcher.end(status));
        for (std::int32_t group = 1; group <= matcher.groupCount(); ++group) {
            match->groups.push_back(
                subject.slice(matcher.start(group, status), matcher.end(group, status)));
        }
    });
    return match;
}

bool Regex::matchesIn(std::string_view text) const {
    return pattern_->atFirstMatch(Subject(text), [](const icu::RegexMatcher&) {});
}

std::string Regex::replaceAll(std::string_view text, std::string_view with) const {
    std::optional<std::string> changed;
    pattern_->atFirstMatch(Subject(text), [&](icu::RegexMatcher& matcher) {
        UErrorCode status = U_ZERO_ERROR;
        const icu::UnicodeString result = matcher.replaceAll(IcuText::utf16(with), status);
        if (U_SUCCESS(status)) changed = IcuText::utf8(result);
    });
    return changed ? *std::move(changed) : std::string(text);
}

std::string Regex::replaceFirst(std::string_view text, std::string_view with) const {
    std::optional<std::string> changed;
    pattern_->atFirstMatch(Subject(text), [&](icu::RegexMatcher& matcher) {
        UErrorCode status = U_ZERO_ERROR;
        const icu::UnicodeString result = matcher.replaceFirst(IcuText::utf16(with), status);
        if (U_SUCCESS(status)) changed = IcuText::utf8(result);
    });
    return changed ? *std::move(changed) : std::string(text);
}

}  // namespace marlet
