// Whether what an archive holds has room on the disk.
#pragma once

#include "src/archive/zip_reader.h"

#include <functional>

namespace vell::archive {

// Where an entry goes; a failure ends the expansion there.
using EntryPlace = std::function<Result<NativePath>(const EntryInfo& entry)>;

// DiskFull when more bytes would be written than the disk of `folder` has free. Counted are the
// entries up to the first that is known to fail, which ends the expansion; files that are replaced
// give their own room back. Nothing is refused where the disk does not tell its room, or where it
// compresses what is written.
Result<void> check_room(System& system, ZipReader& reader, const NativePath& folder,
                        const EntryPlace& place_of);

} // namespace vell::archive
