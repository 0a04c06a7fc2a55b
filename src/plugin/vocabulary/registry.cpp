#include "src/plugin/vocabulary/registry.h"

#include "src/plugin/plugin.h"

namespace vell::plugin {
namespace {

bool is_upper(char c) {
    return c >= 'A' && c <= 'Z';
}

// "VlFile_GetFMText" as "VlFile Get FM Text": a word begins at a capital that follows a small
// letter or precedes one.
std::string words(std::string_view name) {
    constexpr std::string_view prefix = "VlFile_";
    std::string result;
    if (name.starts_with(prefix)) {
        result = "VlFile ";
        name.remove_prefix(prefix.size());
    }
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool ends_capitals = i + 1 < name.size() && !is_upper(name[i + 1]);
        if (i > 0 && is_upper(name[i]) && (!is_upper(name[i - 1]) || ends_capitals))
            result += ' ';
        result += name[i];
    }
    return result;
}

} // namespace

Result<void> Body::run(params::Call& call, Plugin& plugin) const {
    return body_ ? body_(call, plugin.system) : of_plugin_(call, plugin);
}

std::string function_description(const FunctionRow& row) {
    std::string text = words(row.name());
    if (!row.search_words.empty())
        text.append(" ").append(row.search_words);
    return text.append("|").append(row.description);
}

std::string step_description(const StepRow& row) {
    return std::string("|").append(row.description);
}

} // namespace vell::plugin
