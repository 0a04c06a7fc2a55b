// What the system tells of disks and does with them: the seam below the functions on disks.
#pragma once

#include "src/base/result.h"

#include <cstdint>
#include <string>

namespace vell::files {

enum class DiskType : std::uint8_t { None, Unknown, Removable, Fixed, Network, Optical, Ram };

struct VolumeInformation {
    std::u16string name; // may be empty
    std::u16string file_system;
    std::uint32_t serial_number = 0;
    bool is_read_only = false;
};

struct DiskSpace {
    std::uint64_t total = 0;
    std::uint64_t free = 0; // of which the caller may use so much
};

struct ShareConnection {
    std::u16string share; // "\\server\share"
    std::u16string drive; // "Z:"; empty: a connection without a letter
    std::u16string user;  // empty: the one who is logged on
    std::u16string password;
    bool is_kept = false; // made again when the user logs on
};

enum class OpenFiles : std::uint8_t { Refuse, CutOff };

// Disks are given by their roots, "C:\" or "\\server\share\". Failures carry the codes of disks
// (disk_error in disk_names.h). Nothing shows a window, and no user is asked for anything.
class DiskSystem {
  public:
    virtual ~DiskSystem() = default;

    // Letters that lead to a disk or a drive: bit 0 is A.
    virtual std::uint32_t letters() = 0;
    virtual DiskType type_of(const std::u16string& root) = 0;
    virtual Result<VolumeInformation> information(const std::u16string& root) = 0;
    // Takes any folder, too: that of the disk on which it lies.
    virtual Result<DiskSpace> space(const std::u16string& root) = 0;
    // The share that a letter leads to; empty when it leads to none.
    virtual std::u16string share_of(char16_t letter) = 0;
    virtual char16_t system_letter() = 0;

    virtual Result<void> connect(const ShareConnection& connection) = 0;
    // A drive "Z:", or a share that is connected without a letter.
    virtual Result<void> disconnect(const std::u16string& name, OpenFiles open_files) = 0;
    // Dismounts the volume and opens the drive.
    virtual Result<void> eject(char16_t letter, OpenFiles open_files) = 0;
};

} // namespace vell::files
