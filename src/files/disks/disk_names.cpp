#include "src/files/disks/disk_names.h"

#include "src/base/ascii.h"
#include "src/files/paths/path_parts.h"
#include "src/files/tree/item_names.h"
#include "src/params/paths.h"
#include "src/windows/error.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

namespace vell::files {
namespace {

constexpr char16_t capital(char16_t letter) {
    return static_cast<char16_t>(fold_ascii(letter) - u'a' + u'A');
}

bool is_used(std::uint32_t letters, char16_t letter) {
    return letters >> (letter - u'A') & 1;
}

template <typename Visit>
void for_each_letter(std::uint32_t letters, Visit visit) {
    for (char16_t letter = u'A'; letter <= u'Z'; ++letter)
        if (is_used(letters, letter))
            visit(letter);
}

Disk disk_of(DiskSystem& system, char16_t letter) {
    Disk disk{letter, {}};
    if (system.type_of(drive_root(letter)) == DiskType::Network)
        disk.share = system.share_of(letter);
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

Result<Disk> find_share(DiskSystem& system, std::u16string_view name, Below below) {
    const std::vector<std::u16string_view> parts = parts_of(name);
    if (parts.size() < 2 || !std::ranges::all_of(parts, can_be_a_part))
        return Failure{ErrorCode::BadName};
    const std::u16string whole = joined(parts); // a letter may lead to a folder of the share
    Disk disk;
    for_each_letter(system.letters(), [&](char16_t letter) {
        Disk candidate = disk_of(system, letter);
        if (!disk.letter && system.equal_ignoring_case(candidate.share, whole))
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
bool is_called(DiskSystem& system, const Disk& disk, std::u16string_view name) {
    if (system.type_of(disk.root()) == DiskType::Network)
        return system.equal_ignoring_case(disk.share.substr(disk.share.rfind(u'\\') + 1), name);
    const auto information = system.information(disk.root());
    return information && system.equal_ignoring_case(information.value().name, name);
}

Result<Disk> find_named(DiskSystem& system, std::u16string_view name) {
    std::vector<Disk> found;
    for_each_letter(system.letters(), [&](char16_t letter) {
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

Result<Disk> find_disk(DiskSystem& system, std::u16string name, Below below) {
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
    if (letter && is_used(system.letters(), *letter))
        return disk_of(system, *letter);
    if (letter && item.size() > 1)
        return Failure{ErrorCode::VolumeNotFound};
    if (!can_be_a_part(item))
        return Failure{ErrorCode::BadName};
    return find_named(system, item);
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

ErrorCode disk_error(std::int32_t win32_error) {
    struct Row {
        std::int32_t win32_error;
        ErrorCode code;
    };
    constexpr Row rows[] = {
        {3, ErrorCode::VolumeNotFound},    // ERROR_PATH_NOT_FOUND: of a drive's root
        {15, ErrorCode::VolumeNotFound},   // ERROR_INVALID_DRIVE
        {21, ErrorCode::VolumeOffline},    // ERROR_NOT_READY
        {51, ErrorCode::VolumeOffline},    // ERROR_REM_NOT_LIST
        {53, ErrorCode::VolumeOffline},    // ERROR_BAD_NETPATH: the server does not answer
        {55, ErrorCode::VolumeOffline},    // ERROR_DEV_NOT_EXIST
        {64, ErrorCode::VolumeOffline},    // ERROR_NETNAME_DELETED
        {66, ErrorCode::BadName},          // ERROR_BAD_DEV_TYPE: a printer, for example
        {67, ErrorCode::VolumeNotFound},   // ERROR_BAD_NET_NAME: the server has no such share
        {85, ErrorCode::VolumeOnline},     // ERROR_ALREADY_ASSIGNED
        {121, ErrorCode::VolumeOffline},   // ERROR_SEM_TIMEOUT
        {144, ErrorCode::VolumeNotFound},  // ERROR_DIR_NOT_ROOT: of a share's root
        {170, ErrorCode::Busy},            // ERROR_BUSY
        {1112, ErrorCode::VolumeOffline},  // ERROR_NO_MEDIA_IN_DRIVE
        {1167, ErrorCode::VolumeOffline},  // ERROR_DEVICE_NOT_CONNECTED
        {1200, ErrorCode::BadName},        // ERROR_BAD_DEVICE
        {1202, ErrorCode::VolumeOnline},   // ERROR_DEVICE_ALREADY_REMEMBERED
        {1203, ErrorCode::VolumeNotFound}, // ERROR_NO_NET_OR_BAD_PATH
        {1222, ErrorCode::VolumeOffline},  // ERROR_NO_NETWORK
        {1231, ErrorCode::VolumeOffline},  // ERROR_NETWORK_UNREACHABLE
        {2250, ErrorCode::VolumeNotFound}, // ERROR_NOT_CONNECTED
        {2401, ErrorCode::Busy},           // ERROR_OPEN_FILES
        {2404, ErrorCode::Busy},           // ERROR_DEVICE_IN_USE
    };
    const auto row = std::ranges::find(rows, win32_error, &Row::win32_error);
    return row == std::end(rows) ? error_from_win32(win32_error) : row->code;
}

} // namespace vell::files
