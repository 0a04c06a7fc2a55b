#include "src/policy/policy.h"

#include "src/base/utf8.h"
#include "src/files/paths/path_parts.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <set>

namespace vell::policy {
namespace {

using Json = nlohmann::json;
using Problem = Failure<std::string>;

constexpr int deepest_nesting = 4;

// Reads the text as JSON. A key that stands there twice would silently count once.
class StrictParser {
  public:
    Result<Json, std::string> parse(std::string_view text) {
        Json json = Json::parse(
            text.begin(), text.end(),
            [this](int depth, Json::parse_event_t event, Json& value) {
                return look_at(depth, event, value);
            },
            false);
        if (!problem_.empty())
            return Problem{problem_};
        if (json.is_discarded())
            return Problem{"it is no JSON text"};
        return json;
    }

  private:
    bool look_at(int depth, Json::parse_event_t event, const Json& value) {
        if (event == Json::parse_event_t::object_start)
            keys_.emplace_back();
        else if (event == Json::parse_event_t::object_end)
            keys_.pop_back();
        else if (event == Json::parse_event_t::key &&
                 !keys_.back().insert(value.get<std::string>()).second)
            problem_ = "the key \"" + value.get<std::string>() + "\" stands there twice";
        if (depth > deepest_nesting)
            problem_ = "it is nested too deeply";
        return true; // what is dropped would not be seen by the checks
    }

    std::vector<std::set<std::string>> keys_;
    std::string problem_;
};

// What one member of an object means; its value has been found to be of the type that goes with it.
using Reader = std::function<Result<void, std::string>(const Json& value)>;
struct Member {
    std::string_view name;
    Reader read;
};

Result<void, std::string> read_object(const Json& json, std::string_view what,
                                      std::initializer_list<Member> members) {
    if (!json.is_object())
        return Problem{std::string(what) + " is no object"};
    for (const auto& [key, value] : json.items()) {
        const auto member = std::ranges::find(members, key, &Member::name);
        if (member == members.end())
            return Problem{"unknown key \"" + key + "\" in " + std::string(what)};
        const Result<void, std::string> outcome = member->read(value);
        if (!outcome)
            return Problem{"\"" + key + "\": " + outcome.error()};
    }
    return {};
}

Reader number_into(std::uint64_t& number, std::uint64_t least = 0,
                   std::uint64_t most = Limits::none) {
    return [&number, least, most](const Json& value) -> Result<void, std::string> {
        if (!value.is_number_unsigned() || value.get<std::uint64_t>() < least ||
            value.get<std::uint64_t>() > most)
            return Problem{"no number, or none that is allowed here"};
        number = value.get<std::uint64_t>();
        return {};
    };
}

Reader truth_into(bool& truth) {
    return [&truth](const Json& value) -> Result<void, std::string> {
        if (!value.is_boolean())
            return Problem{"neither true nor false"};
        truth = value.get<bool>();
        return {};
    };
}

bool is_share_path(std::u16string_view path) {
    return path.starts_with(u"\\\\") && path.size() > 2 && path[2] != u'?' && path[2] != u'.' &&
           path[2] != u'\\' && path.find(u'\\', 2) != path.npos && !path.ends_with(u'\\');
}

// A folder as it is compared later: from its root on, without "." and "..".
Result<std::u16string, std::string> folder_of(const Json& value) {
    if (!value.is_string())
        return Problem{"a folder is no text"};
    std::u16string path = utf16_from_utf8(value.get_ref<const std::string&>());
    std::ranges::replace(path, u'/', u'\\');
    path = files::without_trailing_separator(path);
    const bool has_dots =
        (path + u'\\').find(u"\\.\\") != path.npos || (path + u'\\').find(u"\\..\\") != path.npos;
    const bool has_zero = path.find(u'\0') != path.npos;
    if ((!files::begins_with_drive(path) && !is_share_path(path)) || has_dots || has_zero)
        return Problem{"no full path of a folder: \"" + value.get<std::string>() + "\""};
    return path;
}

Reader roots_into(std::optional<Roots>& roots) {
    return [&roots](const Json& value) -> Result<void, std::string> {
        if (!value.is_array())
            return Problem{"no list of folders"};
        roots.emplace();
        for (const Json& folder : value)
            roots->push_back(VELL_TRY(folder_of(folder)));
        return {};
    };
}

Reader denied_into(Policy& policy, std::span<const std::string_view> functions) {
    return [&policy, functions](const Json& value) -> Result<void, std::string> {
        if (!value.is_array())
            return Problem{"no list of functions"};
        for (const Json& name : value) {
            if (!name.is_string())
                return Problem{"the name of a function is no text"};
            const auto& text = name.get_ref<const std::string&>();
            if (text != disable_all_action && !std::ranges::count(functions, text))
                return Problem{"no such function: \"" + text + "\""};
            policy.denied.insert(text);
        }
        return {};
    };
}

Reader limits_into(Policy& policy) {
    return [&policy](const Json& value) {
        Limits& limits = policy.limits;
        return read_object(value, "\"limits\"",
                           {{"archiveBytes", number_into(limits.archive_bytes)},
                            {"archiveEntries", number_into(limits.archive_entries)},
                            {"seconds", number_into(limits.seconds, 1, 86'400)},
                            {"memoryBytes", number_into(limits.memory_bytes)},
                            {"commandOutputBytes", number_into(limits.command_output_bytes)},
                            {"endCommandChildren", truth_into(policy.ends_command_children)}});
    };
}

Reader audit_into(AuditSettings& audit) {
    return [&audit](const Json& value) -> Result<void, std::string> {
        constexpr std::uint64_t least_bytes = 64 * 1024;
        constexpr std::uint64_t most_bytes = 4ULL * 1024 * 1024 * 1024;
        constexpr std::uint64_t most_files = 100;
        std::uint64_t old_files = audit.old_files;
        const Reader folder = [&audit](const Json& path) -> Result<void, std::string> {
            audit.folder = VELL_TRY(folder_of(path));
            return {};
        };
        VELL_TRY(read_object(value, "\"audit\"",
                             {{"on", truth_into(audit.is_on)},
                              {"folder", folder},
                              {"fileBytes", number_into(audit.file_bytes, least_bytes, most_bytes)},
                              {"oldFiles", number_into(old_files, 0, most_files)}}));
        audit.old_files = static_cast<std::uint32_t>(old_files);
        return {};
    };
}

} // namespace

Result<Policy, std::string> read_policy(std::string_view text,
                                        std::span<const std::string_view> functions) {
    if (text.size() > longest_policy)
        return Problem{"it is too long"};
    const Json json = VELL_TRY(StrictParser().parse(text));
    Policy policy;
    VELL_TRY(read_object(json, "the policy",
                         {{"readRoots", roots_into(policy.read_roots)},
                          {"writeRoots", roots_into(policy.write_roots)},
                          {"deny", denied_into(policy, functions)},
                          {"limits", limits_into(policy)},
                          {"audit", audit_into(policy.audit)}}));
    return policy;
}

Policy policy_that_allows_nothing(std::string problem) {
    Policy policy;
    policy.allows_nothing = true;
    policy.problem = std::move(problem);
    policy.read_roots.emplace();
    policy.write_roots.emplace();
    return policy;
}

} // namespace vell::policy
