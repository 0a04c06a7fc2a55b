#include "console/host/container_field.h"

#include <gtest/gtest.h>

#include <vector>

namespace vell::console {
namespace {

// A bitmap of one colour (BITMAPFILEHEADER, BITMAPINFOHEADER, rows of BGR).
std::vector<std::byte> red_bitmap(LONG width, LONG height) {
    const DWORD row = (static_cast<DWORD>(width) * 3 + 3) / 4 * 4;
    const DWORD size = row * static_cast<DWORD>(height);
    constexpr DWORD start = sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER);
    const BITMAPFILEHEADER file{0x4D42, start + size, 0, 0, start};
    const BITMAPINFOHEADER picture{
        sizeof(BITMAPINFOHEADER), width, height, 1, 24, BI_RGB, size, 0, 0, 0, 0};
    std::vector<std::byte> bytes(start + size);
    std::memcpy(bytes.data(), &file, sizeof file);
    std::memcpy(bytes.data() + sizeof file, &picture, sizeof picture);
    for (DWORD i = start; i < start + size; ++i)
        bytes[i] = (i - start) % row % 3 == 2 ? std::byte{0xFF} : std::byte{0};
    return bytes;
}

class Canvas {
  public:
    static constexpr LONG width = 200;
    static constexpr LONG height = 124; // a field of 100 pixels above the caption

    Canvas()
        : context_(CreateCompatibleDC(nullptr)),
          bitmap_(CreateBitmap(width, height, 1, 32, nullptr)) {
        SelectObject(context_, bitmap_);
        PatBlt(context_, 0, 0, width, height, WHITENESS);
    }
    ~Canvas() {
        DeleteDC(context_);
        DeleteObject(bitmap_);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    COLORREF shown(const ContainerField& field, int x, int y) {
        field.paint(context_, {0, 0, width, height});
        return GetPixel(context_, x, y);
    }

  private:
    HDC context_;
    HBITMAP bitmap_;
};

TEST(ContainerField, ShowsAPictureInTheMiddleAndNeverLarger) {
    constexpr COLORREF red = RGB(255, 0, 0);
    constexpr COLORREF white = RGB(255, 255, 255);
    ContainerField field;
    EXPECT_EQ(Canvas().shown(field, 100, 50), white);

    ASSERT_TRUE(field.set(red_bitmap(20, 10), u"small.bmp"));
    EXPECT_EQ(Canvas().shown(field, 100, 50), red);
    EXPECT_EQ(Canvas().shown(field, 100, 60), white);

    ASSERT_TRUE(field.set(red_bitmap(600, 900), u"tall.bmp"));
    EXPECT_EQ(Canvas().shown(field, 100, 4), red);
    EXPECT_EQ(Canvas().shown(field, 60, 50), white);

    const std::vector<std::byte> no_picture(100, std::byte{'x'});
    EXPECT_FALSE(field.set(no_picture, u"text"));
    EXPECT_EQ(Canvas().shown(field, 100, 4), red);
}

} // namespace
} // namespace vell::console
