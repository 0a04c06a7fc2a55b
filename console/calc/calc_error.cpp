#include "console/calc/calc_error.h"

#include "console/model/unicode.h"

#include <algorithm>

namespace vell::console {

namespace {

bool is_line_end(char16_t unit) {
    return unit == u'\r' || unit == u'\n';
}

bool begins_character(char16_t unit) {
    return !is_low_surrogate(unit);
}

} // namespace

SourcePlace locate(std::u16string_view source, std::size_t position) {
    position = std::min(position, source.size());
    SourcePlace place;
    std::size_t line_start = 0;
    for (std::size_t i = 0; i < position; ++i) {
        const bool pair = source[i] == u'\r' && i + 1 < position && source[i + 1] == u'\n';
        if (is_line_end(source[i]) && !pair) {
            ++place.line;
            line_start = i + 1;
        }
    }
    const std::size_t line_end = std::min(source.size(), source.find_first_of(u"\r\n", line_start));
    place.line_text = source.substr(line_start, line_end - line_start);
    place.offset_in_line = position - line_start;
    for (char16_t unit : source.substr(line_start, position - line_start))
        place.column += begins_character(unit) ? 1 : 0;
    return place;
}

std::string caret_display(std::u16string_view source, const CalcError& error) {
    // Long lines are cut to a window around the place, so that the caret stays on the screen.
    constexpr std::size_t before = 60;
    constexpr std::size_t width = 100;
    const SourcePlace place = locate(source, error.position);
    std::size_t start = place.offset_in_line > before ? place.offset_in_line - before : 0;
    if (start > 0 && start < place.line_text.size() && !begins_character(place.line_text[start]))
        --start;
    const std::u16string_view shown = place.line_text.substr(start, width);
    const std::size_t caret = std::min(place.offset_in_line - start, shown.size());

    const std::string lead = start > 0 ? "…" : "";
    std::string text = "    " + lead + utf8_from_utf16(shown);
    text += start + shown.size() < place.line_text.size() ? "…\n    " : "\n    ";
    text += start > 0 ? " " : "";
    for (char16_t unit : shown.substr(0, caret))
        text += unit == u'\t' ? "\t" : begins_character(unit) ? " " : "";
    std::size_t marks = 0;
    for (char16_t unit : shown.substr(caret, error.length))
        marks += begins_character(unit) ? 1 : 0;
    return text + std::string(std::max<std::size_t>(marks, 1), '^') + "\n";
}

} // namespace vell::console
