// The document information dictionary (ISO 32000-1, 14.3.3).
#pragma once

#include "src/documents/pdf_strings.h"
#include "src/documents/pdf_tables.h"

namespace vell::documents {

// Appends a line "Key: value" for each entry of the dictionary at the file's position, each
// beginning with a carriage return. A value that is too long is cut and ends with an ellipsis.
// not_in_file when the dictionary is too long to be told in full, or when something in it is not
// closed before its object or the file ends; what was read stays.
Result<void> append_dictionary(files::BufferedReader& file, TableChain& tables, LimitedText& text);

} // namespace vell::documents
