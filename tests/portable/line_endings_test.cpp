// Line-ending conversions against single steps, and their choice.
#include "src/params/call.h"
#include "src/params/line_endings.h"
#include "tests/portable/references.h"

#include <gtest/gtest.h>

#include <string>

namespace vell::params {
namespace {

constexpr LineEndings all_modes[] = {LineEndings::Keep,     LineEndings::CrToCrLf,
                                     LineEndings::CrLfToCr, LineEndings::LfToCrLf,
                                     LineEndings::Host,     LineEndings::LogFile};

template <typename Char>
std::basic_string<Char> converted(std::basic_string<Char> text, LineEndings mode) {
    convert_line_endings(text, mode);
    return text;
}

// Every text over CR, LF and one more letter up to `longest`, in each mode.
template <typename Char>
void compare_with_single_steps(std::size_t longest) {
    constexpr Char letters[] = {13, 10, 'a'};
    for (std::size_t length = 0, count = 1; length <= longest; ++length, count *= 3)
        for (std::size_t choice = 0; choice < count; ++choice) {
            std::basic_string<Char> text;
            for (std::size_t i = 0, rest = choice; i < length; ++i, rest /= 3)
                text += letters[rest % 3];
            for (LineEndings mode : all_modes) {
                std::basic_string<Char> expected = text;
                reference::convert_line_endings(expected, static_cast<int>(mode));
                ASSERT_TRUE(converted(text, mode) == expected)
                    << testing::PrintToString(std::string(text.begin(), text.end())) << " in mode "
                    << static_cast<int>(mode);
            }
        }
}

TEST(LineEndings, EachModeDoesWhatItsStepsDo) {
    compare_with_single_steps<char>(8);
    compare_with_single_steps<char16_t>(8);
}

TEST(LineEndings, KnownTexts) {
    const std::string text = "a\rb\nc\r\nd\n\r\r\n\n";
    EXPECT_EQ(converted(text, LineEndings::CrToCrLf), "a\r\nb\nc\r\n\nd\n\r\n\r\n\n\n");
    EXPECT_EQ(converted(text, LineEndings::CrLfToCr), "a\rb\nc\rd\n\r\r\n");
    EXPECT_EQ(converted(text, LineEndings::LfToCrLf), "a\rb\r\nc\r\r\nd\r\n\r\r\r\n\r\n");
    EXPECT_EQ(converted(text, LineEndings::LogFile), "a\r\nb\r\n\nc\r\nd\r\n\n\r\n\r\n\r\n\n");
    // Characters that merely have the low byte of one.
    const std::u16string others = u"\u010D\u010A\u0D00\u0A00";
    for (LineEndings mode : all_modes)
        EXPECT_EQ(converted(others, mode), others);
}

// One insertion or deletion after the other would move the rest of the text 100 million times.
TEST(LineEndings, HundredMegabytesOfLineEndsTakeOnePass) {
    constexpr std::size_t count = 100'000'000;
    std::string text(count, '\r');
    convert_line_endings(text, LineEndings::CrToCrLf);
    ASSERT_EQ(text.size(), 2 * count);
    EXPECT_EQ(text.substr(2 * count - 4), "\r\n\r\n");
    convert_line_endings(text, LineEndings::Host);
    ASSERT_EQ(text.size(), count);
    EXPECT_EQ(text.substr(count - 4), "\r\r\r\r");
}

TEST(LineEndings, SwitchesDecideUnlessAStepDoes) {
    const auto mode = [](const char* switches, std::int32_t list_value) {
        return line_endings_of(SwitchSet(switches), list_value);
    };
    EXPECT_EQ(mode("", -101), LineEndings::Keep);
    EXPECT_EQ(mode("-crtocrlf", -101), LineEndings::CrToCrLf);
    EXPECT_EQ(mode("-CRLFtoCR", -101), LineEndings::CrLfToCr);
    EXPECT_EQ(mode("-CRLFtoCR -CRtoCRLF", -101), LineEndings::CrToCrLf);
    constexpr std::pair<std::int32_t, LineEndings> values[] = {
        {1, LineEndings::CrToCrLf}, {2, LineEndings::CrToCrLf}, {3, LineEndings::LfToCrLf},
        {0, LineEndings::Keep},     {4, LineEndings::Keep},     {-100, LineEndings::Keep}};
    for (const auto& [list_value, expected] : values)
        EXPECT_EQ(mode("-CRLFtoCR", list_value), expected) << list_value;
}

} // namespace
} // namespace vell::params
