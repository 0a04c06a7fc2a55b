#include "src/windows/documents/poppler_page.h"

#include "src/windows/documents/poppler_document.h"

#include <PDFDoc.h>
#include <SplashOutputDev.h>
#include <splash/SplashBitmap.h>

#include <algorithm>
#include <cmath>

namespace vell::windows {
namespace {

// The longer side of the page in points, however it is turned. PdfDamaged for a page without one.
Result<double> longer_side(PDFDoc& document, int page) {
    const double side = std::max(document.getPageCropWidth(page), document.getPageCropHeight(page));
    if (!std::isfinite(side) || side <= 0)
        return Failure{ErrorCode::PdfDamaged};
    return side;
}

// The rows from the top, without what Poppler adds to them.
pictures::Picture picture_of(SplashBitmap& bitmap) {
    pictures::Picture picture;
    picture.width = static_cast<std::uint32_t>(bitmap.getWidth());
    picture.height = static_cast<std::uint32_t>(bitmap.getHeight());
    const std::size_t row_size = std::size_t{picture.width} * picture.components();
    picture.pixels.reserve(row_size * picture.height);
    for (int y = 0; y < bitmap.getHeight(); ++y) {
        const unsigned char* row = bitmap.getDataPtr() + std::ptrdiff_t{y} * bitmap.getRowSize();
        picture.pixels.insert(picture.pixels.end(), row, row + row_size);
    }
    return picture;
}

Result<pictures::Picture> draw_page(PDFDoc& document, const pictures::PdfPageRequest& request) {
    const int pages = VELL_TRY(page_count(document));
    if (request.page < 1 || request.page > static_cast<std::uint32_t>(pages))
        return Failure{ErrorCode::BadParameter};
    const int page = static_cast<int>(request.page);
    const double resolution =
        request.size * points_per_inch / VELL_TRY(longer_side(document, page));
    SplashColor paper = {0xFF, 0xFF, 0xFF};
    constexpr int row_alignment = 4;
    SplashOutputDev output(splashModeRGB8, row_alignment, false, paper);
    output.startDoc(&document);
    document.displayPage(&output, page, resolution, resolution, 0, false, true, false, is_to_end,
                         nullptr);
    SplashBitmap* const bitmap = output.getBitmap();
    const auto longer =
        static_cast<std::uint32_t>(std::max(bitmap->getWidth(), bitmap->getHeight()));
    if (!bitmap->getDataPtr() || longer != request.size)
        return Failure{ErrorCode::PdfFailed};
    return picture_of(*bitmap);
}

} // namespace

Result<pictures::Picture> draw_by_poppler(ByteSource& file, const pictures::PdfPageRequest& request,
                                          std::vector<std::string>& notes) {
    if (request.size == 0 || request.size > longest_page_side)
        return Failure{ErrorCode::BadParameter};
    Result<pictures::Picture> picture = Failure{ErrorCode::PdfFailed};
    const auto draw = [&](PDFDoc& document) -> Result<void> {
        picture = draw_page(document, request);
        return picture ? Result<void>() : Failure{picture.error()};
    };
    VELL_TRY(with_poppler_document(file, Work::Purpose::Draw, notes, draw));
    return picture;
}

} // namespace vell::windows
