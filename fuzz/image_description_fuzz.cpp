// Headers of images: nine lines or nothing.
#include "fuzz/input.h"
#include "src/metadata/images/image_description.h"

#include <algorithm>
#include <string>

namespace vell::image_description_fuzz {

FUZZ_TARGET(image_description) {
    const auto file = files::memory_file(std::string(fuzz::as_text(data, size)));
    auto reader = files::BufferedReader::over(*file, 64);
    FUZZ_CHECK(reader);
    metadata::MetadataText text;
    if (const Result<void> done = metadata::describe_image(reader.value(), text)) {
        FUZZ_CHECK(text.pieces().size() == 1);
        const std::string& lines = text.pieces()[0].bytes;
        FUZZ_CHECK(std::ranges::count(lines, '\r') == 8);
        FUZZ_CHECK(lines.ends_with("\rData size: " + std::to_string(size)));
        const std::string numbers = lines.substr(0, lines.find("\rCodec"));
        FUZZ_CHECK(numbers.find("nan") == std::string::npos &&
                   numbers.find("inf") == std::string::npos);
    } else {
        FUZZ_CHECK(text.empty());
    }
    return 0;
}

} // namespace vell::image_description_fuzz
