// Checksums of files.
#pragma once

#include "src/params/call.h"

namespace vell::files {

// VlFile_GetFileHash( switches ; filePath ): the checksum of the file's bytes in lowercase
// hexadecimal digits: SHA-1 with "-SHA1" or "-Hash_SHA1", SHA-256 with "-SHA256", SHA-512 with
// "-SHA512" (the first of these that is given), else MD5. With "-Colons" a ":" stands between the
// bytes. Busy while anything else has the file open; any failure to read to its end is
// reported, never a checksum of a part.
Result<void> get_file_hash(params::Call& call, System& system);

} // namespace vell::files
