#include "src/files/paths/path_parts.h"

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
    if (at + 1 >= path.size() || path[at + 1] != u':' || !is_letter(path[at]))
        return at;
    return at + (has_separator_at(path, at + 2) ? 3 : 2);
}

bool names_network(std::u16string_view rest) {
    return rest.size() > 3 && starts_ignoring_case(rest, u"unc") && is_separator(rest[3]);
}

// Behind it stands the name of a device, which may be a drive.
bool has_device_prefix(std::u16string_view path) {
    return path.size() >= device_prefix_length && is_separator(path[0]) && is_separator(path[1]) &&
           (path[2] == u'?' || path[2] == u'.') && is_separator(path[3]);
}

} // namespace

std::size_t root_length(std::u16string_view path) {
    if (!has_separator_at(path, 0))
        return skip_drive(path, 0);
    if (!has_separator_at(path, 1))
        return 1;
    if (has_device_prefix(path)) {
        if (names_network(path.substr(device_prefix_length)))
            return skip_name(path, skip_name(path, device_prefix_length + 4));
        const std::size_t behind_drive = skip_drive(path, device_prefix_length);
        return behind_drive > device_prefix_length ? behind_drive
                                                   : skip_name(path, device_prefix_length);
    }
    return skip_name(path, skip_name(path, 2));
}

bool begins_with_drive(std::u16string_view path) {
    return path.size() >= 3 && is_letter(path[0]) && path[1] == u':' && path[2] == u'\\';
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

std::vector<std::u16string_view> folders_above(std::u16string_view path) {
    const std::size_t root = root_length(path);
    std::vector<std::u16string_view> folders;
    std::size_t end = without_trailing_separator(path).size();
    for (;;) {
        while (end > root && !is_separator(path[end - 1])) // the last name
            --end;
        while (end > root && is_separator(path[end - 1]))
            --end;
        if (end <= root)
            return folders;
        folders.push_back(path.substr(0, end));
    }
}

std::u16string_view folder_part(std::u16string_view path) {
    path = without_trailing_separator(path);
    path.remove_suffix(last_name(path).size());
    return path;
}

std::u16string_view extension_of(std::u16string_view path) {
    if (path.empty() || is_separator(path.back()))
        return {};
    const std::u16string_view name = last_name(path);
    const std::size_t dot = name.rfind(u'.');
    return dot == std::u16string_view::npos ? std::u16string_view() : name.substr(dot + 1);
}

bool has_extension(std::u16string_view path, std::u16string_view extension) {
    return equal_ignoring_case(extension_of(path), extension);
}

bool is_shell_link(std::u16string_view path) {
    return has_extension(path, u"lnk");
}

bool is_verbatim(std::u16string_view path) {
    return path.starts_with(u"\\\\?\\");
}

bool is_on_disk(std::u16string_view path) {
    if (!has_device_prefix(path))
        return true;
    path.remove_prefix(device_prefix_length);
    return skip_drive(path, 0) > 0 || names_network(path) || starts_ignoring_case(path, u"volume{");
}

} // namespace vell::files
