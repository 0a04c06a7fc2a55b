// Reads an archive: its central directory as a whole, the data of its entries piece by piece.
//
// Everything that the archive says of itself is checked before it is believed: memory is taken for
// a directory that lies within the file, and an entry never yields more than its recorded size.
#pragma once

#include "src/archive/decoders.h"
#include "src/archive/dos_time.h"
#include "src/formats/zip_records.h"
#include "src/system/system.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vell::archive {

using files::NativePath;
using formats::zip::CentralDirectoryHeader;
using formats::zip::EndOfCentralDirectory;
using formats::zip::LocalFileHeader;

struct EntryInfo {
    std::string_view name; // in the reader's memory; its first 1,999 bytes
    bool utf8_name = false;
    bool is_folder = false; // the whole name ends with "/", or the attributes say so
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    DosTime modified = {};
    std::uint32_t crc32 = 0;
    std::uint32_t compressed_size = 0;
    std::uint32_t uncompressed_size = 0;
    std::uint32_t local_header_offset = 0;
    std::string_view extra_field = {}; // in the reader's memory
};

// Takes an entry's data with its place in the entry; its failure ends the extraction. Must not
// throw.
using EntrySink = std::function<Result<void>(std::uint64_t offset, std::string_view data)>;

// Where the records behind the entries stand.
struct ArchiveLayout {
    std::uint64_t directory_offset = 0;
    std::uint64_t directory_size = 0;
    std::uint64_t end_record_offset = 0; // of the end of central directory record
    bool uses_zip64 = false;             // the directory was found by the Zip64 record
};

class ZipReader {
  public:
    static constexpr std::size_t longest_name = 1'999;

    // Reads the central directory. SizeUnknown when the length of the file cannot be told,
    // CorruptStructure when it is no archive or contradicts itself anywhere.
    static Result<ZipReader> open(std::unique_ptr<files::File> file);

    std::uint32_t entry_count() const { return static_cast<std::uint32_t>(records_.size()); }
    const ArchiveLayout& layout() const { return layout_; }
    // In the order of the central directory; nullopt beyond the last.
    std::optional<EntryInfo> entry(std::uint32_t index) const;

    // CorruptStructure when two entries share bytes of the archive, header or data. Looks at each
    // local header once. Folders, empty entries and such as could not be extracted anyway have no
    // place. Not part of opening: the names can be told all the same.
    Result<void> check_overlaps();

    // RefusedByPolicy for more entries, or more bytes in them, than a call may expand. What an
    // entry yields is never more than it says.
    Result<void> check_limits(const Limits& limits) const;

    // Folders and empty entries succeed without data. ExtractionFailed for damaged, encrypted and
    // unsupported entries, and when the sink fails.
    Result<void> extract(std::uint32_t index, const EntrySink& sink);

    // Extracts to a file, which gets the entry's time and is closed. ExtractionFailed, or
    // CannotClose. What a failed extraction has written stays.
    Result<void> extract_to_file(std::uint32_t index, files::HeldFile& file);

    // False for an entry of which is known without its data that it cannot be extracted: it is
    // encrypted or compressed in another way, its data do not lie within the archive, or are too
    // few for what they are said to become.
    bool may_be_whole(std::uint32_t index);

  private:
    struct Directory;

    explicit ZipReader(std::unique_ptr<files::File> file, std::uint64_t size);
    Result<void> read_at(std::uint64_t offset, std::span<char> bytes);
    Result<std::uint64_t> find_end_record();
    Result<Directory> find_directory();
    Result<Directory> classic_directory(const EndOfCentralDirectory& end) const;
    Result<Directory> zip64_directory(std::uint64_t end_record_offset);
    Result<void> read_directory(const Directory& directory);
    bool is_sound(const CentralDirectoryHeader& header, std::string_view record, std::uint32_t disk,
                  bool with_zip64) const;
    Result<std::uint64_t> find_data(const EntryInfo& entry);
    Result<std::uint64_t> data_of(std::uint32_t index, const EntryInfo& entry);
    Decoder* decoder_for(std::uint16_t method);

    std::unique_ptr<files::File> file_;
    std::uint64_t archive_size_;
    ArchiveLayout layout_;
    std::string central_directory_;
    std::vector<std::uint32_t> records_;     // offsets of the entries' records in the directory
    std::vector<std::uint64_t> data_starts_; // by entry; 0 where it is not known, or none at all
    std::vector<char> piece_;
    std::unique_ptr<Decoder> stored_, deflated_, deflate64_; // made when first needed
};

// An archive for reading. CannotOpen, SizeUnknown, CorruptStructure.
Result<ZipReader> open_archive(System& system, const NativePath& path);

// The code of an archive's or entry's target file that cannot be opened.
ErrorCode target_error(ErrorCode opening);

} // namespace vell::archive
