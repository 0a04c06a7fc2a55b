#include "src/archive/entry_path.h"

#include "src/base/ascii.h"
#include "src/base/utf8.h"
#include "src/files/tree/item_names.h"

#include <algorithm>

namespace vell::archive {
namespace {

using files::is_dots_and_blanks;

// Calls `visit` with each name between separators of either kind.
template <typename Char, typename Visit>
bool all_names(std::basic_string_view<Char> path, Visit visit) {
    constexpr Char separators[] = {Char('/'), Char('\\'), Char(0)};
    for (;;) {
        const std::size_t end = path.find_first_of(separators);
        if (!visit(path.substr(0, end)))
            return false;
        if (end == path.npos)
            return true;
        path.remove_prefix(end + 1);
    }
}

template <typename Char>
bool is_parent(std::basic_string_view<Char> name) {
    return name.size() == 2 && name[0] == Char('.') && name[1] == Char('.');
}

// What Windows gives no file name.
void replace_characters(std::u16string& name) {
    constexpr std::u16string_view forbidden = u"\"*:<>?|";
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool before_separator = i + 1 == name.size() || name[i + 1] == u'\\';
        if (forbidden.find(name[i]) != forbidden.npos || (name[i] == u' ' && before_separator))
            name[i] = u'_';
    }
}

} // namespace

std::u16string without_device_name(std::u16string_view name) {
    std::u16string result(name);
    if (files::is_device_name(name))
        result.insert(std::min(result.find(u'.'), result.size()), 1, u'_');
    return result;
}

std::u16string decoded_name(const EntryInfo& entry, params::TextEncoding encoding,
                            const NameDecoder& decode) {
    std::string_view name = entry.name;
    // Printable ASCII is itself in every encoding, but for two characters.
    const auto is_plain = [](char c) {
        return c >= ' ' && c < '~' && c != '\\';
    };
    if (std::ranges::all_of(name, is_plain))
        return {name.begin(), name.end()};
    if (entry.utf8_name) {
        if (name.size() == ZipReader::longest_name) // a character may have been cut
            name.remove_suffix(cut_sequence_at_end(name));
        if (is_valid_utf8(name))
            return utf16_from_utf8(name);
    }
    return decode(name, encoding);
}

Result<std::u16string> entry_path(const EntryInfo& entry, std::u16string name) {
    constexpr Failure bad_name{ErrorCode::BadName};
    if (!all_names(entry.name, [](std::string_view part) { return !is_parent(part); }) ||
        name.find(u'\0') != name.npos)
        return bad_name;
    if (entry.is_folder && name.ends_with(u'/'))
        name.pop_back();
    std::ranges::replace(name, u'/', u'\\');
    replace_characters(name);

    std::u16string path;
    const auto append = [&](std::u16string_view part) {
        if (part.empty() || part == u".")
            return true;
        if (is_dots_and_blanks(part)) // ".." among them
            return false;
        path.append(path.empty() ? u"" : u"\\").append(without_device_name(part));
        return true;
    };
    if (!all_names(std::u16string_view(name), append))
        return bad_name;
    // A separator or a "." at the end names a folder, the target folder with nothing before it.
    const std::u16string_view last = std::u16string_view(name).substr(name.find_last_of(u'\\') + 1);
    if (!entry.is_folder && (last.empty() || last == u"."))
        return bad_name;
    return path;
}

} // namespace vell::archive
