#include "src/formats/shell_link_file.h"

#include "src/formats/record.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <tuple>

namespace vell::formats {
namespace {

// MS-SHLLINK 2.1: ShellLinkHeader.
struct LinkHeader {
    static constexpr std::size_t size = 0x4C;
    static constexpr ByteOrder order = ByteOrder::Little;
    static constexpr std::uint32_t signature = size; // it begins with its size
    static constexpr std::string_view link_class{"\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 16};
    static constexpr std::size_t flags_offset = 20;

    std::array<char, 16> class_id{};
    std::uint32_t link_flags = 0;
    std::uint32_t file_attributes = 0;

    static constexpr auto fields() {
        return std::tuple{Field{4, &LinkHeader::class_id},
                          Field{flags_offset, &LinkHeader::link_flags},
                          Field{24, &LinkHeader::file_attributes}};
    }
};
constexpr std::uint32_t attribute_directory = 0x10;

// MS-SHLLINK 2.1.1: LinkFlags.
enum LinkFlag : std::uint32_t {
    has_link_target_id_list = 0x1,
    has_link_info = 0x2,
    has_name = 0x4,
    has_relative_path = 0x8,
    is_unicode = 0x80,
};

struct Layout {
    std::uint32_t flags = 0;
    std::uint32_t attributes = 0;
    std::size_t relative_path_offset = 0; // where it stands or would stand
    std::size_t relative_path_size = 0;   // with its count of characters; 0 without one
};

// Bytes of a counted text of MS-SHLLINK 2.4, StringData.
std::optional<std::size_t> string_size(std::string_view bytes, std::size_t at,
                                       std::uint32_t flags) {
    const auto count = load<std::uint16_t>(bytes, at, ByteOrder::Little);
    if (!count)
        return std::nullopt;
    const std::size_t size = 2 + *count * std::size_t{flags & is_unicode ? 2u : 1u};
    if (size > bytes.size() - at)
        return std::nullopt;
    return size;
}

// Whether a list of items (MS-SHLLINK 2.2.2) is whole. The system believes the sizes in it.
bool is_item_list(std::string_view list) {
    for (;;) {
        const auto size = load<std::uint16_t>(list, 0, ByteOrder::Little);
        if (!size || *size > list.size())
            return false;
        if (*size == 0)
            return true;
        if (*size < sizeof *size)
            return false;
        list.remove_prefix(*size);
    }
}

std::optional<Layout> layout_of(std::string_view bytes) {
    const auto header = read_record<LinkHeader>(bytes);
    if (!header || !std::ranges::equal(header->class_id, LinkHeader::link_class))
        return std::nullopt;
    Layout layout;
    layout.flags = header->link_flags;
    layout.attributes = header->file_attributes;
    std::size_t at = LinkHeader::size;
    if (layout.flags & has_link_target_id_list) {
        const auto size = load<std::uint16_t>(bytes, at, ByteOrder::Little);
        if (!size || !is_item_list(bytes.substr(at + sizeof *size, *size)))
            return std::nullopt;
        at += sizeof *size + *size;
    }
    if (layout.flags & has_link_info) {
        const auto size = load<std::uint32_t>(bytes, at, ByteOrder::Little); // with itself
        if (!size || *size < 4)
            return std::nullopt;
        at += *size;
    }
    if (layout.flags & has_name) {
        const auto size = string_size(bytes, at, layout.flags);
        if (!size)
            return std::nullopt;
        at += *size;
    }
    if (at > bytes.size())
        return std::nullopt;
    layout.relative_path_offset = at;
    if (layout.flags & has_relative_path) {
        const auto size = string_size(bytes, at, layout.flags);
        if (!size)
            return std::nullopt;
        layout.relative_path_size = *size;
    }
    return layout;
}

} // namespace

Read<LinkFile> read_link_file(std::string_view bytes) {
    const std::optional<Layout> layout = layout_of(bytes);
    if (!layout)
        return fault(Damage::Corrupt);
    LinkFile link;
    link.leads_to_folder = (layout->attributes & attribute_directory) != 0;
    if (!(layout->flags & is_unicode))
        return link; // in a code page of the machine that made it
    const std::size_t end = layout->relative_path_offset + layout->relative_path_size;
    for (std::size_t at = layout->relative_path_offset + 2; at < end; at += 2)
        link.relative_target += static_cast<char16_t>(
            load<std::uint16_t>(bytes, at, ByteOrder::Little).value_or(std::uint16_t{0}));
    return link;
}

Read<std::string> with_relative_target(std::string_view bytes, std::u16string_view relative) {
    const std::optional<Layout> layout = layout_of(bytes);
    if (!layout || !(layout->flags & is_unicode))
        return fault(Damage::Corrupt);
    if (relative.size() > 0xFFFF)
        return fault(Damage::TooLarge);
    std::string changed(bytes.substr(0, LinkHeader::flags_offset));
    append_integer<std::uint32_t>(changed, layout->flags | has_relative_path, ByteOrder::Little);
    changed += bytes.substr(changed.size(), layout->relative_path_offset - changed.size());
    append_integer<std::uint16_t>(changed, static_cast<std::uint16_t>(relative.size()),
                                  ByteOrder::Little);
    for (const char16_t unit : relative)
        append_integer<std::uint16_t>(changed, unit, ByteOrder::Little);
    changed += bytes.substr(layout->relative_path_offset + layout->relative_path_size);
    return changed;
}

} // namespace vell::formats
