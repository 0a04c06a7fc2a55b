// The records of a ZIP archive, with the names and the order of PKWARE's APPNOTE, section 4.3. All
// integers are little-endian.
//
// A record is its fixed part; what follows that (names, extra fields, comments) is the caller's.
#pragma once

#include "src/formats/record.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <tuple>

namespace vell::formats::zip {

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
    static constexpr ByteOrder order = ByteOrder::Little;

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

    static constexpr auto fields() {
        return std::tuple{Field{4, &LocalFileHeader::version_needed},
                          Field{6, &LocalFileHeader::flags},
                          Field{8, &LocalFileHeader::method},
                          Field{10, &LocalFileHeader::last_mod_time},
                          Field{12, &LocalFileHeader::last_mod_date},
                          Field{14, &LocalFileHeader::crc32},
                          Field{18, &LocalFileHeader::compressed_size},
                          Field{22, &LocalFileHeader::uncompressed_size},
                          Field{26, &LocalFileHeader::file_name_length},
                          Field{28, &LocalFileHeader::extra_field_length}};
    }
};

// 4.3.12
struct CentralDirectoryHeader {
    static constexpr std::uint32_t signature = 0x02014B50;
    static constexpr std::size_t size = 46;
    static constexpr ByteOrder order = ByteOrder::Little;

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

    static constexpr auto fields() {
        return std::tuple{Field{4, &CentralDirectoryHeader::version_made_by},
                          Field{6, &CentralDirectoryHeader::version_needed},
                          Field{8, &CentralDirectoryHeader::flags},
                          Field{10, &CentralDirectoryHeader::method},
                          Field{12, &CentralDirectoryHeader::last_mod_time},
                          Field{14, &CentralDirectoryHeader::last_mod_date},
                          Field{16, &CentralDirectoryHeader::crc32},
                          Field{20, &CentralDirectoryHeader::compressed_size},
                          Field{24, &CentralDirectoryHeader::uncompressed_size},
                          Field{28, &CentralDirectoryHeader::file_name_length},
                          Field{30, &CentralDirectoryHeader::extra_field_length},
                          Field{32, &CentralDirectoryHeader::file_comment_length},
                          Field{34, &CentralDirectoryHeader::disk_number_start},
                          Field{36, &CentralDirectoryHeader::internal_attributes},
                          Field{38, &CentralDirectoryHeader::external_attributes},
                          Field{42, &CentralDirectoryHeader::local_header_offset}};
    }
    // With the name, the extra field and the comment.
    std::size_t record_size() const {
        return size + file_name_length + extra_field_length + file_comment_length;
    }
};

// 4.3.16
struct EndOfCentralDirectory {
    static constexpr std::uint32_t signature = 0x06054B50;
    static constexpr std::size_t size = 22;
    static constexpr ByteOrder order = ByteOrder::Little;

    std::uint16_t disk_number = 0;
    std::uint16_t directory_disk = 0;
    std::uint16_t entries_on_disk = 0;
    std::uint16_t total_entries = 0;
    std::uint32_t directory_size = 0;
    std::uint32_t directory_offset = 0;
    std::uint16_t comment_length = 0;

    static constexpr auto fields() {
        return std::tuple{Field{4, &EndOfCentralDirectory::disk_number},
                          Field{6, &EndOfCentralDirectory::directory_disk},
                          Field{8, &EndOfCentralDirectory::entries_on_disk},
                          Field{10, &EndOfCentralDirectory::total_entries},
                          Field{12, &EndOfCentralDirectory::directory_size},
                          Field{16, &EndOfCentralDirectory::directory_offset},
                          Field{20, &EndOfCentralDirectory::comment_length}};
    }
};

// 4.3.15
struct Zip64Locator {
    static constexpr std::uint32_t signature = 0x07064B50;
    static constexpr std::size_t size = 20;
    static constexpr ByteOrder order = ByteOrder::Little;

    std::uint32_t end_record_disk = 0;
    std::uint64_t end_record_offset = 0;
    std::uint32_t total_disks = 0;

    static constexpr auto fields() {
        return std::tuple{Field{4, &Zip64Locator::end_record_disk},
                          Field{8, &Zip64Locator::end_record_offset},
                          Field{16, &Zip64Locator::total_disks}};
    }
};

// 4.3.14, as far as it is fixed. The signature is not looked at.
struct Zip64EndOfCentralDirectory {
    static constexpr std::size_t size = 56;
    static constexpr ByteOrder order = ByteOrder::Little;

    std::uint64_t record_size = 0;
    std::uint16_t version_made_by = 0;
    std::uint16_t version_needed = 0;
    std::uint32_t disk_number = 0;
    std::uint32_t directory_disk = 0;
    std::uint64_t entries_on_disk = 0;
    std::uint64_t total_entries = 0;
    std::uint64_t directory_size = 0;
    std::uint64_t directory_offset = 0;

    static constexpr auto fields() {
        return std::tuple{Field{4, &Zip64EndOfCentralDirectory::record_size},
                          Field{12, &Zip64EndOfCentralDirectory::version_made_by},
                          Field{14, &Zip64EndOfCentralDirectory::version_needed},
                          Field{16, &Zip64EndOfCentralDirectory::disk_number},
                          Field{20, &Zip64EndOfCentralDirectory::directory_disk},
                          Field{24, &Zip64EndOfCentralDirectory::entries_on_disk},
                          Field{32, &Zip64EndOfCentralDirectory::total_entries},
                          Field{40, &Zip64EndOfCentralDirectory::directory_size},
                          Field{48, &Zip64EndOfCentralDirectory::directory_offset}};
    }
};

// The compressed size in the block of the Zip64 extended information (4.5.3) that begins an extra
// field; nullopt when there is none.
std::optional<std::uint64_t> zip64_compressed_size(std::string_view extra_field);

// What a number of an entry's record is that stands in the Zip64 extended information (4.5.3).
inline constexpr std::uint32_t see_zip64 = 0xFFFF'FFFF;

// How large an entry is, and where its local header stands.
struct EntryExtent {
    std::uint64_t uncompressed_size = 0;
    std::uint64_t compressed_size = 0;
    std::uint64_t local_header_offset = 0;
};
// With the numbers of the Zip64 extended information in an extra field (4.5.3), which has, in this
// order, those that the entry's record gives as 0xFFFFFFFF. What it lacks stays as it is.
EntryExtent with_zip64(EntryExtent extent, std::string_view extra_field);

} // namespace vell::formats::zip
