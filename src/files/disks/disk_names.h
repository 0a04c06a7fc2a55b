// How users name disks and servers.
#pragma once

#include "src/system/disk_system.h"

#include <optional>

namespace vell::files {

// A disk by its letter, by its share, or both.
struct Disk {
    std::optional<char16_t> letter; // a capital
    std::u16string share;           // "\\server\share"; empty: no network disk, or not known

    std::u16string root() const; // "C:\" or "\\server\share\"
    bool operator==(const Disk&) const = default;
};

inline std::u16string drive_root(char16_t letter) {
    return {letter, u':', u'\\'};
}

// Whether a path below the disk may stand for it.
enum class Below : std::uint8_t { Refused, Accepted };

// The disk of a name: "C", "C:", "C:\", the host's forms of it, a share "\\server\share", the name
// of a local volume, or the last name of a connected share. Letters come before names. BadParameter
// for an empty name, ErrorAsPath, SeveralLines, BadName for anything that cannot name one disk (two
// volumes may have one name), VolumeNotFound when there is none.
Result<Disk> find_disk(DiskSystem& system, std::u16string name, Below below);

// "\\server\share" from what stands for both: "server", "\\server", "smb://server", with or without
// parts of the share's path; "share", "/share/folder", or the whole "\\server\share" (then the
// server is empty or the same). BadParameter when one is missing, BadName for what cannot be one.
Result<std::u16string> share_name(std::u16string_view server, std::u16string_view disk);

// The code of a Windows error that came from a disk or the network. A drive without a medium and a
// server that does not answer are VolumeOffline, what is unknown is VolumeNotFound, what is
// connected already VolumeOnline. What only the user can mend, such as a wrong password (86, 1326)
// or another user's connection to the server (1219), passes unchanged.
ErrorCode disk_error(std::int32_t win32_error);

} // namespace vell::files
