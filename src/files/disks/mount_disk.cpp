#include "src/base/ascii.h"
#include "src/files/disks/disk_names.h"
#include "src/files/disks/disks.h"
#include "src/params/path_form.h"
#include "src/system/system.h"

#include <optional>
#include <string>

namespace vell::files {
namespace {

using params::Call;
using params::SwitchSet;

// Parameters by position; the step has the last one only.
constexpr std::size_t server_position = 2;
constexpr std::size_t disk_position = 3;
constexpr std::size_t user_position = 4;
constexpr std::size_t password_position = 5;
constexpr std::size_t reuse_position = 6;

bool reuses_letter(Call& call, const SwitchSet& switches) {
    return call.option(reuse_position, switches, "-ReuseDriveLetter") ||
           switches.has("-reuse drive letter");
}

// No letter, which is 0, without the switch.
constexpr char16_t no_letter = 0;

Result<char16_t> wanted_letter(const SwitchSet& switches) {
    constexpr std::string_view name = "-DriveLetter";
    if (!switches.has(name))
        return no_letter;
    std::string value = switches.value(name, 100).substr(name.size());
    value.erase(0, value.find_first_not_of("= "));
    value.erase(value.find_last_not_of(" :\\") + 1);
    if (value.size() != 1 || !is_letter(value[0]))
        return Failure{ErrorCode::BadName};
    return capital(static_cast<char16_t>(value[0]));
}

std::optional<char16_t> letter_of_share(System& system, const std::u16string& share) {
    for (char16_t letter = u'A'; letter <= u'Z'; ++letter)
        if (is_used(system.disks().letters(), letter) &&
            system.tree().equal_ignoring_case(system.disks().share_of(letter), share))
            return letter;
    return std::nullopt;
}

Result<void> connect_letter(System& system, ShareConnection& connection, char16_t letter) {
    connection.drive = {letter, u':'};
    return system.disks().connect(connection);
}

// Connects to the last letter that is free, as users are used to; A to C are not taken.
Result<char16_t> connect_free_letter(System& system, ShareConnection& connection) {
    for (char16_t letter = u'Z'; letter > u'C'; --letter) {
        if (is_used(system.disks().letters(), letter))
            continue;
        const auto connected = connect_letter(system, connection, letter);
        if (connected)
            return letter;
        // The letter may belong to a connection that is not there at the moment.
        if (connected.error() != ErrorCode::VolumeOnline)
            return Failure{connected.error()};
    }
    return Failure{ErrorCode::NoFreeDriveLetter};
}

Result<Disk> mount(Call& call, System& system, ShareConnection& connection) {
    const SwitchSet switches = call.switches();
    Disk disk{std::nullopt, connection.share};
    const char16_t wanted = VELL_TRY(wanted_letter(switches));
    if (wanted == no_letter && switches.has("-WithoutDriveLetter")) {
        VELL_TRY(system.disks().connect(connection));
        return disk;
    }
    disk.letter = letter_of_share(system, connection.share);
    if (disk.letter && reuses_letter(call, switches))
        return disk;
    if (wanted != no_letter) {
        if (is_used(system.disks().letters(), wanted))
            return Failure{ErrorCode::VolumeOnline};
        VELL_TRY(connect_letter(system, connection, wanted));
        disk.letter = wanted;
    } else {
        if (disk.letter)
            return Failure{ErrorCode::VolumeOnline};
        disk.letter = VELL_TRY(connect_free_letter(system, connection));
    }
    return disk;
}

} // namespace

Result<void> mount_disk(Call& call, System& system) {
    const SwitchSet switches = call.switches();
    ShareConnection connection;
    connection.share = VELL_TRY(share_name(call.text(server_position), call.text(disk_position)));
    connection.user = call.text(user_position);
    connection.password = call.text(password_position);
    connection.is_kept = switches.has("-Persistent");
    for (const std::u16string* text : {&connection.user, &connection.password})
        if (text->find(u'\0') != std::u16string::npos)
            return Failure{ErrorCode::BadParameter}; // Windows would cut it off there
    const Disk disk = VELL_TRY(mount(call, system, connection));
    if (switches.has("-ReturnPath"))
        call.set_text(params::path_result(switches, disk.root()));
    else
        call.set_done();
    return {};
}

Result<void> unmount_disk(Call& call, System& system) {
    const Disk disk = VELL_TRY(find_disk(system, call.text(1), Below::Refused));
    const OpenFiles open_files =
        call.switches().has("-Force") ? OpenFiles::CutOff : OpenFiles::Refuse;
    if (!disk.letter) {
        VELL_TRY(system.disks().disconnect(disk.share, open_files));
        call.set_done();
        return {};
    }
    switch (system.disks().type_of(disk.root())) {
    case DiskType::Network:
        VELL_TRY(system.disks().disconnect({*disk.letter, u':'}, open_files));
        break;
    case DiskType::Removable:
    case DiskType::Optical:
        if (*disk.letter == system.disks().system_letter())
            return Failure{ErrorCode::Busy};
        VELL_TRY(system.disks().eject(*disk.letter, open_files));
        break;
    default:
        return Failure{*disk.letter == system.disks().system_letter() ? ErrorCode::Busy
                                                                      : ErrorCode::NotSupported};
    }
    call.set_done();
    return {};
}

} // namespace vell::files
