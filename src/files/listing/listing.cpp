#include "src/files/listing/listing.h"

#include "src/files/listing/folder_lister.h"
#include "src/files/listing/folder_size.h"
#include "src/files/listing/listing_as_json.h"
#include "src/files/listing/listing_words.h"
#include "src/system/system.h"

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

} // namespace

Result<void> list_folder(Call& call, System& system) {
    const SwitchSet switches = call.switches();
    const std::u16string folder = VELL_TRY(existing_folder(call, system.files()));
    ListingOptions options = listing_words(switches);
    if (!options.files && !options.folders)
        return Failure{ErrorCode::BadParameter};
    if (switches.has("-Format=JSON")) {
        call.set_text(VELL_TRY(listing_as_json(system, switches, folder, std::move(options))));
        return {};
    }
    std::u16string text;
    VELL_TRY(FolderLister(system.folders(), std::move(options)).append(folder, text));
    if (!text.empty() && !switches.has("-ReturnAtEnd"))
        text.pop_back();
    call.set_text(text);
    return {};
}

Result<void> get_folder_size(Call& call, System& system) {
    const std::u16string folder = VELL_TRY(existing_folder(call, system.files()));
    const std::uint64_t size = VELL_TRY(folder_size(system.folders(), folder));
    call.set_number(static_cast<std::int64_t>(size));
    return {};
}

} // namespace vell::files
