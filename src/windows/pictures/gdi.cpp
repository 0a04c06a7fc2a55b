#include "src/windows/pictures/gdi.h"

#include <algorithm>

namespace vell::windows {
namespace {

using pictures::Picture;

constexpr std::uint64_t most_pixels = 64'000'000;

struct DeviceContextKind {
    using Type = HDC;
    static HDC empty() { return nullptr; }
    static void close(HDC context) { DeleteDC(context); }
};
using UniqueDeviceContext = UniqueResource<DeviceContextKind>;

// The pixels from the top, four bytes each: blue, green, red and, where the bitmap has it, alpha.
struct RawPixels {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool may_have_alpha = false;
    std::vector<std::uint8_t> bytes = {};
};

Result<RawPixels> raw_pixels(HBITMAP bitmap) {
    BITMAP description{};
    if (!bitmap || GetObjectW(bitmap, sizeof description, &description) == 0 ||
        description.bmWidth <= 0 || description.bmHeight == 0)
        return Failure{ErrorCode::NoPicture};
    RawPixels pixels;
    pixels.width = static_cast<std::uint32_t>(description.bmWidth);
    pixels.height = static_cast<std::uint32_t>(std::abs(description.bmHeight));
    pixels.may_have_alpha = description.bmBitsPixel == 32;
    if (std::uint64_t{pixels.width} * pixels.height > most_pixels)
        return Failure{ErrorCode::PictureTooLarge};
    pixels.bytes.resize(std::size_t{pixels.width} * pixels.height * 4);

    BITMAPINFO wanted{};
    wanted.bmiHeader.biSize = sizeof wanted.bmiHeader;
    wanted.bmiHeader.biWidth = description.bmWidth;
    wanted.bmiHeader.biHeight = -static_cast<LONG>(pixels.height); // from the top
    wanted.bmiHeader.biPlanes = 1;
    wanted.bmiHeader.biBitCount = 32;
    wanted.bmiHeader.biCompression = BI_RGB;
    const UniqueDeviceContext context(CreateCompatibleDC(nullptr));
    if (!context || GetDIBits(context.get(), bitmap, 0, pixels.height, pixels.bytes.data(), &wanted,
                              DIB_RGB_COLORS) != static_cast<int>(pixels.height))
        return Failure{ErrorCode::NoPicture};
    return pixels;
}

bool has_alpha(const RawPixels& pixels) {
    if (pixels.may_have_alpha)
        for (std::size_t i = 3; i < pixels.bytes.size(); i += 4)
            if (pixels.bytes[i] != 0)
                return true;
    return false;
}

// No colour is brighter than its alpha, which pixels that are not premultiplied hardly ever are at
// every edge.
bool is_premultiplied(const RawPixels& pixels) {
    for (std::size_t i = 0; i < pixels.bytes.size(); i += 4)
        if (std::max({pixels.bytes[i], pixels.bytes[i + 1], pixels.bytes[i + 2]}) >
            pixels.bytes[i + 3])
            return false;
    return true;
}

Picture straight_picture(const RawPixels& pixels, bool premultiplied) {
    const bool with_alpha = has_alpha(pixels);
    Picture picture{pixels.width, pixels.height, with_alpha, {}};
    picture.pixels.reserve(pixels.bytes.size());
    for (std::size_t i = 0; i < pixels.bytes.size(); i += 4) {
        const unsigned alpha = pixels.bytes[i + 3];
        for (const std::size_t place : {i + 2, i + 1, i}) {
            const unsigned value = pixels.bytes[place];
            const bool divides = with_alpha && premultiplied && alpha != 0;
            picture.pixels.push_back(
                static_cast<std::uint8_t>(divides ? (value * 255 + alpha / 2) / alpha : value));
        }
        if (with_alpha)
            picture.pixels.push_back(static_cast<std::uint8_t>(alpha));
    }
    return picture;
}

Picture with_alpha_of_mask(const RawPixels& colours, const RawPixels& mask) {
    Picture picture{colours.width, colours.height, true, {}};
    picture.pixels.resize(colours.bytes.size());
    for (std::size_t i = 0; i < picture.pixels.size(); i += 4) {
        const bool is_transparent = i < mask.bytes.size() && mask.bytes[i] != 0;
        if (is_transparent)
            continue;
        for (std::size_t n = 0; n < 3; ++n)
            picture.pixels[i + n] = colours.bytes[i + 2 - n];
        picture.pixels[i + 3] = 255;
    }
    return picture;
}

// The mask of a monochrome icon holds both: what is transparent above, black and white below.
Result<Picture> monochrome_picture(const RawPixels& mask) {
    RawPixels half = mask;
    half.height /= 2;
    half.bytes.resize(std::size_t{half.width} * half.height * 4);
    if (half.bytes.empty())
        return Failure{ErrorCode::NoPicture};
    RawPixels colours = half;
    std::copy_n(mask.bytes.begin() + static_cast<std::ptrdiff_t>(half.bytes.size()),
                half.bytes.size(), colours.bytes.begin());
    return with_alpha_of_mask(colours, half);
}

} // namespace

Result<Picture> picture_of(HBITMAP bitmap) {
    const RawPixels pixels = VELL_TRY(raw_pixels(bitmap));
    return straight_picture(pixels, is_premultiplied(pixels));
}

Result<Picture> picture_of(HICON icon) {
    ICONINFO info{};
    if (!icon || !GetIconInfo(icon, &info))
        return Failure{ErrorCode::NoPicture};
    const UniqueBitmap colour_bitmap(info.hbmColor);
    const UniqueBitmap mask_bitmap(info.hbmMask);
    const auto mask = raw_pixels(mask_bitmap.get());
    if (!colour_bitmap)
        return mask ? monochrome_picture(*mask) : Result<Picture>(Failure{mask.error()});
    const RawPixels colours = VELL_TRY(raw_pixels(colour_bitmap.get()));
    if (has_alpha(colours) || !mask)
        return straight_picture(colours, false);
    return with_alpha_of_mask(colours, *mask);
}

} // namespace vell::windows
