#include "src/documents/pdf_tables.h"

#include "src/documents/pdf_syntax.h"

#include <algorithm>
#include <string>

namespace vell::documents {
namespace {

using files::BufferedReader;

constexpr std::size_t npos = std::string_view::npos;
constexpr std::uint64_t entry_size = 20;
constexpr std::size_t shortest_file = 52;

// "xref", but not that of "startxref".
std::size_t find_xref(std::string_view bytes, std::size_t from) {
    constexpr std::string_view start = "start";
    for (std::size_t at = from; (at = bytes.find("xref", at)) != npos; ++at)
        if (!bytes.substr(0, at).ends_with(start))
            return at;
    return npos;
}

bool holds_cross_reference_stream(std::string_view bytes) {
    std::size_t at = 0;
    for (const std::string_view word : {"obj", "<<", "/XRef"}) {
        at = bytes.find(word, at);
        if (at == npos)
            return false;
        at += word.size();
    }
    return true;
}

std::optional<ObjectId> reference_in(std::string_view bytes) {
    const auto object = take_pdf_number(bytes);
    const auto generation = take_pdf_number(bytes);
    skip_pdf_white(bytes);
    if (!object || !generation || !bytes.starts_with('R'))
        return std::nullopt;
    return ObjectId{*object, *generation};
}

// `text` begins with "trailer" and ends before "startxref".
Trailer trailer_in(std::string_view text, std::uint64_t table) {
    Trailer trailer;
    trailer.table = table;
    trailer.encrypted = after_pdf_key(text, "/Encrypt").has_value();
    if (const auto value = after_pdf_key(text, "/Info"))
        trailer.information = reference_in(*value);
    if (auto value = after_pdf_key(text, "/Prev"))
        trailer.previous_table = take_pdf_number(*value);
    return trailer;
}

struct Subsection {
    std::uint64_t first = 0;
    std::uint64_t count = 0;
    std::size_t entries = 0; // offset in the block
};

// The subsection whose header stands at `at`, before `end`.
Result<Subsection> subsection_at(std::string_view block, std::size_t at, std::size_t end) {
    std::string_view rest = block.substr(at, end - at);
    skip_pdf_white(rest);
    if (rest.empty())
        return Failure{not_in_file};
    const auto first = take_pdf_number(rest);
    const bool separated = rest.starts_with(' ');
    const auto count = take_pdf_number(rest);
    if (!first || !separated || !count)
        return Failure{table_malformed};
    while (rest.starts_with(' '))
        rest.remove_prefix(1);
    if (rest.starts_with('\r'))
        rest.remove_prefix(1);
    if (rest.starts_with('\n'))
        rest.remove_prefix(1);
    return Subsection{*first, *count, end - rest.size()};
}

// Where a table at offset `table` says that the object stands.
Result<std::uint64_t> look_up(BufferedReader& file, std::uint64_t table, std::uint64_t object) {
    file.seek(table);
    const std::string block = VELL_TRY(file.read_bytes(table_read));
    const std::size_t start = find_xref(block, 0);
    if (start == npos)
        return Failure{not_in_file};
    const std::size_t trailer = block.find("trailer", start);
    const std::size_t end = std::min(trailer, block.size());
    Subsection subsection;
    for (std::size_t at = start + 4;;) {
        subsection = VELL_TRY(subsection_at(block, at, end));
        if (object >= subsection.first && object - subsection.first < subsection.count)
            break;
        if (subsection.count > (end - subsection.entries) / entry_size)
            return Failure{not_in_file};
        at = subsection.entries + static_cast<std::size_t>(subsection.count * entry_size);
    }
    const std::uint64_t index = object - subsection.first;
    const std::uint64_t room = trailer == npos ? file.size() : trailer - subsection.entries;
    if (index >= room / entry_size)
        return Failure{not_in_file};
    constexpr std::size_t offset_digits = 10;
    file.seek(table + subsection.entries + index * entry_size);
    const std::string entry = VELL_TRY(file.read_bytes(offset_digits));
    if (entry.size() < offset_digits)
        return Failure{not_in_file};
    std::string_view digits = entry;
    const auto offset = take_pdf_number(digits);
    if (!offset)
        return Failure{table_malformed};
    return *offset;
}

} // namespace

Result<Trailer> find_trailer(BufferedReader& file, std::uint64_t& end) {
    if (end < shortest_file)
        return Failure{not_in_file};
    const std::uint64_t start = end - std::min<std::uint64_t>(end, table_read);
    file.seek(start);
    const std::string bytes = VELL_TRY(file.read_bytes(end - start));
    const std::string_view tail = bytes;
    const std::size_t trailer = tail.rfind("trailer");
    const std::size_t startxref =
        trailer == npos ? tail.rfind("startxref") : tail.find("startxref", trailer);
    if (startxref == npos || tail.find("%%EOF", startxref) == npos)
        return Failure{not_in_file};
    std::string_view number = tail.substr(startxref + std::string_view("startxref").size());
    const auto table = take_pdf_number(number);
    if (!table)
        return Failure{not_in_file};
    if (trailer != npos) {
        end = start + trailer;
        return trailer_in(tail.substr(trailer, startxref - trailer), *table);
    }
    constexpr std::size_t object_start = 200;
    file.seek(*table);
    const std::string there = VELL_TRY(file.read_bytes(object_start));
    return Failure{find_xref(there, 0) == npos && holds_cross_reference_stream(there)
                       ? cross_reference_stream
                       : not_in_file};
}

Result<Trailer> first_page_trailer(BufferedReader& file, std::string_view block,
                                   std::size_t searched) {
    const std::size_t table = find_xref(block, searched);
    if (table == npos)
        return Failure{holds_cross_reference_stream(block.substr(searched)) ? cross_reference_stream
                                                                            : not_in_file};
    const Subsection subsection = VELL_TRY(subsection_at(block, table + 4, block.size()));
    if (subsection.count > file.size() / entry_size)
        return Failure{not_in_file};
    file.seek(subsection.entries + subsection.count * entry_size);
    const std::string bytes = VELL_TRY(file.read_bytes(table_read));
    const std::string_view read = bytes;
    const std::size_t trailer = read.find("trailer");
    if (trailer == npos)
        return Failure{not_in_file};
    const std::size_t end = std::min(read.find("startxref", trailer), read.size());
    return trailer_in(read.substr(trailer, end - trailer), table);
}

Result<void> go_to_object(BufferedReader& file, const Trailer& trailer, ObjectId object) {
    Result<std::uint64_t> offset = look_up(file, trailer.table, object.number);
    if (!offset && offset.error() == not_in_file && trailer.previous_table)
        offset = look_up(file, *trailer.previous_table, object.number);
    const std::uint64_t start = VELL_TRY(offset);
    constexpr std::size_t header_room = 64;
    file.seek(start);
    const std::string bytes = VELL_TRY(file.read_bytes(header_room));
    std::string_view rest = bytes;
    const auto number = take_pdf_number(rest);
    const auto generation = take_pdf_number(rest);
    skip_pdf_white(rest);
    constexpr std::string_view keyword = "obj";
    if (number != object.number || generation != object.generation || !rest.starts_with(keyword))
        return Failure{ErrorCode::BadArgument};
    file.seek(start + (bytes.size() - rest.size()) + keyword.size());
    return {};
}

} // namespace vell::documents
