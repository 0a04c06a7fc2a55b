#include "src/files/paths/item_paths.h"

#include "src/system/system.h"

namespace vell::files {
namespace {

std::u16string without_verbatim_prefix(const std::u16string& path) {
    constexpr std::u16string_view verbatim = u"\\\\?\\";
    constexpr std::u16string_view verbatim_network = u"\\\\?\\UNC\\";
    if (path.starts_with(verbatim_network))
        return u"\\\\" + path.substr(verbatim_network.size());
    return path.starts_with(verbatim) ? path.substr(verbatim.size()) : path;
}

} // namespace

Result<NativePath> full_path(TreeSystem& tree, const NativePath& path) {
    const std::u16string plain = without_verbatim_prefix(path.wide);
    std::u16string full = VELL_TRY(tree.absolute_path(plain));
    if (plain != path.wide && full != plain)
        return Failure{ErrorCode::BadName};
    return NativePath{std::move(full), std::nullopt};
}

Result<FoundItem> find_item(System& system, const NativePath& path) {
    const std::uint32_t attributes = VELL_TRY(system.properties().attributes(path));
    FoundItem found;
    found.path = VELL_TRY(full_path(system.tree(), path)).wide;
    found.is_folder = (attributes & bit(Attribute::Folder)) != 0;
    return found;
}

} // namespace vell::files
