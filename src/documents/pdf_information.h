// Describes a PDF file from its bytes: version, linearization, the document information
// dictionary, encryption, number of pages.
//
// Classic cross-reference tables and trailers are read; files that keep them in streams are
// recognised and said to be so. Reads are bounded, time is linear in the file's length, and the
// whole needs less than 200 KB of memory, the text included.
#pragma once

#include "src/base/json_writer.h"
#include "src/base/result.h"
#include "src/files/contents/buffered_reader.h"

#include <string>

namespace vell::documents {

// Appends the description in UTF-8, each line beginning with a carriage return. What keeps the
// structure from being read ends the text with a line "ParseError: " and is no failure. BadArgument
// for what is no PDF file or has another object where one should be, EndOfFile for an empty file;
// what was read until then stays.
Result<void> describe_pdf(files::BufferedReader& file, std::string& text);

// The same as one object: "PDFVersion", "FastWebView", "NumberOfPages" and so on, and the entries
// of the information dictionary in "Information", its dates as "2022-08-01T12:34:56". Nothing is
// written where the other gives an error.
Result<void> describe_pdf(files::BufferedReader& file, JsonWriter& json);

} // namespace vell::documents
