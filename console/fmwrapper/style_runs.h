// Character styles and the runs in which a text wears them.
#pragma once

#include "src/host/bridge/fm_api.h"

#include <cstdint>
#include <vector>

namespace vell::fm {

struct Color {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 255;
    friend bool operator==(const Color&, const Color&) = default;
};

// Traits that are not enabled follow the formatting of the field that shows the text.
struct CharacterStyle {
    std::uint16_t face = 0;
    Color color;
    bool face_enabled = false;
    bool color_enabled = false;
    friend bool operator==(const CharacterStyle&, const CharacterStyle&) = default;
};

} // namespace vell::fm

namespace vell::console {

// Runs are kept sorted, cover the whole text, and neighbours differ. A text without any style has
// no runs. The length of the text is its owner's.
class StyleRuns {
  public:
    bool empty() const { return runs_.empty(); }
    void clear() { runs_.clear(); }

    fm::CharacterStyle at(std::uint32_t position) const;
    void set(const fm::CharacterStyle& style, std::uint32_t begin, std::uint32_t end,
             std::uint32_t text_length);
    // Part of these runs, as the runs of a text of its own.
    StyleRuns slice(std::uint32_t begin, std::uint32_t end) const;
    // The text of `length` units that follows one of `text_length` units wears `added`.
    void append(const StyleRuns& added, std::uint32_t length, std::uint32_t text_length);
    void insert(const StyleRuns& added, std::uint32_t length, std::uint32_t position,
                std::uint32_t text_length);
    void erase(std::uint32_t begin, std::uint32_t end, std::uint32_t text_length);

  private:
    struct Run {
        std::uint32_t begin;
        fm::CharacterStyle style;
    };
    void push(Run run);
    void simplify();

    std::vector<Run> runs_;
};

} // namespace vell::console
