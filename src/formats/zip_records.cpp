#include "src/formats/zip_records.h"

namespace vell::formats::zip {

std::optional<std::uint64_t> zip64_compressed_size(std::string_view extra_field) {
    constexpr std::uint16_t zip64_information = 0x0001;
    constexpr std::size_t size_behind_uncompressed_size = 12;
    if (load<std::uint16_t>(extra_field, 0, ByteOrder::Little) != zip64_information)
        return std::nullopt;
    return load<std::uint64_t>(extra_field, size_behind_uncompressed_size, ByteOrder::Little);
}

} // namespace vell::formats::zip
