#include "console/calc/suggestion.h"

#include "console/model/unicode.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace vell::console {

namespace {

// Letters to insert, remove or exchange to get from one text to the other.
std::size_t edit_distance(std::u16string_view a, std::u16string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t exchanged =
                diagonal + (lower_case(a[i - 1]) == lower_case(b[j - 1]) ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, exchanged});
        }
    }
    return row.back();
}

bool begins(std::u16string_view name, std::u16string_view whole) {
    return name.size() <= whole.size() && equal_ignoring_case(whole.substr(0, name.size()), name);
}

// Without the word that names of a plug-in begin with.
std::u16string_view without_prefix(std::u16string_view name) {
    const std::size_t underscore = name.find(u'_');
    return underscore == name.npos ? name : name.substr(underscore + 1);
}

// A name without the word that names of a plug-in begin with, or without its end.
std::optional<std::u16string_view> lengthened(std::u16string_view name,
                                              std::span<const std::u16string_view> known) {
    constexpr std::size_t least = 3; // letters from which on a beginning tells something
    if (name.size() < least)
        return std::nullopt;
    std::optional<std::u16string_view> best;
    for (const std::u16string_view candidate : known) {
        const bool fits = begins(name, candidate) || begins(name, without_prefix(candidate));
        if (fits && (!best || candidate.size() < best->size()))
            best = candidate;
    }
    return best;
}

} // namespace

std::optional<std::u16string_view> closest_name(std::u16string_view name,
                                                std::span<const std::u16string_view> known) {
    constexpr std::size_t longest = 60; // beyond this nobody mistyped a name
    if (name.size() > longest)
        return std::nullopt;
    if (const auto longer = lengthened(name, known))
        return longer;
    std::optional<std::u16string_view> best;
    std::size_t best_distance = name.size() / 4 + 2;
    for (const std::u16string_view candidate : known) {
        const std::size_t distance =
            std::min(edit_distance(name, candidate.substr(0, longest)),
                     edit_distance(name, without_prefix(candidate).substr(0, longest)));
        if (distance < best_distance && distance < name.size()) {
            best_distance = distance;
            best = candidate;
        }
    }
    return best;
}

} // namespace vell::console
