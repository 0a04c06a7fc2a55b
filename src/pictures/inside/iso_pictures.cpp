#include "src/pictures/inside/iso_pictures.h"

#include "src/formats/camera/cr3.h"
#include "src/formats/isobmff/items.h"
#include "src/formats/isobmff/metadata_items.h"
#include "src/formats/isobmff/movie.h"
#include "src/pictures/inside/camera_orientation.h"

#include <set>
#include <string>

namespace vell::pictures {
namespace {

using namespace formats;
using namespace formats::isobmff;
using Kind = EmbeddedPicture::Kind;

// Anti-clockwise, as "irot" counts.
Orientation turned_back(unsigned degrees) {
    switch (degrees) {
    case 90:
        return Orientation::LeftBottom;
    case 180:
        return Orientation::BottomRight;
    case 270:
        return Orientation::RightTop;
    default:
        return Orientation::TopLeft;
    }
}

Read<void> add_item(const Items& items, ItemId id, FoundPictures& found) {
    const auto all = items.all().find(id);
    if (all == items.all().end() || all->second.type != "jpeg"_4cc)
        return {};
    const auto image = VELL_TRY(if_sound(items.image(id)));
    const Orientation orientation = turned_back(image ? image->rotation : 0);
    if (const auto place = VELL_TRY(if_sound(items.place_of(id)))) {
        VELL_TRY(found.add(*place, Kind::Preview, orientation));
        return {};
    }
    std::string bytes = VELL_TRY(found.room().take(items.value_of(id, found.room().left())));
    VELL_TRY(found.add_copy(std::move(bytes), Kind::Preview, orientation));
    return {};
}

// The image itself and what stands for it.
Read<void> find_items(FoundPictures& found) {
    const auto items = VELL_TRY(if_sound(Items::read(found.file())));
    if (!items)
        return {};
    VELL_TRY(if_sound(add_item(*items, items->primary(), found)));
    std::set<ItemId> seen{items->primary()};
    for (const ItemReference& reference : items->references())
        if (reference.type == "thmb"_4cc && seen.size() <= most_pictures &&
            seen.insert(reference.from).second)
            VELL_TRY(if_sound(add_item(*items, reference.from, found)));
    return {};
}

bool is_cover(const MetadataItem& item) {
    return (item.source == ItemSource::Itunes && item.type == "covr"_4cc) ||
           (item.source == ItemSource::Keys && item.name == "com.apple.quicktime.artwork");
}

Read<void> find_covers(FoundPictures& found) {
    const auto movie = VELL_TRY(if_sound(MovieFile::open(found.file())));
    if (!movie)
        return {};
    return each_metadata_item(*movie, [&](const MetadataItem& item) -> Read<void> {
        if (!is_cover(item))
            return {};
        if (movie->was_compressed()) {
            Window value = item.value;
            const std::uint64_t most = found.room().left();
            std::string bytes = VELL_TRY(found.room().take(value.read_bytes(most)));
            VELL_TRY(found.add_copy(std::move(bytes), Kind::Cover));
        } else {
            VELL_TRY(found.add(item.value, Kind::Cover));
        }
        return {};
    });
}

Read<void> find_canon_previews(FoundPictures& found) {
    const auto pictures = VELL_TRY(if_sound(cr3::read_pictures(found.file())));
    if (!pictures)
        return {};
    const auto of_file =
        VELL_TRY(if_sound(orientation_in_camera_file(Format::IsoMedia, found.file())));
    for (const Window& picture : *pictures)
        VELL_TRY(found.add(picture, Kind::Preview, of_file.value_or(std::nullopt)));
    return {};
}

} // namespace

Read<void> find_in_iso_media(FoundPictures& found) {
    VELL_TRY(find_items(found));
    VELL_TRY(find_canon_previews(found));
    return find_covers(found);
}

} // namespace vell::pictures
