#include "src/pictures/inside/tag_directory.h"

namespace vell::pictures {

using namespace formats;

Read<TagDirectory> TagDirectory::at(const Window& block, std::uint64_t offset, ByteOrder order) {
    const auto there = VELL_TRY(tiff::Directory::at(block, offset, order));
    TagDirectory directory(block, order);
    directory.entries_ = VELL_TRY(there.entries());
    directory.next_ = static_cast<std::uint32_t>(VELL_TRY(if_sound(there.next())).value_or(0));
    return directory;
}

const tiff::Entry* TagDirectory::find(std::uint16_t tag) const {
    const auto found = std::ranges::find(entries_, tag, &tiff::Entry::tag);
    return found == entries_.end() ? nullptr : &*found;
}

Read<std::vector<std::uint32_t>> TagDirectory::numbers(std::uint16_t tag, std::size_t most) const {
    const tiff::Entry* const entry = find(tag);
    if (entry == nullptr)
        return std::vector<std::uint32_t>();
    return tiff::read_numbers(block_, *entry, order_, most);
}

Read<std::optional<std::uint32_t>> TagDirectory::number(std::uint16_t tag) const {
    const tiff::Entry* const entry = find(tag);
    if (entry == nullptr || entry->count != 1)
        return std::optional<std::uint32_t>();
    const auto read = VELL_TRY(tiff::read_numbers(block_, *entry, order_, 1));
    return read.empty() ? std::optional<std::uint32_t>() : read.front();
}

Read<std::optional<Window>> TagDirectory::part(std::uint16_t offset_tag,
                                               std::uint16_t length_tag) const {
    const auto offset = VELL_TRY(number(offset_tag));
    const auto length = VELL_TRY(number(length_tag));
    if (!offset || !length)
        return std::optional<Window>();
    return std::optional(block_.part(*offset, *length));
}

std::optional<Window> TagDirectory::value(std::uint16_t tag) const {
    const tiff::Entry* const entry = find(tag);
    if (entry == nullptr || entry->is_inline())
        return std::nullopt;
    return block_.part(entry->offset(order_), entry->value_size());
}

} // namespace vell::pictures
