// Link files: what is read of them, and that a relative path put in comes out again.
#include "fuzz/input.h"
#include "src/formats/shell_link_file.h"

namespace vell::shell_link_fuzz {

FUZZ_TARGET(shell_link) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto link = formats::read_link_file(bytes);
    const auto changed = formats::with_relative_target(bytes, u"..\\file.txt");
    if (!changed)
        return 0;
    const auto read_again = formats::read_link_file(*changed);
    FUZZ_CHECK(link && read_again && read_again->relative_target == u"..\\file.txt");
    return 0;
}

} // namespace vell::shell_link_fuzz
