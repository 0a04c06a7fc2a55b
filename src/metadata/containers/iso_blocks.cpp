#include "src/formats/camera/cr3.h"
#include "src/formats/isobmff/items.h"
#include "src/metadata/containers/block_collector.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace vell::metadata {
namespace {

using namespace formats;
using namespace formats::isobmff;

bool holds_tags(const Item& item) {
    return item.type == "Exif"_4cc;
}
bool holds_packet(const Item& item) {
    return item.type == "mime"_4cc && item.content_type == "application/rdf+xml";
}

class ItemFinder {
  public:
    ItemFinder(const Items& items, BlockCollector& found) : items_(items), found_(found) {}

    Read<void> run() {
        if (found_.wants_tags())
            if (const auto id = find(holds_tags))
                VELL_TRY(if_sound(add_tags(*id)));
        if (found_.wants_xmp())
            if (const auto id = find(holds_packet))
                VELL_TRY(if_sound(add_packet(*id)));
        if (!found_.wants_icc())
            return {};
        if (const auto profile = VELL_TRY(items_.profile(items_.primary())))
            found_.set_icc(VELL_TRY(found_.read(*profile)));
        return {};
    }

  private:
    // That which describes the primary image, or else the first one.
    std::optional<ItemId> find(bool (*is_wanted)(const Item&)) const {
        for (const ItemReference& reference : items_.references()) {
            const auto item = items_.all().find(reference.from);
            if (reference.type == "cdsc"_4cc && item != items_.all().end() &&
                is_wanted(item->second) &&
                std::ranges::find(reference.to, items_.primary()) != reference.to.end())
                return reference.from;
        }
        for (const auto& [id, item] : items_.all())
            if (is_wanted(item))
                return id;
        return std::nullopt;
    }

    // In one piece it stays in the file.
    Read<void> add_tags(ItemId id) {
        if (const auto place = VELL_TRY(if_sound(items_.place_of(id))))
            return found_.add_tags_behind_offset(*place);
        auto block = VELL_TRY(items_.value_of(id, found_.room()));
        return found_.add_tags_behind_offset(found_.keep(VELL_TRY(found_.take(std::move(block)))));
    }

    Read<void> add_packet(ItemId id) {
        auto packet = VELL_TRY(items_.value_of(id, found_.room()));
        found_.set_xmp(VELL_TRY(found_.take(std::move(packet))));
        return {};
    }

    const Items& items_;
    BlockCollector& found_;
};

Read<void> find_items(const Window& file, BlockCollector& found) {
    const auto items = VELL_TRY(if_sound(Items::read(file)));
    return items ? ItemFinder(*items, found).run() : Read<void>();
}

Read<void> find_camera_tags(const Window& file, BlockCollector& found) {
    const cr3::Tags tags = VELL_TRY(cr3::read_tags(file));
    if (tags.image)
        VELL_TRY(if_sound(found.add_tags(*tags.image, TagRoot::Image)));
    if (tags.exif)
        VELL_TRY(if_sound(found.add_tags(*tags.exif, TagRoot::Exif)));
    if (tags.gps)
        VELL_TRY(if_sound(found.add_tags(*tags.gps, TagRoot::Gps)));
    return {};
}

// In a box of the file, or in the movie's user data.
Read<std::optional<Window>> find_packet(const Window& file) {
    if (const auto packet = VELL_TRY(find_user_box(file, xmp_user_type)))
        return packet;
    std::optional<Window> around = file;
    for (const FourCc type : {"moov"_4cc, "udta"_4cc, "XMP_"_4cc}) {
        const auto box = VELL_TRY(find_box(*around, type));
        if (!box)
            return std::optional<Window>();
        around = box->content;
    }
    return around;
}

} // namespace

Read<void> find_in_iso_media(const Window& file, BlockCollector& found) {
    if (found.wants_tags() || found.wants_xmp() || found.wants_icc())
        VELL_TRY(if_sound(find_items(file, found)));
    if (found.wants_tags())
        VELL_TRY(if_sound(find_camera_tags(file, found)));
    if (!found.wants_xmp())
        return {};
    if (const auto packet = VELL_TRY(if_sound(find_packet(file))); packet && *packet)
        found.set_xmp(VELL_TRY(found.read(**packet)));
    return {};
}

// ISO/IEC 18181-2, sections 9.4 and 9.5. Boxes that are compressed ("brob") are left out, and a
// codestream alone has no room for any.
Read<void> find_in_jpeg_xl(const Window& file, BlockCollector& found) {
    return each_box(file, [&](Box& box) -> Read<void> {
        if (box.type == "Exif"_4cc && found.wants_tags())
            return if_sound(found.add_tags_behind_offset(box.content));
        if (box.type != "xml "_4cc || !found.wants_xmp())
            return {};
        if (auto packet = VELL_TRY(if_sound(found.read(box.content))))
            found.set_xmp(*std::move(packet));
        return {};
    });
}

} // namespace vell::metadata
