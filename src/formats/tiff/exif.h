// What readers and writers of tags know of single ones of Exif: numbers in the directories of
// pictures and positions, and the codes that texts begin with (Exif 3.0, section 4.6).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vell::formats::tiff {

namespace tag {
inline constexpr std::uint16_t exposure_time = 33434;
inline constexpr std::uint16_t user_comment = 37510;
} // namespace tag

namespace gps_tag {
inline constexpr std::uint16_t version = 0; // four bytes
inline constexpr std::uint16_t latitude = 2;
inline constexpr std::uint16_t longitude = 4;
inline constexpr std::uint16_t altitude_reference = 5; // one byte
inline constexpr std::uint16_t altitude = 6;
inline constexpr std::uint16_t time = 7;
inline constexpr std::uint16_t destination_latitude = 20;
inline constexpr std::uint16_t destination_longitude = 22;
inline constexpr std::uint16_t processing_method = 27;
inline constexpr std::uint16_t area_information = 28;
inline constexpr std::uint16_t date = 29;
} // namespace gps_tag

// Whether values of the tag, of the directory of positions or of pictures, begin with a character
// code.
constexpr bool has_character_code(bool is_gps, std::uint16_t number) {
    return is_gps ? number == gps_tag::processing_method || number == gps_tag::area_information
                  : number == tag::user_comment;
}

namespace character_code {
inline constexpr std::size_t size = 8;
inline constexpr std::string_view ascii{"ASCII\0\0\0", size};
inline constexpr std::string_view jis{"JIS\0\0\0\0\0", size};
inline constexpr std::string_view unicode{"UNICODE\0", size};
inline constexpr std::string_view none{"\0\0\0\0\0\0\0\0", size};
inline constexpr std::string_view all[] = {ascii, unicode, jis, none};
} // namespace character_code

} // namespace vell::formats::tiff
