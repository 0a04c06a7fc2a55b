// Checksums in the making.
#pragma once

#include "src/base/result.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace vell::files {

enum class DigestAlgorithm : std::uint8_t { Md5, Sha1, Sha256, Sha512 };

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

} // namespace vell::files
