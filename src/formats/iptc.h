// IPTC datasets (IPTC-NAA Information Interchange Model 4.2, chapter 1), the one walk over them.
#pragma once

#include "src/formats/damage.h"
#include "src/formats/record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace vell::formats::iptc {

inline constexpr std::uint8_t envelope_record = 1;
inline constexpr std::uint8_t application_record = 2;
inline constexpr std::uint8_t last_record = 9;

// More than these, which no writer gives one photograph, are not told.
inline constexpr std::size_t most_datasets = 20'000;

inline constexpr std::uint8_t coded_character_set = 90;   // in the envelope record
inline constexpr std::string_view utf8_escape = "\x1B%G"; // its value for UTF-8 (ISO 2022)
inline constexpr std::uint8_t record_version = 0;         // in the application record

struct DatasetHeader {
    static constexpr std::size_t size = 5;
    static constexpr ByteOrder order = ByteOrder::Big;
    static constexpr std::uint8_t signature = 0x1C;
    // From here on the rest is the size of the length that follows.
    static constexpr std::uint16_t extended_length = 0x8000;

    std::uint8_t record = 0;
    std::uint8_t number = 0;
    std::uint16_t length = 0;

    static constexpr auto fields() {
        return std::tuple{Field{1, &DatasetHeader::record}, Field{2, &DatasetHeader::number},
                          Field{3, &DatasetHeader::length}};
    }
    bool is_extended() const { return length >= extended_length; }
};

struct Dataset {
    DatasetHeader header;
    std::string_view value; // cut where the block ends
    std::string_view bytes; // with the header
    bool is_whole;

    // nullopt where none begins, or its length cannot be read.
    static std::optional<Dataset> read(std::string_view block);
};

// Where the first dataset seems to begin whose record is no later than that; the block's size when
// none does.
std::size_t find_dataset(std::string_view block, std::uint8_t latest_record);

// TooLarge for a value that needs an extended length.
Read<void> append_dataset(std::string& bytes, std::uint8_t record, std::uint8_t number,
                          std::string_view value);

} // namespace vell::formats::iptc
