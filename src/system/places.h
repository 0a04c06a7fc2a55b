// Where the system and the host have their things.
#pragma once

#include "src/base/result.h"

#include <cstdint>
#include <string>

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

enum class MakeFolder : std::uint8_t { No, Yes };

class Places {
  public:
    virtual ~Places() = default;

    // The path of the program that runs, which is the host.
    virtual Result<std::u16string> program_path() = 0;
    // The path of a folder. FolderNotFound when it is not there, SystemFolderUnknown when this
    // machine has none for the purpose, NotSupported for what is no folder.
    virtual Result<std::u16string> special_folder(SpecialFolder folder, MakeFolder make) = 0;
};

} // namespace vell::files
