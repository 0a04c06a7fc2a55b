#include "src/pictures/inside/previews.h"

#include "src/formats/photoshop.h"
#include "src/formats/recognition.h"
#include "src/pictures/inside/found_pictures.h"
#include "src/pictures/inside/iso_pictures.h"
#include "src/pictures/inside/raw_pictures.h"
#include "src/pictures/inside/sound_covers.h"

#include <algorithm>
#include <string>

namespace vell::pictures {
namespace {

using namespace formats;

Read<void> find_in_photoshop(FoundPictures& found) {
    photoshop::ResourceWalk walk(VELL_TRY(photoshop::find_resources(found.file())));
    for (;;) {
        auto resource = VELL_TRY(walk.next());
        if (!resource)
            return {};
        if (!resource->is(photoshop::ResourceId::Thumbnail))
            continue;
        const auto header =
            VELL_TRY(if_sound(resource->data.read_record<photoshop::ThumbnailHeader>()));
        if (header && header->format == photoshop::ThumbnailHeader::jpeg)
            VELL_TRY(found.add(
                resource->data.part(photoshop::ThumbnailHeader::size, header->compressed_size),
                EmbeddedPicture::Kind::Preview));
    }
}

Read<void> find_in_file(FoundPictures& found) {
    Window file = found.file();
    const std::string start = VELL_TRY(file.read_bytes(recognizable_size));
    switch (const Format format = format_of(start)) {
    case Format::Tiff:
        return find_in_tiff(file, found);
    case Format::Unknown:
        return begins_like_tiff(start) ? find_in_tiff(file, found) : Read<void>();
    case Format::IsoMedia:
        return find_in_iso_media(found);
    case Format::Photoshop:
        return find_in_photoshop(found);
    case Format::Id3:
    case Format::Flac:
    case Format::Ogg:
    case Format::Riff:
    case Format::Aiff:
        return find_covers_of_sound(format, found);
    default:
        return find_in_camera_file(format, found);
    }
}

std::uint32_t longer_side(const EmbeddedPicture& picture) {
    return std::max(picture.width, picture.height);
}

// Within a twentieth: sides are whole numbers of pixels.
bool have_one_shape(const EmbeddedPicture& a, const EmbeddedPicture& b) {
    const std::uint64_t one = std::uint64_t{a.width} * b.height;
    const std::uint64_t other = std::uint64_t{a.height} * b.width;
    return std::max(one, other) - std::min(one, other) <= std::max(one, other) / 20;
}

} // namespace

Result<std::vector<EmbeddedPicture>> find_pictures(ByteSource& file) {
    FoundPictures found((Window(file)));
    const Read<void> done = if_sound(find_in_file(found));
    if (!done)
        return Failure{done.error().of_source};
    return found.take();
}

const EmbeddedPicture* choose(std::span<const EmbeddedPicture> pictures, std::uint32_t wanted) {
    if (pictures.empty())
        return nullptr;
    const auto cover =
        std::ranges::find(pictures, EmbeddedPicture::Kind::Cover, &EmbeddedPicture::kind);
    if (cover != pictures.end())
        return &*cover;
    const auto largest = std::ranges::max_element(pictures, {}, longer_side);
    const EmbeddedPicture* chosen = &*largest;
    for (const EmbeddedPicture& each : pictures)
        if (longer_side(each) >= wanted && longer_side(each) < longer_side(*chosen) &&
            have_one_shape(each, *largest))
            chosen = &each;
    return chosen;
}

} // namespace vell::pictures
