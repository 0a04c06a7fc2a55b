#include "src/formats/shell_link_file.h"

#include "src/base/ascii.h"
#include "src/base/bytes.h"
#include "src/files/paths/path_parts.h"

#include <cstdint>

namespace vell::files {
namespace {

// MS-SHLLINK 2.1: ShellLinkHeader.
constexpr std::size_t header_size = 0x4C;
constexpr std::size_t link_flags_offset = 20;
constexpr std::size_t file_attributes_offset = 24;
constexpr std::string_view header_start{"\x4C\0\0\0\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 20};
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
    if (bytes.size() < header_size || !bytes.starts_with(header_start))
        return std::nullopt;
    Layout layout;
    layout.flags = load<std::uint32_t>(bytes, link_flags_offset, ByteOrder::Little).value_or(0);
    std::size_t at = header_size;
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

std::u16string_view take_name(std::u16string_view& path) {
    const std::size_t end = path.find(u'\\');
    const std::u16string_view name = path.substr(0, end);
    path.remove_prefix(end == std::u16string_view::npos ? path.size() : end + 1);
    return name;
}

} // namespace

Result<LinkFile> read_link_file(std::string_view bytes) {
    const std::optional<Layout> layout = layout_of(bytes);
    if (!layout)
        return Failure{ErrorCode::CorruptStructure};
    LinkFile link;
    const auto attributes =
        load<std::uint32_t>(bytes, file_attributes_offset, ByteOrder::Little).value_or(0);
    link.leads_to_folder = (attributes & attribute_directory) != 0;
    if (!(layout->flags & is_unicode))
        return link; // in a code page of the machine that made it
    const std::size_t end = layout->relative_path_offset + layout->relative_path_size;
    for (std::size_t at = layout->relative_path_offset + 2; at < end; at += 2)
        link.relative_target +=
            load<std::uint16_t>(bytes, at, ByteOrder::Little).value_or(std::uint16_t{0});
    return link;
}

Result<std::string> with_relative_target(std::string_view bytes, std::u16string_view relative) {
    const std::optional<Layout> layout = layout_of(bytes);
    if (!layout || !(layout->flags & is_unicode))
        return Failure{ErrorCode::CorruptStructure};
    if (relative.size() > 0xFFFF)
        return Failure{ErrorCode::PathTooLong};
    std::string changed(bytes.substr(0, link_flags_offset));
    append_integer<std::uint32_t>(changed, layout->flags | has_relative_path, ByteOrder::Little);
    changed += bytes.substr(changed.size(), layout->relative_path_offset - changed.size());
    append_integer<std::uint16_t>(changed, static_cast<std::uint16_t>(relative.size()),
                                  ByteOrder::Little);
    for (const char16_t unit : relative)
        append_integer<std::uint16_t>(changed, unit, ByteOrder::Little);
    changed += bytes.substr(layout->relative_path_offset + layout->relative_path_size);
    return changed;
}

std::optional<std::u16string> relative_path(std::u16string_view folder, std::u16string_view item) {
    folder = without_trailing_separator(folder);
    item = without_trailing_separator(item);
    const std::size_t root = root_length(folder);
    // Letters beyond ASCII that differ in case make a way longer than it need be, not a wrong one.
    if (root == 0 || root != root_length(item) ||
        !equal_ignoring_case(folder.substr(0, root), item.substr(0, root)))
        return std::nullopt;
    folder.remove_prefix(root);
    item.remove_prefix(root);
    while (!folder.empty() && !item.empty()) {
        std::u16string_view folder_rest = folder;
        std::u16string_view item_rest = item;
        if (!equal_ignoring_case(take_name(folder_rest), take_name(item_rest)))
            break;
        folder = folder_rest;
        item = item_rest;
    }
    std::u16string way;
    while (!folder.empty()) {
        take_name(folder);
        way += u"..\\";
    }
    if (way.empty())
        way = u".\\";
    way += item;
    while (way.ends_with(u'\\'))
        way.pop_back();
    return way;
}

} // namespace vell::files
