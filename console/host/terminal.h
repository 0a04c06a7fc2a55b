// Standard input and output as UTF-8, whether they are a console, a pipe or a file.
#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <string_view>

namespace vell::console {

void write_output(std::string_view utf8);
void write_error(std::string_view utf8);
// The Windows error because of which standard output is not complete; 0 where it is, or where its
// reader has gone.
std::uint32_t output_error();

// Standard input is a console at which a person can type.
bool input_is_console();
// Standard error is one at which a person may look.
bool error_is_console();
// A line typed at the console, with its editing and its history; nullopt at the end of input.
std::optional<std::u16string> read_console_line(std::string_view prompt);

// The next line of a UTF-8 stream without its line end; nullopt behind the last one.
std::optional<std::u16string> read_line(std::istream& stream);
// Standard input as bytes.
std::istream& standard_input();

} // namespace vell::console
