// Extracting every entry of an archive: never more than is recorded, all of it with its checksum
// where the extraction succeeds, and the same a second time. In archives with one entry the
// checksum is made to fit what comes out, so that the decoders' successes are seen, too. Entries
// that share no bytes have no more data than the archive.
#include "fuzz/input.h"
#include "src/archive/zip_reader.h"
#include "src/base/bytes.h"

#include <zlib.h>

#include <string>

namespace vell::zip_extract_fuzz {
namespace {

// The data as far as it came.
std::string extract(archive::ZipReader& reader, std::uint32_t index, bool& done) {
    const std::uint32_t most = reader.entry(index)->uncompressed_size;
    std::string all;
    done = reader
               .extract(index,
                        [&](std::uint64_t offset, std::string_view piece) {
                            FUZZ_CHECK(offset == all.size());
                            FUZZ_CHECK(piece.size() <= most - all.size());
                            all += piece;
                            return Result<void>();
                        })
               .has_value();
    return all;
}

std::uint32_t crc_of(const std::string& bytes) {
    return static_cast<std::uint32_t>(
        crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

} // namespace

FUZZ_TARGET(zip_extract) {
    std::string bytes(fuzz::as_text(data, size));
    auto reader = archive::ZipReader::open(files::memory_file(bytes));
    const bool is_sound = reader && reader->check_overlaps();
    std::uint64_t compressed = 0;
    for (std::uint32_t i = 0; reader && i < reader->entry_count(); ++i) {
        const archive::EntryInfo entry = *reader->entry(i);
        bool done = false;
        const std::string all = extract(*reader, i, done);
        if (done && !entry.is_folder && entry.uncompressed_size > 0) {
            FUZZ_CHECK(all.size() == entry.uncompressed_size && crc_of(all) == entry.crc32);
            compressed += entry.compressed_size;
        }
        bool again = false;
        FUZZ_CHECK(extract(*reader, i, again) == all && again == done);
    }
    FUZZ_CHECK(!is_sound || compressed <= size);
    if (!reader || reader->entry_count() != 1)
        return 0;
    bool done = false;
    const std::string all = extract(*reader, 0, done);
    const std::size_t record = bytes.rfind("PK\1\2");
    if (done || record > bytes.size() - archive::CentralDirectoryHeader::size)
        return 0;
    std::string crc;
    append_integer<std::uint32_t>(crc, crc_of(all), ByteOrder::Little);
    bytes.replace(record + 16, 4, crc);
    // The data may stand in the directory itself and change with it, so it is not compared; and
    // what was changed may have been a part of another record.
    auto fitting = archive::ZipReader::open(files::memory_file(bytes));
    if (fitting && fitting->entry_count() == 1)
        static_cast<void>(extract(*fitting, 0, done));
    return 0;
}

} // namespace vell::zip_extract_fuzz
