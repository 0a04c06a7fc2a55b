#include "console/host/plugin_file.h"

#include "console/host/wide_text.h"
#include "console/model/unicode.h"

#include <windows.h>

#include <filesystem>
#include <vector>

namespace vell::console {

namespace {

// The FILEVERSION of the file's version resource; empty when it cannot be read.
std::string file_version_of(const std::wstring& path) {
    DWORD unused = 0;
    const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &unused);
    std::vector<char> resource(size);
    if (size == 0 || !GetFileVersionInfoW(path.c_str(), 0, size, resource.data()))
        return {};
    void* found = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(resource.data(), L"\\", &found, &length) ||
        length < sizeof(VS_FIXEDFILEINFO))
        return {};
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(found);
    return std::to_string(HIWORD(fixed->dwFileVersionMS)) + "." +
           std::to_string(LOWORD(fixed->dwFileVersionMS)) + "." +
           std::to_string(HIWORD(fixed->dwFileVersionLS)) + "." +
           std::to_string(LOWORD(fixed->dwFileVersionLS));
}

} // namespace

std::string windows_error_text(unsigned long code) {
    wchar_t buffer[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, code, 0, buffer, 512, nullptr);
    while (length > 0 && (buffer[length - 1] <= L' ' || buffer[length - 1] == L'.'))
        --length;
    const std::string number = "Windows error " + std::to_string(code);
    return length == 0 ? number : narrow({buffer, length}) + " (" + number + ")";
}

Result<PluginFile, std::string> open_plugin_file(const std::wstring& path) {
    const std::string shown = narrow(path);
    std::error_code code;
    const std::filesystem::path full = std::filesystem::absolute(path, code);
    if (code || GetFileAttributesW(full.c_str()) == INVALID_FILE_ATTRIBUTES)
        return Failure{"there is no plug-in file " + shown + "; --plugin names another"};
    if (!equal_ignoring_case(full.extension().u16string(), u".fmx64"))
        return Failure{shown + " is not a plug-in: its extension is not .fmx64"};

    PluginFile file;
    file.file_version = file_version_of(full.wstring());
    if (file.file_version.empty())
        return Failure{shown + " has no version resource, the host does not load it"};
    const HMODULE library = LoadLibraryW(full.c_str());
    if (!library)
        return Failure{shown + " cannot be loaded: " + windows_error_text(GetLastError())};
    file.library = library;
    file.entry = reinterpret_cast<host::EntryPoint>(
        reinterpret_cast<void*>(GetProcAddress(library, "FMExternCallProc")));
    if (!file.entry) {
        FreeLibrary(library);
        return Failure{shown + " does not export FMExternCallProc"};
    }
    return file;
}

void close_plugin_file(void* library) {
    FreeLibrary(static_cast<HMODULE>(library));
}

} // namespace vell::console
