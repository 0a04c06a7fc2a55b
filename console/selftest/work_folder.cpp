#include "console/selftest/work_folder.h"

#include "src/windows/handle.h"

#include <string>
#include <string_view>

namespace vell::selftest {
namespace {

void remove_tree(const std::wstring& folder) {
    WIN32_FIND_DATAW item{};
    {
        const UniqueFind find(FindFirstFileW((folder + L"\\*").c_str(), &item));
        for (BOOL is_one = find ? TRUE : FALSE; is_one; is_one = FindNextFileW(find.get(), &item)) {
            const std::wstring_view name = item.cFileName;
            if (name == L"." || name == L"..")
                continue;
            const std::wstring path = folder + L"\\" + item.cFileName;
            const bool is_folder = (item.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            const bool is_link = (item.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
            if (!is_link)
                SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
            if (is_folder && !is_link)
                remove_tree(path);
            else if (is_folder)
                RemoveDirectoryW(path.c_str());
            else
                DeleteFileW(path.c_str());
        }
    }
    RemoveDirectoryW(folder.c_str());
}

} // namespace

// The programs that are started have their temporary folder in it.
WorkFolder::WorkFolder(const std::filesystem::path& above) {
    for (int i = 0; path_.empty(); ++i) {
        const std::filesystem::path path =
            above / (L"vell_" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(i));
        if (std::filesystem::create_directories(path))
            path_ = path;
    }
    const std::filesystem::path temporary = path_ / L"Temp";
    std::filesystem::create_directory(temporary);
    for (const wchar_t* variable : {L"TEMP", L"TMP"})
        SetEnvironmentVariableW(variable, temporary.c_str());
}

WorkFolder::~WorkFolder() {
    remove_tree(L"\\\\?\\" + path_.wstring()); // paths in it may be long
}

} // namespace vell::selftest
