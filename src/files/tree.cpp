#include "src/files/tree.h"

#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/files/path_parts.h"

#include <string>
#include <vector>

namespace vell::files {
namespace {

using params::Call;

enum class Transfer : std::uint8_t { Copy, Move };

bool is_missing_parent(ErrorCode code) {
    return code == ErrorCode::FolderNotFound || code == ErrorCode::NotFound;
}

Result<NativePath> existing_path(Call& call, TreeSystem& tree, std::size_t index) {
    NativePath path = VELL_TRY(call.path(index));
    if (tree.files().kind_of(path) == ItemKind::None)
        return Failure{ErrorCode::NotFound};
    return path;
}

Result<NativePath> existing_file(Call& call, TreeSystem& tree, std::size_t index) {
    NativePath path = VELL_TRY(call.path(index));
    if (tree.files().kind_of(path) != ItemKind::File)
        return Failure{ErrorCode::NotFound};
    return path;
}

Result<NativePath> path_to_make(Call& call, std::size_t index) {
    NativePath path = VELL_TRY(call.path(index));
    VELL_TRY(check_new_name(path.wide));
    return path;
}

// A folder that must be there before another is made in it.
enum class Parent : std::uint8_t { Made, WasThere };
Result<Parent> make_parent(TreeSystem& tree, const NativePath& path) {
    VELL_TRY(check_new_name(path.wide));
    const Result<void> made = tree.create_folder(path);
    if (made)
        return Parent::Made;
    if (made.error() == ErrorCode::AlreadyExists && tree.files().kind_of(path) == ItemKind::Folder)
        return Parent::WasThere;
    return Failure{made.error()};
}

Result<void> transfer_file(Call& call, TreeSystem& tree, Transfer transfer) {
    if (call.parameter_count() < 3)
        return Failure{ErrorCode::BadParameter};
    call.debug_note("IN CopyMoveFile");
    const auto unresolved = [&](ErrorCode code) {
        call.debug_note("CopyMoveFile Error in TxtToParentFSSpecAndFileName ");
        return Failure{code};
    };
    const Result<NativePath> source = existing_path(call, tree, 1);
    if (!source)
        return unresolved(source.error());
    call.debug_note("CopyMoveFile sourceFileTxt NOERR ");
    const Result<NativePath> target = path_to_make(call, 2);
    if (!target)
        return unresolved(target.error());

    if (transfer == Transfer::Move) {
        VELL_TRY(tree.move(*source, *target));
    } else {
        // Windows reports a folder there as a lack of rights.
        if (tree.files().kind_of(*target) == ItemKind::Folder)
            return Failure{ErrorCode::AlreadyExists};
        VELL_TRY(tree.files().copy(*source, *target, Replace::No));
    }
    call.set_done();
    return {};
}

// "name_tmp<ticks>.extension" beside the file; without the dot when the name has none, since
// Windows would cut it off.
NativePath exchange_path(const NativePath& file, std::uint32_t ticks) {
    const std::u16string_view path = file.wide;
    const std::u16string_view name = last_name(path);
    const std::size_t dot = name.rfind(u'.');
    const std::size_t stem_length = dot == std::u16string_view::npos ? name.size() : dot;
    const std::string number = to_text(std::uint64_t{ticks});
    std::u16string result(path.substr(0, path.size() - name.size() + stem_length));
    result += u"_tmp";
    result.append(number.begin(), number.end());
    result += name.substr(stem_length);
    return {std::move(result), std::nullopt};
}

Result<void> exchange(Call& call, TreeSystem& tree, const NativePath& first,
                      const NativePath& second) {
    const NativePath between = exchange_path(second, tree.tick_count());
    VELL_TRY(tree.move(second, between));
    Result<void> moved = tree.move(first, second);
    if (!moved && moved.error() == ErrorCode::DifferentVolumes &&
        tree.move(between, second).has_value())
        return moved;
    if (moved)
        moved = tree.move(between, first);
    if (!moved)
        call.debug_note("ExchangeFiles: the second file is now " + utf8_from_utf16(between.wide));
    return moved;
}

} // namespace

Result<void> make_folders(TreeSystem& tree, const NativePath& path) {
    VELL_TRY(check_new_name(path.wide));
    const Result<void> made = tree.create_folder(path);
    if (made || !is_missing_parent(made.error()))
        return made;
    // Up to the first folder that can be made or is there, and down again.
    std::vector<NativePath> missing;
    Result<Parent> parent = Failure{made.error()};
    NativePath current = path;
    while (!parent && is_missing_parent(parent.error())) {
        current.wide = std::u16string(parent_path(current.wide));
        if (current.wide.empty())
            break;
        parent = make_parent(tree, current);
        if (!parent)
            missing.push_back(current);
    }
    bool any_made = VELL_TRY(parent) == Parent::Made;
    for (; !missing.empty(); missing.pop_back()) {
        parent = make_parent(tree, missing.back());
        if (!parent && !any_made)
            return Failure{parent.error()};
        any_made = any_made || *parent == Parent::Made;
    }
    // Without a new folder above it this one failed for a reason of its own, or another program has
    // made what was missing in the meantime.
    const Result<void> made_at_last = tree.create_folder(path);
    return any_made ? Result<void>{} : made_at_last;
}

Result<void> create_file(Call& call, TreeSystem& tree) {
    if (call.parameter_count() < 2)
        return Failure{ErrorCode::BadParameter};
    const bool create_folders =
        call.is_step() ? call.step_option(2) == 1 : call.switches().has("-CreateFolders");
    const NativePath path = VELL_TRY(path_to_make(call, 1));
    if (tree.files().kind_of(path) != ItemKind::None)
        return Failure{ErrorCode::AlreadyExists};
    if (without_trailing_separator(path.wide).size() < path.wide.size())
        return Failure{ErrorCode::BadName}; // the form of a folder's path
    const NativePath parent{std::u16string(parent_path(path.wide)), std::nullopt};
    if (create_folders && !parent.wide.empty() && tree.files().kind_of(parent) != ItemKind::Folder)
        VELL_TRY(make_folders(tree, parent));
    VELL_TRY(tree.files().create_new(path));
    call.set_done();
    return {};
}

Result<void> create_folder(Call& call, TreeSystem& tree) {
    if (call.parameter_count() < 2)
        return Failure{ErrorCode::BadParameter};
    const NativePath path = VELL_TRY(call.path(1));
    VELL_TRY(make_folders(tree, path));
    call.set_done();
    return {};
}

Result<void> delete_file(Call& call, TreeSystem& tree) {
    if (call.parameter_count() < 2)
        return Failure{ErrorCode::BadParameter};
    const NativePath path = VELL_TRY(existing_path(call, tree, 1));
    VELL_TRY(tree.files().remove(path));
    call.set_done();
    return {};
}

Result<void> copy_file(Call& call, TreeSystem& tree) {
    return transfer_file(call, tree, Transfer::Copy);
}

Result<void> move_file(Call& call, TreeSystem& tree) {
    return transfer_file(call, tree, Transfer::Move);
}

Result<void> exchange_files(Call& call, TreeSystem& tree) {
    if (call.parameter_count() < 3)
        return Failure{ErrorCode::BadParameter};
    const bool other_volumes =
        call.is_step() ? call.step_option(3) == 1 : call.switches().has("-AllowDifferentVolumes");
    const NativePath first = VELL_TRY(existing_file(call, tree, 1));
    const NativePath second = VELL_TRY(existing_file(call, tree, 2));
    if (!other_volumes && !tree.on_same_volume(first, second))
        return Failure{ErrorCode::DifferentVolumes};
    if (first.wide != second.wide && !tree.files().is_same_file(first, second))
        VELL_TRY(exchange(call, tree, first, second));
    call.set_done();
    return {};
}

} // namespace vell::files
