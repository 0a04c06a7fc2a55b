#include "src/formats/webp_header.h"

namespace vell::formats::webp {
namespace {

constexpr std::uint32_t size_mask = 0x3FFF; // 14 bits; above them stands how to scale

void append_24_bits(std::string& bytes, std::uint32_t number) {
    std::string all;
    append_integer<std::uint32_t>(all, number, ByteOrder::Little);
    bytes.append(all, 0, 3);
}

} // namespace

std::optional<FrameSize> FrameSize::of_lossy(std::string_view data) {
    constexpr std::string_view start_code = "\x9D\x01\x2A";
    constexpr std::size_t tag_size = 3;
    const bool is_key_frame = !data.empty() && (static_cast<unsigned char>(data[0]) & 1U) == 0;
    if (data.size() < lossy_size || !is_key_frame || !data.substr(tag_size).starts_with(start_code))
        return std::nullopt;
    const std::uint32_t width = *load<std::uint16_t>(data, 6, ByteOrder::Little);
    const std::uint32_t height = *load<std::uint16_t>(data, 8, ByteOrder::Little);
    const FrameSize canvas{width & size_mask, height & size_mask};
    return canvas.width == 0 || canvas.height == 0 ? std::nullopt : std::optional(canvas);
}

std::optional<FrameSize> FrameSize::of_lossless(std::string_view data) {
    constexpr char signature = 0x2F;
    if (data.size() < lossless_size || data[0] != signature)
        return std::nullopt;
    const std::uint32_t bits = *load<std::uint32_t>(data, 1, ByteOrder::Little);
    return FrameSize{(bits & size_mask) + 1, (bits >> 14 & size_mask) + 1, (bits >> 28 & 1) != 0};
}

std::string extended_header(const FrameSize& canvas, std::uint8_t features) {
    std::string data{static_cast<char>(features), '\0', '\0', '\0'};
    append_24_bits(data, canvas.width - 1);
    append_24_bits(data, canvas.height - 1);
    return data;
}

} // namespace vell::formats::webp
