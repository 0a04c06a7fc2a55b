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

} // namespace

std::optional<std::u16string_view> closest_name(std::u16string_view name,
                                                std::span<const std::u16string_view> known) {
    constexpr std::size_t longest = 60; // beyond this nobody mistyped a name
    if (name.size() > longest)
        return std::nullopt;
    std::optional<std::u16string_view> best;
    std::size_t best_distance = name.size() / 4 + 2;
    for (std::u16string_view candidate : known) {
        const std::size_t distance = edit_distance(name, candidate.substr(0, longest));
        if (distance < best_distance && distance < name.size()) {
            best_distance = distance;
            best = candidate;
        }
    }
    return best;
}

} // namespace vell::console
