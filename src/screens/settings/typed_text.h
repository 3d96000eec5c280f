#pragma once

#include <QString>
#include <string>

namespace marlet {

/// A text as a person types it beside what is stored of it, which may be trimmed or a default:
/// what stands in the field changes only when somebody else stores another value.
class TypedText {
public:
    const QString& text() const { return text_; }
    void type(const QString& text) { text_ = text; }
    /// This is what came of typing.
    void see(const std::string& stored) { seen_ = stored; }
    /// True when another value was stored than the one last seen.
    bool refresh(const std::string& stored) {
        if (stored == seen_) return false;
        forget(stored);
        return true;
    }
    /// Shows what is stored, whatever was typed.
    void forget(const std::string& stored) {
        seen_ = stored;
        text_ = QString::fromStdString(stored);
    }

private:
    QString text_;
    std::string seen_;
};

}  // namespace marlet
