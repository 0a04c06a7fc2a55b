#include "src/pictures/get_icon.h"

#include "src/files/paths/item_paths.h"
#include "src/files/paths/path_parts.h"
#include "src/pictures/encoders.h"
#include "src/pictures/thumbnail_request.h"
#include "src/system/system.h"

namespace vell::pictures {

Result<void> get_icon(params::Call& call, System& system) {
    constexpr std::uint32_t least_size = 16;
    constexpr std::uint32_t largest_size = 256;
    constexpr std::uint32_t usual_size = 32;
    constexpr std::size_t name_position = 2;
    const params::SwitchSet switches = call.switches();
    const std::uint32_t size =
        VELL_TRY(number_in_range(switches, "-MaxSize", least_size, largest_size, usual_size));
    const bool by_extension = switches.has("-ByExtension");
    params::NativePath path = VELL_TRY(call.path(1));
    if (!by_extension)
        path = VELL_TRY(files::full_path(system.tree(), path));

    const Picture icon = VELL_TRY(
        system.pictures().icon(path, by_extension ? IconOf::Extension : IconOf::Item, size));
    const std::u16string name =
        picture_name(call.text(name_position), files::last_name(path.wide), u"png");
    call.set_container({"PNGf", name, encode_png(icon), icon.width, icon.height});
    return {};
}

} // namespace vell::pictures
