// The values of a movie's metadata items as text.
#pragma once

#include "src/formats/isobmff/metadata_items.h"
#include "src/params/encodings.h"

#include <optional>
#include <string>

namespace vell::movies {

// A text with the encoding of its bytes.
struct ItemText {
    std::string bytes;
    params::TextEncoding encoding = params::TextEncoding::Utf8;
    std::string language = {}; // ISO 639-2/T; empty when the item does not tell any
};

// Numbers in digits, pictures and other data by their kind and size, texts in the encoding that
// they are in: what their box declares, what their byte order mark says, or, of Macintosh's
// languages, UTF-8 where they are UTF-8 and the script's encoding otherwise.
formats::Read<ItemText> item_text(const formats::isobmff::MetadataItem& item);

} // namespace vell::movies
