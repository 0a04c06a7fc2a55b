#include "src/files/information/shell_information.h"
#include "src/files/paths/path_parts.h"
#include "src/files/paths/path_to.h"
#include "src/system/item_properties.h"
#include "src/windows/com.h"
#include "src/windows/text.h"

#include <shellapi.h>

#include <array>
#include <string>

namespace vell::files {
namespace {

using params::Call;

// Names separated by zeros.
Result<std::u16string> preferred_languages() {
    ULONG count = 0;
    ULONG length = 0;
    if (!GetUserPreferredUILanguages(MUI_LANGUAGE_NAME, &count, nullptr, &length))
        return Failure{last_error()};
    std::wstring names(length, L'\0');
    if (!GetUserPreferredUILanguages(MUI_LANGUAGE_NAME, &count, names.data(), &length))
        return Failure{last_error()};
    names.resize(names.find_last_not_of(L'\0') + 1);
    return to_utf16(names);
}

} // namespace

Result<std::u16string> program_path() {
    std::wstring path(32'767, L'\0'); // the longest path that Windows knows
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0)
        return Failure{last_error()};
    path.resize(length);
    return to_utf16(path);
}

Result<void> get_file_kind(Call& call) {
    const params::NativePath path = VELL_TRY(call.path(1));
    const std::uint32_t attributes = VELL_TRY(system_properties().attributes(path));

    // The shell takes no "/" and no long paths: these are described by their name alone.
    std::u16string asked = path.wide;
    std::ranges::replace(asked, u'/', u'\\');
    UINT flags = SHGFI_TYPENAME;
    if (asked.size() >= MAX_PATH) {
        flags |= SHGFI_USEFILEATTRIBUTES;
        asked = u"x." + std::u16string(extension_of(path.wide).substr(0, MAX_PATH / 2));
    }
    const ComApartment com;
    SHFILEINFOW info{};
    if (!SHGetFileInfoW(as_wide(asked), attributes, &info, sizeof info, flags))
        return Failure{ErrorCode::NotAvailable};
    call.set_text(to_utf16(info.szTypeName));
    return {};
}

Result<void> get_preferred_languages(Call& call) {
    std::u16string languages = VELL_TRY(preferred_languages());
    if (call.switches().has("-GetFirstLanguage"))
        languages.resize(std::min(languages.find(u'\0'), languages.size()));
    std::ranges::replace(languages, u'\0', u'\r');
    call.set_text(languages);
    return {};
}

} // namespace vell::files
