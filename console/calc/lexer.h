// Splits a calculation into tokens. Comments and blanks are dropped.
#pragma once

#include "console/calc/calc_error.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vell::console {

enum class TokenKind : std::uint8_t {
    End,
    Text,      // "…"
    Number,    // 12.5e3
    LineBreak, // ¶
    Name,      // a function, or and, or, xor, not
    Variable,  // $name, $$name
    LeftParenthesis,
    RightParenthesis,
    LeftBracket,
    RightBracket,
    Semicolon,
    Ampersand,
    Plus,
    Minus,
    Times,
    Divide,
    Power,
    Equal,
    NotEqual,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::size_t position = 0;
    std::size_t length = 0;
};

// The tokens in their order, with one End token behind the last.
CalcResult<std::vector<Token>> tokenize(std::u16string_view source);

// The text that a text literal, quotes included, stands for: \" is a quote, \\ a backslash, \¶ the
// paragraph sign, and a plain ¶ a carriage return. A backslash before anything else stays.
std::u16string literal_text(std::u16string_view literal);

} // namespace vell::console
