// The chunks of a PNG file: tags, texts and XMP, with a small buffer as with a large one.
//
// The first byte chooses what is read; the rest is the file.
#include "fuzz/input.h"
#include "src/metadata/reading/png_metadata.h"

#include <string>

namespace vell::png_chunks_fuzz {
namespace {

using namespace vell::metadata;

Result<void> read(std::string_view bytes, int choice, std::size_t buffer_size, MetadataText& text) {
    const auto file = files::memory_file(std::string(bytes));
    auto reader = *files::BufferedReader::over(*file, buffer_size);
    MetadataRequest request;
    request.exif.want_exif = true;
    request.exif.want_gps = true;
    switch (choice) {
    case 0:
        return read_png_exif(reader, request, text);
    case 1:
        return read_png_text(reader, text);
    default:
        return read_png_xmp(reader, TextEncoding::Native, text);
    }
}

} // namespace

FUZZ_TARGET(png_chunks) {
    if (size == 0)
        return 0;
    const std::string_view bytes = fuzz::as_text(data, size).substr(1);
    const int choice = data[0] % 3;
    MetadataText text;
    MetadataText again;
    const Result<void> done = read(bytes, choice, files::BufferedReader::default_buffer, text);
    const Result<void> done_again = read(bytes, choice, 3, again);
    FUZZ_CHECK(done.has_value() == done_again.has_value());
    FUZZ_CHECK(done || done.error() == done_again.error());
    FUZZ_CHECK(text.size() == again.size());
    if (choice == 1)
        FUZZ_CHECK(text.size() <= bytes.size());
    FUZZ_CHECK(text.size() <= 1100 * bytes.size() + 100); // what deflate can expand to
    return 0;
}

} // namespace vell::png_chunks_fuzz
