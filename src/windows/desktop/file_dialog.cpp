#include "src/windows/desktop/file_dialog.h"

#include "src/files/desktop/file_patterns.h"
#include "src/files/paths/item_paths.h"
#include "src/files/paths/path_parts.h"
#include "src/windows/desktop/com.h"
#include "src/windows/parts.h"
#include "src/windows/text.h"

#include <shobjidl.h>

namespace vell::windows {

using namespace files;

namespace {

FILEOPENDIALOGOPTIONS options_of(const FileDialog& wanted) {
    FILEOPENDIALOGOPTIONS options = FOS_FORCEFILESYSTEM | FOS_NOCHANGEDIR | FOS_PATHMUSTEXIST;
    switch (wanted.kind) {
    case DialogKind::SelectFile:
        options |= FOS_FILEMUSTEXIST;
        break;
    case DialogKind::SelectFolder:
        options |= FOS_PICKFOLDERS;
        break;
    case DialogKind::SaveFile:
        options |= FOS_NOREADONLYRETURN;
        if (wanted.ask_before_replacing)
            options |= FOS_OVERWRITEPROMPT;
        break;
    }
    if (wanted.several)
        options |= FOS_ALLOWMULTISELECT;
    if (wanted.show_hidden)
        options |= FOS_FORCESHOWHIDDEN;
    return options;
}

Result<void> set_types(IFileDialog& dialog, const std::u16string& types) {
    const std::wstring patterns = to_wide(file_patterns(types));
    if (patterns.empty())
        return {};
    const COMDLG_FILTERSPEC filters[] = {{patterns.c_str(), patterns.c_str()}, {L"*.*", L"*.*"}};
    return check_hresult(dialog.SetFileTypes(2, filters));
}

// What cannot be made of it is left to the system.
void set_initial_folder(IFileDialog& dialog, const std::u16string& folder) {
    if (folder.empty())
        return;
    // The shell's names are full paths without "/".
    const Result<NativePath> path = full_path(tree(), {folder, std::nullopt});
    ComPtr<IShellItem> item;
    if (path &&
        SUCCEEDED(SHCreateItemFromParsingName(as_wide(path->wide), nullptr, IID_PPV_ARGS(&item))))
        dialog.SetFolder(item.Get());
}

// A name that the user types without an extension gets that of the proposed one, or the first of
// the types.
Result<void> set_name(IFileDialog& dialog, const FileDialog& wanted) {
    if (!wanted.name.empty())
        VELL_TRY(check_hresult(dialog.SetFileName(as_wide(wanted.name))));
    std::u16string extension(extension_of(wanted.name));
    if (extension.empty()) {
        const std::u16string patterns = file_patterns(wanted.types);
        extension = extension_of(patterns.substr(0, patterns.find(u';')));
    }
    if (extension.empty() || extension.find_first_of(u"*?") != std::u16string::npos)
        return {};
    return check_hresult(dialog.SetDefaultExtension(as_wide(extension)));
}

Result<std::u16string> path_of(IShellItem& item) {
    wchar_t* name = nullptr;
    VELL_TRY(check_hresult(item.GetDisplayName(SIGDN_FILESYSPATH, &name)));
    const UniqueTaskText path(name);
    return to_utf16(path.get());
}

Result<std::vector<std::u16string>> selected_paths(IFileOpenDialog& dialog) {
    ComPtr<IShellItemArray> items;
    VELL_TRY(check_hresult(dialog.GetResults(items.GetAddressOf())));
    DWORD count = 0;
    VELL_TRY(check_hresult(items->GetCount(&count)));
    std::vector<std::u16string> paths;
    for (DWORD i = 0; i < count; ++i) {
        ComPtr<IShellItem> item;
        VELL_TRY(check_hresult(items->GetItemAt(i, item.GetAddressOf())));
        paths.push_back(VELL_TRY(path_of(*item.Get())));
    }
    if (paths.empty())
        return Failure{ErrorCode::Cancelled};
    return paths;
}

} // namespace

Result<std::vector<std::u16string>> show_dialog(const FileDialog& wanted) {
    const ComApartment apartment;
    const bool saves = wanted.kind == DialogKind::SaveFile;
    ComPtr<IFileDialog> dialog;
    VELL_TRY(check_hresult(CoCreateInstance(saves ? CLSID_FileSaveDialog : CLSID_FileOpenDialog,
                                            nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&dialog))));
    VELL_TRY(check_hresult(dialog->SetTitle(as_wide(wanted.title))));
    VELL_TRY(check_hresult(dialog->SetOptions(options_of(wanted))));
    VELL_TRY(set_types(*dialog.Get(), wanted.types));
    if (saves)
        VELL_TRY(set_name(*dialog.Get(), wanted));
    set_initial_folder(*dialog.Get(), wanted.initial_folder);
    VELL_TRY(check_hresult(dialog->Show(static_cast<HWND>(wanted.owner))));

    if (!saves) {
        ComPtr<IFileOpenDialog> selection;
        VELL_TRY(check_hresult(dialog->QueryInterface(IID_PPV_ARGS(&selection))));
        return selected_paths(*selection.Get());
    }
    ComPtr<IShellItem> item;
    VELL_TRY(check_hresult(dialog->GetResult(item.GetAddressOf())));
    std::vector<std::u16string> paths;
    paths.push_back(VELL_TRY(path_of(*item.Get())));
    return paths;
}

} // namespace vell::windows
