#include "src/files/folder_operations.h"

#include "src/base/utf16.h"
#include "src/base/win32_error.h"
#include "src/files/path_parts.h"

#include <algorithm>
#include <string>
#include <vector>

namespace vell::files {
namespace {

using params::Call;

// The longest path that the shell's file operation takes: MAX_PATH with its terminating zero.
constexpr std::size_t longest_shell_path = 259;

// Of the shell's own numbers, those that the checks before it give in its place.
constexpr auto same_folder = static_cast<ErrorCode>(0x71);
constexpr auto target_in_source = static_cast<ErrorCode>(0x7D);

// The shell's own numbers, which are other errors in Windows' numbering.
constexpr std::int32_t first_shell_number = 0x71;
constexpr std::int32_t last_shell_number = 0x88;

NativePath native(std::u16string_view path) {
    return {std::u16string(path), std::nullopt};
}

// Whether the target is the source or lies in it, by their full paths without separators at their
// ends.
bool is_inside(TreeSystem& tree, std::u16string_view target, std::u16string_view source) {
    const bool on_its_way = target.size() == source.size() ||
                            (target.size() > source.size() &&
                             (target[source.size()] == u'\\' || source.ends_with(u'\\')));
    return on_its_way && tree.equal_ignoring_case(target.substr(0, source.size()), source);
}

struct FolderPaths {
    NativePath source;
    NativePath target;
};

Result<FolderPaths> folder_paths(Call& call, TreeSystem& tree) {
    if (call.parameter_count() < 3)
        return Failure{ErrorCode::BadParameter};
    const Result<NativePath> given = call.path(1);
    const NativePath source = native(given ? without_trailing_separator(given->wide) : u"");
    if (!given || tree.files().kind_of(source) != ItemKind::Folder) {
        call.debug_note("DoCopyFolder001A errFSNotAFolder ");
        return Failure{ErrorCode::NotAFolder};
    }
    const NativePath target = VELL_TRY(call.path(2));
    VELL_TRY(check_new_name(target.wide));
    VELL_TRY(check_name_characters(last_name(target.wide))); // the shell takes "*" for a pattern
    return FolderPaths{source, native(without_trailing_separator(target.wide))};
}

// The path as the comparison and the shell take it.
Result<NativePath> trimmed_full_path(TreeSystem& tree, const NativePath& path) {
    return native(without_trailing_separator(VELL_TRY(tree.full_path(path)).wide));
}

NativePath joined(const NativePath& folder, std::u16string_view name) {
    NativePath path = folder;
    if (!path.wide.ends_with(u'\\'))
        path.wide += u'\\';
    path.wide += name;
    return path;
}

// Where the shell puts the copy: a folder that exists takes it in.
NativePath place_of_copy(TreeSystem& tree, const FolderPaths& paths) {
    return tree.files().kind_of(paths.target) == ItemKind::Folder
               ? joined(paths.target, last_name(paths.source.wide))
               : paths.target;
}

// A full path, those of the folders above it, and its root.
std::vector<NativePath> way_up(std::u16string_view path) {
    std::vector<NativePath> way;
    const NativePath root = native(path.substr(0, root_length(path)));
    for (; !path.empty() && path != root.wide; path = parent_path(path))
        way.push_back(native(path));
    way.push_back(root);
    return way;
}

bool is_same_folder(TreeSystem& tree, const NativePath& a, const NativePath& b) {
    return tree.equal_ignoring_case(a.wide, b.wide) || tree.files().is_same_file(a, b);
}

bool contains(TreeSystem& tree, const std::vector<NativePath>& folders, const NativePath& folder) {
    return std::ranges::any_of(
        folders, [&](const NativePath& other) { return is_same_folder(tree, other, folder); });
}

// The links to folders below a folder. PathTooLong when the path of anything below it is longer
// than the folder's by more than `longest` characters.
Result<std::vector<NativePath>> links_below(TreeSystem& tree, const NativePath& folder,
                                            std::size_t longest) {
    std::vector<NativePath> links;
    VELL_TRY(tree.for_each_below(folder, [&](const ItemBelow& item) -> Result<void> {
        if (item.path.wide.size() > folder.wide.size() + longest)
            return Failure{ErrorCode::PathTooLong};
        if (item.is_link)
            links.push_back(item.path);
        return {};
    }));
    return links;
}

// The shell goes through links: the copy would hold itself, over and over, where one leads to a
// folder above it or above the copy.
Result<void> check_links(TreeSystem& tree, const FolderPaths& paths, const NativePath& place) {
    const std::size_t longest = std::max(paths.source.wide.size(), place.wide.size());
    if (longest > longest_shell_path)
        return Failure{ErrorCode::PathTooLong};
    const std::vector<NativePath> above_copy = way_up(place.wide);
    for (const NativePath& link :
         VELL_TRY(links_below(tree, paths.source, longest_shell_path - longest))) {
        const auto above_link = way_up(without_trailing_separator(folder_part(link.wide)));
        if (contains(tree, above_link, link) || contains(tree, above_copy, link))
            return Failure{target_in_source};
    }
    return {};
}

// The shell also reports success when it has passed over things, such as files in use.
Result<void> check_copied(TreeSystem& tree, const NativePath& source, const NativePath& copy) {
    if (tree.files().kind_of(copy) != ItemKind::Folder)
        return Failure{ErrorCode::Busy};
    return tree.for_each_below(source, [&](const ItemBelow& item) -> Result<void> {
        std::u16string_view below = std::u16string_view(item.path.wide).substr(source.wide.size());
        if (below.starts_with(u'\\'))
            below.remove_prefix(1);
        if (tree.files().kind_of(joined(copy, below)) != item.kind)
            return Failure{ErrorCode::Busy};
        return {};
    });
}

Result<void> copy_by_shell(TreeSystem& tree, const FolderPaths& paths, ShellMessages messages) {
    const NativePath place = place_of_copy(tree, paths);
    if (is_same_folder(tree, place, paths.source))
        return Failure{same_folder};
    if (contains(tree, way_up(place.wide), paths.source))
        return Failure{target_in_source};
    const ItemKind there = tree.files().kind_of(place);
    // Without a user nobody can be asked whether files are to be replaced.
    if (there == ItemKind::File ||
        (there == ItemKind::Folder && messages == ShellMessages::Suppressed))
        return Failure{ErrorCode::AlreadyExists};
    VELL_TRY(check_links(tree, paths, place));
    const ShellOutcome outcome = tree.shell_copy(paths.source, paths.target, messages);
    if (outcome.aborted)
        return Failure{ErrorCode::OperationAborted};
    if (outcome.code != 0)
        return Failure{static_cast<ErrorCode>(outcome.code)};
    return check_copied(tree, paths.source, place);
}

std::u16string deletion_question(std::u16string_view name) {
    constexpr std::size_t longest_name = 25;
    if (name.size() > longest_name) {
        name = name.substr(0, longest_name);
        if (is_high_surrogate(name.back()))
            name.remove_suffix(1); // half a character
    }
    return u"Do you really want to delete the folder \"" + std::u16string(name) +
           u"\" and its contents? All its files and subdirectories will be deleted. This can not "
           u"be undone.";
}

ErrorCode deletion_error(std::int32_t code) {
    const bool of_the_shell = code >= first_shell_number && code <= last_shell_number;
    return of_the_shell ? static_cast<ErrorCode>(code) : error_from_win32(code);
}

Result<void> delete_by_shell(TreeSystem& tree, const NativePath& folder, void* owner,
                             ShellMessages messages) {
    if (tree.is_link(folder))
        return tree.remove_folder(folder);
    if (folder.wide.size() > longest_shell_path)
        return Failure{ErrorCode::PathTooLong};
    for (const NativePath& link :
         VELL_TRY(links_below(tree, folder, longest_shell_path - folder.wide.size())))
        VELL_TRY(tree.remove_folder(link));
    const ShellOutcome outcome = tree.shell_delete(folder, owner, messages);
    if (outcome.aborted)
        return Failure{ErrorCode::OperationAborted};
    if (outcome.code != 0)
        return Failure{deletion_error(outcome.code)};
    if (tree.files().kind_of(folder) != ItemKind::None)
        return Failure{ErrorCode::Busy}; // the shell passed over something
    return {};
}

ShellMessages messages_for(const Call& call) {
    return call.can_ask_user() ? ShellMessages::Shown : ShellMessages::Suppressed;
}

Result<void> delete_with_contents(Call& call, TreeSystem& tree, const NativePath& path,
                                  bool confirmed) {
    const NativePath folder = VELL_TRY(trimmed_full_path(tree, path));
    const std::u16string_view name = last_name(folder.wide);
    if (name.empty())
        return Failure{ErrorCode::Busy}; // a whole volume
    if (!confirmed &&
        (!call.can_ask_user() || !tree.confirm(call.main_window(), deletion_question(name))))
        return Failure{ErrorCode::NotConfirmed};
    if (!tree.has_shell_operations())
        return Failure{ErrorCode::NotAvailable};
    void* const owner = call.can_ask_user() ? call.main_window() : nullptr;
    return delete_by_shell(tree, folder, owner, messages_for(call));
}

} // namespace

Result<void> delete_folder(Call& call, TreeSystem& tree) {
    if (call.parameter_count() < 2)
        return Failure{ErrorCode::BadParameter};
    const params::SwitchSet switches = call.switches();
    const bool with_contents = call.is_step() ? call.step_option(2) == 1
                                              : switches.has("-deleteAllSubFoldersAndAllContents");
    const NativePath given = VELL_TRY(call.path(1));
    const NativePath path = native(without_trailing_separator(given.wide));
    switch (tree.files().kind_of(path)) {
    case ItemKind::None:
        return Failure{ErrorCode::BadName};
    case ItemKind::File:
        return Failure{ErrorCode::FolderNotFound};
    case ItemKind::Folder:
        break;
    }
    if (with_contents)
        VELL_TRY(delete_with_contents(call, tree, path, switches.has("noWarning")));
    else
        VELL_TRY(tree.remove_folder(path));
    call.set_done();
    return {};
}

Result<void> copy_folder(Call& call, TreeSystem& tree) {
    const FolderPaths given = VELL_TRY(folder_paths(call, tree));
    if (!tree.has_shell_operations())
        return Failure{ErrorCode::NotAvailable};
    FolderPaths full;
    full.source = VELL_TRY(trimmed_full_path(tree, given.source));
    full.target = VELL_TRY(trimmed_full_path(tree, given.target));
    VELL_TRY(copy_by_shell(tree, full, messages_for(call)));
    call.set_done();
    return {};
}

Result<void> move_folder(Call& call, TreeSystem& tree) {
    const FolderPaths paths = VELL_TRY(folder_paths(call, tree));
    const NativePath source = VELL_TRY(trimmed_full_path(tree, paths.source));
    const NativePath target = VELL_TRY(trimmed_full_path(tree, paths.target));
    if (is_inside(tree, target.wide, source.wide))
        return Failure{ErrorCode::MoveIntoItself};
    VELL_TRY(tree.move(paths.source, paths.target));
    call.set_done();
    return {};
}

} // namespace vell::files
