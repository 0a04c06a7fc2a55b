// Calls with their results, from a file.
#pragma once

#include "console/host/session.h"
#include "tests/soak/workplace.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vell::soak {

struct CallLine {
    std::size_t line = 0; // in its file
    std::u16string calculation;
    std::optional<std::u16string> expected; // any result without it
};
using Scenario = std::vector<CallLine>;

// Throws where there are none.
std::vector<Scenario> read_scenarios(const std::filesystem::path& file);

// What stands for the words in braces.
struct Names {
    std::u16string own;
    std::u16string files;
    std::u16string any;
    std::u16string number;
};
std::u16string filled_in(std::u16string text, const Names& names);

// The names for a folder to work in, over a copy of the examples that no other thread has:
// functions on contents share files with nobody. The number is chosen, and the file, which is
// copied there.
Names chosen_names(const Workplace& workplace, const std::filesystem::path& examples,
                   const std::filesystem::path& own, Random& random);

bool is_expected(std::u16string_view result, std::u16string_view expected);

// The result as a text; "ERROR: …" for one that the calculation language reports.
std::u16string result_of(console::Session& session, std::u16string_view calculation);

} // namespace vell::soak
