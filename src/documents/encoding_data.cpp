#include "src/documents/encoding_data.h"

#include "src/archive/zip_reader.h"
#include "src/base/crc32.h"
#include "src/base/utf8.h"
#include "src/files/contents/temporary_copy.h"
#include "src/files/paths/path_parts.h"

#include <algorithm>
#include <array>

namespace vell::documents {
namespace {

using archive::EntryInfo;
using archive::ZipReader;
using files::NativePath;

Result<std::uint32_t> checksum_of(files::File& file) {
    std::array<char, 16'384> piece;
    std::uint32_t checksum = 0;
    while (const std::size_t count = VELL_TRY(file.read(piece)))
        checksum = crc32_of({piece.data(), count}, checksum);
    return checksum;
}

// Whether the file is that of the archive, which somebody may have changed meanwhile.
bool is_as_archived(System& system, const NativePath& path, const EntryInfo& entry) {
    const auto file = system.files().open_shared(path);
    if (!file)
        return false;
    const auto size = (*file)->size();
    if (!size || *size != entry.uncompressed_size)
        return false;
    const auto checksum = checksum_of(**file);
    return checksum && *checksum == entry.crc32;
}

Result<void> make_folder(System& system, std::u16string_view path) {
    const Result<void> made = system.tree().create_folder({std::u16string(path), std::nullopt});
    if (!made && made.error() != ErrorCode::AlreadyExists)
        return made;
    return {};
}

// The folders between `top` and a file below it.
Result<void> make_folders_below(System& system, const NativePath& top, const NativePath& file) {
    for (std::size_t end = file.wide.find(u'\\', top.wide.size() + 1); end != std::u16string::npos;
         end = file.wide.find(u'\\', end + 1))
        VELL_TRY(make_folder(system, std::u16string_view(file.wide).substr(0, end)));
    return {};
}

Result<void> extract(System& system, ZipReader& reader, std::uint32_t index,
                     const NativePath& target) {
    const auto file = VELL_TRY(system.files().open_new(target));
    VELL_TRY(reader.extract(
        index, [&](std::uint64_t, std::string_view data) { return file->write(data); }));
    return file->close();
}

Result<void> unpack(System& system, ZipReader& reader, std::uint32_t index,
                    const NativePath& temporary, const NativePath& target) {
    Result<void> outcome = extract(system, reader, index, temporary);
    if (outcome)
        outcome = system.files().rename(temporary, target, files::Replace::Yes);
    if (!outcome)
        static_cast<void>(system.files().remove(temporary));
    return outcome;
}

} // namespace

Result<void> unpack_missing(System& system, std::string_view archive, const NativePath& folder) {
    ZipReader reader = VELL_TRY(ZipReader::open(files::memory_file(std::string(archive))));
    bool has_folder = false;
    for (std::uint32_t i = 0; i < reader.entry_count(); ++i) {
        const EntryInfo entry = *reader.entry(i);
        std::u16string name = utf16_from_utf8(entry.name);
        std::ranges::replace(name, u'/', u'\\');
        const NativePath target{folder.wide + u'\\' + name, std::nullopt};
        if (entry.is_folder || is_as_archived(system, target, entry))
            continue;
        if (!has_folder) {
            VELL_TRY(make_folder(system, files::parent_path(folder.wide)));
            VELL_TRY(make_folder(system, folder.wide));
            has_folder = true;
        }
        VELL_TRY(make_folders_below(system, folder, target));
        // Not beside its target, where it would be taken for data if it stayed behind.
        const NativePath temporary = VELL_TRY(
            files::name_beside(system.files(), {folder.wide + u'\\' + u'x', std::nullopt}));
        const Result<void> outcome = unpack(system, reader, i, temporary, target);
        // Another process may have been faster, and have the file open.
        if (!outcome && !is_as_archived(system, target, entry))
            return outcome;
    }
    return {};
}

} // namespace vell::documents
