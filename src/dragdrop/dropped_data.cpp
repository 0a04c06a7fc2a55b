#include "src/dragdrop/dropped_data.h"

#include "src/base/ascii.h"
#include "src/base/bytes.h"
#include "src/base/number_text.h"
#include "src/base/utf16.h"
#include "src/files/tree/item_names.h"

#include <algorithm>

namespace vell::dragdrop {
namespace {

template <typename T>
std::optional<T> little_endian(std::string_view bytes, std::size_t offset) {
    return load<T>(bytes, offset, ByteOrder::Little);
}

// UTF-16 units from `bytes` up to a zero or the end.
std::u16string text_at_start(std::string_view bytes) {
    std::u16string text;
    for (std::size_t at = 0;; at += 2) {
        const auto unit = little_endian<std::uint16_t>(bytes, at);
        if (!unit || *unit == 0)
            return text;
        text += static_cast<char16_t>(*unit);
    }
}

// DROPFILES
constexpr std::size_t paths_offset_field = 0; // pFiles
constexpr std::size_t wide_field = 16;        // fWide

// FILEDESCRIPTORW
constexpr std::size_t descriptor_size = 592;
constexpr std::size_t flags_field = 0;
constexpr std::size_t attributes_field = 36;
constexpr std::size_t size_high_field = 64;
constexpr std::size_t size_low_field = 68;
constexpr std::size_t name_field = 72;
constexpr std::uint32_t has_attributes = 0x4; // FD_ATTRIBUTES
constexpr std::uint32_t has_size = 0x40;      // FD_FILESIZE
constexpr std::uint32_t folder_attribute = 0x10;

ContentsItem described_item(std::string_view descriptor) {
    const auto number = [descriptor](std::size_t field) {
        return little_endian<std::uint32_t>(descriptor, field).value_or(0);
    };
    const std::uint32_t flags = number(flags_field);
    ContentsItem item{.name = text_at_start(descriptor.substr(name_field)), .size = {}};
    if ((flags & has_size) != 0)
        item.size = std::uint64_t{number(size_high_field)} << 32 | number(size_low_field);
    item.is_folder =
        (flags & has_attributes) != 0 && (number(attributes_field) & folder_attribute) != 0;
    return item;
}

constexpr std::size_t longest_name = 120; // leaves room for the folder's path
constexpr std::u16string_view nameless = u"item";

bool is_forbidden(char16_t c) {
    return c < u' ' || std::u16string_view(u"\"*/:<>?\\|").find(c) != std::u16string_view::npos;
}

struct NameParts {
    std::u16string stem;
    std::u16string extension; // with its point
};

// Shortens the stem, and the extension only where that alone is too long.
NameParts parts_within(std::u16string_view name, std::size_t length) {
    constexpr std::size_t longest_extension = 20;
    std::size_t point = name.find_last_of(u'.');
    if (point == name.npos || point == 0 || name.size() - point > longest_extension)
        point = name.size();
    NameParts parts{std::u16string(name.substr(0, point)), std::u16string(name.substr(point))};
    const std::size_t room = length - parts.extension.size();
    if (parts.stem.size() > room) {
        parts.stem.resize(beginning(parts.stem, room).size());
        parts.stem.resize(parts.stem.find_last_not_of(u" .") + 1);
    }
    if (parts.stem.empty())
        parts.stem = nameless;
    return parts;
}

std::u16string lower_case(std::u16string text) {
    std::transform(text.begin(), text.end(), text.begin(), fold_ascii<char16_t>);
    return text;
}

std::u16string decimal(std::uint64_t number) {
    const std::string digits = to_text(number);
    return {digits.begin(), digits.end()};
}

} // namespace

std::vector<std::u16string> dropped_paths(std::string_view bytes, const NarrowDecoder& decode) {
    const auto offset = little_endian<std::uint32_t>(bytes, paths_offset_field);
    const auto wide = little_endian<std::uint32_t>(bytes, wide_field);
    std::vector<std::u16string> paths;
    if (!offset || !wide || *offset > bytes.size())
        return paths;
    bytes.remove_prefix(*offset);
    while (!bytes.empty()) {
        // An empty path ends the list; the last one may lack its end.
        const std::size_t narrow_end = std::min(bytes.find('\0'), bytes.size());
        std::u16string path =
            *wide != 0 ? text_at_start(bytes) : decode(bytes.substr(0, narrow_end));
        if (path.empty())
            break;
        const std::size_t length = *wide != 0 ? path.size() * 2 + 2 : narrow_end + 1;
        bytes.remove_prefix(std::min(length, bytes.size()));
        paths.push_back(std::move(path));
    }
    return paths;
}

std::u16string path_list(std::span<const std::u16string> paths, files::FileSystem& files) {
    std::u16string list;
    for (const std::u16string& path : paths) {
        if (!list.empty())
            list += u'\r';
        list += path;
        if (!path.ends_with(u'\\') &&
            files.kind_of({path, std::nullopt}) == files::ItemKind::Folder)
            list += u'\\';
    }
    return list;
}

std::vector<ContentsItem> described_items(std::string_view bytes) {
    const auto count = little_endian<std::uint32_t>(bytes, 0);
    std::vector<ContentsItem> items;
    if (!count)
        return items;
    bytes.remove_prefix(sizeof *count);
    // Never more than there are bytes for, whatever the count says.
    for (std::uint32_t i = 0; i < *count && bytes.size() >= descriptor_size; ++i) {
        items.push_back(described_item(bytes.substr(0, descriptor_size)));
        bytes.remove_prefix(descriptor_size);
    }
    return items;
}

std::u16string FreshNames::name_for(std::u16string_view wanted) {
    std::u16string name(wanted);
    std::replace_if(name.begin(), name.end(), is_forbidden, u'_');
    const std::size_t first = std::min(name.find_first_not_of(u' '), name.size());
    name.erase(0, first);
    name.resize(name.find_last_not_of(u" .") + 1);
    if (files::is_device_name(name))
        name.insert(0, 1, u'_');

    const NameParts parts = parts_within(name, longest_name);
    name = parts.stem + parts.extension;
    std::uint64_t& next = given_[lower_case(name)];
    while (next != 0) {
        std::u16string numbered = parts.stem + u" (" + decimal(++next) + u")" + parts.extension;
        if (given_.insert({lower_case(numbered), 1}).second)
            return numbered;
    }
    next = 1;
    return name;
}

} // namespace vell::dragdrop
