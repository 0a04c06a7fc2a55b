#include "src/files/listing/search.h"

#include "src/base/ascii.h"
#include "src/files/listing/listing_words.h"
#include "src/files/listing/name_pattern.h"
#include "src/files/paths/item_paths.h"
#include "src/files/paths/path_parts.h"
#include "src/files/tree/item_names.h"
#include "src/params/path_form.h"
#include "src/params/switch_number.h"
#include "src/system/system.h"

#include <string_view>

namespace vell::files {
namespace {

using params::Accept;
using params::Call;
using params::switch_number;
using params::SwitchSet;

constexpr std::size_t folder_position = 1;
constexpr std::size_t name_position = 2;

// The full path of the existing folder that is to be searched, with a separator at its end.
Result<std::u16string> searched_folder(Call& call, System& system) {
    std::u16string given = call.text(folder_position);
    VELL_TRY(params::strip_prefix(Accept::HostForms, given));
    if (given.size() == 1 && is_letter(given[0]))
        given += u':';
    const bool has_separator = given.ends_with(u'/');
    const NativePath native =
        VELL_TRY(params::resolve(Accept::Nothing, std::move(given), {.as_folder = !has_separator}));
    NativePath folder = VELL_TRY(full_path(system.tree(), native));
    if (!folder.wide.ends_with(u'\\'))
        folder.wide += u'\\';
    if (system.files().kind_of(folder) == ItemKind::Folder)
        return folder.wide;
    const NativePath item{std::u16string(without_trailing_separator(folder.wide)), std::nullopt};
    const bool is_file = system.files().kind_of(item) != ItemKind::None;
    return Failure{is_file ? ErrorCode::NotAFolder : ErrorCode::FolderNotFound};
}

Result<std::u16string> searched_name(Call& call) {
    const std::u16string name = call.text(name_position);
    if (name.empty())
        return Failure{ErrorCode::BadParameter};
    std::u16string characters = name;
    std::erase_if(characters, [](char16_t unit) { return unit == u'*' || unit == u'?'; });
    VELL_TRY(check_name_characters(characters));
    return name;
}

Result<void> limit_time(const SwitchSet& switches, System& system, ListingOptions& options) {
    constexpr std::string_view name = "-TimeoutSecs";
    constexpr std::int64_t longest = 86'400;
    if (!switches.has(name))
        return {};
    const std::int64_t seconds = switch_number(switches, name).value_or(longest + 1);
    if (seconds > longest)
        return Failure{ErrorCode::TimeLimitOutOfRange};
    const std::uint64_t end =
        system.clock().milliseconds() + static_cast<std::uint64_t>(seconds) * 1000;
    options.time_is_up = [&system, end] {
        return system.clock().milliseconds() > end;
    };
    return {};
}

Result<ListingOptions> search_options(const SwitchSet& switches, System& system) {
    ListingOptions options = listing_words(switches);
    if (!options.files && !options.folders)
        options.files = options.folders = true;
    options.recursive = options.any_depth = options.skip_unreadable = true;
    options.separator = switches.has("-FileMakerPathFormat") ? u'/' : u'\\';
    if (!options.folder_suffix.empty())
        options.folder_suffix = options.separator;
    if (switches.has("-MaxResults")) {
        const std::int64_t most = switch_number(switches, "-MaxResults").value_or(0);
        if (most == 0)
            return Failure{ErrorCode::NumberOutOfRange};
        options.most_lines = static_cast<std::uint64_t>(most);
    }
    VELL_TRY(limit_time(switches, system, options));
    return options;
}

} // namespace

Result<void> search(Call& call, System& system) {
    const SwitchSet switches = call.switches();
    const std::u16string folder = VELL_TRY(searched_folder(call, system));
    std::u16string name = VELL_TRY(searched_name(call));
    system.tree().fold_case(name);
    const NamePattern pattern(name,
                              switches.has("exactname") ? NameExtent::Whole : NameExtent::Part);

    ListingOptions options = VELL_TRY(search_options(switches, system));
    options.prefix = params::path_result(switches, folder);
    options.wants = [&](std::u16string_view candidate) {
        if (candidate == u"." || candidate == u"..")
            return false;
        name = candidate; // the room is used again
        system.tree().fold_case(name);
        return pattern.matches(name);
    };
    FolderLister lister(system.folders(), std::move(options));
    std::u16string text;
    VELL_TRY(lister.append(folder, text));
    if (lister.skipped() > 0)
        call.debug_note("Search: folders left out: " + std::to_string(lister.skipped()));
    if (!text.empty() && !switches.has("-ReturnAtEnd"))
        text.pop_back();
    call.set_text(text);
    return {};
}

} // namespace vell::files
