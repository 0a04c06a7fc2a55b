#include "src/formats/iptc.h"

#include <algorithm>

namespace vell::formats::iptc {

std::optional<Dataset> Dataset::read(std::string_view block) {
    const auto header = read_record<DatasetHeader>(block);
    if (!header || header->record < envelope_record || header->record > last_record)
        return std::nullopt;
    std::size_t start = DatasetHeader::size;
    std::uint64_t size = header->length;
    if (header->is_extended()) {
        const auto extended = load<std::uint32_t>(block, start, DatasetHeader::order);
        if (!extended || header->length != DatasetHeader::extended_length + sizeof *extended)
            return std::nullopt;
        start += sizeof *extended;
        size = *extended;
    }
    const auto there =
        static_cast<std::size_t>(std::min<std::uint64_t>(size, block.size() - start));
    return Dataset{*header, block.substr(start, there), block.substr(0, start + there),
                   there == size};
}

std::size_t find_dataset(std::string_view block, std::uint8_t latest_record) {
    constexpr auto marker = static_cast<char>(DatasetHeader::signature);
    for (std::size_t at = block.find(marker); at != std::string_view::npos;
         at = block.find(marker, at + 1)) {
        const auto record = load<std::uint8_t>(block, at + 1, DatasetHeader::order);
        if (record >= envelope_record && record <= latest_record)
            return at;
    }
    return block.size();
}

Read<void> append_dataset(std::string& bytes, std::uint8_t record, std::uint8_t number,
                          std::string_view value) {
    if (value.size() >= DatasetHeader::extended_length)
        return fault(Damage::TooLarge);
    append_record(bytes, DatasetHeader{record, number, static_cast<std::uint16_t>(value.size())});
    bytes += value;
    return {};
}

} // namespace vell::formats::iptc
