#include "console/host/hints.h"

#include "console/host/report.h"
#include "console/model/unicode.h"
#include "src/base/ascii.h"

namespace vell::console {

namespace {

// The first text literal of the statement that begins with "/" and not with "/C:/" or "//".
std::u16string_view rooted_path(std::u16string_view statement) {
    for (std::size_t at = statement.find(u"\"/"); at != statement.npos;
         at = statement.find(u"\"/", at + 1)) {
        const std::u16string_view path = statement.substr(at + 1);
        const bool has_drive = path.size() > 2 && is_letter(path[1]) && path[2] == u':';
        if (!has_drive && !path.starts_with(u"//") && !path.starts_with(u"/\""))
            return path.substr(0, path.find(u'"'));
    }
    return {};
}

} // namespace

std::string hint_on(std::u16string_view statement, const Value& result) {
    if (!is_error_result(result))
        return {};
    const std::u16string_view path = rooted_path(statement);
    if (path.empty())
        return {};
    const std::string shown = utf8_from_utf16(path);
    return "hint: \"" + shown +
           "\" is read without its first slash, from the current folder on; a full path begins with "
           "a drive, which in Wine is Z: for all of this machine: \"Z:" +
           shown + "\"\n";
}

} // namespace vell::console
