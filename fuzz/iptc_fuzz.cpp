// IPTC datasets: every value of record 2 is given whole and nothing else.
//
// The first byte chooses the encoding and whether the declared one counts; the rest is the block.
#include "fuzz/input.h"
#include "src/base/utf8.h"
#include "src/metadata/reading/iptc_text.h"

#include <string>
#include <vector>

namespace vell::iptc_fuzz {

FUZZ_TARGET(iptc) {
    using namespace vell::metadata;
    if (size == 0)
        return 0;
    const bool detect_utf8 = (data[0] & 1) != 0;
    const TextEncoding source = (data[0] & 2) != 0 ? TextEncoding::Utf8 : TextEncoding::Native;
    const std::vector<char> block(data + 1, data + size); // read beyond it: a finding
    MetadataText text;
    const Result<std::size_t> end =
        decode_iptc({block.data(), block.size()}, detect_utf8, source, text);
    FUZZ_CHECK(end && *end <= block.size());
    // A header of five bytes becomes two words with a number of up to three digits each.
    constexpr std::size_t words = std::string_view("\r##IPTC \r\r##END ").size() + 6;
    FUZZ_CHECK(text.size() <= *end / 5 * words + *end);
    for (const MetadataText::Piece& piece : text.pieces()) {
        FUZZ_CHECK(piece.encoding == TextEncoding::Utf8 || piece.encoding == TextEncoding::Native);
        FUZZ_CHECK(piece.encoding != TextEncoding::Utf8 || is_valid_utf8(piece.bytes));
    }
    return 0;
}

} // namespace vell::iptc_fuzz
