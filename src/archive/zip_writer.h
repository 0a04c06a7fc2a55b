// Writes an archive, entry by entry, in the classic form: at most 65,535 entries and 4 GiB, stored
// or deflated (PKWARE's APPNOTE without Zip64 and without data descriptors).
#pragma once

#include "src/archive/dos_time.h"
#include "src/formats/zip_records.h"
#include "src/system/system.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vell::archive {

using files::NativePath;
using formats::zip::LocalFileHeader;

class DeflateEncoder;

struct EntryOptions {
    static constexpr int highest_level = 10;

    int level = 6;          // 0 stores, 9 is thorough; a negative one means 6
    bool utf8_name = false; // marks the name as UTF-8
};

class ZipWriter {
  public:
    static constexpr std::uint32_t most_entries = 65'535;
    static constexpr std::uint64_t largest_size = 0xFFFF'FFFF;

    // Writes to `file`, which is empty and open for writing.
    explicit ZipWriter(std::unique_ptr<files::File> file);
    ZipWriter(ZipWriter&&) noexcept;
    ~ZipWriter(); // closes the file, finished or not

    // Names have "/" as separator, and neither begin with one nor hold "\" or ":".
    //
    // An add that fails leaves the archive without that entry, and others can follow. The codes are
    // AddFailed and, for a source that cannot be opened, what source_error makes of that.
    Result<void> add_file(System& system, std::string_view name, const NativePath& source,
                          const EntryOptions& options);
    // An entry without data, whose name ends with "/".
    Result<void> add_folder(std::string_view name, DosTime time, const EntryOptions& options);

    // Writes the central directory and closes the file. FinishFailed; nothing can be added after.
    Result<void> finish();

  private:
    struct Packed;

    Result<void> check_entry(std::string_view name, int level) const;
    Result<void> begin_entry(std::string_view name);
    Result<Packed> write_stored(std::string_view name, files::File& source, std::uint64_t size);
    Result<Packed> write_deflated(std::string_view name, files::File& source, std::uint64_t size,
                                  int level);
    Result<void> append_entry(LocalFileHeader header, std::string_view name,
                              std::uint32_t external_attributes, const Packed& packed);

    std::unique_ptr<files::File> file_; // null when finished
    std::uint64_t archive_size_ = 0;
    std::uint32_t entry_count_ = 0;
    std::string central_directory_;
    std::vector<char> piece_;
    std::unique_ptr<DeflateEncoder> encoder_;
};

// The code of a source that cannot be opened: WriteDenied, FileExists, or the number that the C
// library has for other reasons.
ErrorCode source_error(ErrorCode opening);

} // namespace vell::archive
