#include "src/params/path_form.h"

#include <algorithm>

namespace vell::params {

std::u16string host_form(std::u16string_view native) {
    constexpr std::u16string_view long_share = u"\\\\?\\UNC\\";
    constexpr std::u16string_view long_path = u"\\\\?\\";
    bool on_network = native.starts_with(u"\\\\") || native.starts_with(u"//");
    if (native.starts_with(long_share)) {
        native.remove_prefix(long_share.size());
    } else if (native.starts_with(long_path)) {
        native.remove_prefix(long_path.size());
        on_network = false;
    } else if (on_network) {
        native.remove_prefix(2);
    }
    std::u16string path(on_network ? u"file://" : u"filewin:/");
    path += native;
    std::ranges::replace(path, u'\\', u'/');
    return path;
}

std::u16string path_result(const SwitchSet& switches, std::u16string native) {
    if (switches.has("-FileMakerPathFormat"))
        return host_form(native);
    return native;
}

} // namespace vell::params
