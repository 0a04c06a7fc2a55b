// Fixtures of the tests that use the stand-in FMWrapper.dll through its exported interface alone.
#pragma once

#include "console/fmwrapper/control.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

namespace vell::test {

using fm::to_end;

inline constexpr std::int32_t utf8 = 1;

// Every call writes the one status; a test of failures takes the code after the call.
class StandIn : public testing::Test {
  protected:
    StandIn() { StandIn_Reset(); }
    ~StandIn() override { StandIn_Reset(); }

    int taken_code() { return std::exchange(status.code, 0); }

    fm::Text* text(std::u16string_view units) {
        fm::Text* made = FM_Text_Constructor1(&status);
        FM_Text_AssignUnicodeWithLength(made, units.data(),
                                        static_cast<std::uint32_t>(units.size()), &status);
        return made;
    }
    void assign(fm::Text* self, std::string_view bytes, std::int32_t encoding) {
        FM_Text_AssignWithLength(self, bytes.data(), static_cast<std::uint32_t>(bytes.size()),
                                 encoding, &status);
    }
    std::u16string units(const fm::Text* self) {
        std::u16string result(FM_Text_GetSize(self, &status), u'\0');
        FM_Text_GetUnicode(self, result.data(), 0, to_end, &status);
        return result;
    }
    std::string bytes(const fm::Text* self, std::int32_t encoding,
                      std::uint32_t buffer_size = 256) {
        std::string buffer(buffer_size + 1, '#');
        FM_Text_GetBytes(self, buffer.data(), buffer_size, 0, to_end, encoding, &status);
        EXPECT_EQ(buffer.back(), '#');
        return buffer.c_str();
    }
    fm::FixPt* fixed(std::int32_t value) { return FM_FixPt_Constructor1(value, 16, &status); }

    fm::Status status;
};

class StandInText : public StandIn {
  protected:
    ~StandInText() override {
        FM_Text_Delete(subject, &status);
        FM_Text_Delete(other, &status);
    }
    fm::Text* subject = text(u"");
    fm::Text* other = text(u"");
};

class StandInStyles : public StandInText {
  protected:
    ~StandInStyles() override { FM_CharacterStyle_Delete(style, &status); }

    void set(fm::Text* self, std::uint16_t face, std::uint32_t position, std::uint32_t size) {
        FM_CharacterStyle_SetFace(style, face, &status);
        FM_Text_SetStyle(self, style, position, size, &status);
    }
    // One letter a unit: b bold, i italic, . plain.
    std::string faces(const fm::Text* self) {
        std::string result;
        for (std::uint32_t i = 0; i < FM_Text_GetSize(self, &status); ++i) {
            FM_Text_GetStyle(self, style, i, &status);
            const std::uint16_t face = FM_CharacterStyle_GetFace(style, &status);
            result += face == fm::face_bold ? 'b' : face == fm::face_italic ? 'i' : '.';
        }
        return result;
    }
    fm::CharacterStyle* style = FM_CharacterStyle_Constructor1(&status);
};

} // namespace vell::test
