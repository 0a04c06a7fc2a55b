#include "src/documents/pdf_information.h"

#include "src/base/number_text.h"
#include "src/documents/pdf_dictionary.h"
#include "src/documents/pdf_page_count.h"
#include "src/documents/pdf_strings.h"
#include "src/documents/pdf_syntax.h"
#include "src/documents/pdf_tables.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

namespace vell::documents {
namespace {

using files::BufferedReader;

constexpr std::string_view line_ends = "\r\n";

struct Header {
    std::string_view version;
    std::size_t first_object = 0; // where it is looked for
};

std::optional<Header> header_in(std::string_view block) {
    constexpr std::string_view mark = "%PDF-";
    const std::size_t at = block.find(mark);
    if (at == std::string_view::npos)
        return std::nullopt;
    const std::size_t start = at + mark.size();
    const std::size_t line_end = block.find_first_of(line_ends, start);
    if (line_end == std::string_view::npos)
        return std::nullopt;
    Header header;
    header.version = block.substr(start, block.find_first_of("\r\n ", start) - start);
    header.first_object = line_end + 1;
    // A comment marks the file as binary. With CR LF the LF stands in its place, and it is not
    // skipped; the object is found behind it all the same.
    if (block.substr(header.first_object).starts_with('%')) {
        const std::size_t comment_end = block.find_first_of(line_ends, header.first_object);
        header.first_object =
            comment_end == std::string_view::npos ? block.size() : comment_end + 1;
    }
    return header;
}

struct Linearization {
    std::uint32_t pages = 0;
    std::size_t end = 0; // behind the dictionary's object
};

std::optional<Linearization> linearization_in(std::string_view block, std::size_t first_object) {
    constexpr std::string_view keyword = "obj";
    constexpr std::string_view end_keyword = "endobj";
    constexpr std::string_view key = "/Linearized";
    const std::size_t object = block.find(keyword);
    const std::size_t end = block.find(end_keyword);
    if (block.find(' ', first_object) == std::string_view::npos || end == std::string_view::npos ||
        object >= end)
        return std::nullopt;
    std::string_view dictionary =
        block.substr(object + keyword.size(), end - object - keyword.size());
    skip_pdf_white(dictionary);
    if (!dictionary.starts_with("<<") || !after_pdf_key(dictionary, key))
        return std::nullopt;
    Linearization found;
    found.end = end + end_keyword.size();
    if (auto value = after_pdf_key(dictionary, "/N")) {
        const auto pages = take_pdf_number(*value);
        if (pages && *pages <= std::numeric_limits<std::uint32_t>::max())
            found.pages = static_cast<std::uint32_t>(*pages);
    }
    return found;
}

// Whether text is ASCII without controls, as hardly any that is encrypted.
bool is_readable(std::string_view text) {
    return std::ranges::all_of(
        text, [](char c) { return (c >= ' ' && c <= '~') || c == '\t' || c == '\n' || c == '\r'; });
}

// Looks for the information dictionary and appends its entries.
class InformationSearch {
  public:
    InformationSearch(BufferedReader& file, LimitedText& text)
        : file_(file), text_(text), tables_(file) {}

    Result<void> in_linearized(std::string_view block, const Linearization& linearization) {
        const Trailer trailer = VELL_TRY(first_page_trailer(file_, block, linearization.end));
        return in(trailer);
    }

    // Through the trailers of all updates, newest first. A file without a dictionary is sound; one
    // that refers to an object which cannot be found is not.
    Result<void> in_updates() {
        // More updates than anybody makes, so that a file of nothing but trailers ends soon.
        constexpr int most_trailers = 1000;
        std::uint64_t end = file_.size();
        Result<void> outcome;
        for (int trailers = 0; trailers < most_trailers; ++trailers) {
            const Result<Trailer> trailer = find_trailer(file_, end);
            if (!trailer) {
                const bool none_left = trailers > 0 && trailer.error() == not_in_file;
                return none_left ? outcome : Result<void>(Failure{trailer.error()});
            }
            const Result<void> done = in(trailer.value());
            if (found_dictionary_ || (!done && !may_be_in_older(done.error())))
                return done;
            if (!done)
                outcome = done;
        }
        return outcome;
    }

    bool encrypted() const { return encrypted_; }
    // Whether what was appended is a dictionary, and whether that was more than could be told.
    bool has_read() const { return has_read_; }
    bool has_left_out() const { return has_left_out_; }

  private:
    static bool may_be_in_older(ErrorCode error) {
        return error == not_in_file || error == ErrorCode::BadArgument;
    }

    Result<void> in(const Trailer& trailer) {
        encrypted_ = encrypted_ || trailer.encrypted;
        if (!trailer.information)
            return {};
        tables_.begin(trailer);
        VELL_TRY(tables_.go_to_object(*trailer.information));
        found_dictionary_ = true;
        const std::size_t start = text_.size();
        const Result<void> done = append_dictionary(file_, tables_, text_);
        // The strings of an encrypted file mostly are encrypted too, and tell nobody anything.
        // Some writers leave them as they are, and then they can be told.
        has_read_ = !encrypted_ || is_readable(text_.from(start));
        if (!has_read_)
            text_.replace_from(start, "");
        has_left_out_ = !done && done.error() == not_in_file;
        return has_left_out_ ? Result<void>() : done;
    }

    BufferedReader& file_;
    LimitedText& text_;
    TableChain tables_;
    bool encrypted_ = false;
    bool found_dictionary_ = false;
    bool has_read_ = false;
    bool has_left_out_ = false;
};

void add_line(LimitedText& text, std::string_view words) {
    text.begin_line();
    text.append("\r");
    text.append(words);
}

Result<void> append_description(BufferedReader& file, LimitedText& text) {
    constexpr std::size_t block_size = 1024;
    file.seek(0);
    const std::string bytes = VELL_TRY(file.read_bytes(block_size));
    if (bytes.empty())
        return Failure{ErrorCode::EndOfFile};
    const auto header = header_in(bytes);
    if (!header)
        return Failure{ErrorCode::BadArgument};
    add_line(text, "PDF Version: ");
    text.append_pdf_doc(header->version);
    const auto linearization = linearization_in(bytes, header->first_object);
    add_line(text, linearization ? "Fast Web View: Yes" : "Fast Web View: No");

    InformationSearch search(file, text);
    const Result<void> done =
        linearization ? search.in_linearized(bytes, *linearization) : search.in_updates();
    if (search.encrypted() && !search.has_read())
        add_line(text, "Encrypted: Yes");
    if (!done && done.error() == cross_reference_stream)
        add_line(text, "Version compatibility: contains cross-reference stream object introduced "
                       "with PDF 1.5");
    VELL_TRY(done);
    std::uint32_t pages = linearization ? linearization->pages : 0;
    if (pages == 0)
        pages = VELL_TRY(largest_count(file));
    if (pages > 0)
        add_line(text, "Number of pages: " + to_text(std::uint64_t{pages}));
    if (search.has_left_out()) // which does not keep the pages from being counted
        return Failure{not_in_file};
    return {};
}

// With a line for what kept the structure from being read.
Result<void> describe(BufferedReader& file, LimitedText& text) {
    const Result<void> done = append_description(file, text);
    if (done)
        return {};
    struct ParseError {
        ErrorCode error;
        std::string_view reason;
    };
    constexpr ParseError parse_errors[] = {
        {table_malformed, " (PDF may be corrupt)"},
        {cross_reference_stream, " (PDF version not supported)"},
        {not_in_file, ""},
    };
    for (const ParseError& each : parse_errors) {
        if (done.error() == each.error) {
            add_line(text, "ParseError: could not parse further");
            text.append(each.reason);
            return {};
        }
    }
    return done;
}

struct Line {
    std::string name;
    std::string value;
    bool is_from_file = false;
};

std::vector<Line> lines_of(std::string_view description, const LimitedText& text) {
    std::vector<Line> lines;
    const auto& starts = text.lines();
    for (std::size_t i = 0; i < starts.size(); ++i) {
        const std::size_t start = starts[i].at + 1; // behind the line end
        const std::size_t end = i + 1 < starts.size() ? starts[i + 1].at : description.size();
        const std::string_view line = description.substr(start, end - start);
        const std::size_t colon = std::min(line.find(": "), line.size());
        lines.push_back({std::string(line.substr(0, colon)),
                         std::string(line.substr(std::min(colon + 2, line.size()))),
                         starts[i].is_from_file});
    }
    return lines;
}

// "2022-08-01T12:34:56" for "2022:08:01 12:34:56".
std::string as_iso_date(std::string value) {
    constexpr std::size_t date_size = 10;
    for (std::size_t i = 0; i < std::min(value.size(), date_size); ++i)
        if (value[i] == ':')
            value[i] = '-';
    if (value.size() > date_size && value[date_size] == ' ')
        value[date_size] = 'T';
    return value;
}

// What the program says of the file.
void write_own_line(const Line& line, JsonWriter& json) {
    const std::string name = member_name(line.name);
    if (name == "NumberOfPages")
        json.member_number(name, std::stoul(line.value));
    else if (line.value == "Yes" || line.value == "No")
        json.member_boolean(name, line.value == "Yes");
    else
        json.member(name, line.value);
}

// The first of each name; an object has no two.
void write_information(const std::vector<Line>& lines, JsonWriter& json) {
    std::set<std::string_view> written;
    json.key("Information");
    json.begin_object();
    for (const Line& line : lines) {
        if (!line.is_from_file || !written.insert(line.name).second)
            continue;
        const bool is_date = line.name.find("Date") != std::string::npos;
        json.member(line.name, is_date ? as_iso_date(line.value) : line.value);
    }
    json.end_object();
}

} // namespace

Result<void> describe_pdf(BufferedReader& file, std::string& text) {
    LimitedText limited(text);
    return describe(file, limited);
}

Result<void> describe_pdf(BufferedReader& file, JsonWriter& json) {
    std::string text;
    LimitedText limited(text);
    VELL_TRY(describe(file, limited));
    const std::vector<Line> lines = lines_of(text, limited);
    json.begin_object();
    for (const Line& line : lines)
        if (!line.is_from_file)
            write_own_line(line, json);
    if (std::ranges::any_of(lines, &Line::is_from_file))
        write_information(lines, json);
    json.end_object();
    return {};
}

} // namespace vell::documents
