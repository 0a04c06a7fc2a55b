#include "src/windows/pictures/wic_formats.h"

#include <wincodec.h>

namespace vell::windows {
namespace {

using namespace pictures;
using enum Coding;
using enum ColourModel;

struct Row {
    const GUID* wic_format;
    PixelFormat format;
};

constexpr auto none = Alpha::None;
constexpr auto straight = Alpha::Straight;
constexpr auto premultiplied = Alpha::Premultiplied;

#define VELL_WIC(name) &GUID_WICPixelFormat##name

// Names with RGB or BGR tell of the order in memory, from the lowest byte on; those of 16 and 32
// bits with a number for each colour are parts of an integer.
const Row rows[] = {
    {VELL_WIC(1bppIndexed), {Index, 1, Rgb}},
    {VELL_WIC(2bppIndexed), {Index, 2, Rgb}},
    {VELL_WIC(4bppIndexed), {Index, 4, Rgb}},
    {VELL_WIC(8bppIndexed), {Index, 8, Rgb}},

    {VELL_WIC(BlackWhite), {Shade, 1, Gray}},
    {VELL_WIC(2bppGray), {Shade, 2, Gray}},
    {VELL_WIC(4bppGray), {Shade, 4, Gray}},
    {VELL_WIC(8bppGray), {Byte, 8, Gray}},
    {VELL_WIC(16bppGray), {Word, 16, Gray}},
    {VELL_WIC(16bppGrayFixedPoint), {Fixed16, 16, Gray}},
    {VELL_WIC(16bppGrayHalf), {Half, 16, Gray}},
    {VELL_WIC(32bppGrayFixedPoint), {Fixed32, 32, Gray}},
    {VELL_WIC(32bppGrayFloat), {Float, 32, Gray}},

    {VELL_WIC(16bppBGR555), {Masked, 16, Rgb, none, false, {0x7C00, 0x3E0, 0x1F, 0}}},
    {VELL_WIC(16bppBGR565), {Masked, 16, Rgb, none, false, {0xF800, 0x7E0, 0x1F, 0}}},
    {VELL_WIC(16bppBGRA5551), {Masked, 16, Rgb, straight, false, {0x7C00, 0x3E0, 0x1F, 0x8000}}},
    {VELL_WIC(32bppBGR101010), {Masked, 32, Rgb, none, false, {0x3FF00000, 0xFFC00, 0x3FF, 0}}},
    {VELL_WIC(32bppRGBA1010102),
     {Masked, 32, Rgb, straight, false, {0x3FF, 0xFFC00, 0x3FF00000, 0xC0000000}}},

    {VELL_WIC(24bppRGB), {Byte, 24, Rgb}},
    {VELL_WIC(24bppBGR), {Byte, 24, Rgb, none, true}},
    {VELL_WIC(32bppRGB), {Byte, 32, Rgb}},
    {VELL_WIC(32bppBGR), {Byte, 32, Rgb, none, true}},
    {VELL_WIC(32bppRGBA), {Byte, 32, Rgb, straight}},
    {VELL_WIC(32bppBGRA), {Byte, 32, Rgb, straight, true}},
    {VELL_WIC(32bppPRGBA), {Byte, 32, Rgb, premultiplied}},
    {VELL_WIC(32bppPBGRA), {Byte, 32, Rgb, premultiplied, true}},

    {VELL_WIC(48bppRGB), {Word, 48, Rgb}},
    {VELL_WIC(48bppBGR), {Word, 48, Rgb, none, true}},
    {VELL_WIC(64bppRGB), {Word, 64, Rgb}},
    {VELL_WIC(64bppRGBA), {Word, 64, Rgb, straight}},
    {VELL_WIC(64bppBGRA), {Word, 64, Rgb, straight, true}},
    {VELL_WIC(64bppPRGBA), {Word, 64, Rgb, premultiplied}},
    {VELL_WIC(64bppPBGRA), {Word, 64, Rgb, premultiplied, true}},

    {VELL_WIC(48bppRGBFixedPoint), {Fixed16, 48, Rgb}},
    {VELL_WIC(48bppBGRFixedPoint), {Fixed16, 48, Rgb, none, true}},
    {VELL_WIC(64bppRGBFixedPoint), {Fixed16, 64, Rgb}},
    {VELL_WIC(64bppRGBAFixedPoint), {Fixed16, 64, Rgb, straight}},
    {VELL_WIC(64bppBGRAFixedPoint), {Fixed16, 64, Rgb, straight, true}},
    {VELL_WIC(96bppRGBFixedPoint), {Fixed32, 96, Rgb}},
    {VELL_WIC(128bppRGBFixedPoint), {Fixed32, 128, Rgb}},
    {VELL_WIC(128bppRGBAFixedPoint), {Fixed32, 128, Rgb, straight}},

    {VELL_WIC(48bppRGBHalf), {Half, 48, Rgb}},
    {VELL_WIC(64bppRGBHalf), {Half, 64, Rgb}},
    {VELL_WIC(64bppRGBAHalf), {Half, 64, Rgb, straight}},
    {VELL_WIC(64bppPRGBAHalf), {Half, 64, Rgb, premultiplied}},
    {VELL_WIC(96bppRGBFloat), {Float, 96, Rgb}},
    {VELL_WIC(128bppRGBFloat), {Float, 128, Rgb}},
    {VELL_WIC(128bppRGBAFloat), {Float, 128, Rgb, straight}},
    {VELL_WIC(128bppPRGBAFloat), {Float, 128, Rgb, premultiplied}},
    {VELL_WIC(32bppRGBE), {SharedExponent, 32, Rgb}},

    {VELL_WIC(32bppCMYK), {Byte, 32, Cmyk}},
    {VELL_WIC(40bppCMYKAlpha), {Byte, 40, Cmyk, straight}},
    {VELL_WIC(64bppCMYK), {Word, 64, Cmyk}},
    {VELL_WIC(80bppCMYKAlpha), {Word, 80, Cmyk, straight}},
};

#undef VELL_WIC

} // namespace

std::optional<PixelFormat> pixel_format(REFGUID wic_format) {
    for (const Row& row : rows)
        if (*row.wic_format == wic_format)
            return row.format;
    return std::nullopt;
}

} // namespace vell::windows
