// Opening an archive and listing it. What opens holds as many entries as have room in the file.
#include "fuzz/input.h"
#include "src/archive/entry_path.h"
#include "src/archive/zip_reader.h"

#include <string>

namespace vell::zip_open_fuzz {

FUZZ_TARGET(zip_open) {
    const std::string bytes(fuzz::as_text(data, size));
    const auto reader = archive::ZipReader::open(files::memory_file(bytes));
    if (!reader) {
        FUZZ_CHECK(reader.error() == ErrorCode::CorruptStructure);
        return 0;
    }
    FUZZ_CHECK(reader->entry_count() <= size / archive::CentralDirectoryHeader::size);
    FUZZ_CHECK(!reader->entry(reader->entry_count()));
    for (std::uint32_t i = 0; i < reader->entry_count(); ++i) {
        const auto entry = reader->entry(i);
        FUZZ_CHECK(entry && bytes.find(entry->name) != std::string::npos);
        FUZZ_CHECK(entry->is_folder || !entry->name.ends_with('/') ||
                   entry->name.size() == archive::ZipReader::longest_name);
    }
    return 0;
}

} // namespace vell::zip_open_fuzz
