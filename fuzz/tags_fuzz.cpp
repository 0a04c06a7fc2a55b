// Blocks of tags, from memory and from a file.
//
// The first byte chooses the options and the encoding of texts; the rest is the block.
#include "fuzz/input.h"
#include "src/formats/recognition.h"
#include "src/formats/tiff/records.h"
#include "src/metadata/reading/tag_reader.h"

#include <vector>

namespace vell::tags_fuzz {
namespace {

using namespace vell::metadata;

// Four directories may share their entries, values their bytes up to the limit on them all; a value
// of eight bytes comes out as 22 at most.
void check_size(const MetadataText& text, std::size_t size) {
    const std::size_t entries = 4 * (size / formats::tiff::Entry::size + 1);
    FUZZ_CHECK(text.size() <= entries * 64 + (size + 0x10000) * 3 + 2000);
}

} // namespace

FUZZ_TARGET(tags) {
    if (size == 0)
        return 0;
    const std::uint8_t choice = data[0];
    const std::string_view bytes = fuzz::as_text(data, size).substr(1);
    const ExifReadOptions options{.want_exif = (choice & 1) == 0,
                                  .want_gps = (choice & 2) == 0,
                                  .decimal_gps = (choice & 4) != 0,
                                  .raw_values = (choice & 8) != 0,
                                  .hide_maker_note = (choice & 16) == 0};
    const TextEncoding source = (choice & 32) == 0 ? TextEncoding::Utf8 : TextEncoding::Native;

    const std::vector<char> block(bytes.begin(), bytes.end()); // read beyond it: a finding
    MetadataText from_block;
    const Result<void> of_block =
        read_tags({block.data(), block.size()}, options, source, from_block);
    check_size(from_block, bytes.size());

    const auto file = files::memory_file(std::string(bytes));
    auto reader = *files::BufferedReader::over(*file, 64);
    MetadataText from_file;
    const Result<void> of_file = read_tags(reader, options, source, from_file);
    check_size(from_file, bytes.size());

    // What a file lacks is a corrupt block, and nothing else lets one of the two fail.
    if (!of_block || of_file)
        FUZZ_CHECK(of_file || of_file.error() == of_block.error() ||
                   of_file.error() == ErrorCode::EndOfFile);
    FUZZ_CHECK(formats::begins_like_tiff(bytes) ==
               (of_block || of_block.error() != ErrorCode::ShortRead));

    namespace tag = formats::tiff::tag;
    for (const std::uint16_t number : {tag::xmp_packet, tag::iptc_block, tag::exif_directory}) {
        reader.seek(0);
        const Result<std::string> found = find_tag(reader, number);
        FUZZ_CHECK(!found || found->size() <= 4 || bytes.find(*found) != std::string_view::npos);
    }
    return 0;
}

} // namespace vell::tags_fuzz
