// Where Windows and the host have their things.
#include "src/system/places.h"
#include "src/windows/desktop/com.h"
#include "src/windows/parts.h"
#include "src/windows/storage/path.h"
#include "src/windows/text.h"

#include <knownfolders.h>
#include <shlobj.h>

namespace vell::windows {

using namespace files;

namespace {

// Null for those that are no known folders of the shell.
const KNOWNFOLDERID* known_folder(SpecialFolder folder) {
    switch (folder) {
    case SpecialFolder::Desktop:
        return &FOLDERID_Desktop;
    case SpecialFolder::Documents:
        return &FOLDERID_Documents;
    case SpecialFolder::Pictures:
        return &FOLDERID_Pictures;
    case SpecialFolder::Music:
        return &FOLDERID_Music;
    case SpecialFolder::Videos:
        return &FOLDERID_Videos;
    case SpecialFolder::Downloads:
        return &FOLDERID_Downloads;
    case SpecialFolder::Favourites:
        return &FOLDERID_Favorites;
    case SpecialFolder::Recent:
        return &FOLDERID_Recent;
    case SpecialFolder::SendTo:
        return &FOLDERID_SendTo;
    case SpecialFolder::Templates:
        return &FOLDERID_Templates;
    case SpecialFolder::Home:
        return &FOLDERID_Profile;
    case SpecialFolder::RoamingSettings:
        return &FOLDERID_RoamingAppData;
    case SpecialFolder::LocalSettings:
        return &FOLDERID_LocalAppData;
    case SpecialFolder::CommonSettings:
        return &FOLDERID_ProgramData;
    case SpecialFolder::Start:
        return &FOLDERID_Startup;
    case SpecialFolder::StartMenu:
        return &FOLDERID_StartMenu;
    case SpecialFolder::Programs:
        return &FOLDERID_Programs;
    case SpecialFolder::Users:
        return &FOLDERID_UserProfiles;
    case SpecialFolder::Public:
        return &FOLDERID_Public;
    case SpecialFolder::PublicDesktop:
        return &FOLDERID_PublicDesktop;
    case SpecialFolder::PublicDocuments:
        return &FOLDERID_PublicDocuments;
    case SpecialFolder::PublicPictures:
        return &FOLDERID_PublicPictures;
    case SpecialFolder::PublicMusic:
        return &FOLDERID_PublicMusic;
    case SpecialFolder::PublicVideos:
        return &FOLDERID_PublicVideos;
    case SpecialFolder::PublicDownloads:
        return &FOLDERID_PublicDownloads;
    case SpecialFolder::CommonStart:
        return &FOLDERID_CommonStartup;
    case SpecialFolder::CommonStartMenu:
        return &FOLDERID_CommonStartMenu;
    case SpecialFolder::CommonPrograms:
        return &FOLDERID_CommonPrograms;
    case SpecialFolder::CommonTemplates:
        return &FOLDERID_CommonTemplates;
    case SpecialFolder::Windows:
        return &FOLDERID_Windows;
    case SpecialFolder::System:
        return &FOLDERID_System;
    case SpecialFolder::System32Bit:
        return &FOLDERID_SystemX86;
    case SpecialFolder::Fonts:
        return &FOLDERID_Fonts;
    case SpecialFolder::Applications:
        return &FOLDERID_ProgramFiles;
    case SpecialFolder::Applications32Bit:
        return &FOLDERID_ProgramFilesX86;
    case SpecialFolder::CommonFiles:
        return &FOLDERID_ProgramFilesCommon;
    case SpecialFolder::Temporary:
    case SpecialFolder::Trash:
    case SpecialFolder::Extensions:
        return nullptr;
    }
    return nullptr;
}

Result<std::u16string> shell_folder(const KNOWNFOLDERID& id, DWORD flags) {
    wchar_t* text = nullptr;
    const HRESULT found = SHGetKnownFolderPath(id, flags, nullptr, &text);
    const UniqueTaskText path(text); // also after a failure
    VELL_TRY(check_hresult(found));
    return to_utf16(path.get());
}

Result<std::u16string> known_folder_path(const KNOWNFOLDERID& id, MakeFolder make) {
    auto path = shell_folder(id, make == MakeFolder::Yes ? KF_FLAG_CREATE : KF_FLAG_DEFAULT);
    if (path)
        return path;
    // Either the machine knows no such folder, or it is not there.
    if (!shell_folder(id, KF_FLAG_DONT_VERIFY))
        return Failure{ErrorCode::SystemFolderUnknown};
    const bool is_missing =
        path.error() == ErrorCode::NotFound || path.error() == ErrorCode::FolderNotFound;
    return Failure{is_missing ? ErrorCode::FolderNotFound : path.error()};
}

Result<std::u16string> path_of_program() {
    std::wstring path(32'767, L'\0'); // the longest path that Windows knows
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0)
        return Failure{last_error()};
    path.resize(length);
    return to_utf16(path);
}

// Where the host's program looks for plug-ins of all users.
Result<std::u16string> extensions_folder(MakeFolder make) {
    std::u16string path = VELL_TRY(path_of_program());
    path.erase(path.find_last_of(u'\\') + 1);
    path += u"Extensions";
    if (make == MakeFolder::Yes)
        CreateDirectoryW(as_wide(path), nullptr); // what became of it is seen below
    const DWORD attributes = GetFileAttributesW(as_wide(path));
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY))
        return Failure{ErrorCode::FolderNotFound};
    return path;
}

class Win32Places : public Places {
  public:
    Result<std::u16string> program_path() override { return path_of_program(); }

    Result<std::u16string> special_folder(SpecialFolder folder, MakeFolder make) override {
        if (const KNOWNFOLDERID* id = known_folder(folder))
            return known_folder_path(*id, make);
        if (folder == SpecialFolder::Extensions)
            return extensions_folder(make);
        if (folder != SpecialFolder::Temporary) // each disk has a recycle bin of its own
            return Failure{ErrorCode::NotSupported};
        const Result<std::wstring> temporary = temporary_folder();
        if (!temporary)
            return Failure{ErrorCode::SystemFolderUnknown};
        return to_utf16(*temporary);
    }
};

} // namespace

Places& places() {
    static Win32Places instance;
    return instance;
}

} // namespace vell::windows
