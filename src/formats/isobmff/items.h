// Images and other data that a file has as items (ISO/IEC 14496-12, section 8.11; HEIF, ISO/IEC
// 23008-12): the primary one, their places, what they refer to, their properties.
#pragma once

#include "src/formats/isobmff/boxes.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vell::formats::isobmff {

using ItemId = std::uint32_t;

struct Extent {
    std::uint64_t offset = 0;
    std::uint64_t length = 0; // 0: all there is
    std::uint64_t index = 0;  // of the reference that it is taken from
};

// Where an item's offsets count from (8.11.3.3).
enum class ConstructionMethod : std::uint8_t { File = 0, ItemData = 1, Item = 2 };

struct Item {
    FourCc type{};
    std::string name;
    std::string content_type; // of "mime" items
    bool is_hidden = false;
    ConstructionMethod method = ConstructionMethod::File;
    std::uint16_t data_reference = 0; // 0: this file
    std::uint64_t base_offset = 0;
    std::vector<Extent> extents;
    std::vector<std::uint16_t> properties; // their numbers, from 1 on, in their order
};

struct ItemReference {
    FourCc type{};
    ItemId from = 0;
    std::vector<ItemId> to;
};

// Of an image, as it is shown.
struct ImageProperties {
    std::uint64_t width = 0; // "ispe", turned as "irot" says
    std::uint64_t height = 0;
    unsigned depth = 0;    // bits of a pixel ("pixi", or the coder's own), 0 when it is not told
    unsigned rotation = 0; // degrees, anti-clockwise ("irot")
    FourCc codec{};        // of the item, or of the images that a derived one is made of
};

// All numbers together; a file that has more is read as far as that.
inline constexpr std::size_t most_items = 1U << 16U;
inline constexpr std::size_t most_extents = 1U << 18U;

class Items {
  public:
    // Of the file's "meta" box. Absent when there is none.
    static Read<Items> read(const Window& file);

    // 0 when none is named.
    ItemId primary() const { return primary_; }
    const std::map<ItemId, Item>& all() const { return items_; }
    const std::vector<ItemReference>& references() const { return references_; }

    // The bytes of an item, from all of its extents. TooLarge beyond the limit, Absent for an item
    // that has no place in this file, Corrupt for items that are made of one another in a circle.
    Read<std::string> value_of(ItemId id, std::uint64_t limit) const;
    // Where the file has an item in one piece; Absent for one that is put together of several.
    Read<Window> place_of(ItemId id) const;
    // Absent for an item without a size.
    Read<ImageProperties> image(ItemId id) const;
    // The colour profile of an image, or of the first one that it is made of; nullopt for none.
    Read<std::optional<Window>> profile(ItemId id) const;

  private:
    explicit Items(const Window& file) : file_(file), item_data_(file.part(0, 0)) {}

    Read<void> read_part(Box& box);
    Read<void> read_primary(Window content);
    Read<void> read_information(Window content);
    Read<void> read_entry(Window content);
    Read<void> read_locations(Window content);
    Read<void> read_references(Window content);
    Read<void> read_properties(const Window& content);
    Read<void> read_associations(Window content);
    struct Assembly;
    Read<void> append_value(ItemId id, Assembly& assembly, int depth, std::string& value) const;
    Read<std::string> part_of_item(const ItemReference* sources, const Extent& extent,
                                   std::uint64_t offset, Assembly& assembly, int depth) const;
    FourCc codec_of(ItemId id) const;
    Read<std::optional<Window>> own_profile(const Item& item) const;
    const ItemReference* reference(FourCc type, ItemId from) const;
    Item* item_to_fill(ItemId id);

    Window file_;
    Window item_data_; // "idat"
    ItemId primary_ = 0;
    std::map<ItemId, Item> items_;
    std::vector<ItemReference> references_;
    std::map<std::pair<FourCc, ItemId>, std::size_t> first_reference_; // by type and origin
    std::vector<Box> properties_;
    std::size_t extent_count_ = 0;
    std::size_t target_count_ = 0;
};

} // namespace vell::formats::isobmff
