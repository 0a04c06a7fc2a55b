// The folders that Windows and its users have for a purpose.
#pragma once

#include "src/params/call.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace vell::files {

enum class SpecialFolder : std::uint8_t {
    Desktop,
    Documents,
    Pictures,
    Music,
    Videos,
    Downloads,
    Favourites,
    Recent,
    SendTo,
    Templates,
    Home,
    RoamingSettings,
    LocalSettings,
    CommonSettings,
    Start,
    StartMenu,
    Programs,
    Users,
    Public,
    PublicDesktop,
    PublicDocuments,
    PublicPictures,
    PublicMusic,
    PublicVideos,
    PublicDownloads,
    CommonStart,
    CommonStartMenu,
    CommonPrograms,
    CommonTemplates,
    Windows,
    System,
    System32Bit,
    Fonts,
    Applications,
    Applications32Bit,
    CommonFiles,
    Temporary,
    Trash,
    Extensions, // of the host's program
};

struct SpecialFolderWord {
    std::string_view word;
    SpecialFolder folder;
};
// Several words may mean one folder.
std::span<const SpecialFolderWord> special_folder_words();

enum class MakeFolder : std::uint8_t { No, Yes };

// The path of a folder. FolderNotFound when it is not there, SystemFolderUnknown when this machine
// has none for the purpose, NotSupported for what is no folder.
using SpecialFolderSource =
    std::function<Result<std::u16string>(SpecialFolder folder, MakeFolder make)>;
Result<std::u16string> system_special_folder(SpecialFolder folder, MakeFolder make);

// VlFile_FindFolder( folderswitch ): the path, with "\" at its end, of the folder whose word is one
// of the names in the switch, such as "-DesktopFolder"; of several that of the longest one.
// "-CreateFolder" makes a folder of the user's that is not there yet. BadParameter without a word.
Result<void> find_folder(params::Call& call, const SpecialFolderSource& source);
inline Result<void> find_folder(params::Call& call) {
    return find_folder(call, system_special_folder);
}

} // namespace vell::files
