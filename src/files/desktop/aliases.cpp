#include "src/files/desktop/aliases.h"

#include "src/base/ascii.h"
#include "src/files/contents/temporary_copy.h"
#include "src/files/paths/item_paths.h"
#include "src/files/paths/path_parts.h"
#include "src/files/paths/relative_path.h"
#include "src/files/tree/item_names.h"
#include "src/formats/shell_link_file.h"
#include "src/params/path_form.h"
#include "src/params/switch_text.h"
#include "src/system/system.h"

#include <algorithm>
#include <optional>

namespace vell::files {
namespace {

using formats::LinkFile;
using params::Call;
using params::SwitchSet;

constexpr std::uint64_t longest_link_file = 1024 * 1024;
constexpr int most_links_in_a_row = 16;

Result<NativePath> one_path(Call& call, std::size_t index) {
    return params::resolve(params::Accept::HostForms, call.text(index));
}

NativePath native(std::u16string path) {
    return {std::move(path), std::nullopt};
}

// A path that a switch gives, from its root; empty without the switch. A name alone and a variable
// of the system ("%SystemRoot%\…") stay as they are: Windows finds them when it uses the alias.
Result<std::u16string> path_of_switch(Call& call, System& system, std::u16string_view name) {
    const std::optional<std::u16string> value = params::switch_text(call, name);
    if (!value || value->empty())
        return std::u16string();
    if (value->starts_with(u'%') || value->find_first_of(u"\\/:") == std::u16string::npos)
        return *value;
    const NativePath path = VELL_TRY(params::resolve(params::Accept::HostForms, *value));
    return VELL_TRY(full_path(system.tree(), path)).wide;
}

// "path,index", as Windows writes places of icons; the index may be negative.
void split_icon_index(std::u16string& icon, std::int32_t& index) {
    const std::size_t comma = icon.rfind(u',');
    if (comma == std::u16string::npos)
        return;
    std::u16string_view digits = std::u16string_view(icon).substr(comma + 1);
    const bool is_negative = digits.starts_with(u'-');
    digits.remove_prefix(is_negative ? 1 : 0);
    constexpr std::size_t most_digits = 9;
    if (digits.empty() || digits.size() > most_digits ||
        !std::ranges::all_of(digits, is_digit<char16_t>))
        return;
    for (const char16_t digit : digits)
        index = index * 10 + (digit - u'0');
    if (is_negative)
        index = -index;
    icon.resize(comma);
}

Result<ShellLink> link_to(Call& call, System& system, const FoundItem& source) {
    if (source.path.size() > longest_shell_path)
        return Failure{ErrorCode::PathTooLong};
    ShellLink link;
    link.target = without_trailing_separator(source.path);
    link.arguments = params::switch_text(call, u"-Arguments=").value_or(u"");
    link.description = params::switch_text(call, u"-Description=").value_or(u"");
    link.working_folder = VELL_TRY(path_of_switch(call, system, u"-WorkingFolder="));
    if (link.working_folder.empty() && !source.is_folder)
        link.working_folder = without_trailing_separator(folder_part(source.path));
    link.icon = VELL_TRY(path_of_switch(call, system, u"-Icon="));
    split_icon_index(link.icon, link.icon_index);
    link.window = window_state_of(call.switches());
    return link;
}

// The full path of an alias that is to be made.
Result<NativePath> new_alias_path(Call& call, System& system) {
    NativePath path = VELL_TRY(path_to_make(one_path(call, 2)));
    const std::u16string_view name = last_name(path.wide);
    if (name.empty() || !path.wide.ends_with(name))
        return Failure{ErrorCode::BadName}; // a folder's path
    if (!is_shell_link(path.wide))
        path.wide += u".lnk";
    VELL_TRY(check_name_characters(last_name(path.wide)));
    return full_path(system.tree(), path);
}

Result<std::string> read_link_bytes(FileSystem& files, const NativePath& path) {
    const std::unique_ptr<File> file = VELL_TRY(files.open(path, Permission::Read));
    const std::uint64_t size = VELL_TRY(file->size());
    if (size > longest_link_file)
        return Failure{ErrorCode::CorruptStructure};
    std::string bytes(static_cast<std::size_t>(size), '\0');
    std::size_t done = 0;
    while (done < bytes.size()) {
        const std::size_t more = VELL_TRY(file->read(std::span(bytes).subspan(done)));
        if (more == 0)
            break;
        done += more;
    }
    bytes.resize(done);
    return bytes;
}

// What an alias leads to, in the order in which targets are looked for: where it was, where it is
// seen from the alias's own folder, and where the system has followed it to.
Result<FoundItem> find_target(System& system, const std::u16string& alias, std::string_view bytes,
                              const LinkFile& file, const ShellLink& link) {
    Result<FoundItem> found = find_item(system, native(link.target));
    if (!found && !file.relative_target.empty())
        found =
            find_item(system, native(std::u16string(folder_part(alias)) + file.relative_target));
    if (!found) {
        const std::u16string tracked = system.links().track(bytes);
        if (!tracked.empty())
            found = find_item(system, native(tracked));
    }
    if (!found)
        return Failure{ErrorCode::NotFound};
    return found;
}

std::u16string with_folder_end(std::u16string path, bool is_folder) {
    if (is_folder && !path.ends_with(u'\\'))
        path += u'\\';
    return path;
}

// What the alias keeps, where the switches ask for that.
std::optional<std::u16string> asked_detail(const SwitchSet& switches, const ShellLink& link) {
    if (switches.has("-GetArguments"))
        return link.arguments;
    if (switches.has("-GetDescription"))
        return link.description;
    if (switches.has("-GetWorkingFolder"))
        return with_folder_end(link.working_folder, !link.working_folder.empty());
    if (!switches.has("-GetIcon"))
        return std::nullopt;
    if (link.icon.empty() || link.icon_index == 0)
        return link.icon;
    const std::string index = std::to_string(link.icon_index);
    return link.icon + u',' + std::u16string(index.begin(), index.end());
}

} // namespace

Result<void> create_alias(Call& call, System& system) {
    const SwitchSet switches = call.switches();
    const NativePath source_path = VELL_TRY(one_path(call, 1));
    const FoundItem source = VELL_TRY(find_item(system, source_path));
    const NativePath alias = VELL_TRY(new_alias_path(call, system));
    const Replace replace = switches.has("-OverwriteExisting") ? Replace::Yes : Replace::No;
    const ItemKind existing = system.files().kind_of(alias);
    if (existing == ItemKind::Folder || (existing == ItemKind::File && replace == Replace::No))
        return Failure{ErrorCode::AlreadyExists};
    if (existing == ItemKind::File && system.files().is_same_file(native(source.path), alias))
        return Failure{ErrorCode::BadParameter}; // it would be lost, and lead to itself

    const ShellLink link = VELL_TRY(link_to(call, system, source));
    std::string bytes = VELL_TRY(system.links().make(link));
    if (switches.has("-Relative")) {
        const auto way = relative_path(folder_part(alias.wide), source.path);
        if (!way)
            return Failure{ErrorCode::DifferentVolumes};
        const auto related = formats::with_relative_target(bytes, *way);
        if (!related)
            return Failure{related.error().damage == formats::Damage::TooLarge
                               ? ErrorCode::PathTooLong
                               : ErrorCode::CorruptStructure};
        bytes = related.value();
    }
    VELL_TRY(write_whole_file(call, system.files(), alias, replace,
                              [&](File& file) { return file.write(bytes); }));
    call.set_done();
    return {};
}

Result<void> resolve_alias(Call& call, System& system) {
    const SwitchSet switches = call.switches();
    const NativePath path = VELL_TRY(one_path(call, 1));
    FoundItem item = VELL_TRY(find_item(system, path));
    for (int followed = 0; !item.is_folder && is_shell_link(item.path); ++followed) {
        if (followed == most_links_in_a_row)
            return Failure{ErrorCode::CorruptStructure};
        const std::string bytes = VELL_TRY(read_link_bytes(system.files(), native(item.path)));
        const auto file = formats::read_link_file(bytes);
        if (!file)
            return Failure{ErrorCode::CorruptStructure};
        const ShellLink link = VELL_TRY(system.links().read(bytes));
        if (const auto detail = asked_detail(switches, link)) {
            call.set_text(*detail);
            return {};
        }
        if (link.target.empty())
            return Failure{ErrorCode::NotSupported};
        const Result<FoundItem> target = find_target(system, item.path, bytes, *file, link);
        if (!target && !switches.has("-ReturnStoredTarget"))
            return Failure{target.error()};
        if (!target) {
            call.set_text(
                params::path_result(switches, with_folder_end(link.target, file->leads_to_folder)));
            return {};
        }
        item = *target;
    }
    call.set_text(params::path_result(switches, with_folder_end(item.path, item.is_folder)));
    return {};
}

} // namespace vell::files
