// Functions on disks: local ones and shares of servers.
//
// A disk's name is its letter ("C", "C:", "C:\" and the host's forms), its share
// ("\\server\share"), or the name of its volume. VolumeNotFound when there is none of that name,
// BadName for what names no disk or more than one, VolumeOffline for a drive without a medium and
// for a server that cannot be reached. No function here shows a window.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_ListDisks( switches ): the disks that have a letter, one a line, such as "C:\".
// "-Fixed", "-Removable", "-Optical", "-Network", "-Ram" and "-Local" (all but network) choose by
// type, several of them more; "-ReadyOnly" leaves out those without a medium; "-VolumeNames" and
// "-ShareNames" give these instead, where a disk has one.
Result<void> list_disks(params::Call& call, System& system);

// VlFile_DiskInfo( switches ; diskname ): with one of the switches "-DiskPath", "-Type",
// "-ShareName", "-VolumeName", "-FileSystem", "-SerialNumber", "-ReadOnly", "-TotalSpace",
// "-FreeSpace" and "-UsedSpace" that value; with several a line "Name: value" for each in this
// order; with none, all of them. The name may also be a path on the disk. NotSupported for
// "-NumberOfFiles", which no Windows disk counts.
Result<void> disk_info(params::Call& call, System& system);

// VlFile_MountDisk( switches ; zone ; server ; disk ; { username ; password } ): connects a share
// to the last free drive letter, or that of "-DriveLetter=", or none with "-WithoutDriveLetter".
// VolumeOnline when it is connected or the letter is taken; with "-reuse drive letter", or the
// step's option, a letter that leads to the share already will do. "-Persistent" connects it again
// at the next log-on, "-ReturnPath" gives the disk's path instead of "0". The zone is not used.
Result<void> mount_disk(params::Call& call, System& system);

// VlFile_UnmountDisk( switches ; diskname ): ends the connection to a share, or ejects a removable
// disk. Busy when files are open on it, unless "-Force" is given, and for the disk of the system;
// NotSupported for other fixed disks.
Result<void> unmount_disk(params::Call& call, System& system);

} // namespace vell::files
