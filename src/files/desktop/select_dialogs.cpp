#include "src/files/desktop/select_dialogs.h"

#include "src/files/paths/defaults.h"
#include "src/files/tree/item_names.h"
#include "src/params/path_form.h"
#include "src/params/switch_text.h"
#include "src/system/system.h"

namespace vell::files {
namespace {

using params::Call;
using params::SwitchSet;

// Parameters by position. The options are those of the step "Show Select File Dialog".
constexpr std::size_t prompt_position = 1;
constexpr std::size_t folder_position = 2;
constexpr std::size_t name_position = 2; // where a file is saved; the folder follows
constexpr std::size_t folder_to_save_in_position = 3;
constexpr std::size_t several_option = 3;
constexpr std::size_t hidden_option = 4;

// What all dialogs have in common.
Result<FileDialog> dialog_of(Call& call, DialogKind kind, std::u16string_view default_prompt,
                             std::size_t folder_index) {
    if (!call.can_ask_user())
        return Failure{ErrorCode::DialogNotAllowed};
    FileDialog dialog;
    dialog.kind = kind;
    dialog.title = call.text(prompt_position);
    if (dialog.title.empty())
        dialog.title = default_prompt;
    dialog.initial_folder = VELL_TRY(initial_folder(call, folder_index));
    dialog.show_hidden = call.switches().has("-ShowInvisibles");
    dialog.owner = call.main_window();
    return dialog;
}

// A name alone, as it is proposed to the user.
Result<std::u16string> default_name(const std::u16string& name) {
    constexpr std::size_t longest_name = 255;
    if (name.starts_with(u"$$"))
        return Failure{ErrorCode::ErrorAsPath};
    if (name.size() > longest_name)
        return Failure{ErrorCode::BadName};
    VELL_TRY(check_name_characters(name));
    return VELL_TRY(path_to_make(NativePath{name, std::nullopt})).wide;
}

} // namespace

Result<std::u16string> initial_folder(Call& call, std::size_t index) {
    std::u16string text = call.text(index);
    if (text.empty())
        return text;
    constexpr params::Accept accepted = params::Accept::HostForms | params::Accept::SeveralLines;
    return VELL_TRY(params::resolve(accepted, std::move(text), {.as_folder = true})).wide;
}

Result<void> select_file_dialog(Call& call, System& system) {
    FileDialog dialog =
        VELL_TRY(dialog_of(call, DialogKind::SelectFile, u"Select a file.", folder_position));
    const SwitchSet switches = call.switches();
    dialog.types = params::switch_text(call, u"-Types=").value_or(default_file_types());
    dialog.several = call.option(several_option, switches, "-AllowMultipleFiles");
    dialog.show_hidden = call.option(hidden_option, switches, "-ShowInvisibles");

    std::vector<std::u16string> paths = VELL_TRY(system.desktop().show(dialog));
    std::u16string result;
    for (std::u16string& path : paths) {
        if (!result.empty())
            result += u'\r';
        result += params::path_result(switches, std::move(path));
    }
    call.set_text(result);
    return {};
}

Result<void> select_folder_dialog(Call& call, System& system) {
    const FileDialog dialog =
        VELL_TRY(dialog_of(call, DialogKind::SelectFolder, u"Select a folder.", folder_position));
    std::u16string path = VELL_TRY(system.desktop().show(dialog)).front();
    if (!path.ends_with(u'\\'))
        path += u'\\';
    call.set_text(params::path_result(call.switches(), std::move(path)));
    return {};
}

Result<void> save_file_dialog(Call& call, System& system) {
    FileDialog dialog = VELL_TRY(
        dialog_of(call, DialogKind::SaveFile, u"Save the file as:", folder_to_save_in_position));
    const SwitchSet switches = call.switches();
    dialog.name = VELL_TRY(default_name(call.text(name_position)));
    dialog.types = params::switch_text(call, u"-Types=").value_or(u"");
    dialog.ask_before_replacing = !switches.has("-NoOverwritePrompt");
    call.set_text(params::path_result(switches, VELL_TRY(system.desktop().show(dialog)).front()));
    return {};
}

} // namespace vell::files
