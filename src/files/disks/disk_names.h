// How users name disks and servers.
#pragma once

#include "src/base/ascii.h"
#include "src/system/system.h"

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

constexpr char16_t capital(char16_t letter) {
    return static_cast<char16_t>(fold_ascii(letter) - u'a' + u'A');
}

// Of the set of letters that DiskSystem gives.
constexpr bool is_used(std::uint32_t letters, char16_t letter) {
    return letters >> (letter - u'A') & 1;
}

// Whether a path below the disk may stand for it.
enum class Below : std::uint8_t { Refused, Accepted };

// The disk of a name: "C", "C:", "C:\", the host's forms of it, a share "\\server\share", the name
// of a local volume, or the last name of a connected share. Letters come before names. BadParameter
// for an empty name, ErrorAsPath, SeveralLines, BadName for anything that cannot name one disk (two
// volumes may have one name), VolumeNotFound when there is none.
Result<Disk> find_disk(System& system, std::u16string name, Below below);

// "\\server\share" from what stands for both: "server", "\\server", "smb://server", with or without
// parts of the share's path; "share", "/share/folder", or the whole "\\server\share" (then the
// server is empty or the same). BadParameter when one is missing, BadName for what cannot be one.
Result<std::u16string> share_name(std::u16string_view server, std::u16string_view disk);

} // namespace vell::files
