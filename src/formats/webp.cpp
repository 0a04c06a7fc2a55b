#include "src/formats/webp.h"

#include "src/base/bytes.h"

#include <array>
#include <tuple>

namespace vell::formats::webp {
namespace {

// "VP8X": numbers of 24 bits, each one less than what is meant.
struct ExtendedHeader {
    static constexpr std::size_t size = 10;
    static constexpr ByteOrder order = ByteOrder::Little;

    std::uint8_t flags = 0;
    std::array<std::uint8_t, 3> width{};
    std::array<std::uint8_t, 3> height{};

    static constexpr auto fields() {
        return std::tuple{Field{0, &ExtendedHeader::flags}, Field{4, &ExtendedHeader::width},
                          Field{7, &ExtendedHeader::height}};
    }
    static std::uint32_t number(const std::array<std::uint8_t, 3>& bytes) {
        return (bytes[0] | std::uint32_t{bytes[1]} << 8U | std::uint32_t{bytes[2]} << 16U) + 1;
    }
};

// A key frame of "VP8 ". The upper two bits of its numbers are for scaling.
struct LossyHeader {
    static constexpr std::size_t size = 10;
    static constexpr ByteOrder order = ByteOrder::Little;
    static constexpr std::array<std::uint8_t, 3> start{0x9D, 0x01, 0x2A};
    static constexpr std::uint16_t size_bits = 0x3FFF;

    static constexpr std::uint8_t between_frames = 0x01; // the frame is no key frame

    std::uint8_t frame_tag = 0;
    std::array<std::uint8_t, 3> start_code{};
    std::uint16_t width = 0;
    std::uint16_t height = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &LossyHeader::frame_tag}, Field{3, &LossyHeader::start_code},
                          Field{6, &LossyHeader::width}, Field{8, &LossyHeader::height}};
    }
};

// "VP8L": a signature, then 14 bits of each size, one less than what is meant, and the alpha bit.
struct LosslessHeader {
    static constexpr std::size_t size = 5;
    static constexpr ByteOrder order = ByteOrder::Little;
    static constexpr std::uint8_t mark = 0x2F;

    std::uint8_t first = 0;
    std::uint32_t bits = 0;

    static constexpr auto fields() {
        return std::tuple{Field{0, &LosslessHeader::first}, Field{1, &LosslessHeader::bits}};
    }
};

Read<Canvas> read_extended(Window data, riff::ChunkWalk walk) {
    const auto header = VELL_TRY(data.read_record<ExtendedHeader>());
    Canvas canvas{ExtendedHeader::number(header.width), ExtendedHeader::number(header.height),
                  (header.flags & bit(Feature::Alpha)) != 0};
    if ((header.flags & bit(Feature::Animation)) == 0)
        return canvas;
    canvas.frames = 0;
    while (const auto chunk = VELL_TRY(walk.next()))
        canvas.frames += chunk->type() == chunk_type::frame ? 1 : 0;
    return canvas;
}

Read<Canvas> read_lossy(Window data) {
    const auto header = VELL_TRY(data.read_record<LossyHeader>());
    const Canvas canvas{static_cast<std::uint32_t>(header.width & LossyHeader::size_bits),
                        static_cast<std::uint32_t>(header.height & LossyHeader::size_bits)};
    if (header.start_code != LossyHeader::start || canvas.width == 0 || canvas.height == 0 ||
        (header.frame_tag & LossyHeader::between_frames) != 0)
        return fault(Damage::Corrupt);
    return canvas;
}

Read<Canvas> read_lossless(Window data) {
    constexpr std::uint32_t size_bits = 0x3FFF;
    const auto header = VELL_TRY(data.read_record<LosslessHeader>());
    if (header.first != LosslessHeader::mark)
        return fault(Damage::Corrupt);
    return Canvas{(header.bits & size_bits) + 1, (header.bits >> 14U & size_bits) + 1,
                  (header.bits >> 28U & 1U) != 0};
}

} // namespace

Read<Canvas> read_canvas(const Window& file) {
    riff::ChunkWalk walk(VELL_TRY(riff::find_webp(file)));
    while (const auto chunk = VELL_TRY(walk.next())) {
        if (chunk->type() == chunk_type::extended)
            return read_extended(chunk->data, walk);
        const auto canvas = frame_canvas(*chunk);
        if (canvas || canvas.error().damage != Damage::Absent)
            return canvas;
    }
    return fault(Damage::CutOff);
}

Read<Canvas> frame_canvas(const riff::Chunk& chunk) {
    if (chunk.type() == "VP8 ")
        return read_lossy(chunk.data);
    return chunk.type() == "VP8L" ? read_lossless(chunk.data) : Read<Canvas>(fault(Damage::Absent));
}

std::string extended_header(const Canvas& canvas, std::uint8_t features) {
    std::string data{static_cast<char>(features), '\0', '\0', '\0'};
    for (const std::uint32_t side : {canvas.width, canvas.height}) {
        std::string bytes;
        append_integer<std::uint32_t>(bytes, side - 1, ByteOrder::Little);
        data.append(bytes, 0, 3);
    }
    return data;
}

} // namespace vell::formats::webp
