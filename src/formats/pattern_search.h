// Looks for a pattern in a window, in large pieces and with a fixed amount of memory. Every byte is
// read once, however many occurrences are asked for.
#pragma once

#include "src/formats/window.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace vell::formats {

class PatternSearch {
  public:
    // Bytes that a caller may look at from an occurrence on.
    static constexpr std::size_t longest_look = 16'384;

    // The pattern, of a few bytes, stays the caller's.
    PatternSearch(const Window& file, std::string_view pattern);

    // Where the first occurrence begins that does not begin before `from`; nullopt when there is
    // none. Positions asked for never go back.
    Read<std::optional<std::uint64_t>> next(std::uint64_t from);
    // At most `count` bytes from there on, fewer at the end; valid until the next call.
    // Not before the last position that was asked for.
    Read<std::string_view> bytes(std::uint64_t position, std::size_t count);

  private:
    std::string_view held(std::uint64_t position) const;

    Window file_;
    std::string_view pattern_;
    std::vector<char> held_bytes_;
    std::uint64_t held_start_ = 0;
    std::size_t filled_ = 0;
};

} // namespace vell::formats
