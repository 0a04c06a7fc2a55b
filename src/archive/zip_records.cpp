#include "src/archive/zip_records.h"

#include "src/base/bytes.h"

#include <type_traits>

namespace vell::archive {
namespace {

// Fields one after the other. The caller has seen to it that there are enough bytes.
class FieldReader {
  public:
    explicit FieldReader(std::string_view bytes) : bytes_(bytes) {}

    template <typename T>
    FieldReader& operator>>(T& field) {
        field = load<T>(bytes_, position_, ByteOrder::Little).value_or(T{});
        position_ += sizeof(T);
        return *this;
    }

  private:
    std::string_view bytes_;
    std::size_t position_ = 0;
};

class FieldWriter {
  public:
    explicit FieldWriter(std::string& bytes) : bytes_(bytes) {}

    template <typename T>
    FieldWriter& operator<<(T field) {
        append_integer<T>(bytes_, field, ByteOrder::Little);
        return *this;
    }

  private:
    std::string& bytes_;
};

// A reader behind the signature; nullopt when the bytes are no `Record`.
template <typename Record>
std::optional<FieldReader> fields_of(std::string_view bytes) {
    if (bytes.size() < Record::size ||
        load<std::uint32_t>(bytes, 0, ByteOrder::Little) != Record::signature)
        return std::nullopt;
    return FieldReader(bytes.substr(sizeof Record::signature));
}

} // namespace

std::optional<LocalFileHeader> LocalFileHeader::read(std::string_view bytes) {
    auto fields = fields_of<LocalFileHeader>(bytes);
    if (!fields)
        return std::nullopt;
    LocalFileHeader header;
    *fields >> header.version_needed >> header.flags >> header.method >> header.last_mod_time >>
        header.last_mod_date >> header.crc32 >> header.compressed_size >>
        header.uncompressed_size >> header.file_name_length >> header.extra_field_length;
    return header;
}

void LocalFileHeader::write(std::string& bytes) const {
    FieldWriter(bytes) << signature << version_needed << flags << method << last_mod_time
                       << last_mod_date << crc32 << compressed_size << uncompressed_size
                       << file_name_length << extra_field_length;
}

std::optional<CentralDirectoryHeader> CentralDirectoryHeader::read(std::string_view bytes) {
    auto fields = fields_of<CentralDirectoryHeader>(bytes);
    if (!fields)
        return std::nullopt;
    CentralDirectoryHeader header;
    *fields >> header.version_made_by >> header.version_needed >> header.flags >> header.method >>
        header.last_mod_time >> header.last_mod_date >> header.crc32 >> header.compressed_size >>
        header.uncompressed_size >> header.file_name_length >> header.extra_field_length >>
        header.file_comment_length >> header.disk_number_start >> header.internal_attributes >>
        header.external_attributes >> header.local_header_offset;
    return header;
}

void CentralDirectoryHeader::write(std::string& bytes) const {
    FieldWriter(bytes) << signature << version_made_by << version_needed << flags << method
                       << last_mod_time << last_mod_date << crc32 << compressed_size
                       << uncompressed_size << file_name_length << extra_field_length
                       << file_comment_length << disk_number_start << internal_attributes
                       << external_attributes << local_header_offset;
}

std::optional<EndOfCentralDirectory> EndOfCentralDirectory::read(std::string_view bytes) {
    auto fields = fields_of<EndOfCentralDirectory>(bytes);
    if (!fields)
        return std::nullopt;
    EndOfCentralDirectory end;
    *fields >> end.disk_number >> end.directory_disk >> end.entries_on_disk >> end.total_entries >>
        end.directory_size >> end.directory_offset >> end.comment_length;
    return end;
}

void EndOfCentralDirectory::write(std::string& bytes) const {
    FieldWriter(bytes) << signature << disk_number << directory_disk << entries_on_disk
                       << total_entries << directory_size << directory_offset << comment_length;
}

std::optional<Zip64Locator> Zip64Locator::read(std::string_view bytes) {
    auto fields = fields_of<Zip64Locator>(bytes);
    if (!fields)
        return std::nullopt;
    Zip64Locator locator;
    *fields >> locator.end_record_disk >> locator.end_record_offset >> locator.total_disks;
    return locator;
}

std::optional<Zip64EndOfCentralDirectory> Zip64EndOfCentralDirectory::read(std::string_view bytes) {
    if (bytes.size() < size)
        return std::nullopt;
    Zip64EndOfCentralDirectory end;
    FieldReader(bytes.substr(4)) >> end.record_size >> end.version_made_by >> end.version_needed >>
        end.disk_number >> end.directory_disk >> end.entries_on_disk >> end.total_entries >>
        end.directory_size >> end.directory_offset;
    return end;
}

std::optional<std::uint64_t> zip64_compressed_size(std::string_view extra_field) {
    constexpr std::uint16_t zip64_information = 0x0001;
    constexpr std::size_t size_behind_uncompressed_size = 12;
    if (load<std::uint16_t>(extra_field, 0, ByteOrder::Little) != zip64_information)
        return std::nullopt;
    return load<std::uint64_t>(extra_field, size_behind_uncompressed_size, ByteOrder::Little);
}

} // namespace vell::archive
