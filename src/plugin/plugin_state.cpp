#include "src/plugin/plugin_state.h"

#include "src/base/number_text.h"

#include <algorithm>
#include <array>

namespace vell::plugin {

std::string application_type_name(ApplicationType type) {
    switch (type) {
    case ApplicationType::ProAdvanced:
        return "FileMaker Pro Advanced";
    case ApplicationType::Pro:
        return "FileMaker Pro";
    case ApplicationType::Runtime:
        return "FileMaker Runtime";
    case ApplicationType::Server:
        return "FileMaker Server";
    case ApplicationType::WebServer:
        return "FileMaker Web server";
    case ApplicationType::Mobile:
        return "FileMaker Mobile";
    case ApplicationType::ServerSase:
        return "FileMaker Server (SASE)";
    case ApplicationType::WebServerFmse:
        return "FileMaker Web server (FMSE)";
    default:
        break;
    }
    return "Unknown FileMaker application type: " +
           to_text(std::uint64_t{static_cast<std::uint8_t>(type)});
}

std::int32_t host_version_number(std::u16string_view version_text) {
    std::array<std::int32_t, 3> parts{}; // major, minor, patch
    std::size_t part = 0;
    bool in_number = false;
    for (const char16_t c : version_text) {
        const bool digit = c >= u'0' && c <= u'9';
        if (in_number && !digit && ++part == parts.size())
            break;
        in_number = digit;
        if (digit)
            parts[part] = std::min(parts[part] * 10 + (c - u'0'), 99'999);
    }
    return std::min(parts[0], 999) * 1000 + std::min(parts[1] * 100 + parts[2], 999);
}

bool DisabledState::disable(std::u16string_view password) {
    const std::lock_guard lock(mutex_);
    if (set_)
        return false;
    password_ = password;
    set_ = true;
    return true;
}

bool DisabledState::enable(std::u16string_view password) {
    const std::lock_guard lock(mutex_);
    if (password != password_)
        return false;
    password_.clear();
    set_ = false;
    return true;
}

void DisabledState::reset() {
    const std::lock_guard lock(mutex_);
    password_.clear();
    set_ = false;
}

} // namespace vell::plugin
