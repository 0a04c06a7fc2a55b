#include "src/metadata/reading/xmp.h"

#include "src/base/utf8.h"
#include "src/formats/pattern_search.h"
#include "src/formats/tiff/records.h"
#include "src/formats/xmp.h"
#include "src/metadata/faults.h"
#include "src/metadata/reading/tag_reader.h"

#include <algorithm>

namespace vell::metadata {
namespace {

using files::BufferedReader;

namespace xmp = formats::xmp;

constexpr std::string_view marked_header = "<?xpacket begin=\"\xEF\xBB\xBF\"";
constexpr std::string_view readable_header = "<?xpacket begin=\"0xEFBBBF\"";
constexpr std::size_t longest_instruction = 256;

// A packet may be long: the copy has no room to spare.
std::string with_readable_header(std::string_view packet, std::size_t header) {
    std::string bytes;
    bytes.reserve(packet.size() - marked_header.size() + readable_header.size());
    bytes += packet.substr(0, header);
    bytes += readable_header;
    bytes += packet.substr(header + marked_header.size());
    return bytes;
}

} // namespace

Result<void> read_app1_xmp(formats::Window content, TextEncoding source, MetadataText& text) {
    const std::string start = VELL_TRY(coded(content.read_bytes(xmp::identifier_start.size())));
    const auto [differs, expected] = std::ranges::mismatch(start, xmp::identifier_start);
    text.append(std::string_view(start.begin(), differs));
    if (expected != xmp::identifier_start.end())
        return Failure{ErrorCode::NotXmp};

    const std::string segment = VELL_TRY(coded(content.read_rest(), ErrorCode::ShortRead));
    const std::string_view rest = segment;
    const std::size_t zero = std::min(rest.find('\0'), rest.size());
    text.append(rest.substr(0, zero), TextEncoding::AsciiMac);
    if (zero < rest.size()) {
        text.append("\r");
        text.append(rest.substr(zero + 1), source);
    }
    fix_packet_header(text);
    return {};
}

Result<void> read_tiff_xmp(BufferedReader& file, TextEncoding source, MetadataText& text) {
    file.seek(0);
    std::string packet = VELL_TRY(find_tag(file, formats::tiff::tag::xmp_packet));
    packet.resize(packet.find_last_not_of('\0') + 1); // some writers end it like an ASCII value
    append_xmp_packet(packet, source, text);
    return {};
}

Result<void> scan_for_xmp(BufferedReader& file, TextEncoding source, MetadataText& text) {
    formats::PatternSearch search(formats::Window(file), xmp::instruction);
    std::optional<std::uint64_t> begin;
    std::uint64_t from = 0;
    while (const auto at = VELL_TRY(coded(search.next(from)))) {
        const std::string_view found = VELL_TRY(coded(search.bytes(*at, longest_instruction)));
        const std::string_view what = found.substr(xmp::instruction.size());
        const std::size_t end = what.find(xmp::instruction_close);
        if (what.starts_with(xmp::instruction_begin))
            begin = *at;
        else if (begin && what.starts_with(xmp::instruction_end) && end != std::string_view::npos) {
            const std::uint64_t packet_end =
                *at + xmp::instruction.size() + end + xmp::instruction_close.size();
            formats::Window packet = formats::Window(file).part(*begin, packet_end - *begin);
            append_xmp_packet(VELL_TRY(coded(packet.read_rest(), ErrorCode::ShortRead)), source,
                              text);
            return {};
        }
        from = *at + xmp::instruction.size();
    }
    return Failure{ErrorCode::NothingFound};
}

void append_xmp_packet(std::string_view packet, TextEncoding source, MetadataText& text) {
    const bool is_utf8 = is_valid_utf8(packet);
    const TextEncoding encoding = is_utf8 ? TextEncoding::Utf8 : source;
    const std::size_t header = packet.find(marked_header);
    const bool has_header = header != std::string_view::npos;
    // The text's first header is the one that is made readable.
    const bool is_fixed = (has_header || !is_utf8) && fix_packet_header(text);
    if (is_fixed || !has_header)
        text.append(packet, encoding);
    else
        text.take(with_readable_header(packet, header), encoding);
}

bool fix_packet_header(MetadataText& text) {
    for (MetadataText::Piece& piece : text.pieces()) {
        const std::size_t at = piece.bytes.find(marked_header);
        if (at == std::string::npos)
            continue;
        piece.bytes.replace(at, marked_header.size(), readable_header);
        return true;
    }
    return false;
}

} // namespace vell::metadata
