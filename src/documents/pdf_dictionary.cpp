#include "src/documents/pdf_dictionary.h"

#include "src/documents/pdf_syntax.h"

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
    DictionaryReader(BufferedReader& file, const Trailer& trailer, LimitedText& text)
        : file_(file), trailer_(trailer), text_(text) {}

    Result<void> append_entries();

  private:
    // What one description may read of objects and the tables that lead to them: time stays
    // bounded however often they are referred to.
    static constexpr std::uint64_t most_bytes = 262'144;
    // Names and numbers are kept up to here; those of real files are far shorter.
    static constexpr std::size_t longest_token = 2000;
    // References to references are followed so far.
    static constexpr int most_references = 8;

    Result<void> spend(std::uint64_t bytes);
    Result<char> next();
    Result<char> peek();
    Result<void> skip_blank();
    Result<std::string> token();
    Result<std::string> name();
    Result<void> append_value(int references);
    Result<void> append_literal();
    Result<void> add_escaped(StringDecoder& string);
    Result<void> append_hex();
    Result<void> append_number(int references);
    Result<void> append_nested();
    void finish_value(std::string_view key, std::size_t start);

    BufferedReader& file_;
    const Trailer& trailer_;
    LimitedText& text_;
    std::uint64_t spent_ = 0;
};

Result<void> DictionaryReader::spend(std::uint64_t bytes) {
    spent_ += bytes;
    if (spent_ > most_bytes || text_.full())
        return Failure{not_in_file};
    return {};
}

Result<char> DictionaryReader::next() {
    VELL_TRY(spend(1));
    return static_cast<char>(VELL_TRY(file_.read_byte()));
}

Result<char> DictionaryReader::peek() {
    const std::uint64_t position = file_.position();
    const auto byte = static_cast<char>(VELL_TRY(file_.read_byte()));
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
            VELL_TRY(next());
            const std::string key = VELL_TRY(name());
            text_.append_name("\r");
            text_.append_name(key);
            text_.append_name(": ");
            const std::size_t start = text_.size();
            const Result<void> done = append_value(most_references);
            finish_value(key, start);
            VELL_TRY(done);
        } else if (is_pdf_delimiter(byte)) {
            VELL_TRY(next());
            if (byte == '>')
                return {};
        } else if (VELL_TRY(token()) == "endobj") {
            return {}; // the dictionary was not closed
        }
    }
}

Result<void> DictionaryReader::append_value(int references) {
    VELL_TRY(skip_blank());
    const char byte = VELL_TRY(peek());
    switch (byte) {
    case '(':
        VELL_TRY(next());
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

Result<void> DictionaryReader::add_escaped(StringDecoder& string) {
    const char byte = VELL_TRY(next());
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
            VELL_TRY(next());
        }
        string.add(static_cast<char>(value & 0xFF));
    } else if (byte == '\r') { // the string goes on in the next line
        if (VELL_TRY(peek()) == '\n')
            VELL_TRY(next());
    } else if (byte != '\n') {
        string.add(byte);
    }
    return {};
}

// A string behind its parenthesis.
Result<void> DictionaryReader::append_literal() {
    StringDecoder string(text_);
    for (std::uint64_t depth = 1;;) {
        const char byte = VELL_TRY(next());
        if (byte == '\\') {
            VELL_TRY(add_escaped(string));
            continue;
        }
        if (byte == '(')
            ++depth;
        if (byte == ')' && --depth == 0)
            break;
        string.add(byte);
    }
    string.finish();
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
    const Result<void> found = go_to_object(file_, trailer_, {*number, *generation});
    if (found)
        VELL_TRY(append_value(references - 1));
    else if (found.error() != not_in_file && found.error() != ErrorCode::BadArgument)
        return found;
    file_.seek(behind_reference);
    return {};
}

// An array or a dictionary as it is written.
Result<void> DictionaryReader::append_nested() {
    std::uint64_t depth = 0;
    std::uint64_t parentheses = 0;
    bool escaped = false;
    do {
        const char byte = VELL_TRY(next());
        text_.append_pdf_doc({&byte, 1});
        if (escaped || byte == '\\') {
            escaped = !escaped;
        } else if (byte == '(') {
            ++parentheses;
        } else if (parentheses > 0) {
            parentheses -= byte == ')' ? 1 : 0;
        } else if (byte == '[' || byte == '<') {
            ++depth;
        } else if ((byte == ']' || byte == '>') && --depth == 0) {
            return {};
        }
    } while (true);
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
}

} // namespace

Result<void> append_dictionary(BufferedReader& file, const Trailer& trailer, LimitedText& text) {
    return DictionaryReader(file, trailer, text).append_entries();
}

} // namespace vell::documents
