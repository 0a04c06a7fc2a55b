#include "src/windows/dragdrop/focus_frame.h"

namespace vell::dragdrop {
namespace {

RECT rect_of(const Rectangle& rectangle) {
    return {rectangle.left, rectangle.top, rectangle.right, rectangle.bottom};
}

} // namespace

void draw_focus_frame(HWND window, const Rectangle& frame) {
    // Over the window's children too, whatever its class says about them.
    const HDC context = GetDCEx(window, nullptr, DCX_CACHE);
    if (!context)
        return;
    const RECT rect = rect_of(frame);
    DrawFocusRect(context, &rect);
    ReleaseDC(window, context);
}

void erase_focus_frame(HWND window, const Rectangle& frame) {
    // Painted anew, not drawn a second time: where the window was painted in between, a second
    // frame would stay.
    const RECT outer = rect_of(frame);
    const RECT edges[] = {
        {outer.left, outer.top, outer.right, outer.top + 1},
        {outer.left, outer.bottom - 1, outer.right, outer.bottom},
        {outer.left, outer.top, outer.left + 1, outer.bottom},
        {outer.right - 1, outer.top, outer.right, outer.bottom},
    };
    for (const RECT& edge : edges)
        RedrawWindow(window, &edge, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
    RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
}

} // namespace vell::dragdrop
