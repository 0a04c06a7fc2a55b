// Writes tagged text into IPTC datasets (IPTC-NAA Information Interchange Model 4.2).
#pragma once

#include "src/base/result.h"
#include "src/metadata/tagged_text.h"
#include "src/metadata/text_store.h"

#include <span>
#include <string>
#include <string_view>

namespace vell::metadata {

// The datasets with those of the application record replaced by the sections; other records stay.
// Without an encoding of the store's own, datasets that declare themselves UTF-8 remain so when
// `detect_utf8` is set. Whatever is stored as UTF-8 is declared so. Empty when no dataset is left
// but those of the envelope record.
//
// ResourceTooLarge for a value of 32,768 bytes or more.
Result<std::string> write_iptc(std::string_view existing, std::span<const TaggedSection> sections,
                               bool detect_utf8, const TextStore& store);

} // namespace vell::metadata
