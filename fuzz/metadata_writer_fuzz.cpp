// Metadata written into any file, and read back.
//
// First line: the switches of the write. Then the number of bytes of the metadata text, as one byte
// in units of 4; the text; the rest is the file.
#include "fuzz/input.h"
#include "src/formats/recognition.h"
#include "src/metadata/reading/tag_reader.h"
#include "src/metadata/set_metadata.h"
#include "src/metadata/writing/exif_writer.h"
#include "tests/portable/fake_call.h"
#include "tests/portable/fake_system.h"
#include "tests/portable/image_builder.h"

#include <string>

namespace vell::metadata_writer_fuzz {
namespace {

// The tags of a block as the host would show them.
std::string read_block(std::string_view block) {
    metadata::MetadataText text;
    static_cast<void>(metadata::read_tags(block, {.want_exif = true, .want_gps = true},
                                          params::TextEncoding::Utf8, text));
    std::u16string shown;
    for (const metadata::MetadataText::Piece& piece : text.pieces())
        shown += test::decoded(piece.bytes, piece.encoding);
    return utf8_from_utf16(shown);
}

// A block of tags: the text's values written into it, and what reads of it left as it is.
void write_block(std::string_view text, const std::string& block) {
    test::FakeCall call({});
    const metadata::TextStore store(call, params::TextEncoding::Utf8);
    const auto write = [&](std::string_view given,
                           std::string_view existing) -> Result<std::string> {
        const auto sections = VELL_TRY(metadata::parse_tagged_text(given));
        return metadata::write_exif(existing, sections, metadata::MakerNote::Keep, store, 65'527);
    };
    const auto kept = write(read_block(block), block);
    FUZZ_CHECK(!kept || *kept == block);
    const auto written = write(text, block);
    if (!written)
        return;
    FUZZ_CHECK(written->size() <= 65'527);
    const auto again = write(text, *written);
    FUZZ_CHECK(again || again.error() == ErrorCode::ResourceTooLarge);
}

// What was written has the form of the file, and can be written again. A TIFF keeps all its bytes
// but the place of the first directory.
void check_written(std::string_view switches, std::string_view text, const std::string& file,
                   const std::string& written) {
    const formats::Format format = formats::format_of(file);
    FUZZ_CHECK(formats::format_of(written) == format);
    if (format == formats::Format::Jpeg)
        return;
    if (format == formats::Format::Tiff)
        FUZZ_CHECK(std::string_view(written).substr(8).starts_with(file.substr(8)));
    test::FakeSystem files;
    files.add(u"C:\\a", written);
    test::FakeCall call({utf16_from_utf8(switches), u"C:\\a", u"", utf16_from_utf8(text)});
    const auto again = metadata::set_metadata(call, files);
    FUZZ_CHECK(again || again.error() == ErrorCode::NothingFound ||
               again.error() == ErrorCode::BadParameter ||
               again.error() == ErrorCode::ResourceTooLarge);
}

} // namespace

FUZZ_TARGET(metadata_writer) {
    std::string_view input = fuzz::as_text(data, size);
    const std::string_view switches = fuzz::take_line(input);
    if (input.empty())
        return 0;
    const std::size_t length = static_cast<unsigned char>(input[0]) * 4U;
    const std::string text(input.substr(1, length));
    const std::string file(input.substr(std::min(length + 1, input.size())));
    if (switches == "block") {
        write_block(text, file);
        return 0;
    }
    test::FakeSystem files;
    files.add(u"C:\\a", file);
    test::FakeCall call({utf16_from_utf8(switches), u"C:\\a", u"C:\\b", utf16_from_utf8(text)});
    const bool done = metadata::set_metadata(call, files).has_value();
    FUZZ_CHECK(files.at(u"C:\\a") == file && files.open_files() == 0);
    FUZZ_CHECK(files.contents().size() == (done ? 2U : 1U));
    if (!done)
        return 0;
    const std::string written = files.at(u"C:\\b");
    check_written(switches, text, file, written);
    for (const char* reading : {"GetExif GetGPS GetJPEGComment", "GetIPTC", "GetXMP"}) {
        const std::string before = test::metadata_of(reading, file);
        const std::string after = test::metadata_of(reading, written);
        FUZZ_CHECK(before.starts_with('!') || !after.starts_with("!-71"));
    }
    return 0;
}

} // namespace vell::metadata_writer_fuzz
