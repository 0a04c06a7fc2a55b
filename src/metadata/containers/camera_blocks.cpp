#include "src/formats/camera/ciff.h"
#include "src/formats/camera/mrw.h"
#include "src/formats/camera/raf.h"
#include "src/formats/camera/x3f.h"
#include "src/metadata/containers/block_collector.h"
#include "src/metadata/containers/ciff_tags.h"

#include <utility>

namespace vell::metadata {

using namespace formats;

Read<void> find_in_raf(const Window& file, BlockCollector& found) {
    Window start = file;
    start.seek(0);
    const auto header = VELL_TRY(start.read_record<raf::Header>());
    return find_in_jpeg(file.part(header.jpeg_offset, header.jpeg_length), found);
}

// No tags, but records that say the same.
Read<void> find_in_ciff(const Window& file, BlockCollector& found) {
    if (!found.wants_tags())
        return {};
    const auto records = VELL_TRY(ciff::File::read(file));
    std::string block = VELL_TRY(tags_of_ciff(records));
    return found.add_tags(found.keep(VELL_TRY(found.take(std::move(block)))));
}

Read<void> find_in_mrw(const Window& file, BlockCollector& found) {
    return found.wants_tags() ? found.add_tags(VELL_TRY(mrw::find_tags(file))) : Read<void>();
}

// In the pictures for the screen.
Read<void> find_in_x3f(const Window& file, BlockCollector& found) {
    for (const x3f::Image& image : VELL_TRY(x3f::read_images(file)))
        if (image.header.type == x3f::ImageHeader::for_preview &&
            image.header.format == x3f::ImageHeader::jpeg)
            VELL_TRY(if_sound(find_in_jpeg(image.data, found)));
    return {};
}

} // namespace vell::metadata
