#include "src/files/contents/contents_dialog.h"

#include "src/files/contents/contents.h"
#include "src/files/desktop/select_dialogs.h"
#include "src/files/paths/defaults.h"
#include "src/system/system.h"

namespace vell::files {
namespace {

using params::Call;
using params::LineEndings;
using params::SwitchSet;
using params::TextEncoding;

// Parameters by position; the step has the last two only.
constexpr std::size_t prompt_position = 1;
constexpr std::size_t folder_position = 2;
constexpr std::size_t encoding_position = 3;
constexpr std::size_t line_endings_position = 4;

LineEndings line_endings_of(Call& call, const SwitchSet& switches) {
    const std::int32_t option = call.step_option(line_endings_position);
    if (option == Call::not_given)
        return reading_line_endings(switches);
    return option != 0 ? LineEndings::Host : LineEndings::Keep;
}

} // namespace

Result<void> contents_dialog(Call& call, System& system) {
    if (!call.can_ask_user())
        return Failure{ErrorCode::DialogNotAllowed};
    const SwitchSet switches = call.switches();
    FileDialog dialog;
    dialog.title = call.text(prompt_position);
    dialog.types = defaults().type();
    dialog.owner = call.main_window();
    if (dialog.title.empty())
        dialog.title = u"Select a file.";
    dialog.initial_folder = VELL_TRY(initial_folder(call, folder_position));

    const std::vector<std::u16string> selected = VELL_TRY(system.desktop().show(dialog));
    const NativePath chosen{selected.front(), std::nullopt};
    return give_contents(call, system.files(), chosen,
                         params::contents_encoding_of(switches, TextEncoding::Native,
                                                      call.step_option(encoding_position)),
                         line_endings_of(call, switches));
}

} // namespace vell::files
