#include "src/files/tree/tree.h"

#include "src/base/number_text.h"
#include "src/base/utf16.h"
#include "src/base/utf8.h"
#include "src/files/paths/path_parts.h"
#include "src/files/tree/item_names.h"
#include "src/system/system.h"

#include <algorithm>
#include <exception>
#include <span>
#include <string>

namespace vell::files {
namespace {

using params::Call;

// Options of the steps by position.
constexpr std::size_t create_folders_option = 2;
constexpr std::size_t other_volumes_option = 3;

enum class Transfer : std::uint8_t { Copy, Move };

bool is_missing_parent(ErrorCode code) {
    return code == ErrorCode::FolderNotFound || code == ErrorCode::NotFound;
}

Result<NativePath> existing_path(Call& call, System& system, std::size_t index) {
    NativePath path = VELL_TRY(path_to_change(call.path(index)));
    if (system.files().kind_of(path) == ItemKind::None)
        return Failure{ErrorCode::NotFound};
    return path;
}

Result<NativePath> existing_file(Call& call, System& system, std::size_t index) {
    NativePath path = VELL_TRY(path_to_change(call.path(index)));
    if (system.files().kind_of(path) != ItemKind::File)
        return Failure{ErrorCode::NotFound};
    return path;
}

NativePath native(std::u16string_view path) {
    return {std::u16string(path), std::nullopt};
}

// How many of the folders above an item, the nearest first, have to be made or looked at: up to one
// that is there. The steps grow, so that a long path which leads nowhere costs few calls.
std::size_t count_missing(System& system, std::span<const std::u16string_view> above) {
    for (std::size_t i = 0; i < above.size(); i = 2 * i + 1)
        if (system.files().kind_of(native(above[i])) != ItemKind::None)
            return i + 1;
    return above.size();
}

// Makes a folder that must be there before another is made in it.
Result<void> make_folder_on_the_way(System& system, std::u16string_view given, NewFolders& made) {
    const NativePath path{path_as_cut(given), std::nullopt};
    const Result<void> created = system.tree().create_folder(path);
    if (created)
        made.add(given);
    else if (created.error() != ErrorCode::AlreadyExists ||
             system.files().kind_of(path) != ItemKind::Folder)
        return created;
    return {};
}

Result<void> transfer_file(Call& call, System& system, Transfer transfer) {
    call.debug_note("IN CopyMoveFile");
    const auto unresolved = [&](ErrorCode code) {
        call.debug_note("CopyMoveFile Error in TxtToParentFSSpecAndFileName ");
        return Failure{code};
    };
    const Result<NativePath> source = existing_path(call, system, 1);
    if (!source)
        return unresolved(source.error());
    call.debug_note("CopyMoveFile sourceFileTxt NOERR ");
    const Result<NativePath> target = path_to_make(system.files(), *source, call.path(2));
    if (!target)
        return unresolved(target.error());

    if (transfer == Transfer::Move) {
        VELL_TRY(system.tree().move(*source, *target));
    } else {
        // Windows reports a folder there as a lack of rights.
        if (system.files().kind_of(*target) == ItemKind::Folder)
            return Failure{ErrorCode::AlreadyExists};
        VELL_TRY(system.files().copy(*source, *target, Replace::No));
    }
    call.set_done();
    return {};
}

// "name_tmp<ticks>.extension" beside the file; without the dot when the name has none, since
// Windows would cut it off. Of a name that this makes too long the end is left out.
NativePath exchange_path(const NativePath& file, std::uint32_t ticks) {
    constexpr std::size_t longest_name = 255;
    const std::u16string_view path = without_trailing_separator(file.wide);
    const std::u16string_view name = last_name(path);
    const std::size_t dot = std::min(name.rfind(u'.'), name.size());
    const std::string middle = "_tmp" + to_text(std::uint64_t{ticks});
    const std::size_t room = longest_name - middle.size();
    std::u16string_view extension = name.substr(dot);
    if (extension.size() > room)
        extension = {};
    std::u16string result(folder_part(path));
    result += beginning(name.substr(0, dot), room - extension.size());
    result.append(middle.begin(), middle.end());
    result += extension;
    return {std::move(result), std::nullopt};
}

Result<void> exchange(Call& call, System& system, const NativePath& first,
                      const NativePath& second) {
    const NativePath between =
        exchange_path(second, static_cast<std::uint32_t>(system.clock().milliseconds()));
    VELL_TRY(system.tree().move(second, between));
    Result<void> moved = system.tree().move(first, second);
    if (moved)
        moved = system.tree().move(between, first);
    if (!moved)
        call.debug_note("ExchangeFiles: the second file is now " + utf8_from_utf16(between.wide));
    return moved;
}

} // namespace

NewFolders::~NewFolders() {
    try {
        for (; !lengths_.empty(); lengths_.pop_back()) {
            deepest_.resize(lengths_.back());
            static_cast<void>(tree_.remove_folder({path_as_cut(deepest_), std::nullopt}));
        }
    } catch (const std::exception&) {
        // What made the work end is the failure to report, not this one.
    }
}

void NewFolders::add(std::u16string_view path) {
    deepest_ = path;
    lengths_.push_back(path.size());
}

Result<void> make_folders(System& system, const NativePath& given, NewFolders& made) {
    const NativePath path = VELL_TRY(path_to_make(given));
    const Result<void> created = system.tree().create_folder(path);
    if (created)
        made.add(path.wide);
    if (created || !is_missing_parent(created.error()))
        return created;
    std::vector<std::u16string_view> above = folders_above(path.wide);
    above.resize(count_missing(system, above));
    for (const std::u16string_view folder : above)
        VELL_TRY(check_folder_on_the_way(folder));
    for (; !above.empty(); above.pop_back()) {
        const Result<void> there = make_folder_on_the_way(system, above.back(), made);
        if (!there)
            return made.any() ? Result<void>{} : there;
    }
    // Without a new folder above it this one failed for a reason of its own, or another program has
    // made what was missing in the meantime.
    const Result<void> created_at_last = system.tree().create_folder(path);
    if (created_at_last)
        made.add(path.wide);
    return made.any() ? Result<void>{} : created_at_last;
}

Result<void> create_file(Call& call, System& system) {
    const bool create_folders =
        call.option_is(create_folders_option, 1, call.switches(), "-CreateFolders");
    const NativePath path = VELL_TRY(path_to_make(call.path(1)));
    if (system.files().kind_of(path) != ItemKind::None)
        return Failure{ErrorCode::AlreadyExists};
    if (without_trailing_separator(path.wide).size() < path.wide.size())
        return Failure{ErrorCode::BadName}; // the form of a folder's path
    const NativePath parent = native(parent_path(path.wide));
    NewFolders made(system.tree());
    if (create_folders && !parent.wide.empty() &&
        system.files().kind_of(parent) != ItemKind::Folder) {
        VELL_TRY(check_folder_on_the_way(parent.wide));
        VELL_TRY(make_folders(system, parent, made));
    }
    VELL_TRY(system.files().create_new(path));
    made.keep();
    call.set_done();
    return {};
}

Result<void> create_folder(Call& call, System& system) {
    NewFolders made(system.tree());
    const NativePath path = VELL_TRY(call.path(1));
    VELL_TRY(make_folders(system, path, made));
    made.keep();
    call.set_done();
    return {};
}

Result<void> delete_file(Call& call, System& system) {
    const NativePath path = VELL_TRY(existing_path(call, system, 1));
    VELL_TRY(system.files().remove(path));
    call.set_done();
    return {};
}

Result<void> copy_file(Call& call, System& system) {
    return transfer_file(call, system, Transfer::Copy);
}

Result<void> move_file(Call& call, System& system) {
    return transfer_file(call, system, Transfer::Move);
}

Result<void> exchange_files(Call& call, System& system) {
    const bool other_volumes =
        call.option_is(other_volumes_option, 1, call.switches(), "-AllowDifferentVolumes");
    const NativePath first = VELL_TRY(existing_file(call, system, 1));
    const NativePath second = VELL_TRY(existing_file(call, system, 2));
    if (!other_volumes && !system.tree().on_same_volume(first, second))
        return Failure{ErrorCode::DifferentVolumes};
    if (first.wide != second.wide && !system.files().is_same_file(first, second))
        VELL_TRY(exchange(call, system, first, second));
    call.set_done();
    return {};
}

} // namespace vell::files
