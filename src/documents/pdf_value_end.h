// Where the values of a PDF object end, byte by byte (ISO 32000-1 7.3).
#pragma once

#include "src/documents/pdf_syntax.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vell::documents {

// Finds where an object ends in the midst of a value that is not closed: at an "endobj" that stands
// in a line of its own or behind a ">". Strings that say this themselves are hardly ever seen.
class ObjectEnd {
  public:
    // Takes a byte and its position; true when the object has ended.
    bool add(char byte, std::uint64_t position) {
        constexpr std::string_view keyword = "endobj";
        if (byte == keyword[matched_] && (matched_ > 0 || may_end_)) {
            in_gap_ = may_end_ = false;
            return ++matched_ == keyword.size();
        }
        matched_ = 0;
        const bool is_gap = byte == '>' || is_pdf_white(byte);
        if (is_gap && !in_gap_)
            start_ = position;
        in_gap_ = is_gap;
        may_end_ = is_gap && (may_end_ || byte == '>' || byte == '\r' || byte == '\n');
        return false;
    }
    // Where that begins which closes the object: white space and ">" before its keyword.
    std::uint64_t start() const { return start_; }

  private:
    std::size_t matched_ = 0;
    bool in_gap_ = false;
    bool may_end_ = false;
    std::uint64_t start_ = 0;
};

// Finds where a string, an array or a dictionary is closed.
class ValueEnd {
  public:
    // Takes the bytes from the opening one on, with their positions; true with the closing one.
    bool add(char byte, std::uint64_t position) {
        if (escaped_ || byte == '\\') {
            escaped_ = !escaped_;
        } else if (byte == '(') {
            is_string_ = is_string_ || depth_ == 0;
            ++parentheses_;
        } else if (parentheses_ > 0) {
            if (byte == ')' && first_closing_parenthesis_ == 0)
                first_closing_parenthesis_ = position;
            parentheses_ -= byte == ')' ? 1 : 0;
        } else if (byte == '[' || byte == '<') {
            ++depth_;
        } else if (byte == ']' || byte == '>') {
            --depth_;
        }
        return parentheses_ == 0 && depth_ == 0;
    }

    bool is_string() const { return is_string_; }
    // Its position, 0 for none.
    std::uint64_t first_closing_parenthesis() const { return first_closing_parenthesis_; }

  private:
    std::uint64_t depth_ = 0;
    std::uint64_t parentheses_ = 0;
    std::uint64_t first_closing_parenthesis_ = 0;
    bool escaped_ = false;
    bool is_string_ = false;
};

} // namespace vell::documents
