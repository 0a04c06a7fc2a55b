// Line-ending conversions against single insertions and deletions.
#include "fuzz/input.h"
#include "src/params/line_endings.h"
#include "tests/portable/references.h"

#include <string>

namespace vell::line_endings_fuzz {

FUZZ_TARGET(line_endings) {
    const std::string text(fuzz::as_text(data, size));
    for (const int mode : {0, 1, 2, 3, 9, 10}) {
        std::string expected = text;
        reference::convert_line_endings(expected, mode);
        std::string converted = text;
        convert_line_endings(converted, static_cast<params::LineEndings>(mode));
        FUZZ_CHECK(converted == expected);

        std::u16string wide(text.begin(), text.end());
        convert_line_endings(wide, static_cast<params::LineEndings>(mode));
        FUZZ_CHECK(wide == std::u16string(expected.begin(), expected.end()));
    }
    return 0;
}

} // namespace vell::line_endings_fuzz
