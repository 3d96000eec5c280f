#include "app/report_fields.h"

#include <cmath>

#include "app/headless.h"
#include "foundation/durable.h"
#include "foundation/text.h"

namespace marlet::ReportFields {

namespace {

std::string oneField(std::string text) {
    text = Text::repairUtf8(viewOf(text));
    for (char& c : text)
        if (c == '\t' || c == '\n' || c == '\r') c = ' ';
    return text;
}

}  // namespace

std::string row(const std::vector<std::string>& fields) {
    std::string line;
    for (const std::string& field : fields) {
        if (&field != &fields.front()) line += '\t';
        line += oneField(field);
    }
    return line;
}

std::string relativePath(const std::filesystem::path& file) {
    return Text::replaceAll(file.string(), Headless::libraryRoot(), "");
}

std::string minutes(const std::optional<double>& seconds) {
    return seconds ? std::to_string(std::lround(*seconds / 60)) : "";
}

bool save(const std::filesystem::path& to, const std::string& text) {
    try {
        Durable::writeFile(std::filesystem::absolute(to), viewOf(text));
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace marlet::ReportFields
