// Text of PDF files by Poppler. Windows only.
#pragma once

#include "src/documents/plain_text.h"

namespace vell::windows {

// A documents::PdfTextReader. The file layer's codes when the file cannot be opened, PdfDamaged,
// PdfWithoutPages, PdfPassword, PdfCopyForbidden, PdfReadFailed, otherwise PdfFailed.
//
// Several threads may read at once. What a document nests is followed by recursion: the calling
// thread needs some megabytes of stack.
Result<void> read_by_poppler(const files::NativePath& path, const params::ByteSink& sink,
                             std::vector<std::string>& notes);

} // namespace vell::windows
