#include "src/formats/zip_records.h"

#include <algorithm>

namespace vell::formats::zip {
namespace {

constexpr std::uint16_t zip64_information = 0x0001;

// The data of the first field of that kind; empty when there is none.
std::string_view extra_data(std::string_view extra_field, std::uint16_t kind) {
    constexpr std::size_t header_size = 4;
    while (extra_field.size() >= header_size) {
        const std::size_t size = *load<std::uint16_t>(extra_field, 2, ByteOrder::Little);
        if (load<std::uint16_t>(extra_field, 0, ByteOrder::Little) == kind)
            return extra_field.substr(header_size, size);
        extra_field.remove_prefix(std::min(header_size + size, extra_field.size()));
    }
    return {};
}

} // namespace

std::optional<std::uint64_t> zip64_compressed_size(std::string_view extra_field) {
    constexpr std::size_t size_behind_uncompressed_size = 12;
    if (load<std::uint16_t>(extra_field, 0, ByteOrder::Little) != zip64_information)
        return std::nullopt;
    return load<std::uint64_t>(extra_field, size_behind_uncompressed_size, ByteOrder::Little);
}

EntryExtent with_zip64(EntryExtent extent, std::string_view extra_field) {
    std::string_view numbers = extra_data(extra_field, zip64_information);
    for (std::uint64_t* const number :
         {&extent.uncompressed_size, &extent.compressed_size, &extent.local_header_offset}) {
        if (*number != see_zip64)
            continue;
        const auto large = load<std::uint64_t>(numbers, 0, ByteOrder::Little);
        if (!large)
            break;
        *number = *large;
        numbers.remove_prefix(sizeof *large);
    }
    return extent;
}

} // namespace vell::formats::zip
