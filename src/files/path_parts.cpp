#include "src/files/path_parts.h"

#include "src/base/ascii.h"

#include <algorithm>
#include <string>

namespace vell::files {
namespace {

constexpr std::size_t device_prefix_length = 4; // "\\?\" and "\\.\"

constexpr bool is_separator(char16_t unit) {
    return unit == u'\\' || unit == u'/';
}

bool has_separator_at(std::u16string_view path, std::size_t at) {
    return at < path.size() && is_separator(path[at]);
}

// The position behind the name at `at` and its separator.
std::size_t skip_name(std::u16string_view path, std::size_t at) {
    while (at < path.size() && !is_separator(path[at]))
        ++at;
    return std::min(at + 1, path.size());
}

// The position behind a drive such as "C:\" at `at`; `at` when there is none.
std::size_t skip_drive(std::u16string_view path, std::size_t at) {
    if (at + 1 >= path.size() || path[at + 1] != u':' || is_separator(path[at]))
        return at;
    return at + (has_separator_at(path, at + 2) ? 3 : 2);
}

bool names_network(std::u16string_view rest) {
    return rest.size() > 3 && starts_ignoring_case(rest, u"unc") && is_separator(rest[3]);
}

bool is_verbatim(std::u16string_view path) {
    return path.starts_with(u"\\\\?\\");
}

} // namespace

std::size_t root_length(std::u16string_view path) {
    if (!has_separator_at(path, 0))
        return skip_drive(path, 0);
    if (!has_separator_at(path, 1))
        return 1;
    if (path.size() >= device_prefix_length && (path[2] == u'?' || path[2] == u'.') &&
        is_separator(path[3])) {
        if (names_network(path.substr(device_prefix_length)))
            return skip_name(path, skip_name(path, device_prefix_length + 4));
        const std::size_t behind_drive = skip_drive(path, device_prefix_length);
        return behind_drive > device_prefix_length ? behind_drive
                                                   : skip_name(path, device_prefix_length);
    }
    return skip_name(path, skip_name(path, 2));
}

std::u16string_view without_trailing_separator(std::u16string_view path) {
    const std::size_t root = root_length(path);
    while (path.size() > root && is_separator(path.back()))
        path.remove_suffix(1);
    return path;
}

std::u16string_view last_name(std::u16string_view path) {
    path = without_trailing_separator(path);
    std::size_t start = path.size();
    for (const std::size_t root = root_length(path); start > root; --start)
        if (is_separator(path[start - 1]))
            break;
    return path.substr(start);
}

std::u16string_view parent_path(std::u16string_view path) {
    path = without_trailing_separator(folder_part(path));
    return path.size() == root_length(path) ? std::u16string_view() : path;
}

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

std::u16string_view folder_part(std::u16string_view path) {
    path = without_trailing_separator(path);
    path.remove_suffix(last_name(path).size());
    return path;
}

Result<void> check_new_name(std::u16string_view path) {
    const std::u16string_view name = last_name(path);
    if (name.empty() || name == u"." || name == u".." || is_verbatim(path))
        return {};
    if (name.back() == u'.' || name.back() == u' ')
        return Failure{ErrorCode::BadName};
    return {};
}

Result<void> check_name_characters(std::u16string_view name) {
    constexpr std::u16string_view forbidden = u"<>:\"/\\|?*";
    const bool is_allowed = std::ranges::none_of(name, [&](char16_t unit) {
        return unit < u' ' || forbidden.find(unit) != std::u16string_view::npos;
    });
    if (!is_allowed)
        return Failure{ErrorCode::BadName};
    return {};
}

} // namespace vell::files
