#include "src/files/information/shell_information.h"

#include "src/files/paths/item_paths.h"
#include "src/files/paths/path_parts.h"

#include <algorithm>

namespace vell::files {

Result<void> get_file_kind(params::Call& call, System& system) {
    const NativePath path = VELL_TRY(call.path(1));
    const std::uint32_t attributes = VELL_TRY(system.properties().attributes(path));

    // The shell takes no "/" and no long paths: these are described by their name alone.
    constexpr std::size_t longest_extension = 130;
    std::u16string asked = path.wide;
    std::ranges::replace(asked, u'/', u'\\');
    TypeBy by = TypeBy::Item;
    if (asked.size() > longest_shell_path) {
        by = TypeBy::Name;
        asked = u"x." + std::u16string(extension_of(path.wide).substr(0, longest_extension));
    }
    call.set_text(VELL_TRY(system.properties().type_name(asked, attributes, by)));
    return {};
}

Result<void> get_preferred_languages(params::Call& call, System& system) {
    const std::vector<std::u16string> languages = VELL_TRY(system.desktop().preferred_languages());
    const bool first_only = call.switches().has("-GetFirstLanguage");
    std::u16string text;
    for (const std::u16string& language : languages) {
        if (!text.empty())
            text += u'\r';
        text += language;
        if (first_only)
            break;
    }
    call.set_text(text);
    return {};
}

} // namespace vell::files
