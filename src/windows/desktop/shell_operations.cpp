// Whole folders by the shell's file operation.
#include "src/windows/desktop/shell_operations.h"

#include "src/windows/error.h"
#include "src/windows/text.h"

#include <windows.h>

#include <shellapi.h>

namespace vell::windows {

using namespace files;

namespace {

using ShellFileOperation = int(WINAPI*)(SHFILEOPSTRUCTW*);

// Null on a system without a shell.
ShellFileOperation shell_file_operation() {
    static const auto operation = [] {
        const HMODULE shell = LoadLibraryExW(L"shell32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
        void* const address =
            shell ? reinterpret_cast<void*>(GetProcAddress(shell, "SHFileOperationW")) : nullptr;
        return reinterpret_cast<ShellFileOperation>(address);
    }();
    return operation;
}

// A list of one path, which a second zero ends.
std::wstring path_list(const NativePath& path) {
    return to_wide(path.wide) + L'\0';
}

ShellOutcome run_shell_operation(SHFILEOPSTRUCTW operation, ShellMessages messages) {
    if (messages == ShellMessages::Suppressed)
        operation.fFlags |= FOF_SILENT | FOF_NOERRORUI | FOF_NOCONFIRMATION;
    const int number = shell_file_operation()(&operation);
    const ErrorCode code =
        operation.wFunc == FO_DELETE ? deletion_error(number) : static_cast<ErrorCode>(number);
    return {code, operation.fAnyOperationsAborted != FALSE};
}

} // namespace

bool has_shell_operations() {
    return shell_file_operation() != nullptr;
}

ShellOutcome shell_copy(const NativePath& folder, const NativePath& target,
                        ShellMessages messages) {
    const std::wstring from = path_list(folder);
    const std::wstring to = path_list(target);
    SHFILEOPSTRUCTW operation{};
    operation.hwnd = messages == ShellMessages::Shown ? GetForegroundWindow() : nullptr;
    operation.wFunc = FO_COPY;
    operation.pFrom = from.c_str();
    operation.pTo = to.c_str();
    operation.fFlags = FOF_SIMPLEPROGRESS | FOF_NOCONFIRMMKDIR;
    operation.lpszProgressTitle = L"Copying Folder...";
    return run_shell_operation(operation, messages);
}

ShellOutcome shell_delete(const NativePath& folder, void* owner, ShellMessages messages) {
    const std::wstring from = path_list(folder);
    SHFILEOPSTRUCTW operation{};
    operation.hwnd = static_cast<HWND>(owner);
    operation.wFunc = FO_DELETE;
    operation.pFrom = from.c_str();
    operation.fFlags = FOF_SIMPLEPROGRESS | FOF_NOCONFIRMATION;
    return run_shell_operation(operation, messages);
}

} // namespace vell::windows
