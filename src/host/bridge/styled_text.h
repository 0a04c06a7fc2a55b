// Text with faces and colours, for results that a host shows.
#pragma once

#include "src/host/bridge/host_values.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace vell::host {

struct Rgb {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
};

struct TextStyle {
    std::uint16_t face = fm::face_plain; // face bits; 0 leaves the face as the field has it
    std::optional<Rgb> colour;           // the field's own when absent
};

// The style that keywords name, in any order and letter case: "bold", "underline", "italic", and a
// colour "red", "green" or "blue" (the last in this order that occurs).
TextStyle text_style(std::string_view keywords);

// Appends `piece` in the style; the text before it keeps its own.
void append_styled(Text& text, std::u16string_view piece, const TextStyle& style);

} // namespace vell::host
