#include "src/files/paths/path_references.h"

#include "src/files/paths/path_parts.h"
#include "src/params/path_form.h"
#include "src/system/system.h"

#include <algorithm>
#include <optional>

namespace vell::files {
namespace {

using params::Accept;
using params::Call;
using params::PathKind;

bool is_from_the_solution(PathKind kind) {
    return kind == PathKind::File || kind == PathKind::Image || kind == PathKind::Movie;
}

bool is_for_the_mac(PathKind kind) {
    return kind == PathKind::FileMac || kind == PathKind::ImageMac || kind == PathKind::MovieMac;
}

// The path behind a prefix, with as many slashes at its start as it means.
std::u16string behind_prefix(PathKind kind, std::u16string_view line) {
    std::u16string_view path = line.substr(line.find(u':') + 1);
    const std::size_t slashes = std::min(path.find_first_not_of(u'/'), path.size());
    path.remove_prefix(slashes);
    if (kind == PathKind::Smb) { // a user and a password may stand before the server
        const std::size_t at = path.substr(0, path.find(u'/')).rfind(u'@');
        path.remove_prefix(at == std::u16string_view::npos ? 0 : at + 1);
    }
    const bool on_network = !path.empty() && (kind == PathKind::Smb || slashes == 2);
    return (on_network ? u"\\\\" : u"") + std::u16string(path);
}

// The path of one line, not full yet.
Result<std::u16string> path_of_line(std::u16string_view line) {
    const PathKind kind = params::classify(line);
    if (kind == PathKind::Size)
        return Failure{ErrorCode::BadParameter};
    if (is_for_the_mac(kind))
        return Failure{ErrorCode::NotAvailable};
    if (kind == PathKind::Plain)
        return VELL_TRY(params::resolve(Accept::OnePath, std::u16string(line))).wide;
    return VELL_TRY(params::resolve(Accept::Nothing, behind_prefix(kind, line))).wide;
}

// Among several lines, whether this one can name the file.
bool names_a_place(std::u16string_view line) {
    const PathKind kind = params::classify(line);
    if (is_from_the_solution(kind))
        return root_length(behind_prefix(kind, line)) > 0;
    return !line.empty() && kind != PathKind::Size && !is_for_the_mac(kind);
}

Result<std::u16string> reference_of(Call& call, System& system) {
    return path_of_reference(call.text(1), [&system](const std::u16string& path) {
        return system.tree().absolute_path(path);
    });
}

} // namespace

Result<std::u16string> path_of_reference(std::u16string_view reference, const FullPath& full_path) {
    while (reference.ends_with(u'\r'))
        reference.remove_suffix(1);
    if (reference.find(u'\r') == std::u16string_view::npos)
        return full_path(VELL_TRY(path_of_line(reference)));
    std::optional<std::u16string> found;
    for (std::size_t start = 0; start < reference.size();) {
        const std::size_t end = std::min(reference.find(u'\r', start), reference.size());
        const std::u16string_view line = reference.substr(start, end - start);
        start = end + 1;
        if (!names_a_place(line))
            continue;
        const std::u16string given = VELL_TRY(path_of_line(line));
        std::u16string path = VELL_TRY(full_path(given));
        if (found && *found != path)
            return Failure{ErrorCode::SeveralLines};
        found = std::move(path);
    }
    if (!found)
        return Failure{ErrorCode::BadParameter};
    return *std::move(found);
}

Result<void> file_spec_to_full_path(Call& call, System& system) {
    call.set_text(params::path_result(call.switches(), VELL_TRY(reference_of(call, system))));
    return {};
}

Result<void> full_path_to_file_spec(Call& call, System& system) {
    call.set_text(params::host_form(VELL_TRY(reference_of(call, system))));
    return {};
}

} // namespace vell::files
