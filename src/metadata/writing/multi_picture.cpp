#include "src/metadata/writing/multi_picture.h"

#include "src/metadata/writing/exif_layout.h"

#include <algorithm>
#include <limits>

namespace vell::metadata {
namespace {

// The list of pictures is one value of the first directory.
constexpr std::uint16_t list_tag = 0xB002;

// Parts of each picture's entry in the list.
constexpr std::size_t picture_size = 16;
constexpr std::size_t size_at = 4; // behind its attributes
constexpr std::size_t offset_at = 8;

// Adds to the number that stands at that place.
Result<void> add(std::string& bytes, std::size_t at, std::int64_t difference, ByteOrder order) {
    const std::int64_t sum = std::int64_t{*load<std::uint32_t>(bytes, at, order)} + difference;
    if (sum < 0 || sum > std::int64_t{std::numeric_limits<std::uint32_t>::max()})
        return Failure{ErrorCode::ResourceTooLarge};
    std::string number;
    append_integer<std::uint32_t>(number, static_cast<std::uint32_t>(sum), order);
    bytes.replace(at, number.size(), number);
    return {};
}

} // namespace

Result<std::string> shifted_index(std::string_view index, const PictureShift& shift) {
    std::string bytes(index);
    const auto header = tiff::Header::read(index);
    if (!header)
        return bytes;
    const ByteOrder order = header->order;
    const auto table = read_table(index, header->first_directory, order);
    if (!table)
        return bytes;
    const auto list = std::ranges::find(table->entries, list_tag, &tiff::Entry::tag);
    if (list == table->entries.end() || list->is_inline())
        return bytes;
    const std::size_t start = std::min<std::size_t>(list->offset(order), index.size());
    const std::uint64_t size = std::min<std::uint64_t>(list->value_size(), index.size() - start);
    const std::size_t end = start + static_cast<std::size_t>(size);
    for (std::size_t at = start; at + picture_size <= end; at += picture_size) {
        const std::uint32_t offset = *load<std::uint32_t>(index, at + offset_at, order);
        const std::uint32_t length = *load<std::uint32_t>(index, at + size_at, order);
        if (offset != 0 && shift.header + offset >= shift.scan)
            VELL_TRY(add(bytes, at + offset_at, shift.offsets, order));
        // The first picture is the one that the index stands in, and has no offset.
        if (at == start && offset == 0 && length >= shift.scan)
            VELL_TRY(add(bytes, at + size_at, shift.first_size, order));
    }
    return bytes;
}

} // namespace vell::metadata
