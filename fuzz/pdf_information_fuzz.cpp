// Descriptions of PDF files: what a small buffer makes of a file is what a large one does, and the
// text stays short and sound whatever the file holds.
#include "fuzz/input.h"
#include "src/base/utf8.h"
#include "src/documents/pdf_information.h"

#include <string>

namespace vell::pdf_information_fuzz {
namespace {

struct Description {
    int code = 0;
    std::string text;
    bool operator==(const Description&) const = default;
};

Description describe(std::string_view bytes, std::size_t buffer_size) {
    const auto file = files::memory_file(std::string(bytes));
    auto reader = *files::BufferedReader::over(*file, buffer_size);
    Description description;
    if (const Result<void> done = documents::describe_pdf(reader, description.text); !done)
        description.code = number(done.error());
    return description;
}

} // namespace

FUZZ_TARGET(pdf_information) {
    const std::string_view bytes = fuzz::as_text(data, size);
    const Description found = describe(bytes, files::BufferedReader::default_buffer);
    FUZZ_CHECK(found == describe(bytes, 5));
    FUZZ_CHECK(found.code == 0 || found.code == number(ErrorCode::BadArgument) ||
               (found.code == number(ErrorCode::EndOfFile) && bytes.empty()));
    FUZZ_CHECK(found.code != 0 || found.text.starts_with("\rPDF Version: "));
    FUZZ_CHECK(found.text.size() <= 34'000);
    FUZZ_CHECK(is_valid_utf8(found.text));
    return 0;
}

} // namespace vell::pdf_information_fuzz
