#include "src/metadata/writing/block_place.h"

#include "src/formats/recognition.h"
#include "src/metadata/writing/jpeg_place.h"
#include "src/metadata/writing/png_place.h"
#include "src/metadata/writing/tiff_place.h"
#include "src/metadata/writing/webp_place.h"

#include <utility>

namespace vell::metadata {
namespace {

using formats::Format;

using PlaceFinder = Result<std::unique_ptr<BlockPlace>> (*)(files::BufferedReader& file,
                                                            const WantedBlock& wanted);

struct WrittenFormat {
    Format format;
    PlaceFinder find;
};
constexpr WrittenFormat written_formats[] = {{Format::Jpeg, find_jpeg_place},
                                             {Format::Png, find_png_place},
                                             {Format::Tiff, find_tiff_place},
                                             {Format::Riff, find_webp_place}};

} // namespace

Result<bool> BlockPlace::put_tags(files::BufferedReader&, std::span<const TaggedSection> sections,
                                  MakerNote maker_note, const TextStore& store) {
    std::string block =
        VELL_TRY(write_exif(content(), sections, maker_note, store, rules().most_bytes));
    const bool is_changed = block.empty() || block != content();
    VELL_TRY(put(std::move(block)));
    return is_changed;
}

Result<std::unique_ptr<BlockPlace>> find_block_place(files::BufferedReader& file,
                                                     const WantedBlock& wanted) {
    file.seek(0);
    const std::string start = VELL_TRY(file.read_bytes(formats::recognizable_size));
    const Format format = formats::format_of(start);
    for (const WrittenFormat& written : written_formats)
        if (written.format == format)
            return written.find(file, wanted);
    return Failure{ErrorCode::NotAJpeg};
}

} // namespace vell::metadata
