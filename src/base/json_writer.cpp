#include "src/base/json_writer.h"

#include "src/base/number_text.h"
#include "src/base/utf8.h"
#include "src/base/utf8_sequence.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cmath>
#include <utility>

namespace vell {
namespace {

// A control character, a quote or a backslash (RFC 8259, section 7).
void append_escaped(char c, std::string& text) {
    constexpr std::string_view with_letters = "\b\f\n\r\t\"\\";
    constexpr std::string_view letters = "bfnrt\"\\";
    if (const std::size_t place = with_letters.find(c); place != std::string_view::npos) {
        text += '\\';
        text += letters[place];
    } else {
        text += "\\u00" + hexadecimal({&c, 1});
    }
}

// Room for a long text and what is to come behind it; a string that grows by itself doubles.
void make_room(std::string& text, std::size_t more) {
    constexpr std::size_t long_text = 1U << 16U;
    if (more < long_text || text.capacity() - text.size() >= more)
        return;
    std::string grown;
    // By a quarter at least, so that many long ones cost no more than a few copies of each.
    grown.reserve(std::max(text.size() + more + long_text / 2, text.size() + text.size() / 4));
    grown += text;
    text.swap(grown);
}

constexpr bool is_escaped(unsigned char c) {
    return c < 0x20 || c == '"' || c == '\\';
}

} // namespace

// What stands between this value and the one before it.
void JsonWriter::separate() {
    if (std::exchange(has_key_, false) || open_.empty())
        return;
    assert(open_.back().closing == ']');
    if (!std::exchange(open_.back().is_empty, false))
        text_ += ',';
}

void JsonWriter::begin(char opening) {
    separate();
    text_ += opening;
    open_.push_back({opening == '{' ? '}' : ']', true});
}

void JsonWriter::end(char closing) {
    assert(!open_.empty() && open_.back().closing == closing && !has_key_);
    open_.pop_back();
    text_ += closing;
}

void JsonWriter::key(std::string_view name) {
    assert(!open_.empty() && open_.back().closing == '}' && !has_key_);
    if (!std::exchange(open_.back().is_empty, false))
        text_ += ',';
    quote(name);
    text_ += ':';
    has_key_ = true;
}

void JsonWriter::value(std::string_view text) {
    separate();
    quote(text);
}

void JsonWriter::value(std::u16string_view text) {
    value(std::string_view(utf8_from_utf16(text)));
}

void JsonWriter::number(double number) {
    if (!std::isfinite(number))
        return null();
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    literal({digits.data(), end});
}

void JsonWriter::integer(std::int64_t value) {
    literal(to_text(value));
}
void JsonWriter::integer(std::uint64_t value) {
    literal(to_text(value));
}

void JsonWriter::literal(std::string_view word) {
    separate();
    text_ += word;
}

void JsonWriter::quote(std::string_view text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    const auto* at = reinterpret_cast<const unsigned char*>(text.data());
    const auto* const end = at + text.size();
    make_room(text_, text.size());
    text_ += '"';
    while (at != end) {
        const auto* const plain_end =
            std::find_if(at, end, [](unsigned char c) { return c >= 0x80 || is_escaped(c); });
        text_.append(reinterpret_cast<const char*>(at), static_cast<std::size_t>(plain_end - at));
        at = plain_end;
        if (at == end)
            break;
        const Utf8Sequence sequence = read_utf8(at, end);
        if (!sequence.valid)
            text_ += replacement;
        else if (is_escaped(*at))
            append_escaped(static_cast<char>(*at), text_);
        else
            text_.append(reinterpret_cast<const char*>(at), sequence.length);
        at += sequence.length;
    }
    text_ += '"';
}

std::string member_name(std::string_view words) {
    std::string name;
    bool starts_word = true;
    for (const char c : words.substr(0, words.find(" ("))) {
        if (c != ' ')
            name += starts_word && c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        starts_word = c == ' ';
    }
    return name;
}

std::string JsonWriter::take() {
    assert(is_complete());
    return std::exchange(text_, {});
}

} // namespace vell
