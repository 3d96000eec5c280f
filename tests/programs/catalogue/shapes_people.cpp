#include "catalogue/shapes_people.h"

#include "catalogue/hash.h"

namespace marlet::catalogue::Shapes {

using nlohmann::json;

namespace {

json person(const std::string& name, const char* department) {
    const std::uint64_t hash = hashOf(name);
    return {{"adult", false},
            {"gender", 0},  // not told
            {"id", hash % 900000 + 1000},
            {"known_for_department", department},
            {"name", name},
            {"original_name", name},
            {"popularity", 0.6},
            {"profile_path", nullptr}};
}

json crewMember(const std::string& name, const char* department, const std::string& job) {
    json out = person(name, department);
    out["credit_id"] = hexOf(hashOf(name + job));
    out["department"] = department;
    out["job"] = job;
    return out;
}

}  // namespace

json castList(const std::vector<Credit>& cast, int firstOrder) {
    json out = json::array();
    int order = firstOrder;
    for (const Credit& credit : cast) {
        json member = person(credit.name, "Acting");
        member["character"] = credit.as;
        member["credit_id"] = hexOf(hashOf(credit.name + credit.as));
        member["order"] = order++;
        out.push_back(std::move(member));
    }
    // The service does not sort by billing, so neither may a client expect it.
    if (out.size() > 2) std::swap(out[1], out[2]);
    return out;
}

json crewList(const std::vector<std::string>& directors, const std::vector<Credit>& writers) {
    json out = json::array();
    for (const std::string& name : directors)
        out.push_back(crewMember(name, "Directing", "Director"));
    for (const Credit& writer : writers)
        out.push_back(crewMember(writer.name, "Writing", writer.as));
    for (const std::string& name : directors)
        out.push_back(crewMember(name, "Production", "Producer"));
    return out;
}

}  // namespace marlet::catalogue::Shapes
