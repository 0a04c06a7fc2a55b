// Pictures of Windows' own kinds, and their owners. Windows only.
#pragma once

#include "src/system/pictures.h"
#include "src/windows/handle.h"

namespace vell::windows {

struct BitmapKind {
    using Type = HBITMAP;
    static HBITMAP empty() { return nullptr; }
    static void close(HBITMAP bitmap) { DeleteObject(bitmap); }
};
struct IconKind {
    using Type = HICON;
    static HICON empty() { return nullptr; }
    static void close(HICON icon) { DestroyIcon(icon); }
};
using UniqueBitmap = UniqueResource<BitmapKind>;
using UniqueIcon = UniqueResource<IconKind>;

// NoPicture where Windows does not give the pixels, PictureTooLarge beyond 64 million of them. A
// bitmap without any alpha is opaque; one whose colours are nowhere above its alpha is
// premultiplied.
Result<pictures::Picture> picture_of(HBITMAP bitmap);
// Icons are never premultiplied. Without any alpha, the mask counts.
Result<pictures::Picture> picture_of(HICON icon);

} // namespace vell::windows
