// Strings of a PDF file as text (ISO 32000-1, 7.9.2).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vell::documents {

// The character of a byte in PDFDocEncoding (ISO 32000-1, annex D.3); a byte that it leaves
// undefined is the character of its own number.
char32_t pdf_doc_character(unsigned char byte);

// Text in UTF-8 that takes so much from its file and no more. A long value is cut so that there is
// room for those behind it.
class LimitedText {
  public:
    static constexpr std::size_t most_bytes = 32'768;
    // What one value leaves to the others, and what each of those may have of it.
    static constexpr std::size_t kept_back = 4'096;
    static constexpr std::size_t most_of_later = 512;

    // Appends to `text`, whose bytes so far do not count.
    explicit LimitedText(std::string& text);

    // Where a line begins that is about the file, or one of the values in it.
    struct LineStart {
        std::size_t at = 0;
        bool is_from_file = false;
    };
    void begin_line(bool is_from_file = false) { lines_.push_back({text_.size(), is_from_file}); }
    const std::vector<LineStart>& lines() const { return lines_; }

    // Our own words, which are few.
    void append(std::string_view words) { text_ += words; }
    // From the file; once there is no room for a whole character, nothing more is taken.
    void append_character(char32_t character);
    void append_pdf_doc(std::string_view bytes);
    // UTF-8 where it is well-formed, else PDFDocEncoding: what names are written in.
    void append_name(std::string_view bytes);

    // Between the two, the text is that of one value.
    void begin_value();
    void end_value();

    // Whether the value, or all of the text, is not whole.
    bool full() const { return full_; }
    std::size_t size() const { return text_.size(); }
    // The text from a place on, to be rewritten to something that is no longer, or to be kept
    // between two places of it only.
    std::string_view from(std::size_t start) const { return std::string_view(text_).substr(start); }
    void replace_from(std::size_t start, std::string_view shorter);
    void keep_from(std::size_t start, std::size_t first, std::size_t end);

  private:
    std::string& text_;
    const std::size_t most_;
    std::size_t limit_; // at the moment
    bool full_ = false;
    std::vector<LineStart> lines_;
};

// Decodes a string byte by byte: UTF-16 or UTF-8 behind their byte-order marks, else
// PDFDocEncoding. Bytes behind a mark of UTF-8 that are none are read as PDFDocEncoding; halves of
// surrogate pairs become U+FFFD.
class StringDecoder {
  public:
    explicit StringDecoder(LimitedText& text) : text_(text) {}

    void add(char byte);
    // The string ends; half of a UTF-16 unit is left out.
    void finish();

  private:
    enum class Encoding : std::uint8_t { Undecided, PdfDoc, Utf8, Utf16Big, Utf16Little };

    void decide();
    void take_utf8();
    void take_unit(char32_t unit);
    void take_pending(std::size_t count);

    LimitedText& text_;
    Encoding encoding_ = Encoding::Undecided;
    std::array<char, 4> pending_{};
    std::size_t pending_count_ = 0;
    char32_t high_surrogate_ = 0;
};

} // namespace vell::documents
