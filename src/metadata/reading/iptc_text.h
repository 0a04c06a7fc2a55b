// Decodes IPTC datasets (IPTC-NAA Information Interchange Model 4.2, chapter 1: the record and
// dataset structure).
#pragma once

#include "src/base/result.h"
#include "src/metadata/metadata_text.h"

#include <cstddef>
#include <string_view>

namespace vell::metadata {

// Appends the datasets of record 2 as tagged text. Datasets are read in the source encoding, or as
// UTF-8 where the envelope record declares that and `detect_utf8` is set; what is not UTF-8 then is
// read in the native encoding. `readable` writes dates and times as ISO 8601 does. Gives back where
// in the block its datasets end.
Result<std::size_t> decode_iptc(std::string_view block, bool detect_utf8, TextEncoding source,
                                MetadataText& text, bool readable = false);

} // namespace vell::metadata
