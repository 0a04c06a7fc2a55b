#include "src/files/disks/disk_names.h"

#include "src/base/ascii.h"
#include "src/files/paths/path_parts.h"
#include "src/files/tree/item_names.h"
#include "src/params/paths.h"
#include "src/system/system.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

namespace vell::files {
namespace {

template <typename Visit>
void for_each_letter(std::uint32_t letters, Visit visit) {
    for (char16_t letter = u'A'; letter <= u'Z'; ++letter)
        if (is_used(letters, letter))
            visit(letter);
}

Disk disk_of(System& system, char16_t letter) {
    Disk disk{letter, {}};
    if (system.disks().type_of(drive_root(letter)) == DiskType::Network)
        disk.share = system.disks().share_of(letter);
    return disk;
}

// The letter of a name such as "c", "c:" or "c:\folder".
std::optional<char16_t> letter_of(std::u16string_view name) {
    if (name.empty() || !is_letter(name[0]) || (name.size() > 1 && name[1] != u':'))
        return std::nullopt;
    return capital(name[0]);
}

// The parts of a server's or share's name, which "/" and "\" separate.
std::vector<std::u16string_view> parts_of(std::u16string_view name) {
    std::vector<std::u16string_view> parts;
    while (!name.empty()) {
        const std::u16string_view part = name.substr(0, name.find_first_of(u"\\/"));
        if (!part.empty())
            parts.push_back(part);
        name.remove_prefix(std::min(part.size() + 1, name.size()));
    }
    return parts;
}

bool can_be_a_part(std::u16string_view part) {
    return check_name_characters(part).has_value() && part != u"." && part != u"..";
}

std::u16string joined(std::span<const std::u16string_view> parts) {
    std::u16string name = u"\\";
    for (const std::u16string_view part : parts)
        name.append(u"\\").append(part);
    return name;
}

Result<Disk> find_share(System& system, std::u16string_view name, Below below) {
    const std::vector<std::u16string_view> parts = parts_of(name);
    if (parts.size() < 2 || !std::ranges::all_of(parts, can_be_a_part))
        return Failure{ErrorCode::BadName};
    const std::u16string whole = joined(parts); // a letter may lead to a folder of the share
    Disk disk;
    for_each_letter(system.disks().letters(), [&](char16_t letter) {
        Disk candidate = disk_of(system, letter);
        if (!disk.letter && system.tree().equal_ignoring_case(candidate.share, whole))
            disk = std::move(candidate);
    });
    if (disk.letter)
        return disk;
    if (parts.size() > 2 && below == Below::Refused)
        return Failure{ErrorCode::BadName};
    disk.share = joined(std::span(parts).first(2));
    return disk;
}

// Whether the disk goes by this name. Servers are not asked: that may take long.
bool is_called(System& system, const Disk& disk, std::u16string_view name) {
    if (system.disks().type_of(disk.root()) == DiskType::Network)
        return system.tree().equal_ignoring_case(disk.share.substr(disk.share.rfind(u'\\') + 1),
                                                 name);
    const auto information = system.disks().information(disk.root());
    return information && system.tree().equal_ignoring_case(information.value().name, name);
}

Result<Disk> find_named(System& system, std::u16string_view name) {
    std::vector<Disk> found;
    for_each_letter(system.disks().letters(), [&](char16_t letter) {
        Disk disk = disk_of(system, letter);
        if (is_called(system, disk, name))
            found.push_back(std::move(disk));
    });
    if (found.empty())
        return Failure{ErrorCode::VolumeNotFound};
    if (found.size() > 1)
        return Failure{ErrorCode::BadName};
    return std::move(found.front());
}

// A share's name without what stands before its slashes in addresses and in the host's form.
std::u16string_view without_scheme(std::u16string_view name) {
    for (const std::u16string_view scheme : {u"smb:", u"file:"})
        if (starts_ignoring_case(name, scheme))
            return name.substr(scheme.size());
    return name;
}

} // namespace

std::u16string Disk::root() const {
    return letter ? drive_root(*letter) : share + u'\\';
}

Result<Disk> find_disk(System& system, std::u16string name, Below below) {
    VELL_TRY(params::strip_prefix(params::Accept::HostForms, name));
    if (params::classify(name) == params::PathKind::Smb)
        name.erase(0, name.find(u':') + 1);
    name = VELL_TRY(params::resolve(params::Accept::Nothing, std::move(name))).wide;
    std::ranges::replace(name, u'/', u'\\');
    if (name.starts_with(u"\\\\"))
        return find_share(system, name, below);
    const std::u16string_view item = without_trailing_separator(name);
    const std::optional<char16_t> letter = letter_of(item);
    if (letter && item.size() > 3 && below == Below::Refused)
        return Failure{ErrorCode::BadName};
    if (letter && is_used(system.disks().letters(), *letter))
        return disk_of(system, *letter);
    if (!letter)
        return can_be_a_part(item) ? find_named(system, item)
                                   : Result<Disk>(Failure{ErrorCode::BadName});
    Result<Disk> named = item.size() > 1 ? Result<Disk>(Failure{ErrorCode::VolumeNotFound})
                                         : find_named(system, item);
    // A policy hides disks among the letters. Asked about one, it refuses and notes the call.
    if (!named)
        static_cast<void>(system.disks().type_of(drive_root(*letter)));
    return named;
}

Result<std::u16string> share_name(std::u16string_view server, std::u16string_view disk) {
    server = without_scheme(server);
    disk = without_scheme(disk);
    std::vector<std::u16string_view> parts = parts_of(server);
    const std::vector<std::u16string_view> more = parts_of(disk);
    if (disk.starts_with(u"\\\\") || disk.starts_with(u"//")) {
        // The whole name, with the server in it.
        if (!parts.empty() &&
            (parts.size() > 1 || more.empty() || !equal_ignoring_case(parts[0], more[0])))
            return Failure{ErrorCode::BadName};
        parts.clear();
    } else if (parts.empty()) {
        return Failure{ErrorCode::BadParameter};
    }
    parts.insert(parts.end(), more.begin(), more.end());
    if (parts.size() < 2)
        return Failure{ErrorCode::BadParameter};
    if (!std::ranges::all_of(parts, can_be_a_part))
        return Failure{ErrorCode::BadName};
    return joined(parts);
}

} // namespace vell::files
