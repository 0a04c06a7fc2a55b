#include "src/documents/pdf_dictionary.h"

#include "src/documents/pdf_syntax.h"
#include "src/documents/pdf_value_end.h"

#include <algorithm>
#include <optional>
#include <string>

namespace vell::documents {
namespace {

using files::BufferedReader;

// "D:20220801123456+02'00'" as "2022:08:01 12:34:56", or as many parts of it as there are.
std::string date_text(std::string_view value) {
    const auto after = std::ranges::find_if_not(value, is_pdf_digit);
    const auto digits = value.substr(0, static_cast<std::size_t>(after - value.begin()));
    struct Part {
        std::string_view separator;
        std::size_t start;
        std::size_t length;
    };
    constexpr Part parts[] = {{"", 0, 4},  {":", 4, 2},  {":", 6, 2},
                              {" ", 8, 2}, {":", 10, 2}, {":", 12, 2}};
    std::string text;
    for (const Part& part : parts) {
        if (digits.size() < part.start + part.length)
            break;
        text += part.separator;
        text += digits.substr(part.start, part.length);
    }
    return text;
}

std::optional<unsigned> hex_digit(char c) {
    if (is_pdf_digit(c))
        return static_cast<unsigned>(c - '0');
    const char lower = static_cast<char>(c | 0x20);
    if (lower >= 'a' && lower <= 'f')
        return static_cast<unsigned>(lower - 'a' + 10);
    return std::nullopt;
}

class DictionaryReader {
  public:
    DictionaryReader(BufferedReader& file, TableChain& tables, LimitedText& text)
        : file_(file), tables_(tables), text_(text) {}

    Result<void> append_entries();

  private:
    // What one description may read of objects and the tables that lead to them: time stays
    // bounded however often they are referred to.
    static constexpr std::uint64_t most_bytes = 262'144;
    // Names and numbers are kept up to here; those of real files are far shorter.
    static constexpr std::size_t longest_token = 2000;
    // References to references are followed so far.
    static constexpr int most_references = 8;

    // How far a value goes.
    struct Extent {
        std::uint64_t end = 0;  // of what is inside
        std::uint64_t next = 0; // behind it
    };

    Result<void> append_entry();
    Result<void> spend(std::uint64_t bytes);
    Result<char> read();
    Result<char> next();
    Result<char> peek();
    Result<void> skip_blank();
    Result<std::string> token();
    Result<std::string> name();
    Result<void> append_value(int references);
    Result<void> append_literal();
    Result<Extent> find_end();
    Result<void> add_escaped(StringDecoder& string);
    Result<void> append_hex();
    Result<void> append_number(int references);
    Result<void> append_nested();
    void finish_value(std::string_view key, std::size_t start);

    BufferedReader& file_;
    TableChain& tables_;
    LimitedText& text_;
    std::uint64_t spent_ = 0;
    bool unclosed_ = false; // something was
};

Result<void> DictionaryReader::spend(std::uint64_t bytes) {
    spent_ += bytes;
    if (spent_ > most_bytes)
        return Failure{not_in_file};
    return {};
}

Result<char> DictionaryReader::read() {
    return static_cast<char>(VELL_TRY(file_.read_byte()));
}

Result<char> DictionaryReader::next() {
    VELL_TRY(spend(1));
    return read();
}

Result<char> DictionaryReader::peek() {
    const std::uint64_t position = file_.position();
    const char byte = VELL_TRY(read());
    file_.seek(position);
    return byte;
}

// White space and comments.
Result<void> DictionaryReader::skip_blank() {
    bool in_comment = false;
    for (;; VELL_TRY(next())) {
        const char byte = VELL_TRY(peek());
        in_comment = (in_comment || byte == '%') && byte != '\r' && byte != '\n';
        if (!in_comment && !is_pdf_white(byte))
            return {};
    }
}

Result<std::string> DictionaryReader::token() {
    std::string bytes;
    while (!is_pdf_delimiter(VELL_TRY(peek()))) {
        const char byte = VELL_TRY(next());
        if (bytes.size() < longest_token)
            bytes += byte;
    }
    return bytes;
}

// A name behind its "/", with the bytes that "#" writes as numbers.
Result<std::string> DictionaryReader::name() {
    const std::string written = VELL_TRY(token());
    std::string bytes;
    for (std::size_t i = 0; i < written.size(); ++i) {
        if (written[i] == '#' && written.size() - i > 2) {
            const auto high = hex_digit(written[i + 1]);
            const auto low = hex_digit(written[i + 2]);
            if (high && low) {
                bytes += static_cast<char>(*high << 4 | *low);
                i += 2;
                continue;
            }
        }
        bytes += written[i];
    }
    return bytes;
}

Result<void> DictionaryReader::append_entries() {
    VELL_TRY(skip_blank());
    for (int i = 0; i < 2; ++i)
        if (VELL_TRY(next()) != '<')
            return {}; // no dictionary, so no entries
    for (;;) {
        VELL_TRY(skip_blank());
        const char byte = VELL_TRY(peek());
        if (byte == '/') {
            VELL_TRY(append_entry());
        } else if (is_pdf_delimiter(byte)) {
            VELL_TRY(next());
            if (byte == '>')
                break;
        } else if (VELL_TRY(token()) == "endobj") {
            break; // the dictionary was not closed
        }
    }
    return unclosed_ ? Result<void>(Failure{not_in_file}) : Result<void>();
}

Result<void> DictionaryReader::append_entry() {
    VELL_TRY(next());
    const std::string key = VELL_TRY(name());
    const std::size_t line = text_.size();
    text_.begin_line(true);
    text_.append_name("\r");
    text_.append_name(key);
    text_.append_name(": ");
    if (text_.full()) {
        text_.replace_from(line, "");
        return Failure{not_in_file};
    }
    const std::size_t start = text_.size();
    text_.begin_value();
    const Result<void> done = append_value(most_references);
    finish_value(key, start);
    return done;
}

Result<void> DictionaryReader::append_value(int references) {
    VELL_TRY(skip_blank());
    const char byte = VELL_TRY(peek());
    switch (byte) {
    case '(':
        return append_literal();
    case '<':
        VELL_TRY(next());
        if (VELL_TRY(peek()) != '<')
            return append_hex();
        file_.seek(file_.position() - 1);
        return append_nested();
    case '[':
        return append_nested();
    case '/':
        VELL_TRY(next());
        text_.append_name(VELL_TRY(name()));
        return {};
    default:
        break;
    }
    if (is_pdf_digit(byte))
        return append_number(references);
    const std::uint64_t start = file_.position();
    const std::string bytes = VELL_TRY(token());
    const std::string_view word = bytes;
    if (word == "endobj")
        file_.seek(start); // no value; it ends the dictionary too
    else if (word != "null")
        text_.append_pdf_doc(word);
    return {};
}

// How far the string, array or dictionary goes that begins at the file's position, which stays.
// What is not closed ends with its object or with the file; but a string then ends at the first
// parenthesis that may close it, as mostly one has been opened too many.
Result<DictionaryReader::Extent> DictionaryReader::find_end() {
    const std::uint64_t start = file_.position();
    ValueEnd value;
    ObjectEnd object;
    Result<char> byte = '\0';
    bool closed = false;
    bool object_ended = false;
    while (byte && !closed && !object_ended) {
        const std::uint64_t position = file_.position();
        byte = next();
        closed = byte && value.add(*byte, position);
        object_ended = byte && object.add(*byte, position);
    }
    const std::uint64_t reached = file_.position();
    file_.seek(start);
    if (closed)
        return Extent{reached - 1, reached};
    const bool too_long = !byte && byte.error() == not_in_file;
    if (!byte && !too_long && byte.error() != ErrorCode::EndOfFile)
        return Failure{byte.error()};
    unclosed_ = true;
    const std::uint64_t parenthesis = value.first_closing_parenthesis();
    if (value.is_string() && parenthesis > 0 && !too_long)
        return Extent{parenthesis, parenthesis + 1};
    const std::uint64_t end = object_ended ? object.start() : reached;
    return Extent{end, end};
}

Result<void> DictionaryReader::add_escaped(StringDecoder& string) {
    const char byte = VELL_TRY(read());
    constexpr std::string_view letters = "nrtbf";
    if (const std::size_t at = letters.find(byte); at != std::string_view::npos) {
        string.add("\n\r\t\b\f"[at]);
    } else if (byte >= '0' && byte <= '7') {
        auto value = static_cast<unsigned>(byte - '0');
        for (int digits = 1; digits < 3; ++digits) {
            const char digit = VELL_TRY(peek());
            if (digit < '0' || digit > '7')
                break;
            value = value * 8 + static_cast<unsigned>(digit - '0');
            VELL_TRY(read());
        }
        string.add(static_cast<char>(value & 0xFF));
    } else if (byte == '\r') { // the string goes on in the next line
        if (VELL_TRY(peek()) == '\n')
            VELL_TRY(read());
    } else if (byte != '\n') {
        string.add(byte);
    }
    return {};
}

// A string with its parentheses.
Result<void> DictionaryReader::append_literal() {
    const Extent extent = VELL_TRY(find_end());
    StringDecoder string(text_);
    VELL_TRY(read());
    while (file_.position() < extent.end) {
        const char byte = VELL_TRY(read());
        if (byte == '\\')
            VELL_TRY(add_escaped(string));
        else
            string.add(byte);
    }
    string.finish();
    file_.seek(extent.next);
    return {};
}

// A string behind its "<"; what is no digit does not count, and a digit may be missing at the end.
Result<void> DictionaryReader::append_hex() {
    StringDecoder string(text_);
    unsigned value = 0;
    bool halfway = false;
    for (;;) {
        const char byte = VELL_TRY(next());
        if (byte == '>')
            break;
        const auto digit = hex_digit(byte);
        if (!digit)
            continue;
        value = value << 4 | *digit;
        if (halfway)
            string.add(static_cast<char>(value & 0xFF));
        halfway = !halfway;
    }
    if (halfway)
        string.add(static_cast<char>(value << 4 & 0xFF));
    string.finish();
    return {};
}

// A number, or the reference that three words make. An object that is not there counts as null.
Result<void> DictionaryReader::append_number(int references) {
    const std::string first = VELL_TRY(token());
    const std::uint64_t behind = file_.position();
    VELL_TRY(skip_blank());
    const std::string second = VELL_TRY(token());
    VELL_TRY(skip_blank());
    std::string_view number_text = first;
    std::string_view generation_text = second;
    const auto number = take_pdf_number(number_text);
    const auto generation = take_pdf_number(generation_text);
    if (!number || !generation || !number_text.empty() || !generation_text.empty() ||
        VELL_TRY(token()) != "R") {
        file_.seek(behind);
        text_.append_pdf_doc(first);
        return {};
    }
    if (references == 0)
        return {};
    const std::uint64_t behind_reference = file_.position();
    VELL_TRY(spend(table_read)); // a search costs what its table does
    const Result<void> found = tables_.go_to_object({*number, *generation});
    if (found)
        VELL_TRY(append_value(references - 1));
    else if (found.error() != not_in_file && found.error() != ErrorCode::BadArgument)
        return found;
    file_.seek(behind_reference);
    return {};
}

// An array or a dictionary as it is written.
Result<void> DictionaryReader::append_nested() {
    const Extent extent = VELL_TRY(find_end());
    while (file_.position() < extent.next) {
        const char byte = VELL_TRY(read());
        text_.append_pdf_doc({&byte, 1});
    }
    return {};
}

void DictionaryReader::finish_value(std::string_view key, std::size_t start) {
    std::string_view value = text_.from(start);
    if (key.find("Date") != std::string_view::npos) {
        constexpr std::string_view mark = "D:";
        if (const std::size_t at = value.find(mark); at != std::string_view::npos) {
            text_.replace_from(start, date_text(value.substr(at + mark.size())));
            value = text_.from(start);
        }
    }
    // Some writers end their strings with a zero, as C does.
    constexpr std::string_view at_start = "\r\n ";
    constexpr std::string_view at_end("\r\n \0", 4);
    const std::size_t length = value.find_last_not_of(at_end) + 1;
    text_.keep_from(start, std::min(value.find_first_not_of(at_start), length), length);
    if (text_.full())
        text_.append("\u2026"); // nobody is to take the value for the whole
    text_.end_value();
}

} // namespace

Result<void> append_dictionary(BufferedReader& file, TableChain& tables, LimitedText& text) {
    const Result<void> done = DictionaryReader(file, tables, text).append_entries();
    const bool file_ended = !done && done.error() == ErrorCode::EndOfFile;
    return file_ended ? Result<void>(Failure{not_in_file}) : done;
}

} // namespace vell::documents
