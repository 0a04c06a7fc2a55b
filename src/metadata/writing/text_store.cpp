#include "src/metadata/writing/text_store.h"

#include "src/base/utf8.h"

#include <algorithm>

namespace vell::metadata {

using params::Unencodable;

Result<std::string> TextStore::store(std::string_view text) const {
    if (chosen_)
        return store_as(*chosen_, text);
    if (auto bytes = native(text))
        return std::move(*bytes);
    return std::string(text);
}

Result<std::string> TextStore::store_as(TextEncoding encoding, std::string_view text) const {
    if (encoding == TextEncoding::Utf8)
        return std::string(text);
    const auto unencodable =
        encoding == TextEncoding::AsciiMac ? Unencodable::Refuse : Unencodable::Replace;
    return call_.encode(utf16_from_utf8(text), encoding, unencodable);
}

std::optional<std::string> TextStore::native(std::string_view text) const {
    // What is ASCII is the same in every native encoding.
    if (std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return std::string(text);
    auto bytes = call_.encode(utf16_from_utf8(text), TextEncoding::Native, Unencodable::Refuse);
    return bytes ? std::optional(std::move(*bytes)) : std::nullopt;
}

Result<bool> TextStore::reads_as(std::string_view bytes, std::string_view text) const {
    const bool may_be_utf8 = chosen_.value_or(TextEncoding::Utf8) == TextEncoding::Utf8;
    if (may_be_utf8 && (bytes == text || utf8_from_utf16(utf16_from_utf8(bytes)) == text))
        return true;
    return chosen_ != TextEncoding::Utf8 && VELL_TRY(store(text)) == bytes;
}

Result<std::string> TextStore::store_beginning(std::string_view text,
                                               std::size_t most_bytes) const {
    std::string bytes = VELL_TRY(store(text));
    if (bytes.size() <= most_bytes)
        return bytes;
    // Characters of the encoding have no borders that could be told from its bytes alone. The
    // longest beginning that fits is found by halving: its length grows with the text's.
    std::size_t fits = 0;
    std::size_t too_long = text.size();
    std::string best;
    while (too_long - fits > 1) {
        const std::size_t middle = fits + (too_long - fits) / 2;
        const std::string_view beginning = text.substr(0, middle);
        std::string attempt =
            VELL_TRY(store(beginning.substr(0, beginning.size() - cut_sequence_at_end(beginning))));
        if (attempt.size() <= most_bytes) {
            fits = middle;
            best = std::move(attempt);
        } else {
            too_long = middle;
        }
    }
    return best;
}

} // namespace vell::metadata
