// The switches of a call: one free text in which names are looked for as substrings.
//
// Nothing is tokenised: a name inside a longer word counts, no separator is needed, and letters A
// to Z compare without case. Where one switch's name contains another's, test the longer one first.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vell::params {

// The names that a function has asked for.
class AskedNames {
  public:
    void add(std::string_view name);
    // The words of a switches text that look like switches and have none of the names in them.
    std::vector<std::string_view> unknown_in(std::string_view switches) const;

  private:
    std::vector<std::string> names_;
};

class SwitchSet {
  public:
    // Characters of a switches text that are read; what follows is ignored.
    static constexpr std::size_t max_length = 2000;

    SwitchSet() = default;
    explicit SwitchSet(std::string_view text) : length_(std::min(text.size(), max_length)) {
        std::copy_n(text.begin(), length_, text_.begin());
    }
    // Lets `fill` write the text to a buffer with room for max_length bytes and a terminating zero;
    // it gives back the text's length.
    template <typename Fill>
    static SwitchSet filled_by(Fill fill) {
        SwitchSet switches;
        switches.length_ = fill(std::span(switches.text_));
        return switches;
    }

    bool has(std::string_view name) const;
    // From here on notes what it is asked for; the notes outlive it and its copies.
    void note_in(AskedNames& asked) { asked_ = &asked; }
    std::string_view text() const { return {text_.data(), length_}; }

    // The switch as named, followed by its value: the text after the name's first occurrence up to
    // the next "-" that is not the value's own first character, at most `capacity` - 1 characters.
    // Empty when the name is absent.
    std::string value(std::string_view name, std::size_t capacity) const;

  private:
    // Held in place, since every call reads its switches and most of them are short.
    std::array<char, max_length + 1> text_;
    std::size_t length_ = 0;
    AskedNames* asked_ = nullptr;
};

} // namespace vell::params
