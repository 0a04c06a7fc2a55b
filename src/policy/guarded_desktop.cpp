#include "src/policy/guarded_desktop.h"

#include "src/files/desktop/launching.h"
#include "src/files/paths/path_parts.h"
#include "src/policy/limited.h"

namespace vell::policy {

using files::LaunchRequest;
using files::ShellOutcome;

namespace {

files::NativePath native(std::u16string_view path) {
    return {std::u16string(path), std::nullopt};
}

std::u16string root_of(char16_t letter) {
    return std::u16string{letter, u':', u'\\'};
}

// Files that lead the shell on to what they name.
bool leads_on(std::u16string_view path) {
    for (const std::u16string_view extension : {u"lnk", u"url", u"pif", u"scf", u"library-ms"})
        if (files::has_extension(path, extension))
            return true;
    return false;
}

} // namespace

// A web address opens no file. A program by its bare name may be anywhere.
Result<void> GuardedDesktop::launch(const LaunchRequest& request) {
    if (files::web_address(request.target))
        return inner().launch(request);
    const bool is_bare_name = request.target.find_first_of(u"\\/:") == std::u16string::npos;
    if (guard_.restricts_reading() && (is_bare_name || leads_on(request.target)))
        return PathGuard::refuse("path", request.target);
    if (is_bare_name)
        return inner().launch(request);
    LaunchRequest guarded = request;
    const Place place = VELL_TRY(guard_.place(native(request.target), Access::Read));
    guarded.target = place.path.wide;
    if (!request.working_folder.empty())
        VELL_TRY(guard_.check(native(request.working_folder), Access::Read));
    return inner().launch(guarded);
}

Result<void> GuardedDesktop::reveal(const std::u16string& path) {
    VELL_TRY(guard_.check(native(path), Access::Read, LastLink::Itself));
    return inner().reveal(path);
}

// What the user picks is a path like any other, for whoever opens it. A dialog whose folder is
// missing begins elsewhere.
Result<std::vector<std::u16string>> GuardedDesktop::show(const files::FileDialog& dialog) {
    if (!dialog.initial_folder.empty()) {
        const auto checked = guard_.check(native(dialog.initial_folder), Access::Read);
        if (!checked && checked.error() == ErrorCode::RefusedByPolicy)
            return Failure{checked.error()};
    }
    return inner().show(dialog);
}

// The shell copies what links lead to.
Result<void> GuardedDesktop::check_links_below(const NativePath& folder) {
    return system_.tree().for_each_below(folder, [&](const files::ItemBelow& item) -> Result<void> {
        VELL_TRY(check_time());
        if (item.is_link || system_.tree().is_link(item.path))
            VELL_TRY(guard_.check(item.path, Access::Read));
        return {};
    });
}

// Paths that the shell takes have few folders.
Result<void> GuardedDesktop::make_folder(const NativePath& folder) {
    auto place = guard_.place(folder, Access::Write, LastLink::Itself);
    const std::u16string_view above = files::parent_path(folder.wide);
    if (!place && place.error() == ErrorCode::FolderNotFound && !above.empty()) {
        VELL_TRY(make_folder(native(above)));
        place = guard_.place(folder, Access::Write, LastLink::Itself);
    }
    if (!place)
        return Failure{place.error()};
    const auto made = system_.tree().create_folder(place->path);
    return made || made.error() == ErrorCode::AlreadyExists ? Result<void>() : made;
}

// Where the shell puts a copy. It would itself make the folders that are missing above.
Result<Place> GuardedDesktop::place_of_copy(const NativePath& target) {
    auto place = guard_.place(target, Access::Write);
    if (place || place.error() != ErrorCode::FolderNotFound)
        return place;
    VELL_TRY(make_folder(native(files::parent_path(target.wide))));
    return guard_.place(target, Access::Write);
}

ShellOutcome GuardedDesktop::shell_copy(const NativePath& folder, const NativePath& target,
                                        files::ShellMessages messages) {
    const auto from = guard_.place(folder, Access::Read);
    const auto to = from ? place_of_copy(target) : guard_.place(target, Access::Write);
    for (const ErrorCode code :
         {from ? ErrorCode::Ok : from.error(), to ? ErrorCode::Ok : to.error()})
        if (code != ErrorCode::Ok)
            return {code, false};
    if (const auto links = check_links_below(from->path); !links)
        return {links.error(), false};
    return inner().shell_copy(from->path, to->path, messages);
}

ShellOutcome GuardedDesktop::shell_delete(const NativePath& folder, void* owner,
                                          files::ShellMessages messages) {
    const auto place = guard_.place(folder, Access::Delete, LastLink::Itself);
    if (!place)
        return {place.error(), false};
    return inner().shell_delete(place->path, owner, messages);
}

// A folder that the system has no path for as long as it is missing cannot be checked before it is
// made.
Result<std::u16string> GuardedPlaces::special_folder(files::SpecialFolder folder,
                                                     files::MakeFolder make) {
    auto path = system_.places().special_folder(folder, files::MakeFolder::No);
    if (!path && make == files::MakeFolder::Yes)
        return PathGuard::refuse("path");
    return path;
}

// The bytes name an item, and the system looks at it for what it writes down.
Result<std::string> GuardedPlaces::make(const files::ShellLink& link) {
    if (!link.target.empty())
        VELL_TRY(guard_.check(native(link.target), Access::Read));
    return system_.links().make(link);
}

// The system would search for the target, wherever it may be.
std::u16string GuardedPlaces::track(std::string_view bytes) {
    return guard_.restricts_reading() ? std::u16string() : system_.links().track(bytes);
}

bool GuardedDisks::allows(const std::u16string& root) {
    const std::u16string share =
        root.starts_with(u"\\\\") || root.empty() ? root : inner().share_of(root[0]);
    return share.empty() ? guard_.allows_disk(root) : guard_.allows_share(share);
}

std::uint32_t GuardedDisks::letters() {
    std::uint32_t letters = inner().letters();
    for (char16_t letter = u'A'; letter <= u'Z'; ++letter) {
        const std::uint32_t bit = std::uint32_t{1} << (letter - u'A');
        if ((letters & bit) != 0 && !allows(root_of(letter)))
            letters &= ~bit;
    }
    return letters;
}

files::DiskType GuardedDisks::type_of(const std::u16string& root) {
    if (allows(root))
        return inner().type_of(root);
    static_cast<void>(PathGuard::refuse("path", root));
    return files::DiskType::None;
}

Result<files::VolumeInformation> GuardedDisks::information(const std::u16string& root) {
    if (!allows(root))
        return PathGuard::refuse("path", root);
    return inner().information(root);
}

Result<files::DiskSpace> GuardedDisks::space(const std::u16string& root) {
    if (!allows(root))
        return PathGuard::refuse("path", root);
    return inner().space(root);
}

std::u16string GuardedDisks::share_of(char16_t letter) {
    return allows(root_of(letter)) ? inner().share_of(letter) : std::u16string();
}

Result<void> GuardedDisks::connect(const files::ShareConnection& connection) {
    if (!guard_.allows_share(connection.share))
        return PathGuard::refuse("path", connection.share);
    return inner().connect(connection);
}

Result<void> GuardedDisks::disconnect(const std::u16string& name, files::OpenFiles open_files) {
    if (!allows(name))
        return PathGuard::refuse("path", name);
    return inner().disconnect(name, open_files);
}

Result<void> GuardedDisks::eject(char16_t letter, files::OpenFiles open_files) {
    if (!allows(root_of(letter)))
        return PathGuard::refuse("path", root_of(letter));
    return inner().eject(letter, open_files);
}

} // namespace vell::policy
