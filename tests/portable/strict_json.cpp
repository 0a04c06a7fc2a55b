#include "tests/portable/strict_json.h"

#include <nlohmann/json.hpp>

#include <set>
#include <string>
#include <vector>

namespace vell::test {

bool is_strict_json(std::string_view text) {
    using Json = nlohmann::json;
    using Event = Json::parse_event_t;
    bool is_strict = true;
    std::vector<std::set<std::string>> names; // of the objects around
    const auto look = [&](int, Event event, const Json& value) {
        if (event == Event::object_start)
            names.emplace_back();
        else if (event == Event::object_end)
            names.pop_back();
        else if (event == Event::key)
            is_strict &= names.back().insert(value.get<std::string>()).second;
        return true;
    };
    return !Json::parse(text, look, false).is_discarded() && is_strict;
}

} // namespace vell::test
