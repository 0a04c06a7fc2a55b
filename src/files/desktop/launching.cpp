#include "src/files/desktop/launching.h"

#include "src/base/ascii.h"
#include "src/files/paths/item_paths.h"
#include "src/files/paths/path_parts.h"
#include "src/system/system.h"

#include <algorithm>

namespace vell::files {
namespace {

using params::Call;
using params::SwitchSet;

Result<NativePath> path_to_show(Call& call) {
    if (!call.can_ask_user())
        return Failure{ErrorCode::DialogNotAllowed};
    return params::resolve(params::Accept::HostForms, call.text(1));
}

Result<FoundItem> find_for_shell(System& system, const NativePath& path) {
    FoundItem found = VELL_TRY(find_item(system, path));
    if (found.path.size() > longest_shell_path)
        return Failure{ErrorCode::PathTooLong};
    return found;
}

std::u16string verb_of(const SwitchSet& switches) {
    if (switches.has("-Print"))
        return u"print";
    if (switches.has("-Edit"))
        return u"edit";
    return switches.has("-Open") ? u"open" : u"";
}

bool is_web_scheme(std::u16string_view scheme) {
    std::string name;
    for (const char16_t unit : scheme)
        name += unit < 0x80 ? static_cast<char>(fold_ascii(unit)) : '?';
    constexpr std::string_view schemes[] = {"http", "https", "ftp", "mailto", "tel"};
    if (std::ranges::find(schemes, name) != std::end(schemes))
        return true;
    return name.starts_with("fmp") &&
           std::all_of(name.begin() + 3, name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Where the file is, or a program by its bare name.
Result<LaunchRequest> request_for(System& system, const NativePath& path) {
    LaunchRequest request;
    Result<FoundItem> found = find_for_shell(system, path);
    if (found) {
        request.target = found->path;
        request.working_folder = found->is_folder ? found->path : folder_part(found->path);
        return request;
    }
    const bool is_bare_name = path.wide.find_first_of(u"\\/:") == std::u16string::npos;
    if (!is_bare_name || found.error() != ErrorCode::NotFound)
        return Failure{found.error()};
    request.target = path.wide;
    return request;
}

} // namespace

std::optional<std::u16string> web_address(std::u16string_view text) {
    const std::size_t colon = text.find(u':');
    const auto is_control = [](char16_t unit) {
        return unit < u' ';
    };
    if (colon == std::u16string_view::npos || !is_web_scheme(text.substr(0, colon)) ||
        std::ranges::any_of(text, is_control))
        return std::nullopt;
    std::u16string address;
    for (const char16_t unit : text) {
        if (unit == u' ')
            address += u"%20";
        else if (unit == u'"')
            address += u"%22";
        else
            address += unit;
    }
    return address;
}

Result<void> launch(Call& call, System& system) {
    const NativePath path = VELL_TRY(path_to_show(call));
    const std::optional<std::u16string> address = web_address(path.wide);
    LaunchRequest request;
    if (address) {
        request.target = *address;
    } else {
        request = VELL_TRY(request_for(system, path));
        request.parameters = call.text(2);
        if (request.parameters.find(u'\0') != std::u16string::npos)
            return Failure{ErrorCode::BadParameter}; // Windows would cut them there
    }
    const SwitchSet switches = call.switches();
    request.verb = verb_of(switches);
    request.window = window_state_of(switches);
    request.owner = call.main_window();
    VELL_TRY(system.desktop().launch(request));
    call.set_done();
    return {};
}

Result<void> open_folder(Call& call, System& system) {
    const NativePath path = VELL_TRY(path_to_show(call));
    const Result<FoundItem> found = find_for_shell(system, path);
    if (!found)
        return Failure{found.error() == ErrorCode::NotFound ? ErrorCode::FolderNotFound
                                                            : found.error()};
    if (!found->is_folder)
        return Failure{ErrorCode::NotAFolder};
    LaunchRequest request;
    request.target = found->path;
    request.working_folder = found->path;
    request.verb = u"open";
    request.owner = call.main_window();
    VELL_TRY(system.desktop().launch(request));
    call.set_done();
    return {};
}

Result<void> reveal(Call& call, System& system) {
    const NativePath path = VELL_TRY(path_to_show(call));
    const FoundItem found = VELL_TRY(find_for_shell(system, path));
    if (found.is_folder && call.switches().has("-OpenFolder"))
        return open_folder(call, system);
    VELL_TRY(system.desktop().reveal(std::u16string(without_trailing_separator(found.path))));
    call.set_done();
    return {};
}

Result<void> bring_to_front(Call& call, System& system) {
    if (!call.can_ask_user())
        return Failure{ErrorCode::DialogNotAllowed};
    VELL_TRY(system.desktop().bring_to_front(call.main_window()));
    call.set_done();
    return {};
}

} // namespace vell::files
