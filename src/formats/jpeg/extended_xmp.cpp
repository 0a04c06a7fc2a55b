#include "src/formats/jpeg/extended_xmp.h"

#include "src/base/md5.h"
#include "src/base/number_text.h"

#include <algorithm>

namespace vell::formats::jpeg {
namespace {

constexpr std::string_view white_space = " \t\r\n";

// Where the start tag of the element that holds the descriptions ends, and where its end tag
// begins.
struct Descriptions {
    std::size_t tag_end;
    std::size_t end;
};

// The ">" of the start tag that begins there; values in quotes may have others.
std::size_t end_of_tag(std::string_view text, std::size_t from) {
    char quote = '\0';
    for (std::size_t i = from; i < text.size(); ++i) {
        if (quote != '\0')
            quote = text[i] == quote ? '\0' : quote;
        else if (text[i] == '"' || text[i] == '\'')
            quote = text[i];
        else if (text[i] == '>')
            return i;
    }
    return std::string_view::npos;
}

std::optional<Descriptions> find_descriptions(std::string_view packet) {
    const std::size_t start = packet.find("<rdf:RDF");
    const std::size_t end = packet.rfind("</rdf:RDF");
    if (start == std::string_view::npos || end == std::string_view::npos)
        return std::nullopt;
    const std::size_t tag_end = end_of_tag(packet, start);
    if (tag_end >= end || packet[tag_end - 1] == '/')
        return std::nullopt;
    return Descriptions{tag_end, end};
}

// A name that an element around the descriptions gives to a namespace.
struct Declaration {
    std::string_view text; // as it stands, with a space before
    std::string_view prefix;
    std::string_view name_space;
};

std::vector<Declaration> declarations_of(std::string_view head) {
    constexpr std::string_view start = " xmlns:";
    std::vector<Declaration> found;
    for (std::size_t at = head.find(start); at != std::string_view::npos;
         at = head.find(start, at + 1)) {
        const std::size_t open = head.find_first_of("\"'", at);
        if (open == std::string_view::npos)
            break;
        const std::size_t close = head.find(head[open], open + 1);
        if (close == std::string_view::npos)
            break;
        const std::string_view text = head.substr(at, close + 1 - at);
        found.push_back(
            {text, text.substr(0, text.find('=')), head.substr(open + 1, close - open - 1)});
    }
    return found;
}

} // namespace

Read<void> ExtendedXmp::add(Window content) {
    constexpr std::size_t most_parts = 1U << 16U;
    const auto header = VELL_TRY(content.read_record<ExtensionHeader>());
    const std::uint64_t length = content.announced() - content.position();
    if (parts_.size() < most_parts)
        parts_.push_back({header, content.part(content.position(), length)});
    return {};
}

Read<std::string> ExtendedXmp::read(std::string_view name, std::uint64_t most) const {
    std::vector<const Part*> wanted;
    for (const Part& part : parts_)
        if (std::string_view(part.header.name.data(), part.header.name.size()) == name)
            wanted.push_back(&part);
    if (wanted.empty())
        return fault(Damage::Absent);
    std::ranges::stable_sort(wanted, {}, [](const Part* part) { return part->header.offset; });
    const std::uint64_t length = wanted.front()->header.full_length;
    std::uint64_t end = 0;
    for (const Part* part : wanted) {
        if (part->header.offset != end || part->header.full_length != length ||
            !part->data.is_whole())
            return fault(Damage::Corrupt);
        end += part->data.size();
    }
    if (end != length)
        return fault(Damage::Corrupt);
    if (length > most)
        return fault(Damage::TooLarge);
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(length));
    for (const Part* part : wanted) {
        Window data = part->data;
        bytes += VELL_TRY(data.read_rest());
    }
    if (hexadecimal(md5(bytes)) != name)
        return fault(Damage::Corrupt);
    return bytes;
}

// As an attribute or as an element.
std::optional<std::string_view> extension_name(std::string_view packet) {
    constexpr std::string_view property = ":HasExtendedXMP";
    constexpr std::size_t name_length = 32;
    for (std::size_t at = packet.find(property); at != std::string_view::npos;
         at = packet.find(property, at + 1)) {
        const std::size_t start = packet.find_first_not_of(white_space, at + property.size());
        if (start == std::string_view::npos)
            break;
        std::size_t value = start + 1;
        if (packet[start] == '=')
            value = packet.find_first_not_of(white_space, value);
        else if (packet[start] != '>')
            continue;
        if (value == std::string_view::npos)
            break;
        if (packet[start] == '=')
            ++value; // the quote
        const std::string_view name = packet.substr(std::min(value, packet.size()), name_length);
        if (name.size() == name_length)
            return name;
    }
    return std::nullopt;
}

std::optional<std::string> joined_packet(std::string_view packet, std::string_view extension) {
    const auto inner = find_descriptions(packet);
    const auto added = find_descriptions(extension);
    if (!inner || !added)
        return std::nullopt;
    const std::string_view head = packet.substr(0, inner->tag_end);
    const auto known = declarations_of(head);
    std::string joined;
    joined.reserve(packet.size() + extension.size());
    joined += head;
    for (const Declaration& declaration : declarations_of(extension.substr(0, added->tag_end))) {
        const auto same = std::ranges::find(known, declaration.prefix, &Declaration::prefix);
        if (same == known.end())
            joined += declaration.text;
        else if (same->name_space != declaration.name_space)
            return std::nullopt; // one prefix for two namespaces
    }
    joined += packet.substr(inner->tag_end, inner->end - inner->tag_end);
    joined += extension.substr(added->tag_end + 1, added->end - added->tag_end - 1);
    joined += packet.substr(inner->end);
    return joined;
}

} // namespace vell::formats::jpeg
