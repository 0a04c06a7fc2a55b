// Raw photographs of makers' own kinds, around the metadata that a test gives.
#pragma once

#include "tests/portable/image_builder.h"
#include "tests/portable/movie_builder.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vell::test {

using namespace std::string_literals;

inline std::string canon_box(const std::string& content) {
    return box("uuid",
               "\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48" + content);
}
inline std::string cr3(const std::string& image, const std::string& exif, const std::string& gps,
                       const std::string& packet) {
    return box("ftyp", "crx " + big32(1) + "crx isom") +
           box("moov", canon_box(box("CMT1", image) + box("CMT2", exif) + box("CMT3", "maker") +
                                 box("CMT4", gps))) +
           box("uuid", "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC" + packet);
}

inline std::string raf(const std::string& picture) {
    return "FUJIFILMCCD-RAW 0201FF000000" + std::string(56, ' ') + big32(92 + 8) +
           big_size(picture.size()) + big32(0) + big32(0) + picture;
}

inline std::string x3f(const std::string& picture) {
    const std::string preview = "SECi" + little32(0x20000) + little32(2) + little32(18) +
                                little32(2) + little32(1) + little32(0) + picture;
    const std::string start =
        "FOVb" + std::string(24, '\0') + little32(2640) + little32(1760) + little32(0) + preview;
    return start + "SECd" + little32(0x20000) + little32(1) + little32(40) +
           little_size(preview.size()) + "IMA2" + little_size(start.size());
}

inline std::string mrw(const std::string& tags) {
    const std::string blocks =
        "\0PRD"s + big32(3) + "abc" + "\0TTW"s + big_size(tags.size()) + tags;
    return "\0MRM"s + big_size(blocks.size()) + blocks;
}

inline std::string ciff_entry(std::uint16_t type, std::size_t size, std::size_t offset) {
    return std::string{static_cast<char>(type), static_cast<char>(type >> 8)} + little_size(size) +
           little_size(offset);
}
inline std::string crw(const std::vector<std::pair<std::uint16_t, std::string>>& records) {
    std::string data, entries;
    for (const auto& [type, value] : records) {
        entries += ciff_entry(type, value.size(), data.size());
        data += value;
    }
    return "II\x1A\0\0\0HEAPCCDR"s + std::string(12, '\0') + data +
           std::string{static_cast<char>(records.size()), '\0'} + entries +
           little_size(data.size());
}

} // namespace vell::test
