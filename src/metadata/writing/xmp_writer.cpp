#include "src/metadata/writing/xmp_writer.h"

#include "src/base/utf8.h"
#include "src/formats/xmp.h"

#include <algorithm>

namespace vell::metadata {
namespace {

namespace xmp = formats::xmp;
using xmp::byte_order_mark;
using xmp::packet_identifier;

constexpr std::string_view white_space = " \t\r\n";
constexpr std::string_view packet_start = "<?xpacket begin=";
constexpr std::string_view readable_mark = "\"0xEFBBBF\"";

constexpr std::size_t padding_size = 2048;
constexpr std::size_t padding_line = 100; // with its end

Result<std::string> packet_bytes(std::string_view text, const TextStore& store) {
    if (store.chosen())
        return store.store(text);
    auto native = store.native(text);
    if (native && is_valid_utf8(*native))
        return std::move(*native);
    return std::string(text);
}

std::string_view without_leading(std::string_view text, std::string_view characters) {
    return text.substr(std::min(text.find_first_not_of(characters), text.size()));
}

// In the first packet header of a text the readers put words for the invisible mark.
void replace_mark(std::string& packet, std::string_view mark, std::string_view by) {
    const std::size_t at = packet.find(std::string(packet_start).append(mark));
    if (at != std::string::npos)
        packet.replace(at + packet_start.size(), mark.size(), by);
}

std::string made_readable(std::string_view packet) {
    std::string text(packet);
    replace_mark(text, byte_order_mark, readable_mark);
    return text;
}

// A packet is part of a document and has no declaration of its own.
std::string_view without_declaration(std::string_view body) {
    constexpr std::string_view declaration_end = "?>";
    const std::string_view text = without_leading(body, white_space);
    if (!text.starts_with("<?xml ") && !text.starts_with("<?xml\t"))
        return body;
    const std::size_t end = text.find(declaration_end);
    return end == std::string_view::npos
               ? body
               : without_leading(text.substr(end + declaration_end.size()), white_space);
}

std::string padding(std::size_t size) {
    std::string bytes(size, ' ');
    for (std::size_t at = padding_line - 1; at < size; at += padding_line)
        bytes[at] = '\n';
    return bytes;
}

} // namespace

bool XmpText::is_packet_segment() const {
    return identifier == packet_identifier;
}

bool is_blank_xmp(std::string_view text) {
    return text.find_first_not_of(white_space) == std::string_view::npos;
}

XmpText split_xmp_text(std::string_view text) {
    const std::string_view line = without_leading(text, white_space);
    const std::size_t end = line.find_first_of("\r\n");
    if (!line.starts_with(xmp::identifier_start) || end == std::string_view::npos)
        return {packet_identifier, text};
    const std::size_t line_end = line.substr(end).starts_with("\r\n") ? 2 : 1;
    return {line.substr(0, end), line.substr(end + line_end)};
}

Result<std::string> write_xmp(const XmpText& xmp, std::string_view existing, const TextStore& store,
                              std::size_t most_bytes) {
    if (!existing.empty() && VELL_TRY(store.reads_as(made_readable(existing), xmp.text)))
        return std::string(existing);
    if (!xmp.is_packet_segment())
        return store.store(xmp.text);
    if (is_blank_xmp(xmp.text))
        return std::string();
    if (without_leading(xmp.text, white_space).starts_with(packet_start)) {
        std::string packet = VELL_TRY(packet_bytes(xmp.text, store));
        replace_mark(packet, readable_mark, byte_order_mark);
        return packet;
    }
    const std::string body = VELL_TRY(packet_bytes(without_declaration(xmp.text), store));
    const std::size_t needed = xmp::header.size() + body.size() + 1 + xmp::trailer.size();
    const std::size_t room = most_bytes > needed ? most_bytes - needed : 0;
    return std::string(xmp::header) + body + "\n" + padding(std::min(room, padding_size)) +
           std::string(xmp::trailer);
}

} // namespace vell::metadata
