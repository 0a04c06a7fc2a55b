#include "src/files/desktop/file_patterns.h"

namespace vell::files {

std::u16string file_patterns(std::u16string_view types) {
    constexpr std::u16string_view separators = u" ,;\t\r\n";
    std::u16string patterns;
    while (!types.empty()) {
        const std::size_t end = types.find_first_of(separators);
        std::u16string_view type = types.substr(0, end);
        types.remove_prefix(end == std::u16string_view::npos ? types.size() : end + 1);
        if (type.starts_with(u'*'))
            type.remove_prefix(1);
        if (type.starts_with(u'.'))
            type.remove_prefix(1);
        if (type.empty())
            continue;
        patterns.append(patterns.empty() ? u"*." : u";*.").append(type);
    }
    return patterns;
}

} // namespace vell::files
