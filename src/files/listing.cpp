#include "src/files/listing.h"

#include "src/base/ascii.h"
#include "src/files/folder_lister.h"
#include "src/files/folder_size.h"

#include <algorithm>
#include <string_view>

namespace vell::files {
namespace {

using params::Call;
using params::SwitchSet;

// The path of an existing folder.
Result<std::u16string> existing_folder(Call& call, FileSystem& files) {
    const NativePath folder = VELL_TRY(call.path(1, {.as_folder = true}));
    if (files.kind_of(folder) == ItemKind::Folder)
        return folder.wide;
    const Result<NativePath> item = call.path(1);
    const bool is_file = item && files.kind_of(item.value()) != ItemKind::None;
    return Failure{is_file ? ErrorCode::NotAFolder : ErrorCode::FolderNotFound};
}

Result<ListingOptions> listing_options(const SwitchSet& switches) {
    ListingOptions options;
    options.files = switches.has("files");
    // The word "folders" is also found in "-AddFolderSuffix", whose "Fol" is painted over for that.
    std::string words(switches.text());
    const std::size_t suffix = find_ignoring_case(words, "-AddFolderSuffix");
    if (suffix != std::string::npos) {
        options.folder_suffix = u"/";
        if (suffix + 7 < words.size())
            words.replace(suffix + 4, 3, "***");
    }
    options.folders = SwitchSet(words).has("folders");
    if (!options.files && !options.folders)
        return Failure{ErrorCode::BadParameter};
    options.point_folders = switches.has("showpointdirs");
    options.invisibles = switches.has("showinvisibles");
    options.aliases = switches.has("showaliases") || switches.has("showshortcuts");
    options.recursive = switches.has("-recursive");
    options.short_names = switches.has("shortnames");
    return options;
}

} // namespace

Result<void> list_folder(Call& call, FileSystem& files, FolderSource& folders) {
    if (call.parameter_count() < 2)
        return Failure{ErrorCode::BadParameter};
    const SwitchSet switches = call.switches();
    const std::u16string folder = VELL_TRY(existing_folder(call, files));
    ListingOptions options = VELL_TRY(listing_options(switches));
    std::u16string text;
    VELL_TRY(FolderLister(folders, std::move(options)).append(folder, text));
    if (!text.empty() && !switches.has("-ReturnAtEnd"))
        text.pop_back();
    call.set_text(text);
    return {};
}

Result<void> get_folder_size(Call& call, FileSystem& files, FolderSource& folders) {
    if (call.parameter_count() < 2)
        return Failure{ErrorCode::BadParameter};
    const std::u16string folder = VELL_TRY(existing_folder(call, files));
    const std::uint64_t size = VELL_TRY(folder_size(folders, folder));
    call.set_number(static_cast<std::int64_t>(size));
    return {};
}

} // namespace vell::files
