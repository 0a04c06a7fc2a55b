// Chunks that are made, with their checksums (PNG, third edition, sections 5.3 and 11.3.3), and the
// profiles that other programs put into text chunks.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vell::formats::png {

std::string new_chunk(std::string_view type, std::string_view data);
// tEXt; the text is in Latin-1.
std::string new_text_chunk(std::string_view keyword, std::string_view text);
// iTXt, not compressed and without a language; the text is UTF-8.
std::string new_international_text_chunk(std::string_view keyword, std::string_view text);

// Blocks of metadata in text chunks whose keyword is this with the profile's name: a line with the
// name, one with the length, lines of hexadecimal digits. Many programs read what ImageMagick has
// begun to write so.
inline constexpr std::string_view raw_profile_keyword = "Raw profile type ";

std::string raw_profile_text(std::string_view name, std::string_view profile);
// nullopt for a text of another form.
std::optional<std::string> read_raw_profile(std::string_view text);

} // namespace vell::formats::png
