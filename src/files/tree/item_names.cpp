#include "src/files/tree/item_names.h"

#include "src/base/ascii.h"
#include "src/files/paths/path_parts.h"

#include <algorithm>

namespace vell::files {
namespace {

constexpr Failure bad_name{ErrorCode::BadName};

// The kernel's own form of a path, which full paths cannot be told from.
constexpr std::u16string_view kernel_prefix = u"\\??\\";

bool is_whole_name(std::u16string_view name) {
    return name == u"." || name == u"..";
}

Result<void> check_last_name(std::u16string_view path) {
    if (path.starts_with(kernel_prefix))
        return bad_name;
    const std::u16string_view name = last_name(path);
    if (!is_verbatim(path) && !name.empty() && !is_whole_name(name) && is_dots_and_blanks(name))
        return bad_name;
    return {};
}

} // namespace

bool is_device_name(std::u16string_view name) {
    constexpr std::u16string_view devices[] = {u"con", u"prn",    u"aux",
                                               u"nul", u"conin$", u"conout$"};
    constexpr std::u16string_view ports[] = {u"com", u"lpt"};
    constexpr std::u16string_view port_numbers = u"123456789\u00B9\u00B2\u00B3";
    name = name.substr(0, name.find(u'.'));
    name = name.substr(0, name.find_last_not_of(u' ') + 1);
    std::u16string small(name);
    std::ranges::transform(small, small.begin(), fold_ascii<char16_t>);
    if (std::ranges::find(devices, small) != std::end(devices))
        return true;
    return small.size() == 4 &&
           std::ranges::find(ports, std::u16string_view(small).substr(0, 3)) != std::end(ports) &&
           port_numbers.find(small[3]) != port_numbers.npos;
}

Result<void> check_name_characters(std::u16string_view name) {
    constexpr std::u16string_view forbidden = u"<>:\"/\\|?*";
    const bool is_allowed = std::ranges::none_of(name, [&](char16_t unit) {
        return unit < u' ' || forbidden.find(unit) != std::u16string_view::npos;
    });
    if (!is_allowed)
        return bad_name;
    return {};
}

bool is_dots_and_blanks(std::u16string_view name) {
    return without_cut_ending(name).empty();
}

std::u16string_view without_cut_ending(std::u16string_view name) {
    return name.substr(0, name.find_last_not_of(u". ") + 1);
}

std::u16string path_as_cut(std::u16string_view path) {
    std::u16string result(path);
    const std::u16string_view name = last_name(path);
    if (is_verbatim(path) || is_dots_and_blanks(name))
        return result;
    const std::size_t kept = without_cut_ending(name).size();
    const auto start = static_cast<std::size_t>(name.data() - path.data());
    return result.erase(start + kept, name.size() - kept);
}

Result<NativePath> path_to_change(const Result<NativePath>& given) {
    if (!given)
        return given;
    VELL_TRY(check_last_name(given->wide));
    return NativePath{path_as_cut(given->wide), std::nullopt};
}

Result<NativePath> path_to_make(const Result<NativePath>& given) {
    if (!given)
        return given;
    const std::u16string_view path = given->wide;
    if (!is_on_disk(path) || path.find(u':', root_length(path)) != path.npos)
        return bad_name;
    if (!is_verbatim(path) && is_device_name(last_name(path)))
        return bad_name;
    return path_to_change(given);
}

Result<NativePath> path_to_make(FileSystem& files, const NativePath& source,
                                const Result<NativePath>& given) {
    NativePath path = VELL_TRY(path_to_make(given));
    if (path.wide != given->wide && files.is_same_file(source, path))
        return bad_name;
    return path;
}

Result<void> check_folder_on_the_way(std::u16string_view folder) {
    VELL_TRY(check_last_name(folder));
    std::u16string_view name = last_name(folder);
    if (is_verbatim(folder) || is_whole_name(name))
        return {};
    if (is_device_name(name))
        return bad_name;
    name.remove_suffix(name.ends_with(u'.') ? 1 : 0);
    if (without_cut_ending(name) != name)
        return bad_name;
    return {};
}

} // namespace vell::files
