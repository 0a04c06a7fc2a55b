// The switches of a call: one free text in which names are looked for as substrings.
//
// Nothing is tokenised: a name inside a longer word counts, no separator is needed, and letters A
// to Z compare without case. Where one switch's name contains another's, test the longer one first.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vell::params {

class SwitchSet {
  public:
    // Characters of a switches text that are read; what follows is ignored.
    static constexpr std::size_t max_length = 2000;

    SwitchSet() = default;
    explicit SwitchSet(std::string text) : text_(std::move(text)) {}

    bool has(std::string_view name) const;

    // The switch as named, followed by its value: the text after the name's first occurrence up to
    // the next "-" that is not the value's own first character, at most `capacity` - 1 characters.
    // Empty when the name is absent.
    std::string value(std::string_view name, std::size_t capacity) const;

  private:
    std::string text_;
};

} // namespace vell::params
