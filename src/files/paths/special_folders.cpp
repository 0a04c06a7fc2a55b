#include "src/files/paths/special_folders.h"

#include "src/base/ascii.h"
#include "src/params/path_form.h"
#include "src/system/system.h"

#include <algorithm>
#include <iterator>

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

constexpr bool is_name_character(char c) {
    return is_letter(c) || is_digit(c) || static_cast<unsigned char>(c) >= 0x80;
}

// The word that a name is, with or without "Folder" behind it; null when it is none.
const SpecialFolderWord* word_of(std::string_view name) {
    constexpr std::string_view suffix = "Folder";
    const auto is_word = [&](const SpecialFolderWord& row) {
        return equal_ignoring_case(name, row.word) ||
               (name.size() == row.word.size() + suffix.size() &&
                starts_ignoring_case(name, row.word) && ends_ignoring_case(name, suffix));
    };
    const auto row = std::ranges::find_if(words, is_word);
    return row == std::end(words) ? nullptr : row;
}

// Among the names in a text, whatever separates them; null when there is none.
const SpecialFolderWord* longest_word(std::string_view text) {
    const SpecialFolderWord* longest = nullptr;
    while (!text.empty()) {
        const auto end = std::ranges::find_if_not(text, is_name_character);
        const std::string_view name(text.begin(), end);
        const SpecialFolderWord* const word = word_of(name);
        if (word && (!longest || word->word.size() > longest->word.size()))
            longest = word;
        text.remove_prefix(std::min(name.size() + 1, text.size()));
    }
    return longest;
}

} // namespace

std::span<const SpecialFolderWord> special_folder_words() {
    return words;
}

Result<void> find_folder(params::Call& call, System& system) {
    const params::SwitchSet switches = call.switches();
    const SpecialFolderWord* const word = longest_word(switches.text());
    if (!word)
        return Failure{ErrorCode::BadParameter};
    const MakeFolder make = switches.has("-CreateFolder") ? MakeFolder::Yes : MakeFolder::No;
    std::u16string path = VELL_TRY(system.places().special_folder(word->folder, make));
    if (!path.ends_with(u'\\'))
        path += u'\\';
    call.set_text(params::path_result(switches, std::move(path)));
    return {};
}

} // namespace vell::files
