#include "src/files/tree/folder_operations.h"

#include "src/base/utf16.h"
#include "src/files/paths/item_paths.h"
#include "src/files/paths/path_parts.h"
#include "src/files/tree/item_names.h"
#include "src/system/system.h"

#include <algorithm>
#include <string>
#include <vector>

namespace vell::files {
namespace {

using params::Call;

constexpr std::size_t contents_option = 2; // of the step that deletes

NativePath native(std::u16string_view path) {
    return {std::u16string(path), std::nullopt};
}

// Whether the target is the source or lies in it, by their full paths without separators at their
// ends.
bool is_inside(System& system, std::u16string_view target, std::u16string_view source) {
    const bool on_its_way = target.size() == source.size() ||
                            (target.size() > source.size() &&
                             (target[source.size()] == u'\\' || source.ends_with(u'\\')));
    return on_its_way && system.tree().equal_ignoring_case(target.substr(0, source.size()), source);
}

struct FolderPaths {
    NativePath source;
    NativePath target;
};

Result<FolderPaths> folder_paths(Call& call, System& system) {
    const auto not_a_folder = [&] {
        call.debug_note("DoCopyFolder001A errFSNotAFolder ");
        return Failure{ErrorCode::NotAFolder};
    };
    const Result<NativePath> given = call.path(1);
    if (!given)
        return not_a_folder();
    const NativePath source =
        native(without_trailing_separator(VELL_TRY(path_to_change(*given)).wide));
    if (system.files().kind_of(source) != ItemKind::Folder)
        return not_a_folder();
    const NativePath target = VELL_TRY(path_to_make(system.files(), source, call.path(2)));
    VELL_TRY(check_name_characters(last_name(target.wide))); // the shell takes "*" for a pattern
    return FolderPaths{source, native(without_trailing_separator(target.wide))};
}

// The path as the comparison and the shell take it.
Result<NativePath> trimmed_full_path(System& system, const NativePath& path) {
    return native(without_trailing_separator(VELL_TRY(full_path(system.tree(), path)).wide));
}

NativePath joined(const NativePath& folder, std::u16string_view name) {
    NativePath path = folder;
    if (!path.wide.ends_with(u'\\'))
        path.wide += u'\\';
    path.wide += name;
    return path;
}

// A whole volume is no folder to be copied, moved or deleted.
Result<void> check_no_root(const NativePath& folder) {
    if (last_name(folder.wide).empty())
        return Failure{ErrorCode::Busy};
    return {};
}

// Where the shell puts the copy: a folder that exists takes it in.
NativePath place_of_copy(System& system, const FolderPaths& paths) {
    return system.files().kind_of(paths.target) == ItemKind::Folder
               ? joined(paths.target, last_name(paths.source.wide))
               : paths.target;
}

// A full path, those of the folders above it, and its root.
std::vector<NativePath> way_up(std::u16string_view path) {
    std::vector<NativePath> way;
    const NativePath root = native(path.substr(0, root_length(path)));
    if (path != root.wide)
        way.push_back(native(path));
    for (const std::u16string_view above : folders_above(path))
        way.push_back(native(above));
    way.push_back(root);
    return way;
}

bool is_same_folder(System& system, const NativePath& a, const NativePath& b) {
    return system.tree().equal_ignoring_case(a.wide, b.wide) || system.files().is_same_file(a, b);
}

bool contains(System& system, const std::vector<NativePath>& folders, const NativePath& folder) {
    return std::ranges::any_of(
        folders, [&](const NativePath& other) { return is_same_folder(system, other, folder); });
}

// The links to folders below a folder. PathTooLong when the path of anything below it is longer
// than the folder's by more than `longest` characters.
Result<std::vector<NativePath>> links_below(System& system, const NativePath& folder,
                                            std::size_t longest) {
    std::vector<NativePath> links;
    VELL_TRY(system.tree().for_each_below(folder, [&](const ItemBelow& item) -> Result<void> {
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
Result<void> check_links(System& system, const FolderPaths& paths, const NativePath& place) {
    const std::size_t longest = std::max(paths.source.wide.size(), place.wide.size());
    const std::vector<NativePath> above_copy = way_up(place.wide);
    for (const NativePath& link :
         VELL_TRY(links_below(system, paths.source, longest_shell_path - longest))) {
        const auto above_link = way_up(without_trailing_separator(folder_part(link.wide)));
        if (contains(system, above_link, link) || contains(system, above_copy, link))
            return Failure{ErrorCode::FolderIntoItself};
    }
    return {};
}

// Where an item below the source comes to stand.
NativePath copy_of(const NativePath& item, const NativePath& source, const NativePath& copy) {
    std::u16string_view below = std::u16string_view(item.wide).substr(source.wide.size());
    if (below.starts_with(u'\\'))
        below.remove_prefix(1);
    return joined(copy, below);
}

// The shell also reports success when it has passed over things, such as files in use.
Result<void> check_copied(System& system, const NativePath& source, const NativePath& copy) {
    if (system.files().kind_of(copy) != ItemKind::Folder)
        return Failure{ErrorCode::Busy};
    return system.tree().for_each_below(source, [&](const ItemBelow& item) -> Result<void> {
        if (system.files().kind_of(copy_of(item.path, source, copy)) != item.kind)
            return Failure{ErrorCode::Busy};
        return {};
    });
}

// The folders that a copy will make: the copy itself and what is missing above it, or what it lacks
// of the source's folders. Those above others come first.
Result<std::vector<NativePath>> missing_folders(System& system, const NativePath& source,
                                                const NativePath& copy) {
    std::vector<NativePath> missing;
    const auto is_missing = [&](const NativePath& folder) {
        return system.files().kind_of(folder) == ItemKind::None;
    };
    if (is_missing(copy)) {
        missing = way_up(copy.wide);
        missing.erase(std::ranges::find_if_not(missing, is_missing), missing.end());
        std::ranges::reverse(missing);
        return missing;
    }
    VELL_TRY(system.tree().for_each_below(source, [&](const ItemBelow& item) -> Result<void> {
        NativePath folder = copy_of(item.path, source, copy);
        if (item.kind == ItemKind::Folder && is_missing(folder))
            missing.push_back(std::move(folder));
        return {};
    }));
    return missing;
}

// Removes those of the folders, and of what is in them, that hold nothing but folders. What cannot
// be removed stays: there is another failure to report.
void remove_if_empty(System& system, std::vector<NativePath> folders) {
    for (; !folders.empty(); folders.pop_back()) {
        std::vector<NativePath> inner{folders.back()};
        static_cast<void>(system.tree().for_each_below(
            folders.back(), [&](const ItemBelow& item) -> Result<void> {
                if (item.kind == ItemKind::Folder && !item.is_link)
                    inner.push_back(item.path);
                return {};
            }));
        for (; !inner.empty(); inner.pop_back())
            static_cast<void>(system.tree().remove_folder(inner.back()));
    }
}

Result<void> run_copy(System& system, const FolderPaths& paths, const NativePath& place,
                      ShellMessages messages) {
    const ShellOutcome outcome = system.desktop().shell_copy(paths.source, paths.target, messages);
    if (outcome.aborted)
        return Failure{ErrorCode::OperationAborted};
    if (outcome.code != ErrorCode::Ok)
        return Failure{outcome.code};
    return check_copied(system, paths.source, place);
}

Result<void> copy_by_shell(System& system, const FolderPaths& paths, ShellMessages messages) {
    const NativePath place = place_of_copy(system, paths);
    if (std::max(paths.source.wide.size(), place.wide.size()) > longest_shell_path)
        return Failure{ErrorCode::PathTooLong};
    if (is_same_folder(system, place, paths.source))
        return Failure{ErrorCode::SameFolder};
    if (contains(system, way_up(place.wide), paths.source))
        return Failure{ErrorCode::FolderIntoItself};
    const ItemKind there = system.files().kind_of(place);
    // Without a user nobody can be asked whether files are to be replaced.
    if (there == ItemKind::File ||
        (there == ItemKind::Folder && messages == ShellMessages::Suppressed))
        return Failure{ErrorCode::AlreadyExists};
    VELL_TRY(check_links(system, paths, place));
    const std::vector<NativePath> missing = VELL_TRY(missing_folders(system, paths.source, place));
    const Result<void> copied = run_copy(system, paths, place, messages);
    if (!copied)
        remove_if_empty(system, missing);
    return copied;
}

std::u16string deletion_question(std::u16string_view name) {
    constexpr std::size_t longest_name = 25;
    return u"Do you really want to delete the folder \"" +
           std::u16string(beginning(name, longest_name)) +
           u"\" and its contents? All its files and subdirectories will be deleted. This can not "
           u"be undone.";
}

Result<void> delete_by_shell(System& system, const NativePath& folder, void* owner,
                             ShellMessages messages) {
    if (system.tree().is_link(folder))
        return system.tree().remove_folder(folder);
    if (folder.wide.size() > longest_shell_path)
        return Failure{ErrorCode::PathTooLong};
    for (const NativePath& link :
         VELL_TRY(links_below(system, folder, longest_shell_path - folder.wide.size())))
        VELL_TRY(system.tree().remove_folder(link));
    const ShellOutcome outcome = system.desktop().shell_delete(folder, owner, messages);
    if (outcome.aborted)
        return Failure{ErrorCode::OperationAborted};
    if (outcome.code != ErrorCode::Ok)
        return Failure{outcome.code};
    if (system.files().kind_of(folder) != ItemKind::None)
        return Failure{ErrorCode::Busy}; // the shell passed over something
    return {};
}

ShellMessages messages_for(const Call& call) {
    return call.can_ask_user() ? ShellMessages::Shown : ShellMessages::Suppressed;
}

Result<void> delete_with_contents(Call& call, System& system, const NativePath& path,
                                  bool confirmed) {
    const NativePath folder = VELL_TRY(trimmed_full_path(system, path));
    VELL_TRY(check_no_root(folder));
    if (!confirmed &&
        (!call.can_ask_user() ||
         !system.desktop().confirm(call.main_window(), deletion_question(last_name(folder.wide)))))
        return Failure{ErrorCode::NotConfirmed};
    if (!system.desktop().has_shell_operations())
        return Failure{ErrorCode::NotAvailable};
    void* const owner = call.can_ask_user() ? call.main_window() : nullptr;
    return delete_by_shell(system, folder, owner, messages_for(call));
}

} // namespace

Result<void> delete_folder(Call& call, System& system) {
    const params::SwitchSet switches = call.switches();
    const bool with_contents =
        call.option_is(contents_option, 1, switches, "-deleteAllSubFoldersAndAllContents");
    const NativePath given = VELL_TRY(path_to_change(call.path(1)));
    const NativePath path = native(without_trailing_separator(given.wide));
    switch (system.files().kind_of(path)) {
    case ItemKind::None:
        return Failure{ErrorCode::BadName};
    case ItemKind::File:
        return Failure{ErrorCode::FolderNotFound};
    case ItemKind::Folder:
        break;
    }
    VELL_TRY(check_no_root(path));
    if (with_contents)
        VELL_TRY(delete_with_contents(call, system, path, switches.has("noWarning")));
    else
        VELL_TRY(system.tree().remove_folder(path));
    call.set_done();
    return {};
}

Result<void> copy_folder(Call& call, System& system) {
    const FolderPaths given = VELL_TRY(folder_paths(call, system));
    if (!system.desktop().has_shell_operations())
        return Failure{ErrorCode::NotAvailable};
    FolderPaths full;
    full.source = VELL_TRY(trimmed_full_path(system, given.source));
    VELL_TRY(check_no_root(full.source));
    full.target = VELL_TRY(trimmed_full_path(system, given.target));
    VELL_TRY(copy_by_shell(system, full, messages_for(call)));
    call.set_done();
    return {};
}

Result<void> move_folder(Call& call, System& system) {
    const FolderPaths paths = VELL_TRY(folder_paths(call, system));
    const NativePath source = VELL_TRY(trimmed_full_path(system, paths.source));
    const NativePath target = VELL_TRY(trimmed_full_path(system, paths.target));
    if (is_inside(system, target.wide, source.wide))
        return Failure{ErrorCode::MoveIntoItself};
    VELL_TRY(check_no_root(source));
    VELL_TRY(system.tree().move(paths.source, paths.target));
    call.set_done();
    return {};
}

} // namespace vell::files
