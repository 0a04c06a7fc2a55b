// Image resources and XMP packets looked for in a whole file, against a plain search.
//
// The first byte chooses what is looked for; the rest is the file.
#include "fuzz/input.h"
#include "src/metadata/reading/photoshop_resources.h"
#include "src/metadata/reading/xmp.h"

#include <optional>
#include <string>

namespace vell::resources_fuzz {
namespace {

using namespace vell::metadata;

// nullopt when there is none or one that does not end where it may.
std::optional<std::string> image_url(std::string_view bytes) {
    for (;;) {
        const std::size_t at = bytes.find("8BIM\x04\x0B");
        if (at == std::string_view::npos)
            return std::nullopt;
        const std::string_view block = bytes.substr(at, 16'384);
        if (block.size() < 7)
            return std::nullopt;
        const std::size_t name = static_cast<unsigned char>(block[6]);
        const std::size_t data = 6 + (name % 2 == 0 ? name + 2 : name + 1) + 4;
        if (data > block.size())
            return std::nullopt;
        const auto size = load<std::uint32_t>(block, data - 4, ByteOrder::Big);
        if (*size > block.size() - data)
            return std::nullopt;
        if (*size > 0)
            return std::string(block.substr(data, *size));
        bytes.remove_prefix(at + data);
    }
}

std::string all_of(const MetadataText& text) {
    std::string bytes;
    for (const MetadataText::Piece& piece : text.pieces())
        bytes += piece.bytes;
    return bytes;
}

} // namespace

FUZZ_TARGET(resources) {
    if (size == 0)
        return 0;
    const std::string_view bytes = fuzz::as_text(data, size).substr(1);
    const auto file = files::memory_file(std::string(bytes));
    auto reader = *files::BufferedReader::over(*file, 64);
    MetadataText text;
    MetadataRequest request;
    switch (data[0] & 3) {
    case 0: {
        request.want_image_url = true;
        const Result<void> done = read_photoshop_resources(reader, request, text);
        const std::optional<std::string> expected = image_url(bytes);
        FUZZ_CHECK(done.has_value() == expected.has_value());
        FUZZ_CHECK(all_of(text) == expected.value_or(""));
        break;
    }
    case 1: {
        const Result<void> done = scan_for_xmp(reader, TextEncoding::Native, text);
        const std::string packet = all_of(text);
        FUZZ_CHECK(done.has_value()
                       ? packet.starts_with("<?xpacket begin=") && packet.ends_with("?>") &&
                             packet.size() <= bytes.size() + 7
                       : packet.empty());
        break;
    }
    default: {
        request.exif.want_iptc = true;
        request.all_application_records = (data[0] & 1) != 0;
        const Result<void> done = read_photoshop_resources(reader, request, text);
        FUZZ_CHECK(done || text.empty() || request.all_application_records);
        FUZZ_CHECK(text.size() <= 6 * bytes.size() + 100); // every dataset is given once
    }
    }
    return 0;
}

} // namespace vell::resources_fuzz
