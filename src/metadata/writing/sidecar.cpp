#include "src/metadata/writing/sidecar.h"

#include "src/base/ascii.h"
#include "src/files/contents/buffered_reader.h"
#include "src/files/contents/temporary_copy.h"
#include "src/metadata/writing/block_place.h"
#include "src/metadata/writing/xmp_writer.h"

#include <memory>
#include <string>

namespace vell::metadata {
namespace {

using files::File;
using files::FileSystem;
using files::NativePath;

// ResourceTooLarge for one that is longer than any packet: it is not ours to replace.
Result<std::string> bytes_of(FileSystem& files, const NativePath& path) {
    const std::unique_ptr<File> file = VELL_TRY(files.open(path, files::Permission::Read));
    auto reader = VELL_TRY(files::BufferedReader::over(*file));
    if (reader.size() > longest_block)
        return Failure{ErrorCode::ResourceTooLarge};
    return reader.read_bytes(reader.size());
}

} // namespace

bool is_sidecar(const NativePath& path) {
    constexpr std::u16string_view extension = u".xmp";
    const std::u16string_view text = path.wide;
    return text.size() >= extension.size() &&
           equal_ignoring_case(text.substr(text.size() - extension.size()), extension);
}

Result<void> write_sidecar(params::Call& call, FileSystem& files, const Sidecar& sidecar,
                           std::string_view text, const TextStore& store) {
    VELL_TRY(files.open_shared(sidecar.photograph));
    const XmpText xmp = split_xmp_text(text);
    if (!xmp.is_packet_segment())
        return Failure{ErrorCode::NotSupported};
    const bool is_there = files.kind_of(sidecar.path) != files::ItemKind::None;
    if (is_blank_xmp(xmp.text))
        return is_there ? files.remove(sidecar.path)
                        : Result<void>(Failure{ErrorCode::NothingFound});
    const std::string existing = is_there ? VELL_TRY(bytes_of(files, sidecar.path)) : std::string();
    constexpr std::size_t no_padding = 0; // the file grows as it likes
    const std::string packet = VELL_TRY(write_xmp(xmp, existing, store, no_padding));
    return files::write_whole_file(call, files, sidecar.path, files::Replace::Yes,
                                   [&](File& to) { return to.write(packet); });
}

} // namespace vell::metadata
