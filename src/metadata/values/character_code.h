// Texts whose bytes say themselves how they are to be read, or whose bytes have to be looked at.
#pragma once

#include "src/base/bytes.h"
#include "src/params/encodings.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vell::metadata {

using params::TextEncoding;

// A text as a file has it, with the encoding to read it in.
struct FoundText {
    std::string bytes;
    TextEncoding encoding = TextEncoding::Utf8;
};

// What the host makes of bytes in an encoding, in UTF-8.
using TextDecoder = std::function<std::string(std::string_view bytes, TextEncoding encoding)>;

// UTF-8 where the bytes are, otherwise in the encoding that is given, or the system's own where
// that one is UTF-8.
FoundText recognised(std::string_view bytes, TextEncoding otherwise);

// UTF-16 up to its first zero. Its byte order is the one that a mark at the start says, otherwise
// the one that gives more plausible text: fewer units that are no text, then letters of fewer
// scripts, and `expected` where both are equal.
FoundText utf16_text(std::string_view bytes, ByteOrder expected);

// A value that begins with the eight bytes of a character code (Exif 3.0, UserComment): ASCII, JIS,
// UNICODE, or zeros for text in no code that is named. Blanks and zeros at the end fill the value
// up. nullopt for what begins otherwise, or is no text.
std::optional<FoundText> coded_text(std::string_view value, ByteOrder expected,
                                    TextEncoding otherwise);

// Whether all of it are characters that can be shown, in any encoding that extends ASCII.
bool looks_like_text(std::string_view bytes);

} // namespace vell::metadata
