#include "src/formats/photoshop.h"
#include "src/metadata/containers/block_collector.h"

namespace vell::metadata {
namespace {

using namespace formats;
using photoshop::ResourceId;

Read<void> note(const photoshop::ResourcePart& part, BlockCollector& found) {
    if (part.is(ResourceId::Iptc) && found.wants_iptc())
        found.set_iptc(VELL_TRY(found.read(part.data)));
    else if (part.is(ResourceId::ImageUrl) && found.wants_image_url())
        found.set_image_url(VELL_TRY(found.read(part.data)));
    return {};
}

// In files of Photoshop's own everything else stands there, too.
Read<void> note_in_file(const photoshop::ResourcePart& part, BlockCollector& found) {
    if (part.is(ResourceId::Exif) && found.wants_tags())
        return found.add_tags(part.data);
    if (part.is(ResourceId::Xmp) && found.wants_xmp())
        found.set_xmp(VELL_TRY(found.read(part.data)));
    else if (part.is(ResourceId::IccProfile) && found.wants_icc())
        found.set_icc(VELL_TRY(found.read(part.data)));
    return note(part, found);
}

} // namespace

Read<void> find_in_photoshop(const Window& file, BlockCollector& found) {
    photoshop::ResourceWalk walk(VELL_TRY(photoshop::find_resources(file)));
    while (found.wants_anything()) {
        const auto part = VELL_TRY(walk.next());
        if (!part)
            return {};
        VELL_TRY(if_sound(note_in_file(*part, found)));
    }
    return {};
}

Read<void> find_in_resources(const Window& resources, BlockCollector& found) {
    photoshop::ResourceWalk walk(resources);
    while (found.wants_resources()) {
        const auto part = VELL_TRY(walk.next());
        if (!part)
            return {};
        VELL_TRY(if_sound(note(*part, found)));
    }
    return {};
}

} // namespace vell::metadata
