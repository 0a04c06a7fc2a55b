// Checksums of files.
#pragma once

#include "src/params/call.h"
#include "src/system/file_access.h"

#include <functional>
#include <vector>

namespace vell::files {

enum class DigestAlgorithm : std::uint8_t { Md5, Sha1 };

// A checksum in the making.
class Digest {
  public:
    Digest() = default;
    Digest(const Digest&) = delete;
    Digest& operator=(const Digest&) = delete;
    virtual ~Digest() = default;

    virtual Result<void> add(std::span<const char> bytes) = 0;
    // The checksum of all that was added; nothing may follow.
    virtual Result<std::vector<std::uint8_t>> finish() = 0;
};

using DigestMaker = std::function<Result<std::unique_ptr<Digest>>(DigestAlgorithm)>;

// The system's implementation.
Result<std::unique_ptr<Digest>> system_digest(DigestAlgorithm algorithm);

// VlFile_GetFileHash( switches ; filePath ): the checksum of the file's bytes in lowercase
// hexadecimal digits: SHA-1 with "-SHA1" or "-Hash_SHA1", else MD5. With "-Colons" a ":" stands
// between the bytes. Busy while anything else has the file open; any failure to read to its end is
// reported, never a checksum of a part.
Result<void> get_file_hash(params::Call& call, FileSystem& files, const DigestMaker& make_digest);
inline Result<void> get_file_hash(params::Call& call) {
    return get_file_hash(call, system_files(), system_digest);
}

} // namespace vell::files
