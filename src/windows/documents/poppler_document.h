// PDF documents as Poppler opens them, for what is made of them. Nothing of it is of Windows: the
// fuzzer has it, too.
#pragma once

#include "src/base/byte_source.h"

#include <goo/Work.h>

#include <functional>
#include <string>
#include <vector>

class PDFDoc;

namespace vell::windows {

// Opens the document and lets `use` work on it, which is not called for one that cannot be opened.
// The codes: PdfDamaged, PdfWithoutPages, PdfPassword, PdfReadFailed, those of `use`, and PdfFailed
// for the rest, such as a document that costs more than it may (see Work). What Poppler says of it
// is added to `notes`.
//
// Several threads may do this at once. What a document nests is followed by recursion: the calling
// thread needs some megabytes of stack.
Result<void> with_poppler_document(ByteSource& file, Work::Purpose purpose,
                                   std::vector<std::string>& notes,
                                   const std::function<Result<void>(PDFDoc&)>& use);

// The pages that there can be: each is an object of its own, and numbers beyond that are not worth
// the trying. PdfWithoutPages when there is none.
Result<int> page_count(PDFDoc& document);

// Asked by Poppler now and then between the operators of a page.
bool is_to_end(void*);

inline constexpr double points_per_inch = 72;

} // namespace vell::windows
