#include "src/params/composed_text.h"

#include "src/base/ascii.h"
#include "src/base/bytes.h"
#include "src/base/utf16.h"
#include "src/base/utf8.h"

namespace vell::params {
namespace {

// The encodings in which bytes below 128 are what they are in ASCII.
bool extends_ascii(TextEncoding encoding) {
    switch (encoding) {
    case TextEncoding::ShiftJisMac:
    case TextEncoding::KoreanMac:
    case TextEncoding::KoreanJohab:
    case TextEncoding::ChineseTradMac:
    case TextEncoding::ChineseSimpMac:
        return false;
    default:
        return true;
    }
}

} // namespace

ComposedText::Piece& ComposedText::piece(TextEncoding encoding, std::string_view style) {
    const bool joins = encoding == TextEncoding::Utf8 && !pieces_.empty() &&
                       pieces_.back().encoding == encoding && pieces_.back().style == style;
    if (!joins)
        pieces_.push_back({{}, encoding, style});
    return pieces_.back();
}

void ComposedText::append(std::string_view ascii) {
    append_styled(ascii, {});
}

void ComposedText::append_styled(std::string_view ascii, std::string_view style) {
    if (ascii.empty())
        return;
    piece(TextEncoding::Utf8, style).bytes += ascii;
    size_ += ascii.size();
}

void ComposedText::append(std::string_view bytes, TextEncoding encoding) {
    if (bytes.empty())
        return;
    const bool plain = extends_ascii(encoding) && is_ascii(bytes);
    piece(plain ? TextEncoding::Utf8 : encoding, {}).bytes += bytes;
    size_ += bytes.size();
}

void ComposedText::append_utf16(std::string_view bytes, ByteOrder order) {
    constexpr std::size_t units_at_once = 16 * 1024;
    std::u16string units;
    for (std::size_t at = 0; const auto unit = load<std::uint16_t>(bytes, at, order); at += 2) {
        if (*unit == 0)
            break;
        units += static_cast<char16_t>(*unit);
        if (units.size() >= units_at_once && !is_high_surrogate(units.back())) {
            append(utf8_from_utf16(units));
            units.clear();
        }
    }
    append(utf8_from_utf16(units));
}

void ComposedText::drop_leading_line_end() {
    if (pieces_.empty() || !pieces_.front().bytes.starts_with('\r'))
        return;
    pieces_.front().bytes.erase(0, 1);
    --size_;
}

std::vector<EncodedText> ComposedText::encoded() const {
    std::vector<EncodedText> pieces;
    pieces.reserve(pieces_.size());
    for (const Piece& piece : pieces_)
        pieces.push_back({piece.bytes, piece.encoding, piece.style});
    return pieces;
}

} // namespace vell::params
