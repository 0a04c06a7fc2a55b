// Where a call of a function comes from, as far as the host tells.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vell::policy {

struct CallOrigin {
    std::optional<std::uint64_t> session = {};
    std::optional<std::uint64_t> file = {};
    std::u16string account = {}; // empty where the host does not tell it
};

} // namespace vell::policy
