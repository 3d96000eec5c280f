#include "identify/model_wire.h"

#include <algorithm>
#include <array>

#include "foundation/errors.h"
#include "sources/json_object.h"

namespace marlet::ModelWire {
namespace {

/// Keeps the fields in the order in which they are put in, which is the order in which a model
/// bound by the schema writes them.
using OrderedJson = nlohmann::ordered_json;

struct Field {
    const char* name;
    const char* type;
    const char* guide;
};

constexpr const char* about = "A guess at what a video file is, from its name only";

constexpr std::array<Field, 5> fields{{
    {"isTVEpisode", "boolean", "true if this is a TV episode, false if it is a movie"},
    {"title", "string",
     "The show name for TV, or the movie title. Only words from the input; no release tags, no "
     "year, no quality."},
    {"year", "integer", "Release year if it appears in the input, otherwise 0"},
    {"season", "integer", "Season number if it appears in the input, otherwise 0"},
    {"episode", "integer", "Episode number if it appears in the input, otherwise 0"},
}};

/// Bytes. No name and no folder is longer, so a title that is was not read from one.
constexpr std::size_t longestTitle = 4096;

[[noreturn]] void fail(const std::string& fault) {
    throw MFError("The model's answer can't be used: " + fault);
}

OrderedJson schema() {
    OrderedJson properties = OrderedJson::object();
    OrderedJson names = OrderedJson::array();
    for (const Field& field : fields) {
        properties[field.name] = {{"type", field.type}, {"description", field.guide}};
        names.push_back(field.name);
    }
    OrderedJson whole = OrderedJson::object();
    whole["type"] = "object";
    whole["description"] = about;
    whole["properties"] = std::move(properties);
    whole["required"] = std::move(names);
    whole["additionalProperties"] = false;
    return whole;
}

OrderedJson message(const char* role, const std::string& text) {
    OrderedJson one = OrderedJson::object();
    one["role"] = role;
    one["content"] = text;
    return one;
}

const Json& member(const Json& object, const char* name) {
    if (!object.is_object()) fail("no object where one belongs");
    const auto found = object.find(name);
    if (found == object.end()) fail(std::string("no “") + name + "”");
    return *found;
}

const Json& firstOf(const Json& list) {
    if (!list.is_array() || list.empty()) fail("an empty list");
    return list.front();
}

const std::string& textOfValue(const Json& value) {
    if (!value.is_string()) fail("no text where one belongs");
    return value.get_ref<const std::string&>();
}

int number(const Json& object, const char* name) {
    std::int64_t value = 0;
    JsonObject(object, "").required(name, value);
    if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
        fail(std::string("“") + name + "” is out of all bounds");
    return static_cast<int>(value);
}

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

std::string title(const Json& object) {
    std::string text = textOfValue(member(object, "title"));
    if (text.size() > longestTitle) fail("a title without end");
    // Line ends at its edges are trimmed later; inside, a title has none.
    const auto from = text.find_first_not_of(" \t\r\n");
    const auto to = text.find_last_not_of(" \t\r\n");
    if (from == std::string::npos) return {};
    text = text.substr(from, to - from + 1);
    if (std::any_of(text.begin(), text.end(), isControl)) fail("control characters in a title");
    return text;
}

}  // namespace

std::string question(const std::string& model, const std::string& instructions,
                     const std::string& prompt) {
    OrderedJson format = OrderedJson::object();
    format["name"] = "FileGuess";
    format["strict"] = true;
    format["schema"] = schema();
    OrderedJson whole = OrderedJson::object();
    whole["model"] = model;
    whole["messages"] = {message("system", instructions), message("user", prompt)};
    whole["response_format"] = {{"type", "json_schema"}, {"json_schema", std::move(format)}};
    whole["stream"] = false;
    return whole.dump();
}

FileGuess answer(ByteView body) {
    const Json whole = parseJson(body);
    const Json& said = member(member(firstOf(member(whole, "choices")), "message"), "content");
    // The servers give the object as a text of its own.
    const Json object = parseJson(viewOf(textOfValue(said)));
    if (!object.is_object() || object.size() != fields.size()) fail("not the fields asked for");
    const Json& isTVEpisode = member(object, "isTVEpisode");
    if (!isTVEpisode.is_boolean()) fail("“isTVEpisode” is neither true nor false");
    FileGuess guess;
    guess.isTVEpisode = isTVEpisode.get<bool>();
    guess.title = title(object);
    guess.year = number(object, "year");
    guess.season = number(object, "season");
    guess.episode = number(object, "episode");
    return guess;
}

std::string firstModel(ByteView body) {
    const Json whole = parseJson(body);
    std::string name = textOfValue(member(firstOf(member(whole, "data")), "id"));
    if (name.empty()) fail("a model without a name");
    return name;
}

}  // namespace marlet::ModelWire
