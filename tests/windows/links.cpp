#include "tests/windows/links.h"

#include "tests/windows/plugin_fixture.h"
#include "tests/windows/wine.h"

#include <cstring>

namespace vell::test {
namespace {

std::wstring unix_path(const std::wstring& path) {
    using Convert = char*(CDECL*)(const wchar_t*);
    const auto convert = reinterpret_cast<Convert>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    char* const name = convert(path.c_str());
    std::wstring result(name, name + std::strlen(name));
    HeapFree(GetProcessHeap(), 0, name);
    return result;
}

} // namespace

bool make_link(const std::wstring& link, const std::wstring& target) {
    std::wstring command = L"cmd.exe /c mklink /J \"" + link + L"\" \"" + target + L"\"";
    // What Wine gives for a program of the system below are no handles of it.
    if (runs_in_wine())
        command = L"start.exe /unix /bin/ln -s \"" + unix_path(target) + L"\" \"" +
                  unix_path(link.substr(0, link.rfind(L'\\'))) + L"/" +
                  link.substr(link.rfind(L'\\') + 1) + L"\"";
    exit_code(start_program(command));
    for (int i = 0; i < 200; ++i, Sleep(10)) // programs of the system below are not waited for
        if (GetFileAttributesW(link.c_str()) != INVALID_FILE_ATTRIBUTES)
            return true;
    return false;
}

} // namespace vell::test
