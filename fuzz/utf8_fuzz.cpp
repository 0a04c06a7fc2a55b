// UTF-8 against a decoder that works by value.
#include "fuzz/input.h"
#include "src/base/utf8.h"
#include "tests/portable/references.h"

#include <memory>
#include <string>

namespace vell::utf8_fuzz {
namespace {

// Every cut through well-formed text is seen from both sides.
void check_cuts(std::string_view bytes) {
    std::size_t border = 0; // of the character that the cut is in
    for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
        const bool inside =
            cut < bytes.size() && (static_cast<unsigned char>(bytes[cut]) & 0xC0) == 0x80;
        if (!inside)
            border = cut;
        FUZZ_CHECK(cut_sequence_at_end(bytes.substr(0, cut)) == cut - border);
        const std::size_t behind = cut_sequence_at_start(bytes.substr(cut));
        FUZZ_CHECK((behind > 0) == inside);
        FUZZ_CHECK(is_valid_utf8(bytes.substr(cut + behind)));
    }
}

// However little room there is, whole characters are written and nothing behind the room.
void check_room(std::u16string_view units, std::string_view encoded) {
    for (std::size_t room = 0; room <= encoded.size() && room <= 40; ++room) {
        const auto bytes = std::make_unique<char[]>(room);
        const std::size_t written = encode_utf8(units, bytes.get(), room);
        FUZZ_CHECK(written <= room && written + 4 > room);
        FUZZ_CHECK(encoded.substr(0, written) == std::string_view(bytes.get(), written));
        FUZZ_CHECK(written == room || cut_sequence_at_start(encoded.substr(written)) == 0);
    }
}

} // namespace

FUZZ_TARGET(utf8) {
    const std::string_view bytes = fuzz::as_text(data, size);
    const auto expected = reference::decode_utf8(bytes);
    FUZZ_CHECK(is_valid_utf8(bytes) == expected.valid);

    const std::u16string text = utf16_from_utf8(bytes);
    FUZZ_CHECK(text == expected.text);
    const std::string back = utf8_from_utf16(text);
    FUZZ_CHECK((back == bytes) == expected.valid);
    if (expected.valid && size <= 200)
        check_cuts(bytes);

    const std::size_t at_start = cut_sequence_at_start(bytes);
    const std::size_t at_end = cut_sequence_at_end(bytes);
    FUZZ_CHECK(at_start <= 3 && at_end <= 3 && at_start + at_end <= size);
    FUZZ_CHECK(at_end == 0 || reference::is_utf8_beginning(bytes.substr(size - at_end)));

    // Any units at all, surrogates in disorder included.
    std::u16string units;
    for (std::size_t i = 0; i + 1 < size; i += 2)
        units += static_cast<char16_t>(data[i] | data[i + 1] << 8);
    const std::string encoded = utf8_from_utf16(units);
    FUZZ_CHECK(is_valid_utf8(encoded));
    FUZZ_CHECK(utf16_from_utf8(encoded).size() == units.size());
    check_room(units, encoded);
    return 0;
}

} // namespace vell::utf8_fuzz
