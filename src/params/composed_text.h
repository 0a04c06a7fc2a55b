// A result that is composed of pieces in several encodings, as it grows.
//
// Values keep the bytes of their file and the encoding to read them in; only the host decodes them.
// What is UTF-8 or ASCII anyway is kept as one run, so that most texts reach the host in one piece.
// Long texts are several runs: one that grew would be held twice, and once more for what is to
// come.
#pragma once

#include "src/base/bytes.h"
#include "src/params/call.h"
#include "src/params/encodings.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vell::params {

// Reads bytes in one of the host's encodings.
using TextDecoder = std::function<std::u16string(std::string_view bytes, TextEncoding encoding)>;

class ComposedText {
  public:
    // The most that a result may hold, in characters; bytes are counted.
    static constexpr std::uint64_t max_size = 0x7FFFFFFF;

    // Bytes in one encoding and style; `style` holds keywords such as "bold red".
    struct Piece {
        std::string bytes;
        TextEncoding encoding;
        std::string_view style;
    };

    // Our own words: section words, numbers, messages.
    void append(std::string_view ascii);
    void append_styled(std::string_view ascii, std::string_view style);
    // A value's bytes, whatever they hold: those that are not UTF-8 come out as the host reads
    // them. Zero bytes stay.
    void append(std::string_view bytes, TextEncoding encoding);
    // The same of bytes that are not needed any more; long ones are not copied.
    void take(std::string bytes, TextEncoding encoding);
    // UTF-16 in the file's byte order, without its zero end; an odd last byte is left out.
    void append_utf16(std::string_view bytes, ByteOrder order);

    // Takes away a carriage return at the start.
    void drop_leading_line_end();

    // Bytes that the text holds; what was appended since is told by comparing.
    std::uint64_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

    const std::vector<Piece>& pieces() const { return pieces_; }
    std::vector<Piece>& pieces() { return pieces_; }
    // The pieces as the host takes them; they refer to this text.
    std::vector<EncodedText> encoded() const;

  private:
    bool joins(std::string_view bytes, TextEncoding encoding, std::string_view style) const;
    void add(std::string_view bytes, TextEncoding encoding, std::string_view style);

    std::vector<Piece> pieces_;
    std::uint64_t size_ = 0;
};

} // namespace vell::params
