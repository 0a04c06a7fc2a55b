#include "src/host/bridge/styled_text.h"

#include "src/base/ascii.h"

namespace vell::host {
namespace {

struct FaceWord {
    std::string_view word;
    std::uint16_t face;
};
constexpr FaceWord face_words[] = {
    {"bold", fm::face_bold}, {"underline", fm::face_underline}, {"italic", fm::face_italic}};

struct ColourWord {
    std::string_view word;
    Rgb colour;
};
constexpr ColourWord colour_words[] = {
    {"red", {255, 0, 0}}, {"green", {0, 255, 0}}, {"blue", {0, 0, 255}}};

bool occurs(std::string_view keywords, std::string_view word) {
    return find_ignoring_case(keywords, word) != std::string_view::npos;
}

class CharacterStyle : public HostObject<fm::CharacterStyle> {
  public:
    explicit CharacterStyle(const TextStyle& style)
        : HostObject(host_call(FM_CharacterStyle_Constructor1)) {
        if (style.face != fm::face_plain)
            host_call(FM_CharacterStyle_SetFace, get(), style.face);
        if (style.colour) {
            const Colour colour(*style.colour);
            host_call(FM_CharacterStyle_SetColor, get(), colour.get());
        }
    }

  private:
    class Colour : public HostObject<fm::Color> {
      public:
        explicit Colour(Rgb rgb)
            : HostObject(host_call(FM_Color_Constructor2, rgb.red, rgb.green, rgb.blue, opaque)) {}

      private:
        static constexpr std::uint8_t opaque = 255;
    };
};

} // namespace

TextStyle text_style(std::string_view keywords) {
    TextStyle style;
    for (const FaceWord& entry : face_words)
        if (occurs(keywords, entry.word))
            style.face |= entry.face;
    for (const ColourWord& entry : colour_words)
        if (occurs(keywords, entry.word))
            style.colour = entry.colour;
    return style;
}

void append_styled(Text& text, std::u16string_view piece, const TextStyle& style) {
    Text styled(piece);
    const CharacterStyle character_style(style);
    host_call(FM_Text_SetStyle, styled.get(), character_style.get(), 0u, fm::to_end);
    text.append(styled);
}

} // namespace vell::host
