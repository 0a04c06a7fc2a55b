// Writes tagged text into IPTC datasets (IPTC-NAA Information Interchange Model 4.2).
#pragma once

#include "src/base/result.h"
#include "src/metadata/writing/tagged_text.h"
#include "src/metadata/writing/text_store.h"

#include <span>
#include <string>
#include <string_view>

namespace vell::metadata {

struct IptcWriting {
    bool detect_utf8; // datasets that declare themselves UTF-8 remain so without a named encoding
    bool keep_others; // datasets whose number no section has
};

// The datasets with those of the application record replaced by the sections; other records stay.
// Where the others of that record are kept, the sections of a number replace all datasets of it,
// and an empty section is none. Whatever is stored as UTF-8 is declared so. Empty when no dataset
// is left but those of the envelope record.
//
// ResourceTooLarge for a value of 32,768 bytes or more; BadParameter when datasets that are kept
// could not be read any more in the encoding of the new ones.
Result<std::string> write_iptc(std::string_view existing, std::span<const TaggedSection> sections,
                               const IptcWriting& writing, const TextStore& store);

} // namespace vell::metadata
