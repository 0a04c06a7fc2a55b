#include "src/pictures/inside/camera_orientation.h"

#include "src/formats/camera/ciff.h"
#include "src/formats/camera/cr3.h"
#include "src/formats/camera/mrw.h"
#include "src/formats/camera/raf.h"
#include "src/formats/camera/x3f.h"

#include <algorithm>

namespace vell::pictures {
namespace {

using namespace formats;

std::optional<Orientation> clockwise(std::int64_t degrees) {
    switch ((degrees % 360 + 360) % 360) {
    case 0:
        return Orientation::TopLeft;
    case 90:
        return Orientation::RightTop;
    case 180:
        return Orientation::BottomRight;
    case 270:
        return Orientation::LeftBottom;
    default:
        return std::nullopt;
    }
}

Read<std::optional<Orientation>> in_raf(Window file) {
    const auto header = VELL_TRY(file.read_record<raf::Header>());
    return orientation_in_jpeg(file.part(header.jpeg_offset, header.jpeg_length));
}

Read<std::optional<Orientation>> in_ciff(const Window& file) {
    const auto read = VELL_TRY(ciff::File::read(file));
    const auto found =
        std::ranges::find(read.records, ciff::RecordType::ImageInformation, &ciff::Record::type);
    if (found == read.records.end())
        return std::optional<Orientation>();
    Window data = found->data;
    return clockwise(VELL_TRY(data.read_record<ciff::ImageInformation>(read.order)).rotation);
}

Read<std::optional<Orientation>> in_x3f(Window file) {
    return clockwise(VELL_TRY(file.read_record<x3f::Header>()).rotation);
}

} // namespace

Read<std::optional<Orientation>> orientation_in_camera_file(Format format, const Window& file) {
    switch (format) {
    case Format::Raf:
        return in_raf(file);
    case Format::Ciff:
        return in_ciff(file);
    case Format::Mrw:
        return orientation_in_tags(VELL_TRY(mrw::find_tags(file)));
    case Format::X3f:
        return in_x3f(file);
    case Format::IsoMedia:
        return orientation_in_tags(VELL_TRY(cr3::find_tags(file)));
    default:
        return std::optional<Orientation>();
    }
}

} // namespace vell::pictures
