#include "src/files/paths/relative_path.h"

#include "src/base/ascii.h"
#include "src/files/paths/path_parts.h"

namespace vell::files {
namespace {

std::u16string_view take_name(std::u16string_view& path) {
    const std::size_t end = path.find(u'\\');
    const std::u16string_view name = path.substr(0, end);
    path.remove_prefix(end == std::u16string_view::npos ? path.size() : end + 1);
    return name;
}

} // namespace

std::optional<std::u16string> relative_path(std::u16string_view folder, std::u16string_view item) {
    folder = without_trailing_separator(folder);
    item = without_trailing_separator(item);
    const std::size_t root = root_length(folder);
    // Letters beyond ASCII that differ in case make a way longer than it need be, not a wrong one.
    if (root == 0 || root != root_length(item) ||
        !equal_ignoring_case(folder.substr(0, root), item.substr(0, root)))
        return std::nullopt;
    folder.remove_prefix(root);
    item.remove_prefix(root);
    while (!folder.empty() && !item.empty()) {
        std::u16string_view folder_rest = folder;
        std::u16string_view item_rest = item;
        if (!equal_ignoring_case(take_name(folder_rest), take_name(item_rest)))
            break;
        folder = folder_rest;
        item = item_rest;
    }
    std::u16string way;
    while (!folder.empty()) {
        take_name(folder);
        way += u"..\\";
    }
    if (way.empty())
        way = u".\\";
    way += item;
    while (way.ends_with(u'\\'))
        way.pop_back();
    return way;
}

} // namespace vell::files
