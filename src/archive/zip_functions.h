// The functions on archives.
#pragma once

#include "src/archive/entry_path.h"
#include "src/params/call.h"

namespace vell::archive {

// VlFile_CreateZip( switches ; sourceFilePath ; destZipFilePath ): an archive of a file, or of
// everything in a folder, hidden items included; links are left out. ".zip" is appended to a
// destination without extension. "-DontAddEnclosingFolder" leaves the folder's own name out of the
// names inside, "-ForceUTF8Filenames" marks all of a folder's names as UTF-8.
//
// NotFound; AlreadyExists or IsAFolder for the destination, PlaceNotFound, CreationDenied,
// FileExists or BadArgument when it cannot be made; AddFailed or the code of the item that cannot
// be read, FinishFailed. No archive is left behind then.
Result<void> create_zip(params::Call& call, System& system);

// VlFile_UnZip( switches ; sourceZipFilePath ; destinationFolderPath ), the folder that holds the
// archive where none is given. An archive with several items at its top is expanded into a new
// folder of its name, unless "-DontCreateArchiveFolder". "-OverwriteExisting" lets items stand
// there already; "-Encoding=" tells how names are written that are not UTF-8.
//
// The first entry that fails ends the expansion; what has been expanded stays. Nothing is written
// outside the target folder or through a link inside it (BadName), and nothing at all from an
// archive whose entries share bytes (CorruptStructure).
Result<void> unzip(params::Call& call, System& system);

// VlFile_GetZipInfo( switches ; zipFilePath ): the names in an archive, a line end behind each.
// "-SkipHiddenMacOSXItems" and "-SkipDS_Store" leave out what macOS adds. With "-Format=JSON" an
// array of objects: "Name", "Type" ("file" or "folder"), "Size" and "CompressedSize" in bytes (not
// of Zip64 entries), "Modified" (local time, as the archive has it), "Method", "CRC32" and
// "Encrypted".
Result<void> get_zip_info(params::Call& call, System& system);

} // namespace vell::archive
