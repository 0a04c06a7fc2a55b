#include "src/files/paths/path_to.h"

#include "src/params/path_form.h"
#include "src/params/paths.h"
#include "src/system/system.h"

#include <algorithm>

namespace vell::files {
namespace {

using params::PathKind;

Result<std::u16string> current_file(params::Call& call) {
    std::u16string path = VELL_TRY(call.evaluate(u"Get ( FilePath )"));
    if (params::classify(path) != PathKind::File) // a hosted file has an "fmnet:" address
        return Failure{ErrorCode::NotFound};
    constexpr std::u16string_view prefix = u"file:";
    path.erase(0, prefix.size());
    const bool on_network = path.starts_with(u"//") && !path.starts_with(u"///");
    if (!on_network)
        path.erase(0, std::min(path.find_first_not_of(u'/'), path.size()));
    std::ranges::replace(path, u'/', u'\\');
    return path;
}

} // namespace

Result<void> get_path_to(params::Call& call, System& system) {
    const params::SwitchSet switches = call.switches();
    if (switches.has("currentFileName")) {
        call.set_text(params::path_result(switches, VELL_TRY(current_file(call))));
        return {};
    }
    const bool folder = switches.has("currentAppFolder");
    if (!folder && !switches.has("currentApplication"))
        return Failure{ErrorCode::BadParameter};
    std::u16string path = VELL_TRY(system.places().program_path());
    if (folder)
        path.erase(path.find_last_of(u'\\') + 1);
    call.set_text(params::path_result(switches, std::move(path)));
    return {};
}

} // namespace vell::files
