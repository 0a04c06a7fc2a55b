#include "src/archive/zip_reader.h"

#include "src/system/system.h"

#include <algorithm>
#include <limits>
#include <span>

namespace vell::archive {
namespace {

using formats::zip::EntryFlag;
using formats::zip::folder_attribute;
using formats::zip::see_zip64;
using formats::zip::zip64_compressed_size;
using formats::zip::Zip64EndOfCentralDirectory;
using formats::zip::Zip64Locator;

constexpr Failure corrupt{ErrorCode::CorruptStructure};

// Whether `size` bytes from `offset` on lie within `whole` bytes.
constexpr bool lies_within(std::uint64_t offset, std::uint64_t size, std::uint64_t whole) {
    return offset <= whole && size <= whole - offset;
}

constexpr bool is_single_disk(std::uint32_t disk, std::uint32_t directory_disk) {
    return disk == directory_disk && disk <= 1;
}

} // namespace

// Where the central directory is said to be, the place already checked.
struct ZipReader::Directory {
    std::uint64_t offset;
    std::uint64_t size;
    std::uint64_t entry_count;
    std::uint32_t disk;
    bool is_classic;
};

ZipReader::ZipReader(std::unique_ptr<files::File> file, std::uint64_t size)
    : file_(std::move(file)), archive_size_(size) {}

Result<ZipReader> ZipReader::open(std::unique_ptr<files::File> file) {
    const auto size = file->size();
    if (!size)
        return Failure{ErrorCode::SizeUnknown};
    ZipReader reader(std::move(file), *size);
    const auto directory = reader.find_directory();
    if (!directory || !reader.read_directory(*directory))
        return corrupt;
    reader.layout_.directory_offset = directory->offset;
    reader.layout_.directory_size = directory->size;
    reader.layout_.uses_zip64 = !directory->is_classic;
    return reader;
}

// EndOfFile when there are fewer bytes.
Result<void> ZipReader::read_at(std::uint64_t offset, std::span<char> bytes) {
    if (!lies_within(offset, bytes.size(), archive_size_))
        return Failure{ErrorCode::EndOfFile};
    VELL_TRY(file_->seek(files::SeekFrom::Start, static_cast<std::int64_t>(offset)));
    while (!bytes.empty()) {
        const std::size_t count = VELL_TRY(file_->read(bytes));
        if (count == 0)
            return Failure{ErrorCode::EndOfFile};
        bytes = bytes.subspan(count);
    }
    return {};
}

// Searches backwards, in blocks that overlap by a signature less a byte, as far as the longest
// comment allows.
Result<std::uint64_t> ZipReader::find_end_record() {
    constexpr std::uint64_t block_size = 4'096;
    constexpr std::uint64_t step = block_size - 3;
    constexpr std::uint64_t longest_end = EndOfCentralDirectory::size + 0xFFFF;
    constexpr std::string_view signature = "PK\5\6";
    if (archive_size_ < EndOfCentralDirectory::size)
        return corrupt;
    const std::uint64_t last_place = archive_size_ - EndOfCentralDirectory::size;
    const std::uint64_t first_place = archive_size_ - std::min(archive_size_, longest_end);
    std::array<char, block_size> block;
    std::uint64_t start = archive_size_ - std::min(archive_size_, block_size);
    for (;;) {
        const std::span bytes(block.data(), std::min(block_size, archive_size_ - start));
        VELL_TRY(read_at(start, bytes));
        const std::string_view text(bytes.data(), bytes.size());
        const std::size_t found =
            text.rfind(signature, static_cast<std::size_t>(last_place - start));
        if (found != text.npos && start + found >= first_place)
            return start + found;
        if (start <= first_place)
            return corrupt;
        start -= std::min(start, step);
    }
}

Result<ZipReader::Directory> ZipReader::find_directory() {
    const std::uint64_t place = VELL_TRY(find_end_record());
    layout_.end_record_offset = place;
    std::array<char, EndOfCentralDirectory::size> end_bytes;
    VELL_TRY(read_at(place, end_bytes));
    if (place >= Zip64Locator::size) {
        std::array<char, Zip64Locator::size> locator_bytes;
        VELL_TRY(read_at(place - Zip64Locator::size, locator_bytes));
        if (const auto locator =
                formats::read_record<Zip64Locator>({locator_bytes.data(), locator_bytes.size()}))
            return zip64_directory(locator->end_record_offset);
    }
    const auto end =
        formats::read_record<EndOfCentralDirectory>({end_bytes.data(), end_bytes.size()});
    if (!end)
        return corrupt;
    // Either a number that stands for "see the Zip64 record", or as many entries as that.
    constexpr std::uint16_t see_zip64_record = 0xFFFF;
    if (end->entries_on_disk == see_zip64_record || end->total_entries == see_zip64_record)
        if (auto directory = zip64_directory(0))
            return directory;
    return classic_directory(*end);
}

Result<ZipReader::Directory> ZipReader::classic_directory(const EndOfCentralDirectory& end) const {
    const std::uint64_t least = std::uint64_t{end.total_entries} * CentralDirectoryHeader::size;
    if (end.entries_on_disk != end.total_entries ||
        !is_single_disk(end.disk_number, end.directory_disk) || end.directory_size < least ||
        !lies_within(end.directory_offset, end.directory_size, archive_size_))
        return corrupt;
    return Directory{end.directory_offset, end.directory_size, end.total_entries, end.disk_number,
                     true};
}

Result<ZipReader::Directory> ZipReader::zip64_directory(std::uint64_t end_record_offset) {
    std::array<char, Zip64EndOfCentralDirectory::size> bytes;
    VELL_TRY(read_at(end_record_offset, bytes));
    const auto end = formats::read_record<Zip64EndOfCentralDirectory>({bytes.data(), bytes.size()});
    if (!end || end->entries_on_disk != end->total_entries ||
        !is_single_disk(end->disk_number, end->directory_disk) ||
        end->total_entries > end->directory_size / CentralDirectoryHeader::size ||
        !lies_within(end->directory_offset, end->directory_size, archive_size_))
        return corrupt;
    return Directory{end->directory_offset, end->directory_size, end->total_entries,
                     end->disk_number, false};
}

// The records are walked to the directory's end in a classic archive, whose count may have wrapped
// around, and as far as they are counted in a Zip64 one.
Result<void> ZipReader::read_directory(const Directory& directory) {
    if (directory.size > std::numeric_limits<std::uint32_t>::max())
        return corrupt; // offsets have 32 bits
    central_directory_.resize(static_cast<std::size_t>(directory.size));
    VELL_TRY(read_at(directory.offset, central_directory_));
    records_.reserve(static_cast<std::size_t>(directory.entry_count));
    const std::string_view bytes = central_directory_;
    std::size_t position = 0;
    const auto is_end = [&] {
        return directory.is_classic ? position == bytes.size()
                                    : records_.size() == directory.entry_count;
    };
    while (!is_end()) {
        const std::string_view rest = bytes.substr(position);
        const auto header = formats::read_record<CentralDirectoryHeader>(rest);
        if (!header || header->record_size() > rest.size())
            return corrupt;
        const std::string_view record = rest.substr(0, header->record_size());
        if ((directory.is_classic && !is_sound(*header, record, directory.disk, false)) ||
            !is_sound(*header, record, directory.disk, true))
            return corrupt;
        records_.push_back(static_cast<std::uint32_t>(position));
        position += record.size();
    }
    if (records_.size() < directory.entry_count)
        return corrupt;
    return {};
}

bool ZipReader::is_sound(const CentralDirectoryHeader& header, std::string_view record,
                         std::uint32_t disk, bool with_zip64) const {
    const auto method = static_cast<Method>(header.method);
    if (method == Method::Stored && header.compressed_size != header.uncompressed_size)
        return false;
    if (header.uncompressed_size != 0 && header.compressed_size == 0)
        return false;
    if (header.disk_number_start != disk && header.disk_number_start != 1)
        return false;
    std::uint64_t compressed_size = header.compressed_size;
    if (with_zip64 &&
        (header.compressed_size == see_zip64 || header.uncompressed_size == see_zip64))
        compressed_size = zip64_compressed_size(
                              record.substr(CentralDirectoryHeader::size + header.file_name_length,
                                            header.extra_field_length))
                              .value_or(compressed_size);
    return lies_within(std::uint64_t{header.local_header_offset} + LocalFileHeader::size,
                       compressed_size, archive_size_);
}

std::optional<EntryInfo> ZipReader::entry(std::uint32_t index) const {
    if (index >= records_.size())
        return std::nullopt;
    const std::string_view record = std::string_view(central_directory_).substr(records_[index]);
    const auto header = formats::read_record<CentralDirectoryHeader>(record);
    if (!header)
        return std::nullopt;
    const std::string_view name =
        record.substr(CentralDirectoryHeader::size, header->file_name_length);
    EntryInfo info;
    info.name = name.substr(0, longest_name);
    info.utf8_name = has(header->flags, EntryFlag::Utf8);
    info.is_folder = name.ends_with('/') || (header->external_attributes & folder_attribute) != 0;
    info.flags = header->flags;
    info.method = header->method;
    info.modified = {header->last_mod_date, header->last_mod_time};
    info.crc32 = header->crc32;
    info.compressed_size = header->compressed_size;
    info.uncompressed_size = header->uncompressed_size;
    info.local_header_offset = header->local_header_offset;
    info.extra_field = record.substr(CentralDirectoryHeader::size + header->file_name_length,
                                     header->extra_field_length);
    return info;
}

Result<ZipReader> open_archive(System& system, const NativePath& path) {
    auto file = system.files().open_shared(path);
    if (!file)
        return Failure{ErrorCode::CannotOpen};
    return ZipReader::open(*std::move(file));
}

} // namespace vell::archive
