// What the plug-in does with the host's messages.
#pragma once

#include "src/host/bridge/call_record.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace vell::host {

// Message 0. Registers the vocabulary; the answer is startup_accepted, or startup_bad_version for a
// host outside API 50 to 255. `version_text` is empty when the host gives none.
std::int64_t start_up(std::int16_t api_version, std::uint8_t application_type,
                      std::u16string_view version_text);

void idle(std::uint8_t level);
void shut_down();
void show_about_box();
void session_shut_down(fm::PtrType session_id);
void file_shut_down(fm::PtrType session_id, fm::PtrType file_id);

// Message 7: a zero-terminated text of the plug-in in the host's buffer, cut to its capacity (which
// counts the terminator); the empty text for a number that means nothing.
void answer_string_query(std::uint8_t string_number, std::span<char16_t> buffer);

} // namespace vell::host
