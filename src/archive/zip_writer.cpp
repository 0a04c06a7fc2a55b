#include "src/archive/zip_writer.h"

#include "src/archive/deflate_encoder.h"
#include "src/base/crc32.h"
#include "src/system/system.h"

#include <algorithm>
#include <span>

namespace vell::archive {
namespace {

using formats::zip::CentralDirectoryHeader;
using formats::zip::EndOfCentralDirectory;
using formats::zip::EntryFlag;
using formats::zip::folder_attribute;
using formats::zip::Method;

constexpr std::size_t piece_size = 65'536;
constexpr std::uint16_t version_for_deflate = 20;
constexpr std::uint64_t smallest_deflated = 4; // bytes; less is stored
constexpr Failure add_failed{ErrorCode::AddFailed};

bool is_entry_name(std::string_view name) {
    return name.size() <= 0xFFFF && !name.starts_with('/') &&
           name.find_first_of("\\:") == std::string_view::npos;
}

LocalFileHeader header_of(std::string_view name, DosTime time, const EntryOptions& options) {
    LocalFileHeader header;
    header.flags = options.utf8_name ? static_cast<std::uint16_t>(EntryFlag::Utf8) : 0;
    header.last_mod_time = time.time;
    header.last_mod_date = time.date;
    header.file_name_length = static_cast<std::uint16_t>(name.size());
    return header;
}

// Fills the buffer from the source; AddFailed when that ends before.
Result<void> fill(std::span<char> buffer, files::File& source) {
    while (!buffer.empty()) {
        const std::size_t count = VELL_TRY(source.read(buffer));
        if (count == 0)
            return add_failed;
        buffer = buffer.subspan(count);
    }
    return {};
}

// When the file was last written: by its handle, which costs the least, or else by its path.
Result<params::CalendarTime> time_of(files::File& file, const NativePath& path, System& system) {
    if (const auto time = file.modified())
        return system.properties().local_time_of(*time);
    return system.properties().time(path, files::ItemTime::Modified);
}

} // namespace

// What the data of an entry became.
struct ZipWriter::Packed {
    Method method = Method::Stored;
    std::uint32_t crc32 = 0;
    std::uint64_t size = 0;
    std::string_view unwritten = {}; // all of them, to be written with the header
};

ZipWriter::ZipWriter(std::unique_ptr<files::File> file) : file_(std::move(file)) {}
ZipWriter::ZipWriter(ZipWriter&&) noexcept = default;
ZipWriter::~ZipWriter() = default;

Result<void> ZipWriter::check_entry(std::string_view name, int level) const {
    if (!file_ || name.empty() || level > EntryOptions::highest_level || !is_entry_name(name))
        return add_failed;
    const std::uint64_t records =
        LocalFileHeader::size + CentralDirectoryHeader::size + name.size();
    if (entry_count_ >= most_entries || archive_size_ + records > largest_size)
        return add_failed;
    return {};
}

Result<void> ZipWriter::add_file(System& system, std::string_view name, const NativePath& source,
                                 const EntryOptions& options) {
    constexpr int usual_level = 6;
    const int level = options.level < 0 ? usual_level : options.level;
    VELL_TRY(check_entry(name, level));
    const auto opened = system.files().open_shared(source);
    if (!opened) {
        const bool is_there =
            system.properties().time(source, files::ItemTime::Modified).has_value();
        return is_there ? Failure{source_error(opened.error())} : add_failed;
    }
    files::File& file = **opened;
    const auto modified = time_of(file, source, system);
    const auto size = file.size();
    if (!modified || !size || *size > largest_size || !file.seek(files::SeekFrom::Start, 0))
        return add_failed;

    const auto packed = level == 0 || *size < smallest_deflated
                            ? write_stored(name, file, *size)
                            : write_deflated(name, file, *size, level);
    if (!packed || packed->size > largest_size)
        return add_failed;

    LocalFileHeader header = header_of(name, dos_time(*modified), options);
    header.method = static_cast<std::uint16_t>(packed->method);
    header.version_needed = packed->method == Method::Deflated ? version_for_deflate : 0;
    header.crc32 = packed->crc32;
    header.compressed_size = static_cast<std::uint32_t>(packed->size);
    header.uncompressed_size = static_cast<std::uint32_t>(*size);
    return append_entry(header, name, 0, *packed);
}

Result<void> ZipWriter::add_folder(std::string_view name, DosTime time,
                                   const EntryOptions& options) {
    VELL_TRY(check_entry(name, options.level));
    if (!name.ends_with('/'))
        return add_failed;
    return append_entry(header_of(name, time, options), name, folder_attribute, {});
}

// Goes to the archive's end, whatever an add that failed has left there, and makes room for the
// header of an entry whose sizes are known when its data are written.
Result<void> ZipWriter::begin_entry(std::string_view name) {
    std::string room(LocalFileHeader::size, '\0');
    if (!file_->seek(files::SeekFrom::Start, static_cast<std::int64_t>(archive_size_)) ||
        !file_->write(room.append(name)))
        return add_failed;
    return {};
}

Result<ZipWriter::Packed> ZipWriter::write_stored(std::string_view name, files::File& source,
                                                  std::uint64_t size) {
    Packed packed{Method::Stored, 0, size};
    piece_.resize(piece_size);
    const bool is_one_piece = size <= piece_size;
    if (!is_one_piece)
        VELL_TRY(begin_entry(name));
    for (std::uint64_t left = size; left > 0;) {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left, piece_size));
        VELL_TRY(fill(std::span(piece_).first(count), source));
        const std::string_view piece(piece_.data(), count);
        packed.crc32 = crc32_of(piece, packed.crc32);
        if (is_one_piece)
            packed.unwritten = piece;
        else
            VELL_TRY(file_->write(piece));
        left -= count;
    }
    return packed;
}

Result<ZipWriter::Packed> ZipWriter::write_deflated(std::string_view name, files::File& source,
                                                    std::uint64_t size, int level) {
    if (!encoder_ || encoder_->level() != level)
        encoder_ = std::make_unique<DeflateEncoder>(level);
    Packed packed{Method::Deflated};
    const bool is_one_part = size <= DeflateEncoder::part_size;
    if (!is_one_part)
        VELL_TRY(begin_entry(name));
    for (std::uint64_t left = size; left > 0;) {
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(left, DeflateEncoder::part_size));
        const std::span<char> part = encoder_->room_for(count);
        VELL_TRY(fill(part, source));
        packed.crc32 = crc32_of({part.data(), count}, packed.crc32);
        left -= count;
        const std::string_view bytes = encoder_->encode(count, left == 0);
        packed.size += bytes.size();
        if (bytes.empty() || archive_size_ + packed.size > largest_size)
            return add_failed;
        if (is_one_part)
            packed.unwritten = bytes;
        else
            VELL_TRY(file_->write(bytes));
    }
    return packed;
}

// Writes the header before the data that stand behind the archive's end, or with them, and takes
// both in.
Result<void> ZipWriter::append_entry(LocalFileHeader header, std::string_view name,
                                     std::uint32_t external_attributes, const Packed& packed) {
    const std::uint64_t new_size =
        archive_size_ + LocalFileHeader::size + name.size() + packed.size;
    if (new_size > largest_size)
        return add_failed;
    std::string bytes;
    formats::append_record(bytes, header);
    bytes.append(name).append(packed.unwritten);
    if (!file_->seek(files::SeekFrom::Start, static_cast<std::int64_t>(archive_size_)) ||
        !file_->write(bytes))
        return add_failed;

    CentralDirectoryHeader record;
    record.version_needed = header.version_needed;
    record.flags = header.flags;
    record.method = header.method;
    record.last_mod_time = header.last_mod_time;
    record.last_mod_date = header.last_mod_date;
    record.crc32 = header.crc32;
    record.compressed_size = header.compressed_size;
    record.uncompressed_size = header.uncompressed_size;
    record.file_name_length = header.file_name_length;
    record.external_attributes = external_attributes;
    record.local_header_offset = static_cast<std::uint32_t>(archive_size_);
    formats::append_record(central_directory_, record);
    central_directory_ += name;
    ++entry_count_;
    archive_size_ = new_size;
    return {};
}

Result<void> ZipWriter::finish() {
    constexpr Failure failed{ErrorCode::FinishFailed};
    const std::unique_ptr<files::File> file = std::move(file_);
    const std::uint64_t directory_size = central_directory_.size();
    if (!file || entry_count_ > most_entries ||
        archive_size_ + directory_size + EndOfCentralDirectory::size > largest_size)
        return failed;
    EndOfCentralDirectory end;
    end.entries_on_disk = end.total_entries = static_cast<std::uint16_t>(entry_count_);
    end.directory_size = static_cast<std::uint32_t>(directory_size);
    end.directory_offset = static_cast<std::uint32_t>(archive_size_);
    formats::append_record(central_directory_, end);
    // What a failed add left behind the end is cut off.
    if (!file->seek(files::SeekFrom::Start, static_cast<std::int64_t>(archive_size_)) ||
        !file->write(central_directory_) || !file->set_end_of_file() || !file->close())
        return failed;
    return {};
}

ErrorCode source_error(ErrorCode opening) {
    // Numbers of <errno.h>, as the C library of Windows has them.
    constexpr auto no_entry = static_cast<ErrorCode>(2);
    constexpr auto no_memory = static_cast<ErrorCode>(12);
    constexpr auto invalid = static_cast<ErrorCode>(22);
    switch (opening) {
    case ErrorCode::Busy:
        return ErrorCode::WriteDenied;
    case ErrorCode::AlreadyExists:
        return ErrorCode::FileExists;
    case ErrorCode::NotFound:
    case ErrorCode::FolderNotFound:
        return no_entry;
    case ErrorCode::OutOfMemory:
        return no_memory;
    default:
        return invalid;
    }
}

} // namespace vell::archive
