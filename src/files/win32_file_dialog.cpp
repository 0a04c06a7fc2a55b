#include "src/base/win32_handle.h"
#include "src/base/win32_text.h"
#include "src/files/file_dialog.h"

#include <shobjidl.h>

#include <utility>

namespace vell::files {
namespace {

// COM for the calling thread, in the apartment that dialogs need, unless it has one already.
class ComApartment {
  public:
    ComApartment() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment() {
        if (SUCCEEDED(result_))
            CoUninitialize();
    }

  private:
    HRESULT result_;
};

// Owns one reference to a COM object.
template <typename T>
class ComPointer {
  public:
    ComPointer() = default;
    ComPointer(const ComPointer&) = delete;
    ComPointer& operator=(const ComPointer&) = delete;
    ~ComPointer() {
        if (object_)
            object_->Release();
    }
    T* operator->() const { return object_; }
    T* get() const { return object_; }
    void** out() { return reinterpret_cast<void**>(&object_); }
    T** typed_out() { return &object_; }

  private:
    T* object_ = nullptr;
};

struct TaskMemoryKind {
    using Type = wchar_t*;
    static wchar_t* empty() { return nullptr; }
    static void close(wchar_t* memory) { CoTaskMemFree(memory); }
};

// The Windows error inside an HRESULT where there is one; the low 16 bits of the others.
ErrorCode error_from(HRESULT result) {
    constexpr HRESULT cancelled = static_cast<HRESULT>(0x800704C7); // ERROR_CANCELLED
    if (result == cancelled)
        return ErrorCode::Cancelled;
    if (result == E_OUTOFMEMORY)
        return ErrorCode::OutOfMemory;
    return error_from_win32(static_cast<std::int32_t>(HRESULT_CODE(result)));
}

Result<void> check(HRESULT result) {
    if (FAILED(result))
        return Failure{error_from(result)};
    return {};
}

Result<void> set_types(IFileOpenDialog& dialog, const std::u16string& types) {
    const std::wstring patterns = to_wide(file_patterns(types));
    if (patterns.empty())
        return {};
    const COMDLG_FILTERSPEC filters[] = {{patterns.c_str(), patterns.c_str()}, {L"*.*", L"*.*"}};
    return check(dialog.SetFileTypes(2, filters));
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
    VELL_TRY(check(CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER,
                                    IID_IFileOpenDialog, dialog.out())));
    VELL_TRY(check(dialog->SetTitle(as_wide(wanted.title))));
    VELL_TRY(check(dialog->SetOptions(FOS_FORCEFILESYSTEM | FOS_FILEMUSTEXIST | FOS_NOCHANGEDIR)));
    VELL_TRY(set_types(*dialog.get(), wanted.types));
    set_initial_folder(*dialog.get(), wanted.initial_folder);
    VELL_TRY(check(dialog->Show(static_cast<HWND>(wanted.owner))));

    ComPointer<IShellItem> item;
    VELL_TRY(check(dialog->GetResult(item.typed_out())));
    wchar_t* name = nullptr;
    VELL_TRY(check(item->GetDisplayName(SIGDN_FILESYSPATH, &name)));
    const UniqueResource<TaskMemoryKind> path(name);
    return to_utf16(path.get());
}

} // namespace vell::files
