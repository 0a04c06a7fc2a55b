// The records of a ZIP archive, with the names and the order of PKWARE's APPNOTE, section 4.3. All
// integers are little-endian.
//
// `read` takes the fixed part from the start of some bytes, nullopt when they are too few or do not
// begin with the signature; `write` appends it. What follows the fixed part (names, extra fields,
// comments) is the caller's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vell::archive {

enum class Method : std::uint16_t { Stored = 0, Deflated = 8, Deflate64 = 9 };

// Bits of the general purpose flags (4.4.4).
enum class EntryFlag : std::uint16_t {
    Encrypted = 0x0001,
    PatchedData = 0x0020,
    Utf8 = 0x0800, // the name is UTF-8
};

constexpr bool has(std::uint16_t flags, EntryFlag flag) {
    return (flags & static_cast<std::uint16_t>(flag)) != 0;
}

// External attribute of a folder, as MS-DOS has it.
inline constexpr std::uint32_t folder_attribute = 0x10;

// 4.3.7
struct LocalFileHeader {
    static constexpr std::uint32_t signature = 0x04034B50;
    static constexpr std::size_t size = 30;

    std::uint16_t version_needed = 0;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint16_t last_mod_time = 0;
    std::uint16_t last_mod_date = 0;
    std::uint32_t crc32 = 0;
    std::uint32_t compressed_size = 0;
    std::uint32_t uncompressed_size = 0;
    std::uint16_t file_name_length = 0;
    std::uint16_t extra_field_length = 0;

    static std::optional<LocalFileHeader> read(std::string_view bytes);
    void write(std::string& bytes) const;
};

// 4.3.12
struct CentralDirectoryHeader {
    static constexpr std::uint32_t signature = 0x02014B50;
    static constexpr std::size_t size = 46;

    std::uint16_t version_made_by = 0;
    std::uint16_t version_needed = 0;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint16_t last_mod_time = 0;
    std::uint16_t last_mod_date = 0;
    std::uint32_t crc32 = 0;
    std::uint32_t compressed_size = 0;
    std::uint32_t uncompressed_size = 0;
    std::uint16_t file_name_length = 0;
    std::uint16_t extra_field_length = 0;
    std::uint16_t file_comment_length = 0;
    std::uint16_t disk_number_start = 0;
    std::uint16_t internal_attributes = 0;
    std::uint32_t external_attributes = 0;
    std::uint32_t local_header_offset = 0;

    static std::optional<CentralDirectoryHeader> read(std::string_view bytes);
    void write(std::string& bytes) const;
    // With the name, the extra field and the comment.
    std::size_t record_size() const {
        return size + file_name_length + extra_field_length + file_comment_length;
    }
};

// 4.3.16
struct EndOfCentralDirectory {
    static constexpr std::uint32_t signature = 0x06054B50;
    static constexpr std::size_t size = 22;

    std::uint16_t disk_number = 0;
    std::uint16_t directory_disk = 0;
    std::uint16_t entries_on_disk = 0;
    std::uint16_t total_entries = 0;
    std::uint32_t directory_size = 0;
    std::uint32_t directory_offset = 0;
    std::uint16_t comment_length = 0;

    static std::optional<EndOfCentralDirectory> read(std::string_view bytes);
    void write(std::string& bytes) const;
};

// 4.3.15
struct Zip64Locator {
    static constexpr std::uint32_t signature = 0x07064B50;
    static constexpr std::size_t size = 20;

    std::uint32_t end_record_disk = 0;
    std::uint64_t end_record_offset = 0;
    std::uint32_t total_disks = 0;

    static std::optional<Zip64Locator> read(std::string_view bytes);
};

// 4.3.14, as far as it is fixed. The signature is not looked at.
struct Zip64EndOfCentralDirectory {
    static constexpr std::size_t size = 56;

    std::uint64_t record_size = 0;
    std::uint16_t version_made_by = 0;
    std::uint16_t version_needed = 0;
    std::uint32_t disk_number = 0;
    std::uint32_t directory_disk = 0;
    std::uint64_t entries_on_disk = 0;
    std::uint64_t total_entries = 0;
    std::uint64_t directory_size = 0;
    std::uint64_t directory_offset = 0;

    static std::optional<Zip64EndOfCentralDirectory> read(std::string_view bytes);
};

// The compressed size in the block of the Zip64 extended information (4.5.3) that begins an extra
// field; nullopt when there is none.
std::optional<std::uint64_t> zip64_compressed_size(std::string_view extra_field);

} // namespace vell::archive
