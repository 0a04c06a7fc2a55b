#include "src/params/composed_text.h"

#include "src/base/ascii.h"
#include "src/base/bytes.h"
#include "src/base/utf16.h"
#include "src/base/utf8.h"
#include "src/base/utf8_parts.h"

#include <algorithm>
#include <utility>

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

// What is ASCII anyway is kept with the UTF-8 around it.
TextEncoding kept_encoding(std::string_view bytes, TextEncoding encoding) {
    return extends_ascii(encoding) && is_ascii(bytes) ? TextEncoding::Utf8 : encoding;
}

// A run of UTF-8 does not grow beyond this.
constexpr std::size_t longest_run = 64U << 10U;

// What nothing is appended to any more needs no room to spare.
void close_run(std::vector<ComposedText::Piece>& pieces) {
    if (pieces.empty())
        return;
    std::string& run = pieces.back().bytes;
    if (run.capacity() - run.size() > run.size() / 16)
        run.shrink_to_fit();
}

} // namespace

bool ComposedText::joins(std::string_view bytes, TextEncoding encoding,
                         std::string_view style) const {
    if (encoding != TextEncoding::Utf8 || pieces_.empty())
        return false;
    const Piece& last = pieces_.back();
    return last.encoding == encoding && last.style == style &&
           (last.bytes.size() + bytes.size() <= longest_run || !can_be_parted(last.bytes, bytes));
}

// Runs grow by doubling as long as they are short; what is longer has no room to spare.
void ComposedText::add(std::string_view bytes, TextEncoding encoding, std::string_view style) {
    size_ += bytes.size();
    if (!joins(bytes, encoding, style)) {
        close_run(pieces_);
        pieces_.push_back({std::string(bytes), encoding, style});
        return;
    }
    std::string& run = pieces_.back().bytes;
    const std::size_t size = run.size() + bytes.size();
    if (size > run.capacity()) {
        std::string grown; // one that has room already doubles it at least
        grown.reserve(std::max(size, std::min(longest_run, 2 * size)));
        grown += run;
        run.swap(grown);
    }
    run += bytes;
}

void ComposedText::append(std::string_view ascii) {
    append_styled(ascii, {});
}

void ComposedText::append_styled(std::string_view ascii, std::string_view style) {
    if (!ascii.empty())
        add(ascii, TextEncoding::Utf8, style);
}

void ComposedText::append(std::string_view bytes, TextEncoding encoding) {
    if (!bytes.empty())
        add(bytes, kept_encoding(bytes, encoding), {});
}

void ComposedText::take(std::string bytes, TextEncoding encoding) {
    encoding = kept_encoding(bytes, encoding);
    const bool has_room_to_spare = bytes.capacity() / 2 > bytes.size();
    if (bytes.empty() || has_room_to_spare || joins(bytes, encoding, {}))
        return append(bytes, encoding);
    size_ += bytes.size();
    close_run(pieces_);
    pieces_.push_back({std::move(bytes), encoding, {}});
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
