// Files of chunks, resources and boxes, around the metadata that a test gives.
#pragma once

#include "src/base/number_text.h"
#include "tests/portable/image_builder.h"
#include "tests/portable/movie_builder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vell::test {

using namespace std::string_literals;

inline std::string even(const std::string& data) {
    return data + std::string(data.size() % 2, '\0');
}

inline std::string riff_chunk(const std::string& type, const std::string& data) {
    return type + little_size(data.size()) + even(data);
}
inline std::string webp(const std::string& chunks) {
    return riff_chunk("RIFF", "WEBP" + chunks);
}

inline std::string whole_resource(std::uint16_t id, const std::string& data) {
    return even(resource(id, data));
}
// Photoshop's, or with version 2 its large one; the resources may lie about their length.
inline std::string psd(const std::string& resources, std::uint16_t version = 1,
                       std::uint32_t size_announced = 0) {
    const auto size = static_cast<std::uint32_t>(resources.size());
    return "8BPS" + big16(version) + std::string(6, '\0') + big16(4) + big32(107) + big32(160) +
           big16(8) + big16(3) + big32(2) + "cc" + big32(size_announced ? size_announced : size) +
           resources + "layers";
}

inline std::string jpeg_xl(const std::string& boxes) {
    return box("JXL ", "\r\n\x87\n") + box("ftyp", "jxl " + big32(0) + "jxl ") + boxes;
}

inline std::string gif(const std::string& extensions) {
    return "GIF89a" + "\1\0\1\0\0\0\0"s + extensions + ';';
}
inline std::string sub_blocks(const std::string& data) {
    std::string bytes;
    for (std::size_t at = 0; at < data.size(); at += 255) {
        const std::string part = data.substr(at, 255);
        bytes += static_cast<char>(part.size()) + part;
    }
    return bytes + '\0';
}
// Behind a packet, what leads any reader of sub-blocks to the end of what is no chain of them.
inline std::string gif_packet(const std::string& packet) {
    std::string trailer = "\1";
    for (int byte = 255; byte >= 0; --byte)
        trailer += static_cast<char>(byte);
    return "\x21\xFF\x0BXMP DataXMP" + packet + trailer + '\0';
}

inline const std::string png_packet = "XML:com.adobe.xmp\0\0\0\0\0"s;
inline const std::string png_deflated_packet = "XML:com.adobe.xmp\0\1\0\0\0"s;
// A text that says the bytes of a block in hexadecimal; the keyword is its own.
inline std::string png_profile_text(const std::string& kind, const std::string& bytes) {
    return "\n" + kind + "\n      " + std::to_string(bytes.size()) + "\n" + hexadecimal(bytes) +
           "\n";
}
inline std::string png_profile(const std::string& kind, const std::string& bytes) {
    return "Raw profile type " + kind + '\0' + png_profile_text(kind, bytes);
}
inline std::string deflated_png_profile(const std::string& kind, const std::string& bytes) {
    return "Raw profile type " + kind + "\0\0"s + deflated(png_profile_text(kind, bytes));
}

// Directories of BigTIFF; values of more than eight bytes stand behind them.
struct BigField {
    std::uint16_t tag;
    std::uint16_t type;
    std::uint64_t count;
    std::string value;
};
inline std::string integer(std::uint64_t number, std::size_t size, ByteOrder order) {
    std::string bytes;
    append_integer<std::uint64_t>(bytes, number, order);
    return bytes.substr(order == ByteOrder::Little ? 0 : 8 - size, size);
}
inline std::string big_directory(ByteOrder order, std::uint64_t at,
                                 const std::vector<BigField>& fields) {
    std::string bytes = integer(fields.size(), 8, order), values;
    for (const auto& [tag, type, count, value] : fields) {
        bytes += integer(tag, 2, order) + integer(type, 2, order) + integer(count, 8, order);
        const std::uint64_t place = at + 8 + 20 * fields.size() + 8 + values.size();
        const bool fits = value.size() <= 8;
        bytes += fits ? value + std::string(8 - value.size(), '\0') : integer(place, 8, order);
        values += fits ? "" : value;
    }
    return bytes + integer(0, 8, order) + values;
}
// In front of the first directory, at 16.
inline std::string big_tiff_header(ByteOrder order) {
    return (order == ByteOrder::Little ? "II" : "MM") + integer(43, 2, order) +
           integer(8, 2, order) + integer(0, 2, order) + integer(16, 8, order);
}

} // namespace vell::test
