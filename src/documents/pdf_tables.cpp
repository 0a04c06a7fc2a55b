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

constexpr std::string_view xref_keyword = "xref";
constexpr std::string_view trailer_keyword = "trailer";

// "xref", but not that of "startxref".
std::size_t find_xref(std::string_view bytes, std::size_t from) {
    constexpr std::string_view start = "start";
    for (std::size_t at = from; (at = bytes.find(xref_keyword, at)) != npos; ++at)
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

// The first trailer from a position on, which belongs to the table.
Result<Trailer> trailer_from(BufferedReader& file, std::uint64_t position, std::uint64_t table) {
    file.seek(position);
    const std::string bytes = VELL_TRY(file.read_bytes(table_read));
    const std::string_view read = bytes;
    const std::size_t trailer = read.find(trailer_keyword);
    if (trailer == npos)
        return Failure{not_in_file};
    const std::size_t end = std::min(read.find("startxref", trailer), read.size());
    return trailer_in(read.substr(trailer, end - trailer), table);
}

struct SubsectionHeader {
    std::uint64_t first = 0;
    std::uint64_t count = 0;
    std::size_t size = 0; // of the header, with the white space around it
};

// The header of a subsection that the bytes begin with.
Result<SubsectionHeader> subsection_header_in(std::string_view bytes) {
    std::string_view rest = bytes;
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
    return SubsectionHeader{*first, *count, bytes.size() - rest.size()};
}

// A table piece by piece.
class TableBlock {
  public:
    explicit TableBlock(BufferedReader& file) : file_(file) {}

    // What there is from a position on, enough for a subsection's header or the word "trailer".
    Result<std::string_view> from(std::uint64_t position) {
        constexpr std::size_t header_room = 64;
        if (position < start_ || bytes_.size() < header_room ||
            position - start_ > bytes_.size() - header_room) {
            start_ = position;
            file_.seek(position);
            bytes_ = VELL_TRY(file_.read_bytes(table_read));
        }
        return std::string_view(bytes_).substr(static_cast<std::size_t>(position - start_));
    }

  private:
    BufferedReader& file_;
    std::uint64_t start_ = 0;
    std::string bytes_;
};

} // namespace

Result<Trailer> find_trailer(BufferedReader& file, std::uint64_t& end) {
    if (end < shortest_file)
        return Failure{not_in_file};
    const std::uint64_t start = end - std::min<std::uint64_t>(end, table_read);
    file.seek(start);
    const std::string bytes = VELL_TRY(file.read_bytes(end - start));
    const std::string_view tail = bytes;
    const std::size_t trailer = tail.rfind(trailer_keyword);
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
    const std::size_t header = table + xref_keyword.size();
    const SubsectionHeader subsection = VELL_TRY(subsection_header_in(block.substr(header)));
    if (subsection.count > file.size() / entry_size)
        return Failure{not_in_file};
    return trailer_from(file, header + subsection.size + subsection.count * entry_size, table);
}

void TableChain::begin(const Trailer& trailer) {
    subsections_.clear();
    tables_.clear();
    next_ = trailer.table;
    behind_first_ = trailer.previous_table;
    end_ = not_in_file;
}

// Notes the subsections of the next table, if there is one that was not read before.
Result<void> TableChain::read_next() {
    const std::uint64_t table = *next_;
    next_.reset();
    if (tables_left_ == 0 || std::ranges::find(tables_, table) != tables_.end())
        return {};
    --tables_left_;
    tables_.push_back(table);
    const Result<std::optional<std::uint64_t>> previous = read_table(table);
    if (!previous && previous.error() != not_in_file && previous.error() != table_malformed)
        return Failure{previous.error()};
    if (!previous)
        end_ = previous.error();
    if (tables_.size() == 1 && end_ != table_malformed)
        next_ = behind_first_;
    else if (previous)
        next_ = *previous;
    return {};
}

// The offset of the table before the one at `table`.
Result<std::optional<std::uint64_t>> TableChain::read_table(std::uint64_t table) {
    TableBlock block(file_);
    const std::string_view front = VELL_TRY(block.from(table));
    const std::size_t xref = find_xref(front, 0);
    if (xref == npos)
        return Failure{not_in_file};
    const std::size_t trailer = front.find(trailer_keyword, xref);
    const std::uint64_t end_of_front = table + front.size();
    const std::uint64_t end_of_entries = trailer == npos ? file_.size() : table + trailer;
    for (std::uint64_t at = table + xref + xref_keyword.size();;) {
        const std::string_view bytes = VELL_TRY(block.from(at));
        std::string_view keyword = bytes;
        skip_pdf_white(keyword);
        if (keyword.starts_with(trailer_keyword))
            return VELL_TRY(trailer_from(file_, at, table)).previous_table;
        const Result<SubsectionHeader> header = subsection_header_in(bytes);
        if (!header)
            return Failure{at < end_of_front ? header.error() : not_in_file};
        const std::uint64_t entries = at + header->size;
        const std::uint64_t room =
            (end_of_entries - std::min(entries, end_of_entries)) / entry_size;
        if (subsections_left_ == 0)
            return Failure{not_in_file};
        --subsections_left_;
        subsections_.push_back({header->first, std::min(header->count, room), entries});
        if (header->count > room)
            return Failure{not_in_file};
        at = entries + header->count * entry_size;
    }
}

// Where the newest table that lists an object says that it stands.
Result<std::uint64_t> TableChain::look_up(std::uint64_t object) {
    for (std::size_t i = 0;; ++i) {
        while (i == subsections_.size()) {
            if (!next_)
                return Failure{end_};
            VELL_TRY(read_next());
        }
        const Subsection& subsection = subsections_[i];
        if (object < subsection.first || object - subsection.first >= subsection.count)
            continue;
        constexpr std::size_t offset_digits = 10;
        file_.seek(subsection.entries + (object - subsection.first) * entry_size);
        const std::string entry = VELL_TRY(file_.read_bytes(offset_digits));
        if (entry.size() < offset_digits)
            return Failure{not_in_file};
        std::string_view digits = entry;
        const auto offset = take_pdf_number(digits);
        if (!offset)
            return Failure{table_malformed};
        return *offset;
    }
}

Result<void> TableChain::go_to_object(ObjectId object) {
    const std::uint64_t start = VELL_TRY(look_up(object.number));
    constexpr std::size_t header_room = 64;
    file_.seek(start);
    const std::string bytes = VELL_TRY(file_.read_bytes(header_room));
    std::string_view rest = bytes;
    const auto number = take_pdf_number(rest);
    const auto generation = take_pdf_number(rest);
    skip_pdf_white(rest);
    constexpr std::string_view keyword = "obj";
    if (number != object.number || generation != object.generation || !rest.starts_with(keyword))
        return Failure{ErrorCode::BadArgument};
    file_.seek(start + (bytes.size() - rest.size()) + keyword.size());
    return {};
}

} // namespace vell::documents
