// PDF files as text.
#pragma once

#include "src/params/call.h"
#include "src/system/system.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vell::documents {

// See System::read_pdf_text; opens the file, too.
using PdfTextReader = std::function<Result<void>(
    const files::NativePath& path, const params::ByteSink& sink, std::vector<std::string>& notes)>;

// VlFile_GetAsPlainText( switches ; filePath ): the text of all pages, with "\r<---------->\r"
// between one page and the next, and empty text for a file whose extension is not "pdf". Bytes that
// are not UTF-8 become "<INVALID UTF8>". The code of the reader, or ResourceTooLarge.
Result<void> get_as_plain_text(params::Call& call, System& system);
Result<void> get_as_plain_text(params::Call& call, const PdfTextReader& read);

// VlFile_GetContents, which "-ExperimentalPDFToPlainText" makes the function above.
Result<void> get_contents(params::Call& call, System& system);

// The longest text that a result can hold, in characters of UTF-16.
inline constexpr std::size_t longest_plain_text = 0x7FFF'FFFF;

// Line feeds become CR, form feeds the separator of pages, but for one at the very end.
// ResourceTooLarge when the text gets longer than `longest`.
Result<void> separate_pages(std::u16string& text, std::size_t longest = longest_plain_text);

} // namespace vell::documents
