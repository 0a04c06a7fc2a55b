#include "src/pictures/decoding/pixel_format.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace vell::pictures {
namespace {

template <typename T>
T load_at(const std::byte* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}
template <typename T>
void store_at(std::byte*& bytes, T value) {
    std::memcpy(bytes, &value, sizeof value);
    bytes += sizeof value;
}

void store_colour(std::byte*& out, const Colour& colour, bool with_alpha) {
    store_at(out, colour.red);
    store_at(out, colour.green);
    store_at(out, colour.blue);
    if (with_alpha)
        store_at(out, colour.alpha);
}

// The integers of a few bits that stand side by side.
unsigned bits_at(const std::byte* source, std::size_t pixel, unsigned bits) {
    const std::size_t first = pixel * bits;
    const auto byte = std::to_integer<unsigned>(source[first / 8]);
    return byte >> (8 - bits - first % 8) & ((1U << bits) - 1);
}

// `value` of `most` as a part of all that T holds.
template <typename T>
T scaled(std::uint64_t value, std::uint64_t most) {
    constexpr std::uint64_t full = std::numeric_limits<T>::max();
    return most == 0 ? T{0} : static_cast<T>((value * full + most / 2) / most);
}

template <typename T>
T masked(std::uint32_t pixel, std::uint32_t mask) {
    const int shift = mask == 0 ? 0 : std::countr_zero(mask);
    return scaled<T>((pixel & mask) >> shift, mask >> shift);
}

template <typename T>
void convert_masked(const PixelFormat& format, std::uint32_t width, const std::byte* source,
                    std::byte* out) {
    for (std::uint32_t x = 0; x < width; ++x) {
        const std::uint32_t pixel = format.bits == 16 ? load_at<std::uint16_t>(source + x * 2)
                                                      : load_at<std::uint32_t>(source + x * 4);
        for (std::size_t i = 0; i < 3; ++i)
            store_at(out, masked<T>(pixel, format.masks[i]));
        if (format.alpha != Alpha::None)
            store_at(out, masked<T>(pixel, format.masks[3]));
    }
}

template <typename T>
T straight(T value, T alpha) {
    return alpha == 0 ? T{0} : scaled<T>(std::min(value, alpha), alpha);
}

// Where a format's components stand in a pixel.
struct Places {
    std::size_t pixel_size; // in bytes
    std::size_t colours;
    bool blue_first;

    std::size_t of(std::size_t colour) const { return blue_first ? colours - 1 - colour : colour; }
};

Places places_of(const PixelFormat& format) {
    return {std::size_t{format.bits} / 8, PictureLayout{.model = format.model}.colours(),
            format.blue_first};
}

template <typename T>
void convert_integers(const PixelFormat& format, std::uint32_t width, const std::byte* source,
                      std::byte* out) {
    const Places places = places_of(format);
    for (std::uint32_t x = 0; x < width; ++x, source += places.pixel_size) {
        const T alpha = format.alpha == Alpha::None
                            ? std::numeric_limits<T>::max()
                            : load_at<T>(source + places.colours * sizeof(T));
        for (std::size_t i = 0; i < places.colours; ++i) {
            const T value = load_at<T>(source + places.of(i) * sizeof(T));
            store_at(out, format.alpha == Alpha::Premultiplied ? straight(value, alpha) : value);
        }
        if (format.alpha != Alpha::None)
            store_at(out, alpha);
    }
}

float from_half(std::uint16_t half) {
    const int exponent = half >> 10 & 0x1F;
    const int fraction = half & 0x3FF;
    if (exponent == 0x1F)
        return fraction != 0 || (half & 0x8000) != 0 ? 0.0F : 1.0F; // not a number, infinite
    const float value = exponent == 0
                            ? std::ldexp(static_cast<float>(fraction), -24)
                            : std::ldexp(static_cast<float>(fraction | 0x400), exponent - 25);
    return (half & 0x8000) != 0 ? -value : value;
}

float real_at(Coding coding, const std::byte* source) {
    switch (coding) {
    case Coding::Fixed16:
        return static_cast<float>(load_at<std::int16_t>(source)) / 8192.0F;
    case Coding::Fixed32:
        return static_cast<float>(load_at<std::int32_t>(source)) / 16'777'216.0F;
    case Coding::Half:
        return from_half(load_at<std::uint16_t>(source));
    default:
        return load_at<float>(source);
    }
}

// From 0 to 1 as 0 to 65535; what is not a number is 0.
std::uint16_t whole(float value) {
    return value > 0.0F ? static_cast<std::uint16_t>(std::lround(std::min(value, 1.0F) * 65535.0F))
                        : std::uint16_t{0};
}

// IEC 61966-2-1, the curve of sRGB, for the 65536 values of linear light.
std::vector<std::uint16_t> make_srgb_curve() {
    std::vector<std::uint16_t> curve(65536);
    for (std::size_t i = 0; i < curve.size(); ++i) {
        const double light = static_cast<double>(i) / 65535.0;
        const double coded =
            light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
        curve[i] = static_cast<std::uint16_t>(std::lround(coded * 65535.0));
    }
    return curve;
}

std::uint16_t coded(float value, Curve curve) {
    static const std::vector<std::uint16_t> srgb = make_srgb_curve();
    return curve == Curve::Linear ? srgb[whole(value)] : whole(value);
}

void convert_reals(const PixelFormat& format, Curve curve, std::uint32_t width,
                   const std::byte* source, std::byte* out) {
    const bool is_wide = format.coding == Coding::Fixed32 || format.coding == Coding::Float;
    const std::size_t size = is_wide ? 4 : 2;
    const Places places = places_of(format);
    for (std::uint32_t x = 0; x < width; ++x, source += places.pixel_size) {
        const float alpha = format.alpha == Alpha::None
                                ? 1.0F
                                : real_at(format.coding, source + places.colours * size);
        for (std::size_t i = 0; i < places.colours; ++i) {
            float value = real_at(format.coding, source + places.of(i) * size);
            if (format.alpha == Alpha::Premultiplied)
                value = alpha > 0.0F ? value / alpha : 0.0F;
            store_at(out, coded(value, curve));
        }
        if (format.alpha != Alpha::None)
            store_at(out, whole(alpha));
    }
}

void convert_shared_exponents(Curve curve, std::uint32_t width, const std::byte* source,
                              std::byte* out) {
    for (std::uint32_t x = 0; x < width; ++x, source += 4)
        for (std::size_t i = 0; i < 3; ++i) {
            const int exponent = std::to_integer<int>(source[3]) - 136;
            const auto fraction = static_cast<float>(std::to_integer<int>(source[i]));
            store_at(out, coded(std::ldexp(fraction, exponent), curve));
        }
}

constexpr bool has_fractions(Coding coding) {
    return coding >= Coding::Fixed16;
}

} // namespace

void store_colours(std::span<const Colour> colours, bool with_alpha, std::span<std::byte> row) {
    static_assert(sizeof(Colour) == 4);
    std::byte* out = row.data();
    if (with_alpha)
        std::memcpy(out, colours.data(), colours.size_bytes());
    else
        for (const Colour& colour : colours)
            store_colour(out, colour, false);
}

bool RowConverter::has_alpha() const {
    if (format_.coding != Coding::Index)
        return format_.alpha != Alpha::None;
    return std::ranges::any_of(palette_, [](const Colour& c) { return c.alpha != 255; });
}

PictureLayout RowConverter::layout(std::uint32_t width, std::uint32_t height) const {
    const bool has_wide_masks =
        format_.coding == Coding::Masked &&
        std::ranges::any_of(format_.masks, [](auto mask) { return std::popcount(mask) > 8; });
    PictureLayout layout;
    layout.width = width;
    layout.height = height;
    layout.model = format_.model;
    layout.has_alpha = has_alpha();
    if (has_wide_masks || format_.coding == Coding::Word || has_fractions(format_.coding))
        layout.component_size = 2;
    return layout;
}

void RowConverter::convert(std::uint32_t width, std::span<const std::byte> source,
                           std::span<std::byte> row) const {
    const std::byte* in = source.data();
    std::byte* out = row.data();
    switch (format_.coding) {
    case Coding::Index: {
        const bool with_alpha = has_alpha();
        for (std::uint32_t x = 0; x < width; ++x) {
            const unsigned index = bits_at(in, x, format_.bits);
            store_colour(out, index < palette_.size() ? palette_[index] : Colour{}, with_alpha);
        }
        return;
    }
    case Coding::Shade:
        for (std::uint32_t x = 0; x < width; ++x)
            store_at(out,
                     scaled<std::uint8_t>(bits_at(in, x, format_.bits), (1U << format_.bits) - 1));
        return;
    case Coding::Masked:
        if (layout(1, 1).component_size == 2)
            return convert_masked<std::uint16_t>(format_, width, in, out);
        return convert_masked<std::uint8_t>(format_, width, in, out);
    case Coding::Byte:
        return convert_integers<std::uint8_t>(format_, width, in, out);
    case Coding::Word:
        return convert_integers<std::uint16_t>(format_, width, in, out);
    case Coding::SharedExponent:
        return convert_shared_exponents(curve_, width, in, out);
    default:
        return convert_reals(format_, curve_, width, in, out);
    }
}

} // namespace vell::pictures
