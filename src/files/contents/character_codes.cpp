#include "src/files/contents/character_codes.h"

#include "src/base/ascii.h"
#include "src/base/utf16.h"
#include "src/base/utf8.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <vector>

namespace vell::files {
namespace {

using params::Call;
using params::EncodedText;
using params::LineEndings;
using params::TextEncoding;

// The numbers of a text; one that is too large for any use stays so.
std::vector<std::uint64_t> numbers_in(std::u16string_view text) {
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max() + std::uint64_t{1};
    std::vector<std::uint64_t> numbers;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!is_digit(text[i]))
            continue;
        if (i == 0 || !is_digit(text[i - 1]))
            numbers.push_back(0);
        numbers.back() = std::min(numbers.back() * 10 + (text[i] - u'0'), most);
    }
    return numbers;
}

Result<void> append_code_point(std::u16string& text, std::uint64_t number) {
    const auto character = static_cast<char32_t>(number);
    if (number == 0 || number > 0x10FFFF || is_surrogate(character))
        return Failure{ErrorCode::NumberOutOfRange};
    if (character > 0xFFFF) {
        text += high_surrogate(character);
        text += low_surrogate(character);
    } else {
        text += static_cast<char16_t>(character);
    }
    return {};
}

// Whether characters can have more bytes than one. What is native depends on the machine, and
// counts as not.
bool has_long_characters(TextEncoding encoding) {
    return encoding == TextEncoding::Utf8 ||
           (encoding >= TextEncoding::ShiftJisMac && encoding <= TextEncoding::ChineseSimpWin);
}

// The bytes of a character, the most significant one first.
Result<void> append_bytes(std::string& bytes, std::uint64_t number, std::uint64_t most) {
    if (number == 0 || number > most)
        return Failure{ErrorCode::NumberOutOfRange};
    for (int shift = 24; shift >= 0; shift -= 8)
        if (number >> shift != 0)
            bytes += static_cast<char>(static_cast<unsigned char>(number >> shift & 0xFF));
    return {};
}

Result<void> give_encoded(Call& call, const std::vector<std::uint64_t>& numbers,
                          std::u16string_view separator, TextEncoding encoding) {
    const std::uint64_t most =
        has_long_characters(encoding) ? std::numeric_limits<std::uint32_t>::max() : 0xFF;
    std::string bytes;
    std::vector<std::size_t> ends;
    for (const std::uint64_t number : numbers) {
        VELL_TRY(append_bytes(bytes, number, most));
        if (!separator.empty())
            ends.push_back(bytes.size());
    }
    if (separator.empty())
        ends.push_back(bytes.size());

    const std::string between = utf8_from_utf16(separator);
    std::vector<EncodedText> pieces;
    for (std::size_t i = 0, start = 0; i < ends.size(); start = ends[i++]) {
        if (i > 0)
            pieces.push_back({between, TextEncoding::Utf8});
        pieces.push_back({std::string_view(bytes).substr(start, ends[i] - start), encoding});
        if (encoding == TextEncoding::Utf8 && !is_valid_utf8(pieces.back().bytes))
            return Failure{ErrorCode::InvalidUtf8};
    }
    call.set_decoded_text(pieces, LineEndings::Keep);
    return {};
}

} // namespace

Result<void> ascii_value_to_text(Call& call, System&) {
    const TextEncoding encoding =
        params::contents_encoding_of(call.switches(), params::no_encoding);
    const std::vector<std::uint64_t> numbers = numbers_in(call.text(1));
    const std::u16string separator = call.text(2);
    constexpr std::size_t longest_result = 1 << 28; // of separators, in characters
    if (numbers.size() * separator.size() > longest_result)
        return Failure{ErrorCode::ResourceTooLarge};
    if (encoding != params::no_encoding)
        return give_encoded(call, numbers, separator, encoding);
    std::u16string text;
    for (const std::uint64_t number : numbers) {
        if (!text.empty())
            text += separator;
        VELL_TRY(append_code_point(text, number));
    }
    call.set_text(text);
    return {};
}

} // namespace vell::files
