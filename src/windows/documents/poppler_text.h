// Text of PDF files by Poppler. Nothing of it is of Windows: the fuzzer has it, too.
#pragma once

#include "src/base/byte_source.h"
#include "src/params/call.h"

#include <string>
#include <vector>

namespace vell::windows {

// See System::read_pdf_text. The codes of with_poppler_document (poppler_document.h), which also
// tells what the calling thread needs, PdfCopyForbidden, and those of the sink.
Result<void> read_by_poppler(ByteSource& file, const params::ByteSink& sink,
                             std::vector<std::string>& notes);

} // namespace vell::windows
