// Pages of PDF files as pictures, by Poppler. Windows only.
#pragma once

#include "src/system/pictures.h"

#include <string>
#include <vector>

namespace vell::windows {

// The longest side of a page that is drawn, in pixels.
inline constexpr std::uint32_t longest_page_side = 4096;

// The part of a page that is meant to be seen (its crop box), turned as the document says, on white
// paper. The codes of with_poppler_document (poppler_document.h), which also tells what the calling
// thread needs; BadParameter for a page that is not there, and for a size of 0 or beyond the
// longest. A document that forbids the copying of its text may be looked at.
Result<pictures::Picture> draw_by_poppler(ByteSource& file, const pictures::PdfPageRequest& request,
                                          std::vector<std::string>& notes);

} // namespace vell::windows
