#include "src/formats/tiff/directory.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace vell::formats::tiff {
namespace {

// Behind the number of a BigTIFF file.
struct BigHeader {
    static constexpr std::size_t size = 16;
    static constexpr std::uint16_t offsets_of_eight_bytes = 8;

    std::uint16_t offset_size = 0;
    std::uint16_t zero = 0;
    std::uint64_t first_directory = 0;

    static constexpr auto fields() {
        return std::tuple{Field{4, &BigHeader::offset_size}, Field{6, &BigHeader::zero},
                          Field{8, &BigHeader::first_directory}};
    }
    bool is_sound() const { return offset_size == offsets_of_eight_bytes && zero == 0; }
};

struct BigEntry {
    static constexpr std::size_t size = 20;
    static constexpr std::uint64_t value_start = 12;

    std::uint16_t tag = 0;
    FieldType type = FieldType::Undefined;
    std::uint64_t count = 0;
    std::array<char, 8> value{};

    static constexpr auto fields() {
        return std::tuple{Field{0, &BigEntry::tag}, Field{2, &BigEntry::type},
                          Field{4, &BigEntry::count}, Field{12, &BigEntry::value}};
    }
};

// A value of more than four bytes that stands in the entry, which is at `position`, is one at an
// offset. A single number of eight bytes is a Long, as far as it fits.
Entry entry_of(const BigEntry& big, std::uint64_t position, ByteOrder order) {
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    Entry entry{.tag = big.tag, .type = big.type};
    entry.count = static_cast<std::uint32_t>(std::min(big.count, most));
    std::copy_n(big.value.begin(), entry.value.size(), entry.value.begin());
    const std::string_view bytes(big.value.data(), big.value.size());
    const std::uint64_t number = *load<std::uint64_t>(bytes, 0, order);
    const bool has_eight = has_eight_bytes(big.type);
    if (has_eight && big.count == 1) {
        entry.type = big.type == signed_long8 ? FieldType::SignedLong : FieldType::Long;
        const bool is_negative = big.type == signed_long8 && number >> 63U != 0;
        entry.set_offset(
            static_cast<std::size_t>(is_negative ? number & most : std::min(number, most)), order);
        entry.big_place = number;
    } else if (has_eight || !entry.is_inline()) {
        const std::uint64_t size = (has_eight ? 8 : size_of(big.type)) * std::uint64_t{entry.count};
        entry.big_place = size <= big.value.size() ? position + BigEntry::value_start : number;
    }
    return entry;
}

} // namespace

Read<Start> Start::read(Window block) {
    block.seek(0);
    const std::string bytes = VELL_TRY(block.read_bytes(BigHeader::size));
    const auto header = Header::read(bytes);
    if (!header)
        return fault(Damage::Absent);
    const auto big = read_record<BigHeader>(bytes, header->order);
    if (header->magic == big_number && big && big->is_sound())
        return Start{{header->order, true}, header->magic, big->first_directory};
    return Start{{header->order}, header->magic, header->first_directory};
}

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

Read<Directory> Directory::at(Window block, std::uint64_t offset, Layout layout) {
    block.seek(offset);
    if (!layout.is_big) {
        const auto announced = VELL_TRY(block.read_integer<std::uint16_t>(layout.order));
        return Directory(block, offset, announced, layout);
    }
    const auto announced = VELL_TRY(block.read_integer<std::uint64_t>(layout.order));
    if (announced > std::numeric_limits<std::uint16_t>::max())
        return fault(Damage::Corrupt);
    return Directory(block, offset, static_cast<std::uint16_t>(announced), layout);
}

Read<std::vector<Entry>> Directory::entries() const {
    const std::uint64_t start = end_of(0);
    Window table = block_.from(start);
    const std::string bytes = VELL_TRY(table.read_bytes(end_of(announced_) - start));
    const std::size_t size = layout_.is_big ? BigEntry::size : Entry::size;
    std::vector<Entry> entries;
    entries.reserve(bytes.size() / size);
    for (std::size_t at = 0; at + size <= bytes.size(); at += size) {
        const std::string_view rest = std::string_view(bytes).substr(at);
        entries.push_back(layout_.is_big ? entry_of(*read_record<BigEntry>(rest, layout_.order),
                                                    start + at, layout_.order)
                                         : *read_record<Entry>(rest, layout_.order));
    }
    return entries;
}

Read<std::uint64_t> Directory::next() const {
    Window behind = block_.from(end_of(announced_));
    if (layout_.is_big)
        return behind.read_integer<std::uint64_t>(layout_.order);
    return std::uint64_t{VELL_TRY(behind.read_integer<std::uint32_t>(layout_.order))};
}

Read<std::string> read_value(Window block, const Entry& entry, ByteOrder order,
                             std::uint64_t most) {
    const std::uint64_t wanted = std::min(entry.value_size(), most);
    if (entry.is_inline())
        return std::string(entry.inline_value().substr(0, static_cast<std::size_t>(wanted)));
    block.seek(entry.place(order));
    return block.read_bytes(wanted);
}

} // namespace vell::formats::tiff
