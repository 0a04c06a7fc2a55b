#include "src/formats/tiff/numbers.h"

namespace vell::formats::tiff {

Read<std::vector<std::uint32_t>> read_numbers(const Window& block, const Entry& entry,
                                              ByteOrder order, std::size_t most) {
    Entry as_known = entry;
    if (entry.type == ifd_offset)
        as_known.type = FieldType::Long;
    std::vector<std::uint32_t> numbers;
    if (as_known.type != FieldType::Byte && as_known.type != FieldType::Short &&
        as_known.type != FieldType::Long)
        return numbers;
    const std::size_t one = size_of(as_known.type);
    const std::string value = VELL_TRY(read_value(block, as_known, order, most * one));
    for (std::size_t at = 0; at + one <= value.size(); at += one)
        numbers.push_back(as_known.type == FieldType::Byte ? *load<std::uint8_t>(value, at, order)
                          : as_known.type == FieldType::Short
                              ? *load<std::uint16_t>(value, at, order)
                              : *load<std::uint32_t>(value, at, order));
    return numbers;
}

} // namespace vell::formats::tiff
