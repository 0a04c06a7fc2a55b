#include "src/formats/isobmff/items.h"

#include <algorithm>

namespace vell::formats::isobmff {
namespace {

constexpr int deepest_construction = 8;

// An integer of so many bytes: 0, 1, 2, 4 or 8.
Read<std::uint64_t> read_sized(Window& content, unsigned bytes) {
    switch (bytes) {
    case 0:
        return std::uint64_t{0};
    case 1:
        return std::uint64_t{VELL_TRY(content.read_integer<std::uint8_t>(ByteOrder::Big))};
    case 2:
        return std::uint64_t{VELL_TRY(content.read_integer<std::uint16_t>(ByteOrder::Big))};
    case 4:
        return std::uint64_t{VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big))};
    case 8:
        return content.read_integer<std::uint64_t>(ByteOrder::Big);
    default:
        return fault(Damage::Corrupt);
    }
}
// Wide where the box's version has grown to 32 bits.
Read<std::uint32_t> read_grown(Window& content, bool is_wide) {
    return static_cast<std::uint32_t>(VELL_TRY(read_sized(content, is_wide ? 4 : 2)));
}

Read<std::string> read_name(Window& content) {
    constexpr std::uint64_t longest_name = 1024;
    const std::uint64_t start = content.position();
    const std::string bytes = VELL_TRY(content.read_bytes(longest_name));
    const std::size_t end = bytes.find('\0');
    if (end == std::string::npos)
        return bytes;
    content.seek(start + end + 1);
    return bytes.substr(0, end);
}

// "ispe" (HEIF, 6.5.3), behind its version.
struct SpatialExtents {
    static constexpr std::size_t size = 8;
    static constexpr ByteOrder order = ByteOrder::Big;

    std::uint32_t width = 0;
    std::uint32_t height = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &SpatialExtents::width}, Field{4, &SpatialExtents::height}};
    }
};

// "pixi" (HEIF, 6.5.6): how many channels, and the bits of each.
Read<unsigned> read_depth(Window content) {
    VELL_TRY(read_full_box(content));
    const auto channels = VELL_TRY(content.read_integer<std::uint8_t>(ByteOrder::Big));
    const std::string bits = VELL_TRY(content.read_bytes(channels));
    if (bits.size() < channels)
        return fault(Damage::CutOff);
    unsigned depth = 0;
    for (const char of_channel : bits)
        depth += static_cast<unsigned char>(of_channel);
    return depth;
}

// The bits of a pixel that a coder's configuration tells: "hvcC" (ISO/IEC 14496-15, section 8.3.3)
// and "av1C" (AV1 Codec ISO Media File Format Binding, section 2.3).
Read<unsigned> read_hevc_depth(Window content) {
    content.seek(16);
    const auto chroma_format = VELL_TRY(content.read_integer<std::uint8_t>(ByteOrder::Big)) & 3U;
    const auto luma = (VELL_TRY(content.read_integer<std::uint8_t>(ByteOrder::Big)) & 7U) + 8;
    const auto chroma = (VELL_TRY(content.read_integer<std::uint8_t>(ByteOrder::Big)) & 7U) + 8;
    return chroma_format == 0 ? luma : luma + 2 * chroma;
}
Read<unsigned> read_av1_depth(Window content) {
    constexpr unsigned high_bit_depth = 0x40;
    constexpr unsigned twelve_bits = 0x20;
    constexpr unsigned monochrome = 0x10;
    content.seek(2);
    const auto flags = VELL_TRY(content.read_integer<std::uint8_t>(ByteOrder::Big));
    unsigned bits = 8;
    if ((flags & high_bit_depth) != 0)
        bits = (flags & twelve_bits) != 0 ? 12 : 10;
    return (flags & monochrome) != 0 ? bits : 3 * bits;
}

Read<void> read_property(const Box& property, ImageProperties& image) {
    Window content = property.content;
    switch (property.type) {
    case "ispe"_4cc: {
        VELL_TRY(read_full_box(content));
        const auto extents = VELL_TRY(content.read_record<SpatialExtents>());
        image.width = extents.width;
        image.height = extents.height;
        break;
    }
    case "pixi"_4cc:
        image.depth = VELL_TRY(read_depth(content));
        break;
    case "hvcC"_4cc:
        if (image.depth == 0)
            image.depth = VELL_TRY(read_hevc_depth(content));
        break;
    case "av1C"_4cc:
        if (image.depth == 0)
            image.depth = VELL_TRY(read_av1_depth(content));
        break;
    case "irot"_4cc: {
        const auto quarters = VELL_TRY(content.read_integer<std::uint8_t>(ByteOrder::Big)) & 3U;
        image.rotation = quarters * 90;
        break;
    }
    default:
        break;
    }
    return {};
}

} // namespace

Read<Items> Items::read(const Window& file) {
    auto meta = VELL_TRY(find_box(file, "meta"_4cc));
    if (!meta)
        return fault(Damage::Absent);
    Items items(file);
    VELL_TRY(read_full_box(meta->content));
    VELL_TRY(each_box(meta->content.from(meta->content.position()),
                      [&](Box& box) { return if_sound(items.read_part(box)); }));
    return items;
}

Read<void> Items::read_part(Box& box) {
    switch (box.type) {
    case "pitm"_4cc:
        return read_primary(box.content);
    case "iinf"_4cc:
        return read_information(box.content);
    case "iloc"_4cc:
        return read_locations(box.content);
    case "iref"_4cc:
        return read_references(box.content);
    case "iprp"_4cc:
        return read_properties(box.content);
    case "idat"_4cc:
        item_data_ = box.content;
        return {};
    default:
        return {};
    }
}

Read<void> Items::read_primary(Window content) {
    const bool is_wide = VELL_TRY(read_full_box(content)).version() > 0;
    primary_ = VELL_TRY(read_grown(content, is_wide));
    return {};
}

// nullptr when there are too many already.
Item* Items::item_to_fill(ItemId id) {
    if (items_.size() >= most_items && !items_.contains(id))
        return nullptr;
    return &items_[id];
}

Read<void> Items::read_information(Window content) {
    const bool is_wide = VELL_TRY(read_full_box(content)).version() > 0;
    VELL_TRY(read_grown(content, is_wide)); // how many there are
    return each_box(content.from(content.position()), [&](Box& box) -> Read<void> {
        return box.type == "infe"_4cc ? if_sound(read_entry(box.content)) : Read<void>();
    });
}

// Versions below 2 have no type: they describe files of the web.
Read<void> Items::read_entry(Window content) {
    const auto header = VELL_TRY(content.read_record<FullBoxHeader>());
    const bool has_type = header.version() >= 2;
    const ItemId id = VELL_TRY(read_grown(content, header.version() > 2));
    content.skip(sizeof(std::uint16_t)); // its protection
    Item* const item = item_to_fill(id);
    if (item == nullptr)
        return {};
    item->is_hidden = (header.flags() & 1U) != 0;
    if (has_type)
        item->type = FourCc{VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big))};
    item->name = VELL_TRY(read_name(content));
    if (!has_type || item->type == "mime"_4cc)
        item->content_type = VELL_TRY(read_name(content));
    return {};
}

Read<void> Items::read_locations(Window content) {
    const unsigned version = VELL_TRY(read_full_box(content)).version();
    const unsigned sizes = VELL_TRY(content.read_integer<std::uint16_t>(ByteOrder::Big));
    const unsigned offset_size = sizes >> 12;
    const unsigned length_size = sizes >> 8 & 15U;
    const unsigned base_size = sizes >> 4 & 15U;
    const unsigned index_size = version > 0 ? sizes & 15U : 0;
    const std::uint32_t count = VELL_TRY(read_grown(content, version > 1));
    for (std::uint32_t i = 0; i < count; ++i) {
        const ItemId id = VELL_TRY(read_grown(content, version > 1));
        Item* const item = item_to_fill(id);
        if (item == nullptr)
            return {};
        if (version > 0)
            item->method = ConstructionMethod{static_cast<std::uint8_t>(
                VELL_TRY(content.read_integer<std::uint16_t>(ByteOrder::Big)) & 15U)};
        item->data_reference = VELL_TRY(content.read_integer<std::uint16_t>(ByteOrder::Big));
        item->base_offset = VELL_TRY(read_sized(content, base_size));
        const auto extents = VELL_TRY(content.read_integer<std::uint16_t>(ByteOrder::Big));
        for (unsigned j = 0; j < extents; ++j) {
            if (++extent_count_ > most_extents)
                return {};
            Extent extent;
            extent.index = VELL_TRY(read_sized(content, index_size));
            extent.offset = VELL_TRY(read_sized(content, offset_size));
            extent.length = VELL_TRY(read_sized(content, length_size));
            item->extents.push_back(extent);
        }
    }
    return {};
}

Read<void> Items::read_references(Window content) {
    const bool is_wide = VELL_TRY(read_full_box(content)).version() > 0;
    return each_box(content.from(content.position()), [&](Box& box) -> Read<void> {
        ItemReference reference;
        reference.type = box.type;
        reference.from = VELL_TRY(read_grown(box.content, is_wide));
        const auto count = VELL_TRY(box.content.read_integer<std::uint16_t>(ByteOrder::Big));
        for (unsigned i = 0; i < count && target_count_ < most_extents; ++i, ++target_count_)
            reference.to.push_back(VELL_TRY(read_grown(box.content, is_wide)));
        if (references_.size() < most_items) {
            first_reference_.try_emplace({reference.type, reference.from}, references_.size());
            references_.push_back(std::move(reference));
        }
        return {};
    });
}

Read<void> Items::read_properties(const Window& content) {
    return each_box(content, [&](Box& box) -> Read<void> {
        if (box.type == "ipma"_4cc)
            return if_sound(read_associations(box.content));
        if (box.type != "ipco"_4cc)
            return {};
        return each_box(box.content, [&](Box& property) -> Read<void> {
            if (properties_.size() < most_items)
                properties_.push_back(property);
            return {};
        });
    });
}

Read<void> Items::read_associations(Window content) {
    const FullBoxHeader header = VELL_TRY(read_full_box(content));
    const bool wide_numbers = (header.flags() & 1U) != 0;
    const auto count = VELL_TRY(content.read_integer<std::uint32_t>(ByteOrder::Big));
    for (std::uint32_t i = 0; i < count; ++i) {
        const ItemId id = VELL_TRY(read_grown(content, header.version() > 0));
        Item* const item = item_to_fill(id);
        const auto properties = VELL_TRY(content.read_integer<std::uint8_t>(ByteOrder::Big));
        for (unsigned j = 0; j < properties; ++j) {
            // The highest bit says that a reader must know the property.
            const std::uint64_t number = VELL_TRY(read_sized(content, wide_numbers ? 2 : 1));
            if (item == nullptr || ++extent_count_ > most_extents)
                return {};
            item->properties.push_back(
                static_cast<std::uint16_t>(number & (wide_numbers ? 0x7FFFU : 0x7FU)));
        }
    }
    return {};
}

const ItemReference* Items::reference(FourCc type, ItemId from) const {
    const auto found = first_reference_.find({type, from});
    return found == first_reference_.end() ? nullptr : &references_[found->second];
}

// What is left of the work that a value may cost: parts of parts are read again each time.
struct Items::Assembly {
    std::uint64_t limit;
    std::uint64_t bytes = 8 * limit;
    std::size_t extents = most_extents;
};

Read<std::string> Items::value_of(ItemId id, std::uint64_t limit) const {
    Assembly assembly{.limit = limit};
    std::string value;
    VELL_TRY(append_value(id, assembly, 0, value));
    return value;
}

Read<void> Items::append_value(ItemId id, Assembly& assembly, int depth, std::string& value) const {
    const auto found = items_.find(id);
    if (found == items_.end() || found->second.extents.empty() || found->second.data_reference != 0)
        return fault(Damage::Absent);
    if (depth > deepest_construction)
        return fault(Damage::Corrupt);
    const Item& item = found->second;
    const ItemReference* const sources =
        item.method == ConstructionMethod::Item ? reference("iloc"_4cc, id) : nullptr;
    const Window& around = item.method == ConstructionMethod::ItemData ? item_data_ : file_;
    for (const Extent& extent : item.extents) {
        if (assembly.extents-- == 0)
            return fault(Damage::TooLarge);
        const std::uint64_t offset = item.base_offset + extent.offset;
        if (offset < item.base_offset)
            return fault(Damage::Corrupt);
        if (item.method == ConstructionMethod::Item) {
            value += VELL_TRY(part_of_item(sources, extent, offset, assembly, depth));
        } else {
            if (offset > around.size())
                return fault(Damage::CutOff);
            const std::uint64_t length =
                extent.length == 0 ? around.size() - offset : extent.length;
            if (length > assembly.bytes || length > assembly.limit - value.size())
                return fault(Damage::TooLarge);
            assembly.bytes -= length;
            value += VELL_TRY(around.part(offset, length).read_rest());
        }
        if (value.size() > assembly.limit)
            return fault(Damage::TooLarge);
    }
    return {};
}

Read<Window> Items::place_of(ItemId id) const {
    const auto found = items_.find(id);
    if (found == items_.end() || found->second.extents.size() != 1 ||
        found->second.data_reference != 0 || found->second.method == ConstructionMethod::Item)
        return fault(Damage::Absent);
    const Item& item = found->second;
    const Extent& extent = item.extents.front();
    const std::uint64_t offset = item.base_offset + extent.offset;
    if (offset < item.base_offset)
        return fault(Damage::Corrupt);
    const Window& around = item.method == ConstructionMethod::ItemData ? item_data_ : file_;
    return extent.length == 0 ? around.from(offset) : around.part(offset, extent.length);
}

// The index of an extent names one of the references, the first one when it is 0.
Read<std::string> Items::part_of_item(const ItemReference* sources, const Extent& extent,
                                      std::uint64_t offset, Assembly& assembly, int depth) const {
    const std::uint64_t number = extent.index > 0 ? extent.index - 1 : 0;
    if (sources == nullptr || number >= sources->to.size())
        return fault(Damage::Absent);
    std::string other;
    VELL_TRY(append_value(sources->to[number], assembly, depth + 1, other));
    if (offset > other.size())
        return fault(Damage::CutOff);
    other.erase(0, offset);
    if (extent.length != 0)
        other.resize(std::min<std::uint64_t>(other.size(), extent.length));
    return other;
}

// Grids, overlays and turned images are made of others ("dimg").
FourCc Items::codec_of(ItemId id) const {
    for (int depth = 0;; ++depth) {
        const auto found = items_.find(id);
        if (found == items_.end())
            return {};
        const ItemReference* const made_of = reference("dimg"_4cc, id);
        if (made_of == nullptr || made_of->to.empty() || depth == deepest_construction)
            return found->second.type;
        id = made_of->to.front();
    }
}

Read<ImageProperties> Items::image(ItemId id) const {
    const auto found = items_.find(id);
    if (found == items_.end())
        return fault(Damage::Absent);
    ImageProperties image;
    for (const std::uint16_t number : found->second.properties)
        if (number > 0 && number <= properties_.size())
            VELL_TRY(if_sound(read_property(properties_[number - 1U], image)));
    if (image.width == 0 || image.height == 0)
        return fault(Damage::Absent);
    if (image.rotation % 180 == 90)
        std::swap(image.width, image.height);
    image.codec = codec_of(id);
    return image;
}

// "colr" (ISO/IEC 14496-12, section 12.1.5); an image may have one with numbers alone, too.
Read<std::optional<Window>> Items::own_profile(const Item& item) const {
    for (const std::uint16_t number : item.properties) {
        if (number == 0 || number > properties_.size() ||
            properties_[number - 1U].type != "colr"_4cc)
            continue;
        Window content = properties_[number - 1U].content;
        const auto type = VELL_TRY(if_sound(content.read_integer<std::uint32_t>(ByteOrder::Big)));
        if (type && (FourCc{*type} == "prof"_4cc || FourCc{*type} == "rICC"_4cc))
            return std::optional(
                content.part(content.position(), content.announced() - content.position()));
    }
    return std::optional<Window>();
}

Read<std::optional<Window>> Items::profile(ItemId id) const {
    for (int depth = 0; depth < deepest_construction; ++depth) {
        const auto found = items_.find(id);
        if (found == items_.end())
            break;
        if (auto own = VELL_TRY(own_profile(found->second)))
            return own;
        const ItemReference* const made_of = reference("dimg"_4cc, id);
        if (made_of == nullptr || made_of->to.empty())
            break;
        id = made_of->to.front();
    }
    return std::optional<Window>();
}

} // namespace vell::formats::isobmff
