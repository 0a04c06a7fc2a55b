#include "src/formats/tiff/directory.h"

#include <algorithm>
#include <string_view>

namespace vell::formats::tiff {

std::optional<Header> Header::read(std::string_view bytes) {
    if (bytes.size() < size || (!bytes.starts_with("II") && !bytes.starts_with("MM")))
        return std::nullopt;
    const ByteOrder order = bytes[0] == 'I' ? ByteOrder::Little : ByteOrder::Big;
    auto header = read_record<Header>(bytes, order);
    header->order = order;
    return header;
}

void Header::write(std::string& bytes) const {
    const std::size_t start = bytes.size();
    append_record(bytes, *this, order);
    bytes.replace(start, 2, order == ByteOrder::Little ? "II" : "MM");
}

void Entry::set_offset(std::size_t offset, ByteOrder order) {
    std::string bytes;
    append_integer<std::uint32_t>(bytes, static_cast<std::uint32_t>(offset), order);
    std::ranges::copy(bytes, value.begin());
}

Read<Directory> Directory::at(Window block, std::uint64_t offset, ByteOrder order) {
    block.seek(offset);
    const auto announced = VELL_TRY(block.read_integer<std::uint16_t>(order));
    return Directory(block, offset, announced, order);
}

Read<std::vector<Entry>> Directory::entries() const {
    Window table = block_.from(offset_ + count_size);
    const std::string bytes = VELL_TRY(table.read_bytes(std::uint64_t{announced_} * Entry::size));
    std::vector<Entry> entries;
    entries.reserve(bytes.size() / Entry::size);
    for (std::string_view rest = bytes; const auto entry = read_record<Entry>(rest, order_);
         rest.remove_prefix(Entry::size))
        entries.push_back(*entry);
    return entries;
}

Read<std::uint32_t> Directory::next() const {
    return block_.from(end_of(announced_)).read_integer<std::uint32_t>(order_);
}

Read<std::string> read_value(Window block, const Entry& entry, ByteOrder order,
                             std::uint64_t most) {
    const std::uint64_t wanted = std::min(entry.value_size(), most);
    if (entry.is_inline())
        return std::string(entry.inline_value().substr(0, static_cast<std::size_t>(wanted)));
    block.seek(entry.offset(order));
    return block.read_bytes(wanted);
}

} // namespace vell::formats::tiff
