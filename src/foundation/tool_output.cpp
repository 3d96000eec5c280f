#include "foundation/tool_output.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "foundation/text.h"

namespace marlet {

namespace {

bool isUtf8(std::string_view text) {
    return Text::repairUtf8(viewOf(text)) == text;
}

bool startsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

}  // namespace

void ToolOutput::take(std::string_view chunk) {
    if (chunk.empty() || !isUtf8(chunk)) return;
    {
        const std::lock_guard guard(mutex_);
        tail_ += chunk;
        tail_.erase(0, tail_.size() - lastCharacters(tail_, mostCharacters).size());
    }
    // Outside the lock: whoever listens may take its time, or ask for the tail.
    if (!progress_) return;
    if (const std::optional<double> done = progressIn(chunk)) progress_(*done);
}

std::string ToolOutput::tail() const {
    const std::lock_guard guard(mutex_);
    return tail_;
}

std::optional<double> ToolOutput::progressIn(std::string_view chunk) {
    static const Regex mark(R"(\(([0-9]+)/100\))");
    const std::optional<RegexMatch> match = mark.firstMatch(chunk);
    if (!match) return std::nullopt;
    const std::string& percent = match->groups.front();
    double value = 0;
    const auto [end, error] =
        std::from_chars(percent.data(), percent.data() + percent.size(), value);
    // Digits alone can only be out of range by being too many.
    return error == std::errc() ? std::min(value / 100, 1.0) : 1.0;
}

std::string_view ToolOutput::lastCharacters(std::string_view text, std::size_t count) {
    std::size_t from = text.size();
    for (; from > 0 && count > 0; --from) {
        if (startsCharacter(text[from - 1])) --count;
    }
    return text.substr(from);
}

}  // namespace marlet
