#include "src/formats/camera/ciff.h"
#include "src/formats/camera/mrw.h"
#include "src/formats/camera/raf.h"
#include "src/formats/camera/x3f.h"
#include "src/pictures/inside/camera_orientation.h"
#include "src/pictures/inside/maker_notes.h"
#include "src/pictures/inside/raw_pictures.h"

#include <string>

namespace vell::pictures {
namespace {

using namespace formats;
using Kind = EmbeddedPicture::Kind;

Read<void> find_in_raf(FoundPictures& found) {
    Window file = found.file();
    const auto header = VELL_TRY(file.read_record<raf::Header>());
    VELL_TRY(found.add(file.part(header.jpeg_offset, header.jpeg_length), Kind::Preview));
    return {};
}

Read<void> find_in_ciff(std::optional<Orientation> of_file, FoundPictures& found) {
    for (const ciff::Record& record : VELL_TRY(ciff::File::read(found.file())).records)
        if (record.type == ciff::RecordType::FullPicture ||
            record.type == ciff::RecordType::SmallPicture)
            VELL_TRY(found.add(record.data, Kind::Preview, of_file));
    return {};
}

Read<void> find_in_x3f(std::optional<Orientation> of_file, FoundPictures& found) {
    for (const x3f::Image& image : VELL_TRY(x3f::read_images(found.file())))
        if (image.header.type == x3f::ImageHeader::for_preview &&
            image.header.format == x3f::ImageHeader::jpeg)
            VELL_TRY(found.add(image.data, Kind::Preview, of_file));
    return {};
}

// Only in the maker's note.
Read<void> find_in_mrw(std::optional<Orientation> of_file, FoundPictures& found) {
    const Window block = VELL_TRY(mrw::find_tags(found.file()));
    Window start = block;
    const std::string bytes = VELL_TRY(start.read_bytes(tiff::Header::size));
    const auto header = tiff::Header::read(bytes);
    if (!header)
        return {};
    const auto first = VELL_TRY(TagDirectory::at(block, header->first_directory, header->order));
    const auto exif = VELL_TRY(first.number(tiff::tag::exif_directory));
    if (!exif)
        return {};
    return find_in_maker_note(VELL_TRY(TagDirectory::at(block, *exif, header->order)), of_file,
                              found);
}

} // namespace

Read<void> find_in_camera_file(Format format, FoundPictures& found) {
    const auto of_file =
        VELL_TRY(if_sound(orientation_in_camera_file(format, found.file()))).value_or(std::nullopt);
    switch (format) {
    case Format::Raf:
        return find_in_raf(found);
    case Format::Ciff:
        return find_in_ciff(of_file, found);
    case Format::Mrw:
        return find_in_mrw(of_file, found);
    case Format::X3f:
        return find_in_x3f(of_file, found);
    default:
        return {};
    }
}

} // namespace vell::pictures
