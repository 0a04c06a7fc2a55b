// What the system keeps about a file or folder beside its contents.
#pragma once

#include "src/system/file_access.h"

#include <cstdint>

namespace vell::files {

// Bits of a file's attributes, by the names and values of Windows.
enum class Attribute : std::uint32_t {
    ReadOnly = 0x1,
    Hidden = 0x2,
    Folder = 0x10,
    Archive = 0x20,
    Device = 0x40,
};

constexpr std::uint32_t bit(Attribute attribute) {
    return static_cast<std::uint32_t>(attribute);
}

class ItemProperties {
  public:
    virtual ~ItemProperties() = default;

    // A set of bits; others than those above may be in it.
    virtual Result<std::uint32_t> attributes(const NativePath& path) = 0;
    virtual Result<void> set_attributes(const NativePath& path, std::uint32_t attributes) = 0;
    // Length of a file in bytes, whoever has it open. Busy for a folder.
    virtual Result<std::uint64_t> size(const NativePath& path) = 0;
    // Whether nobody else has the file or folder open, however shared: opens it for a moment. Busy
    // when it may not be opened so, whoever else has it open.
    virtual Result<bool> is_unused(const NativePath& path, Permission permission) = 0;
};

// The properties of the operating system's files.
ItemProperties& system_properties();

} // namespace vell::files
