#include "app/stored_preferences.h"

#include <QSettings>
#include <QStringList>
#include <utility>

#include "foundation/file_ops.h"
#include "foundation/text.h"

namespace marlet {

namespace {

QString qt(const std::string& text) {
    return QString::fromStdString(text);
}

bool isList(const QVariant& value) {
    return value.typeId() == QMetaType::QStringList;
}

/// A text with commas that was written by hand without quotes is a list to QSettings, which forgets
/// the blanks around them. What a path is made of counts, so the line itself is read.
std::optional<std::string> unquoted(const std::string& key, const std::string& file) {
    bool isGeneral = false;
    for (const std::string& each : Text::split(file, '\n')) {
        const std::string line = Text::trim(each);
        if (Text::startsWith(line, "[")) isGeneral = line == "[General]";
        const std::size_t equals = line.find('=');
        if (!isGeneral || equals == std::string::npos) continue;
        const std::string value = Text::trim(line.substr(equals + 1));
        if (Text::trim(line.substr(0, equals)) == key &&
            value.find_first_of("\"\\") == std::string::npos)
            return value;
    }
    return std::nullopt;
}

}  // namespace

StoredPreferences::StoredPreferences(const std::filesystem::path& file,
                                     std::chrono::milliseconds pause)
    : file_(file), pause_(pause), values_(readFile()) {}

StoredPreferences::~StoredPreferences() {
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    wake_.notify_all();
    if (writer_.joinable()) writer_.join();
    flush();
}

std::map<QString, StoredPreferences::Value> StoredPreferences::readFile() const {
    std::map<QString, Value> values;
    const QSettings settings(qt(file_.string()), QSettings::IniFormat);
    std::optional<std::string> text;
    for (const QString& key : settings.allKeys()) {
        Value& read = values[key];
        read.value = settings.value(key);
        if (!isList(read.value)) continue;
        if (!text) text = textOf(FileOps::readSmall(file_).value_or(Bytes()));
        read.line = unquoted(key.toStdString(), *text);
    }
    return values;
}

QVariant StoredPreferences::read(const std::string& key) const {
    const std::lock_guard lock(mutex_);
    const auto found = values_.find(qt(key));
    return found == values_.end() ? QVariant() : found->second.value;
}

std::optional<bool> StoredPreferences::boolean(const std::string& key) const {
    // An INI file keeps every value as text.
    const QString value = read(key).toString();
    if (value == QStringLiteral("true")) return true;
    if (value == QStringLiteral("false")) return false;
    return std::nullopt;
}

std::optional<std::string> StoredPreferences::text(const std::string& key) const {
    const std::lock_guard lock(mutex_);
    const auto found = values_.find(qt(key));
    if (found == values_.end()) return std::nullopt;
    if (isList(found->second.value)) return found->second.line;
    return found->second.value.toString().toStdString();
}

std::optional<std::vector<std::string>> StoredPreferences::texts(const std::string& key) const {
    const QVariant value = read(key);
    if (!value.isValid()) return std::nullopt;
    std::vector<std::string> list;
    for (const QString& each : value.toStringList()) list.push_back(each.toStdString());
    return list;
}

void StoredPreferences::setBoolean(const std::string& key, bool value) {
    set(key, value);
}

void StoredPreferences::setText(const std::string& key, const std::string& value) {
    set(key, qt(value));
}

void StoredPreferences::setTexts(const std::string& key, const std::vector<std::string>& value) {
    QStringList list;
    for (const std::string& each : value) list.append(qt(each));
    set(key, list);
}

void StoredPreferences::remove(const std::string& key) {
    set(key, QVariant());
}

void StoredPreferences::set(const std::string& key, const QVariant& value) {
    {
        const std::lock_guard lock(mutex_);
        const Changes change{{qt(key), value}};
        apply(change);
        changes_.insert_or_assign(change.begin()->first, value);
        if (!writer_.joinable()) writer_ = std::thread([this] { writeInTime(); });
    }
    wake_.notify_all();
}

void StoredPreferences::apply(const Changes& changes) {
    for (const auto& [key, value] : changes) {
        if (value.isValid())
            values_[key] = {value, std::nullopt};
        else
            values_.erase(key);
    }
}

void StoredPreferences::writeInTime() {
    std::unique_lock lock(mutex_);
    const auto ends = [this] { return ends_; };
    while (!ends_) {
        wake_.wait(lock, [this] { return ends_ || !changes_.empty(); });
        // A person who types has more to say.
        if (wake_.wait_for(lock, pause_, ends)) return;
        lock.unlock();
        flush();
        lock.lock();
    }
}

void StoredPreferences::flush() {
    const std::lock_guard writing(writing_);
    Changes changes;
    {
        const std::lock_guard lock(mutex_);
        changes = std::exchange(changes_, {});
        changes.merge(std::exchange(unwritten_, {}));
    }
    if (changes.empty()) return;
    QSettings settings(qt(file_.string()), QSettings::IniFormat);
    for (const auto& [key, value] : changes) {
        if (value.isValid())
            settings.setValue(key, value);
        else
            settings.remove(key);
    }
    settings.sync();
    if (settings.status() == QSettings::AccessError) {
        const std::lock_guard lock(mutex_);
        unwritten_ = std::move(changes);
        return;
    }
    auto values = readFile();
    const std::lock_guard lock(mutex_);
    values_ = std::move(values);
    // What was set meanwhile.
    apply(changes_);
}

}  // namespace marlet
