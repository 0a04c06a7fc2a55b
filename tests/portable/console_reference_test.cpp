// Pages of the reference as text, and names that are meant.
#include "console/calc/suggestion.h"
#include "console/reference/page_text.h"
#include "console/reference/switch_check.h"

#include <gtest/gtest.h>

#include <array>

namespace vell::console {
namespace {

constexpr std::string_view page = R"(---
subject: Archives
---
# VlFile_X

One [word](../y.md) of **many**, `"a b"`.

## Switches

| switch | meaning |
|---|---|
| `-A` | yes |
| `-Longer=é` | a text that is too long for its line \| and goes on |

## Result codes

None.

## Examples

```vell
## no heading
```

```result
# 1
```
)";

TEST(ReferencePage, IsTextInColumns) {
    EXPECT_EQ(page_as_text(page, 40), R"(VlFile_X

One word of many, "a b".

SWITCHES

  switch     meaning
  -A         yes
  -Longer=é  a text that is too long for
             its line | and goes on

RESULT CODES

None.

EXAMPLES

    ## no heading

        # 1

)");
    EXPECT_EQ(page_as_text("---\nno end", 40), "--- no end\n\n");
    EXPECT_EQ(page_as_text("", 40), "");
}

TEST(ReferencePage, HasSections) {
    EXPECT_EQ(section_of(page, "Result"), "## Result codes\n\nNone.\n\n");
    EXPECT_TRUE(section_of(page, "Examples").ends_with("# 1\n```\n"));
    EXPECT_EQ(section_of(page, "no heading"), ""); // in an example
}

TEST(Suggestions, KnowBeginningsAndWhatNamesBeginWith) {
    constexpr std::array<std::u16string_view, 4> known{
        u"VlFile_GetFileSizeOfAll", u"VlFile_GetFileSize", u"Substitute", u"Left"};
    EXPECT_EQ(closest_name(u"getfilesize", known), u"VlFile_GetFileSize");
    EXPECT_EQ(closest_name(u"VlFile_GetFil", known), u"VlFile_GetFileSize");
    EXPECT_EQ(closest_name(u"subst", known), u"Substitute");
    EXPECT_EQ(closest_name(u"Lfet", known), u"Left");
    EXPECT_EQ(closest_name(u"GetFileSzeOfAll", known), u"VlFile_GetFileSizeOfAll");
    EXPECT_EQ(closest_name(u"le", known), std::nullopt);
}

TEST(SwitchCheck, TellsWhatAFunctionDoesNotHave) {
    const std::vector<std::string> known = switches_in(page, "Switches");
    EXPECT_EQ(known, (std::vector<std::string>{"-A", "-Longer=é"}));
    const std::vector<std::string> hash{"-SHA1", "-Colons", "files", "-Arguments="};
    using Lines = std::vector<std::string>;
    EXPECT_EQ(unknown_switches("-sha1-colons -FILES -Arguments=\"-x -y\" 3 -5 - a-b", "F", hash),
              Lines());
    EXPECT_EQ(unknown_switches("-Argments=5 -Colon,-SHA3 -nothing like it", "F", hash),
              (Lines{"-Argments=5: F has no such switch; -Arguments=?\n",
                     "-Colon: F has no such switch; -Colons?\n",
                     "-SHA3: F has no such switch; -SHA1?\n", "-nothing: F has no such switch\n"}));
}

} // namespace
} // namespace vell::console
