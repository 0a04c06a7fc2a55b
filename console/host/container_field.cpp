#include "console/host/container_field.h"

#include "console/host/wide_text.h"

#include <objidl.h>
#include <shlwapi.h>
#include <wrl/client.h>

#include <algorithm>
#include <cmath>

namespace Gdiplus {
using std::max; // which its headers expect as macros
using std::min;
} // namespace Gdiplus
#include <gdiplus.h>

namespace vell::console {

namespace {

class GdiPlus {
  public:
    GdiPlus() {
        const Gdiplus::GdiplusStartupInput input;
        Gdiplus::GdiplusStartup(&token_, &input, nullptr);
    }
    ~GdiPlus() { Gdiplus::GdiplusShutdown(token_); }
    GdiPlus(const GdiPlus&) = delete;
    GdiPlus& operator=(const GdiPlus&) = delete;

  private:
    ULONG_PTR token_ = 0;
};

} // namespace

struct ContainerField::Picture {
    GdiPlus library;                        // goes last
    Microsoft::WRL::ComPtr<IStream> stream; // which the image reads as long as it lives
    std::unique_ptr<Gdiplus::Image> image;
    std::wstring caption;
};

ContainerField::ContainerField() = default;
ContainerField::~ContainerField() = default;

bool ContainerField::set(std::span<const std::byte> bytes, std::u16string_view name) {
    auto picture = std::make_unique<Picture>();
    picture->stream.Attach(SHCreateMemStream(reinterpret_cast<const BYTE*>(bytes.data()),
                                             static_cast<UINT>(bytes.size())));
    if (!picture->stream)
        return false;
    picture->image = std::make_unique<Gdiplus::Image>(picture->stream.Get());
    if (picture->image->GetLastStatus() != Gdiplus::Ok)
        return false;
    picture->caption = to_wide(name) + L", " + std::to_wstring(picture->image->GetWidth()) +
                       L" \u00d7 " + std::to_wstring(picture->image->GetHeight());
    picture_ = std::move(picture);
    return true;
}

void ContainerField::paint(HDC context, const RECT& bounds) const {
    if (!picture_)
        return;
    constexpr int caption_height = 24;
    const RECT field{bounds.left, bounds.top, bounds.right, bounds.bottom - caption_height};
    FrameRect(context, &field, static_cast<HBRUSH>(GetStockObject(LTGRAY_BRUSH)));
    const int left = field.left + 1;
    const int top = field.top + 1;
    const int room_across = field.right - 1 - left;
    const int room_down = field.bottom - 1 - top;
    const double picture_width = picture_->image->GetWidth();
    const double picture_height = picture_->image->GetHeight();
    const double scale = std::min({1.0, room_across / picture_width, room_down / picture_height});
    const int width = static_cast<int>(std::lround(picture_width * scale));
    const int height = static_cast<int>(std::lround(picture_height * scale));
    Gdiplus::Graphics graphics(context);
    graphics.SetInterpolationMode(Gdiplus::InterpolationModeHighQualityBicubic);
    graphics.DrawImage(picture_->image.get(), left + (room_across - width) / 2,
                       top + (room_down - height) / 2, width, height);
    RECT caption{bounds.left, field.bottom, bounds.right, bounds.bottom};
    DrawTextW(context, picture_->caption.c_str(), -1, &caption,
              DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_END_ELLIPSIS);
}

} // namespace vell::console
