#include "src/base/win32_com.h"
#include "src/base/win32_text.h"
#include "src/files/file_dialog.h"

#include <shobjidl.h>

namespace vell::files {
namespace {

Result<void> set_types(IFileOpenDialog& dialog, const std::u16string& types) {
    const std::wstring patterns = to_wide(file_patterns(types));
    if (patterns.empty())
        return {};
    const COMDLG_FILTERSPEC filters[] = {{patterns.c_str(), patterns.c_str()}, {L"*.*", L"*.*"}};
    return check_hresult(dialog.SetFileTypes(2, filters));
}

void set_initial_folder(IFileOpenDialog& dialog, const std::u16string& folder) {
    ComPointer<IShellItem> item;
    if (!folder.empty() && SUCCEEDED(SHCreateItemFromParsingName(as_wide(folder), nullptr,
                                                                 IID_IShellItem, item.out())))
        dialog.SetFolder(item.get());
}

} // namespace

Result<std::u16string> select_file(const FileDialog& wanted) {
    const ComApartment apartment;
    ComPointer<IFileOpenDialog> dialog;
    VELL_TRY(check_hresult(CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER,
                                            IID_IFileOpenDialog, dialog.out())));
    VELL_TRY(check_hresult(dialog->SetTitle(as_wide(wanted.title))));
    VELL_TRY(check_hresult(
        dialog->SetOptions(FOS_FORCEFILESYSTEM | FOS_FILEMUSTEXIST | FOS_NOCHANGEDIR)));
    VELL_TRY(set_types(*dialog.get(), wanted.types));
    set_initial_folder(*dialog.get(), wanted.initial_folder);
    VELL_TRY(check_hresult(dialog->Show(static_cast<HWND>(wanted.owner))));

    ComPointer<IShellItem> item;
    VELL_TRY(check_hresult(dialog->GetResult(item.typed_out())));
    wchar_t* name = nullptr;
    VELL_TRY(check_hresult(item->GetDisplayName(SIGDN_FILESYSPATH, &name)));
    const UniqueTaskText path(name);
    return to_utf16(path.get());
}

} // namespace vell::files
