// The changed directories of a TIFF file, behind its end.
#pragma once

#include "src/metadata/writing/exif_block.h"
#include "src/metadata/writing/file_edits.h"

namespace vell::metadata {

// Appends the directories that have changed with their new values, and lets the header lead to the
// first of them; all other bytes stay where they are, and so do all places that lead to them. The
// directories are linked (ExifBlock::link_directories). ResourceTooLarge for a file that would be
// longer than 4 GiB - 1.
Result<void> append_directories(ExifBlock& block, FileEdits& edits);

} // namespace vell::metadata
