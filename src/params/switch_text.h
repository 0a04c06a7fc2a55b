// Values of switches that are free text, such as a path or the arguments of a program.
#pragma once

#include "src/base/utf8.h"
#include "src/params/call.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vell::params {

// The value of a switch such as "-Icon=", with every character that the host's text has. In quotes
// it goes up to the closing one, and two quotes stand for one; otherwise it ends as the values of
// all switches do, before the next "-" that is not its own first character, and blanks around it do
// not count. A name inside another switch's quoted value does not count. nullopt when the switch is
// absent.
std::optional<std::u16string> switch_text(std::u16string_view switches, std::u16string_view name);

// The values of all switches of that name, in their order; one stands where the value of the one
// before it ends.
std::vector<std::u16string> switch_texts(std::u16string_view switches, std::u16string_view name);

inline std::optional<std::u16string> switch_text(Call& call, std::u16string_view name) {
    if (AskedNames* const asked = call.asked_names())
        asked->add(utf8_from_utf16(name));
    return switch_text(call.text(0), name);
}

} // namespace vell::params
