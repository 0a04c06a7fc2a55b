#include "src/files/special_folders.h"

#include "src/params/path_form.h"

namespace vell::files {
namespace {

constexpr SpecialFolderWord words[] = {
    {"Desktop", SpecialFolder::Desktop},
    {"Documents", SpecialFolder::Documents},
    {"Pictures", SpecialFolder::Pictures},
    {"Music", SpecialFolder::Music},
    {"Movies", SpecialFolder::Videos},
    {"Videos", SpecialFolder::Videos},
    {"Downloads", SpecialFolder::Downloads},
    {"Favorites", SpecialFolder::Favourites},
    {"Favourites", SpecialFolder::Favourites},
    {"Recent", SpecialFolder::Recent},
    {"SendTo", SpecialFolder::SendTo},
    {"Templates", SpecialFolder::Templates},
    {"Home", SpecialFolder::Home},
    {"UserFolder", SpecialFolder::Home},
    {"Preferences", SpecialFolder::RoamingSettings},
    {"AppData", SpecialFolder::RoamingSettings},
    {"ApplicationSupport", SpecialFolder::RoamingSettings},
    {"LocalAppData", SpecialFolder::LocalSettings},
    {"CommonAppData", SpecialFolder::CommonSettings},
    {"ProgramData", SpecialFolder::CommonSettings},
    {"Startup", SpecialFolder::Start},
    {"StartMenu", SpecialFolder::StartMenu},
    {"StartMenuPrograms", SpecialFolder::Programs},
    {"UserProfiles", SpecialFolder::Users},
    {"Public", SpecialFolder::Public},
    {"Shared", SpecialFolder::Public},
    {"PublicDesktop", SpecialFolder::PublicDesktop},
    {"PublicDocuments", SpecialFolder::PublicDocuments},
    {"SharedDocuments", SpecialFolder::PublicDocuments},
    {"PublicPictures", SpecialFolder::PublicPictures},
    {"PublicMusic", SpecialFolder::PublicMusic},
    {"PublicMovies", SpecialFolder::PublicVideos},
    {"PublicVideos", SpecialFolder::PublicVideos},
    {"PublicDownloads", SpecialFolder::PublicDownloads},
    {"CommonStartup", SpecialFolder::CommonStart},
    {"CommonStartMenu", SpecialFolder::CommonStartMenu},
    {"CommonStartMenuPrograms", SpecialFolder::CommonPrograms},
    {"CommonTemplates", SpecialFolder::CommonTemplates},
    {"Windows", SpecialFolder::Windows},
    {"System", SpecialFolder::System},
    {"SystemX86", SpecialFolder::System32Bit},
    {"Fonts", SpecialFolder::Fonts},
    {"Applications", SpecialFolder::Applications},
    {"ProgramFiles", SpecialFolder::Applications},
    {"ProgramFilesX86", SpecialFolder::Applications32Bit},
    {"CommonProgramFiles", SpecialFolder::CommonFiles},
    {"Temporary", SpecialFolder::Temporary},
    {"TempFolder", SpecialFolder::Temporary},
    {"Trash", SpecialFolder::Trash},
    {"RecycleBin", SpecialFolder::Trash},
    {"Extensions", SpecialFolder::Extensions},
};

} // namespace

std::span<const SpecialFolderWord> special_folder_words() {
    return words;
}

Result<void> find_folder(params::Call& call, const SpecialFolderSource& source) {
    if (call.parameter_count() < 1)
        return Failure{ErrorCode::BadParameter};
    const params::SwitchSet switches = call.switches();
    const SpecialFolderWord* longest = nullptr;
    for (const SpecialFolderWord& word : words)
        if (switches.has(word.word) && (!longest || word.word.size() > longest->word.size()))
            longest = &word;
    if (!longest)
        return Failure{ErrorCode::BadParameter};
    const MakeFolder make = switches.has("-CreateFolder") ? MakeFolder::Yes : MakeFolder::No;
    std::u16string path = VELL_TRY(source(longest->folder, make));
    if (!path.ends_with(u'\\'))
        path += u'\\';
    call.set_text(params::path_result(switches, std::move(path)));
    return {};
}

} // namespace vell::files
