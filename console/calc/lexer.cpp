#include "console/calc/lexer.h"

#include "console/model/unicode.h"
#include "src/base/ascii.h"

#include <algorithm>
#include <optional>

namespace vell::console {

namespace {

constexpr char16_t paragraph_sign = u'\u00B6';

bool begins_name(char16_t unit) {
    return is_letter(unit) || unit == u'_' ||
           (unit >= 0x00C0 && unit != u'\u00D7' && unit != u'\u00F7' &&
            !(unit >= 0x2000 && unit < 0x2C00) && !(unit >= 0x3000 && unit < 0x3005) &&
            unit < 0xFF00);
}

bool continues_name(char16_t unit) {
    return begins_name(unit) || is_digit(unit) || unit == u'.';
}

bool is_blank(char16_t unit) {
    return unit == u' ' || unit == u'\t' || unit == u'\r' || unit == u'\n' || unit == u'\u00A0';
}

class Lexer {
  public:
    explicit Lexer(std::u16string_view source) : source_(source) {}

    CalcResult<Token> next();

  private:
    char16_t at(std::size_t offset) const {
        return position_ + offset < source_.size() ? source_[position_ + offset] : u'\0';
    }
    Token take(TokenKind kind, std::size_t length) {
        const Token token{kind, position_, length};
        position_ += length;
        return token;
    }
    std::optional<CalcError> skip_blanks_and_comments();
    CalcResult<Token> text();
    Token number();
    Token name(TokenKind kind, std::size_t prefix);
    CalcResult<Token> sign();
    CalcError unknown_character() const;

    std::u16string_view source_;
    std::size_t position_ = 0;
};

std::optional<CalcError> Lexer::skip_blanks_and_comments() {
    while (position_ < source_.size()) {
        if (is_blank(at(0))) {
            ++position_;
        } else if (at(0) == u'/' && at(1) == u'/') {
            position_ = std::min(source_.size(), source_.find_first_of(u"\r\n", position_));
        } else if (at(0) == u'/' && at(1) == u'*') {
            const std::size_t end = source_.find(u"*/", position_ + 2);
            if (end == source_.npos)
                return CalcError{"this comment is not closed; it needs a */", position_, 2};
            position_ = end + 2;
        } else {
            break;
        }
    }
    return std::nullopt;
}

CalcResult<Token> Lexer::next() {
    if (auto error = skip_blanks_and_comments())
        return Failure{*error};
    if (position_ >= source_.size())
        return Token{TokenKind::End, source_.size(), 0};
    const char16_t unit = at(0);
    if (unit == u'"')
        return text();
    if (is_digit(unit) || (unit == u'.' && is_digit(at(1))))
        return number();
    if (unit == u'$') {
        const std::size_t prefix = at(1) == u'$' ? 2 : 1;
        if (!begins_name(at(prefix)) && !is_digit(at(prefix)))
            return Failure{CalcError{"a variable needs a name after the $", position_, prefix}};
        return name(TokenKind::Variable, prefix);
    }
    if (begins_name(unit))
        return name(TokenKind::Name, 0);
    return sign();
}

CalcResult<Token> Lexer::text() {
    for (std::size_t end = position_ + 1; end < source_.size(); ++end) {
        if (source_[end] == u'"')
            return take(TokenKind::Text, end + 1 - position_);
        const char16_t escaped = end + 1 < source_.size() ? source_[end + 1] : u'\0';
        if (source_[end] == u'\\' && (escaped == u'"' || escaped == u'\\'))
            ++end;
    }
    const bool ends_with_escape = source_.ends_with(u"\\\"");
    return Failure{CalcError{ends_with_escape
                                 ? "this text is not closed; \\\" at its end is a quote inside the "
                                   "text, write \\\\\" for a backslash at the end"
                                 : "this text is not closed; it needs a \" at its end",
                             position_}};
}

Token Lexer::number() {
    std::size_t length = 0;
    auto digits = [&] {
        while (is_digit(at(length)))
            ++length;
    };
    digits();
    if (at(length) == u'.') {
        ++length;
        digits();
    }
    if (at(length) == u'e' || at(length) == u'E') {
        const bool has_sign = at(length + 1) == u'-' || at(length + 1) == u'+';
        const std::size_t first_digit = length + (has_sign ? 2 : 1);
        if (is_digit(at(first_digit))) {
            length = first_digit;
            digits();
        }
    }
    return take(TokenKind::Number, length);
}

Token Lexer::name(TokenKind kind, std::size_t prefix) {
    std::size_t length = prefix;
    while (continues_name(at(length)))
        ++length;
    return take(kind, length);
}

CalcResult<Token> Lexer::sign() {
    const char16_t next = at(1);
    switch (at(0)) {
    case paragraph_sign:
        return take(TokenKind::LineBreak, 1);
    case u'(':
        return take(TokenKind::LeftParenthesis, 1);
    case u')':
        return take(TokenKind::RightParenthesis, 1);
    case u'[':
        return take(TokenKind::LeftBracket, 1);
    case u']':
        return take(TokenKind::RightBracket, 1);
    case u';':
        return take(TokenKind::Semicolon, 1);
    case u'&':
        return take(TokenKind::Ampersand, 1);
    case u'+':
        return take(TokenKind::Plus, 1);
    case u'-':
        return take(TokenKind::Minus, 1);
    case u'*':
        return take(TokenKind::Times, 1);
    case u'/':
        return take(TokenKind::Divide, 1);
    case u'^':
        return take(TokenKind::Power, 1);
    case u'=':
        return take(TokenKind::Equal, 1);
    case u'\u2260':
        return take(TokenKind::NotEqual, 1);
    case u'\u2264':
        return take(TokenKind::LessOrEqual, 1);
    case u'\u2265':
        return take(TokenKind::GreaterOrEqual, 1);
    case u'<':
        if (next == u'>')
            return take(TokenKind::NotEqual, 2);
        return next == u'=' ? take(TokenKind::LessOrEqual, 2) : take(TokenKind::Less, 1);
    case u'>':
        return next == u'=' ? take(TokenKind::GreaterOrEqual, 2) : take(TokenKind::Greater, 1);
    default:
        return Failure{unknown_character()};
    }
}

CalcError Lexer::unknown_character() const {
    const char16_t unit = at(0);
    if (unit == u',')
        return {"a comma has no meaning here; arguments are separated by ;", position_};
    if (unit == u'\'' || (unit >= u'\u2018' && unit <= u'\u201F'))
        return {"texts are written in straight double quotes: \"…\"", position_};
    const std::size_t length = is_high_surrogate(unit) && is_low_surrogate(at(1)) ? 2 : 1;
    return {"unexpected character " + utf8_from_utf16(source_.substr(position_, length)), position_,
            length};
}

} // namespace

CalcResult<std::vector<Token>> tokenize(std::u16string_view source) {
    Lexer lexer(source);
    std::vector<Token> tokens;
    do {
        tokens.push_back(VELL_TRY(lexer.next()));
    } while (tokens.back().kind != TokenKind::End);
    return tokens;
}

std::u16string literal_text(std::u16string_view literal) {
    const std::u16string_view inside = literal.substr(1, literal.size() - 2);
    std::u16string text;
    text.reserve(inside.size());
    for (std::size_t i = 0; i < inside.size(); ++i) {
        const char16_t next = i + 1 < inside.size() ? inside[i + 1] : u'\0';
        const bool escape =
            inside[i] == u'\\' && (next == u'"' || next == u'\\' || next == paragraph_sign);
        if (escape)
            text += inside[++i];
        else
            text += inside[i] == paragraph_sign ? u'\r' : inside[i];
    }
    return text;
}

} // namespace vell::console
