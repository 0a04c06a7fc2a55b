// Character styles, colours, locales and four-character codes.
#include "console/fmwrapper/objects.h"

using namespace vell;
using console::checked;
using console::guarded;

fm::CharacterStyle* FM_CharacterStyle_Constructor1(fm::Status* status) {
    return console::create<fm::CharacterStyle>(__func__, status);
}

void FM_CharacterStyle_Delete(fm::CharacterStyle* self, fm::Status* status) {
    console::destroy(self, status);
}

void FM_CharacterStyle_SetFace(fm::CharacterStyle* self, std::uint16_t face, fm::Status* status) {
    guarded(__func__, status, [&] {
        checked(self).face = face;
        self->face_enabled = true;
    });
}

std::uint16_t FM_CharacterStyle_GetFace(const fm::CharacterStyle* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return checked(self).face; });
}

void FM_CharacterStyle_SetColor(fm::CharacterStyle* self, const fm::Color* color,
                                fm::Status* status) {
    guarded(__func__, status, [&] {
        checked(self).color = checked(color);
        self->color_enabled = true;
    });
}

const fm::Color* FM_CharacterStyle_GetColor(const fm::CharacterStyle* self, fm::Status* status) {
    return guarded(__func__, status, [&]() -> const fm::Color* { return &checked(self).color; });
}

bool FM_CharacterStyle_IsColorEnabled(const fm::CharacterStyle* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return checked(self).color_enabled; });
}

fm::Color* FM_Color_Constructor2(std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                                 std::uint8_t alpha, fm::Status* status) {
    return console::create<fm::Color>(__func__, status, red, green, blue, alpha);
}

void FM_Color_Delete(fm::Color* self, fm::Status* status) {
    console::destroy(self, status);
}

std::uint8_t FM_Color_GetRed(const fm::Color* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return checked(self).red; });
}

std::uint8_t FM_Color_GetGreen(const fm::Color* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return checked(self).green; });
}

std::uint8_t FM_Color_GetBlue(const fm::Color* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return checked(self).blue; });
}

std::uint8_t FM_Color_GetAlpha(const fm::Color* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return checked(self).alpha; });
}

fm::Locale* FM_Locale_Constructor1(std::int32_t type, fm::Status* status) {
    return console::create<fm::Locale>(__func__, status, static_cast<fm::LocaleType>(type));
}

void FM_Locale_Delete(fm::Locale* self, fm::Status* status) {
    console::destroy(self, status);
}

fm::QuadChar* FM_QuadChar_Constructor1(fm::Status* status) {
    return console::create<fm::QuadChar>(__func__, status);
}

fm::QuadChar* FM_QuadChar_Constructor2(char c0, char c1, char c2, char c3, fm::Status* status) {
    const char characters[5] = {c0, c1, c2, c3, '\0'};
    return console::create<fm::QuadChar>(__func__, status, console::quad_char(characters));
}

void FM_QuadChar_Delete(fm::QuadChar* self, fm::Status* status) {
    console::destroy(self, status);
}

std::uint32_t FM_QuadChar_GetMacType(const fm::QuadChar* self, fm::Status* status) {
    return guarded(__func__, status, [&] { return checked(self).type; });
}

void FM_QuadChar_SetMacType(fm::QuadChar* self, std::uint32_t type, fm::Status* status) {
    guarded(__func__, status, [&] { checked(self).type = type; });
}
