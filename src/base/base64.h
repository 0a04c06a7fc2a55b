// Bytes written in 64 characters (RFC 4648, section 4).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vell {

// nullopt for text with any other character; padding at the end may be missing.
std::optional<std::string> from_base64(std::string_view text);

} // namespace vell
