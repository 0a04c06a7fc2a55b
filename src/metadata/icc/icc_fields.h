// The fields of a profile's header, as descriptions name and show them.
#pragma once

#include "src/formats/icc/profile.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vell::metadata::icc {

using namespace formats::icc;

struct HeaderField {
    std::string_view name; // such as "Colour space"
    std::string value;
    std::string meaning = {};                 // empty where it is not known
    std::optional<std::uint64_t> number = {}; // where the value is one
};

// In the order of the header.
std::vector<HeaderField> header_fields(const Header& header);

// With six significant digits.
std::string fixed_numbers_text(const std::array<std::uint32_t, 3>& numbers);

} // namespace vell::metadata::icc
