#include "src/metadata/xmp.h"

#include "src/base/utf8.h"
#include "src/metadata/file_search.h"
#include "src/metadata/ifd.h"
#include "src/metadata/read_whole.h"
#include "src/metadata/tag_reader.h"

#include <algorithm>

namespace vell::metadata {
namespace {

using files::BufferedReader;

constexpr std::string_view marked_header = "<?xpacket begin=\"\xEF\xBB\xBF\"";
constexpr std::string_view readable_header = "<?xpacket begin=\"0xEFBBBF\"";

// A packet stands between two of these instructions, one with "begin=" and one with "end=".
constexpr std::string_view instruction = "<?xpacket ";
constexpr std::string_view instruction_end = "?>";
constexpr std::size_t longest_instruction = 256;

} // namespace

Result<void> read_app1_xmp(BufferedReader& file, std::uint64_t length, TextEncoding source,
                           MetadataText& text) {
    const std::string start =
        VELL_TRY(file.read_bytes(std::min<std::uint64_t>(length, xmp_identifier_start.size())));
    const auto [differs, expected] = std::ranges::mismatch(start, xmp_identifier_start);
    text.append(std::string_view(start.begin(), differs));
    if (expected != xmp_identifier_start.end())
        return Failure{ErrorCode::NotXmp};

    const std::string segment = VELL_TRY(read_whole(file, length - xmp_identifier_start.size()));
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
    std::string packet = VELL_TRY(find_tag(file, tag::xmp_packet));
    packet.resize(packet.find_last_not_of('\0') + 1); // some writers end it like an ASCII value
    append_xmp_packet(packet, source, text);
    return {};
}

Result<void> scan_for_xmp(BufferedReader& file, TextEncoding source, MetadataText& text) {
    FileSearch search(file, instruction);
    std::optional<std::uint64_t> begin;
    std::uint64_t from = 0;
    while (const auto at = VELL_TRY(search.next(from))) {
        const std::string_view found = VELL_TRY(search.bytes(*at, longest_instruction));
        const std::string_view what = found.substr(instruction.size());
        const std::size_t end = what.find(instruction_end);
        if (what.starts_with("begin="))
            begin = *at;
        else if (begin && what.starts_with("end=") && end != std::string_view::npos) {
            file.seek(*begin);
            const std::uint64_t packet_end =
                *at + instruction.size() + end + instruction_end.size();
            if (packet_end - *begin > MetadataText::max_size)
                return Failure{ErrorCode::ResourceTooLarge};
            append_xmp_packet(VELL_TRY(read_whole(file, packet_end - *begin)), source, text);
            return {};
        }
        from = *at + instruction.size();
    }
    return Failure{ErrorCode::NothingFound};
}

void append_xmp_packet(std::string_view packet, TextEncoding source, MetadataText& text) {
    text.append(packet, is_valid_utf8(packet) ? TextEncoding::Utf8 : source);
    fix_packet_header(text);
}

void fix_packet_header(MetadataText& text) {
    for (MetadataText::Piece& piece : text.pieces()) {
        const std::size_t at = piece.bytes.find(marked_header);
        if (at == std::string::npos)
            continue;
        piece.bytes.replace(at, marked_header.size(), readable_header);
        return;
    }
}

} // namespace vell::metadata
