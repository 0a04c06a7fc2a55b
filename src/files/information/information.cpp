#include "src/files/information/information.h"

#include "src/files/paths/path_parts.h"
#include "src/system/system.h"

namespace vell::files {
namespace {

using params::Call;
using params::SwitchSet;

} // namespace

Result<void> exists(Call& call, System& system) {
    const Result<NativePath> path = call.path(1);
    call.set_number(path && system.files().kind_of(*path) != ItemKind::None);
    return {};
}

Result<void> get_type_of_item(Call& call, System& system) {
    const NativePath path = VELL_TRY(call.path(1));
    const Result<std::uint32_t> attributes = system.properties().attributes(path);
    if (!attributes)
        return Failure{ErrorCode::NotFound};
    if (*attributes & bit(Attribute::Device)) {
        call.set_literal("unknown");
        return {};
    }
    const bool is_folder = *attributes & bit(Attribute::Folder);
    const SwitchSet switches = call.switches();
    const bool tell_links = switches.has("-AddAliasInfo") || switches.has("-AddIsAlias");
    if (is_folder)
        call.set_literal("folder");
    else
        call.set_literal(tell_links && is_shell_link(path.wide) ? "file (alias)" : "file");
    return {};
}

Result<void> get_file_size(Call& call, System& system) {
    const NativePath path = VELL_TRY(call.path(1));
    call.set_number(static_cast<std::int64_t>(VELL_TRY(system.properties().size(path))));
    return {};
}

Result<void> get_resource_fork_size(Call& call, System&) {
    VELL_TRY(call.path(1));
    call.set_number(0);
    return {};
}

Result<void> get_file_name(Call& call, System&) {
    const NativePath path = VELL_TRY(call.path(1));
    call.set_text(last_name(path.wide));
    return {};
}

Result<void> get_extension(Call& call, System&) {
    const NativePath path = VELL_TRY(call.path(1));
    call.set_text(extension_of(path.wide));
    return {};
}

} // namespace vell::files
