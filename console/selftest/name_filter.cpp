#include "console/selftest/name_filter.h"

#include <algorithm>

namespace vell::selftest {
namespace {

std::vector<std::string> split(std::string_view patterns) {
    std::vector<std::string> parts;
    while (!patterns.empty()) {
        const std::size_t end = std::min(patterns.find(':'), patterns.size());
        if (end > 0)
            parts.emplace_back(patterns.substr(0, end));
        patterns.remove_prefix(std::min(end + 1, patterns.size()));
    }
    return parts;
}

bool fits(std::string_view pattern, std::string_view name) {
    std::size_t at = 0;
    std::size_t star = pattern.npos; // the last one, and what it has taken up to
    std::size_t taken = 0;
    std::size_t i = 0;
    while (at < name.size()) {
        if (i < pattern.size() && pattern[i] == '*') {
            star = i++;
            taken = at;
        } else if (i < pattern.size() && (pattern[i] == '?' || pattern[i] == name[at])) {
            ++i;
            ++at;
        } else if (star != pattern.npos) {
            i = star + 1;
            at = ++taken;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', i) == pattern.npos;
}

bool fits_any(const std::vector<std::string>& patterns, std::string_view name) {
    return std::ranges::any_of(patterns, [&](const auto& pattern) { return fits(pattern, name); });
}

} // namespace

NameFilter::NameFilter(std::string_view patterns) {
    const std::size_t dash = std::min(patterns.find('-'), patterns.size());
    wanted_ = split(patterns.substr(0, dash));
    left_out_ = split(patterns.substr(std::min(dash + 1, patterns.size())));
}

bool NameFilter::takes(std::string_view name) const {
    return (wanted_.empty() || fits_any(wanted_, name)) && !fits_any(left_out_, name);
}

} // namespace vell::selftest
