#include "src/documents/pdf_strings.h"

#include "src/base/utf16.h"
#include "src/base/utf8.h"
#include "src/base/utf8_sequence.h"

#include <algorithm>

namespace vell::documents {
namespace {

constexpr char16_t from_18[] = {0x02D8, 0x02C7, 0x02C6, 0x02D9, 0x02DD, 0x02DB, 0x02DA, 0x02DC};
constexpr char16_t from_80[] = {0x2022, 0x2020, 0x2021, 0x2026, 0x2014, 0x2013, 0x0192, 0x2044,
                                0x2039, 0x203A, 0x2212, 0x2030, 0x201E, 0x201C, 0x201D, 0x2018,
                                0x2019, 0x201A, 0x2122, 0xFB01, 0xFB02, 0x0141, 0x0152, 0x0160,
                                0x0178, 0x017D, 0x0131, 0x0142, 0x0153, 0x0161, 0x017E};
constexpr char16_t euro_sign = 0x20AC; // at 0xA0

constexpr std::string_view utf8_mark = "\xEF\xBB\xBF";
constexpr std::string_view utf16_big_mark = "\xFE\xFF";
constexpr std::string_view utf16_little_mark = "\xFF\xFE";

} // namespace

char32_t pdf_doc_character(unsigned char byte) {
    if (byte >= 0x18 && byte < 0x20)
        return from_18[byte - 0x18];
    if (byte >= 0x80 && byte < 0x80 + std::size(from_80))
        return from_80[byte - 0x80];
    return byte == 0xA0 ? char32_t{euro_sign} : byte;
}

LimitedText::LimitedText(std::string& text)
    : text_(text), most_(text.size() + most_bytes), limit_(most_) {
    // At once, so that it never stands in memory twice while it grows.
    constexpr std::size_t own_words = 1000;
    text_.reserve(most_ + own_words);
}

void LimitedText::begin_value() {
    limit_ = std::min(most_, std::max(most_ - kept_back, text_.size() + most_of_later));
}

void LimitedText::end_value() {
    limit_ = most_;
    full_ = false;
}

void LimitedText::append_character(char32_t character) {
    char16_t units[2];
    std::size_t count = 1;
    if (character > 0xFFFF) {
        units[0] = high_surrogate(character);
        units[1] = low_surrogate(character);
        count = 2;
    } else {
        units[0] = static_cast<char16_t>(character);
    }
    char bytes[4];
    const std::size_t length = encode_utf8({units, count}, bytes, sizeof bytes);
    full_ = full_ || text_.size() + length > limit_;
    if (!full_)
        text_.append(bytes, length);
}

void LimitedText::append_pdf_doc(std::string_view bytes) {
    for (const char byte : bytes)
        append_character(pdf_doc_character(static_cast<unsigned char>(byte)));
}

void LimitedText::append_name(std::string_view bytes) {
    if (!is_valid_utf8(bytes))
        return append_pdf_doc(bytes);
    full_ = full_ || text_.size() + bytes.size() > limit_;
    if (!full_)
        text_ += bytes;
}

void LimitedText::replace_from(std::size_t start, std::string_view shorter) {
    text_.replace(start, text_.size() - start, shorter);
    while (!lines_.empty() && lines_.back().at >= text_.size())
        lines_.pop_back();
}

void LimitedText::keep_from(std::size_t start, std::size_t first, std::size_t end) {
    text_.resize(start + end);
    text_.erase(start, first);
}

void StringDecoder::take_pending(std::size_t count) {
    std::copy(pending_.begin() + static_cast<std::ptrdiff_t>(count), pending_.end(),
              pending_.begin());
    pending_count_ -= count;
}

void StringDecoder::decide() {
    const std::string_view pending(pending_.data(), pending_count_);
    struct Mark {
        std::string_view bytes;
        Encoding encoding;
    };
    constexpr Mark marks[] = {{utf8_mark, Encoding::Utf8},
                              {utf16_big_mark, Encoding::Utf16Big},
                              {utf16_little_mark, Encoding::Utf16Little}};
    bool may_become_one = false;
    for (const Mark& mark : marks) {
        if (pending == mark.bytes) {
            encoding_ = mark.encoding;
            return take_pending(pending_count_);
        }
        may_become_one = may_become_one || mark.bytes.starts_with(pending);
    }
    if (may_become_one)
        return;
    encoding_ = Encoding::PdfDoc;
    text_.append_pdf_doc(pending);
    take_pending(pending_count_);
}

void StringDecoder::take_utf8() {
    while (pending_count_ > 0) {
        const auto* const bytes = reinterpret_cast<const unsigned char*>(pending_.data());
        const Utf8Sequence sequence = read_utf8(bytes, bytes + pending_count_);
        if (sequence.valid) {
            text_.append_character(sequence.scalar);
            take_pending(sequence.length);
        } else if (sequence.length == pending_count_ && pending_count_ < utf8_length(bytes[0])) {
            return; // the rest may follow
        } else {
            text_.append_character(pdf_doc_character(bytes[0]));
            take_pending(1);
        }
    }
}

void StringDecoder::take_unit(char32_t unit) {
    const bool is_low = is_low_surrogate(unit);
    if (high_surrogate_ != 0) {
        const char32_t high = high_surrogate_;
        high_surrogate_ = 0;
        if (is_low)
            return text_.append_character(character_of_pair(high, unit));
        text_.append_character(replacement_character);
    }
    if (is_high_surrogate(unit))
        high_surrogate_ = unit;
    else
        text_.append_character(is_low ? char32_t{replacement_character} : unit);
}

void StringDecoder::add(char byte) {
    pending_[pending_count_++] = byte;
    switch (encoding_) {
    case Encoding::Undecided:
        return decide();
    case Encoding::PdfDoc:
        text_.append_pdf_doc({&byte, 1});
        return take_pending(1);
    case Encoding::Utf8:
        return take_utf8();
    case Encoding::Utf16Big:
    case Encoding::Utf16Little:
        break;
    }
    if (pending_count_ < 2)
        return;
    auto high = static_cast<unsigned char>(pending_[0]);
    auto low = static_cast<unsigned char>(pending_[1]);
    if (encoding_ == Encoding::Utf16Little)
        std::swap(high, low);
    take_pending(2);
    take_unit(static_cast<char32_t>(high << 8 | low));
}

void StringDecoder::finish() {
    if (encoding_ == Encoding::Undecided || encoding_ == Encoding::Utf8)
        text_.append_pdf_doc({pending_.data(), pending_count_});
    else if (high_surrogate_ != 0)
        text_.append_character(replacement_character);
}

} // namespace vell::documents
