#include "src/metadata/icc/icc_texts.h"

#include "src/base/utf8.h"

#include <algorithm>
#include <cstdio>

namespace vell::metadata::icc {
namespace {

using formats::read_record;
using params::TextEncoding;

std::string_view until_zero(std::string_view bytes) {
    return bytes.substr(0, bytes.find('\0'));
}

// UTF-16BE up to its first zero.
std::string utf8_of(std::string_view bytes) {
    std::u16string units;
    for (std::size_t at = 0; const auto unit = load<std::uint16_t>(bytes, at, ByteOrder::Big);
         at += 2) {
        if (*unit == 0)
            break;
        units += static_cast<char16_t>(*unit);
    }
    return utf8_from_utf16(units);
}

// The encoding of a Macintosh script code.
TextEncoding script_encoding(std::uint16_t script) {
    switch (script) {
    case 1:
        return TextEncoding::ShiftJisMac;
    case 2:
        return TextEncoding::ChineseTradMac;
    case 3:
        return TextEncoding::KoreanMac;
    case 4:
        return TextEncoding::ArabicMac;
    case 5:
        return TextEncoding::HebrewMac;
    case 6:
        return TextEncoding::GreekMac;
    case 7:
        return TextEncoding::CyrillicMac;
    case 25:
        return TextEncoding::ChineseSimpMac;
    case 29:
        return TextEncoding::CentralEuropeMac;
    case 35:
        return TextEncoding::TurkishMac;
    default:
        return TextEncoding::AsciiMac;
    }
}

// Gives texts as long as the sink wants them and the allowance lasts.
class TextGiver {
  public:
    TextGiver(TextEncoding source, Allowance& allowance, const TextSink& sink)
        : source_(source), allowance_(allowance), sink_(sink) {}

    // All of them return whether to go on.
    bool take(std::size_t bytes) { return allowance_.take(bytes); }
    bool give_ascii(std::string_view bytes) {
        bytes = until_zero(bytes);
        const bool readable = source_ != TextEncoding::Utf8 || is_valid_utf8(bytes);
        return give("", bytes, readable ? source_ : TextEncoding::Native);
    }
    bool give(std::string language, std::string_view bytes, TextEncoding encoding) {
        if (bytes.empty())
            return true;
        return allowance_.take(bytes.size()) &&
               sink_({std::move(language), std::string(bytes), encoding});
    }
    bool give_utf16(std::string language, std::string_view bytes) {
        if (!allowance_.take(bytes.size()))
            return false;
        return give(std::move(language), utf8_of(bytes), TextEncoding::Utf8);
    }

  private:
    TextEncoding source_;
    Allowance& allowance_;
    const TextSink& sink_;
};

// textDescriptionType.
Result<void> give_description(std::string_view data, TextGiver& giver) {
    constexpr Failure cut{ErrorCode::CorruptStructure};
    const auto ascii = read_record<AsciiDescription>(data);
    if (!ascii)
        return cut;
    data.remove_prefix(AsciiDescription::size);
    if (!giver.give_ascii(data.substr(0, ascii->count)))
        return {};
    if (ascii->count > data.size())
        return cut;
    data.remove_prefix(ascii->count);

    const auto unicode = read_record<UnicodeDescription>(data);
    if (!unicode)
        return {}; // many profiles end their description here
    data.remove_prefix(UnicodeDescription::size);
    const std::uint64_t unicode_length = std::uint64_t{2} * unicode->count;
    if (unicode_length > data.size())
        return cut;
    const std::string_view units = data.substr(0, static_cast<std::size_t>(unicode_length));
    if (!giver.give_utf16("Unicode", units))
        return {};
    data.remove_prefix(units.size());

    const auto script = read_record<ScriptDescription>(data);
    if (!script)
        return {};
    const std::size_t length =
        std::min<std::size_t>(script->count, ScriptDescription::longest_text);
    giver.give("ScriptCode", until_zero(data.substr(ScriptDescription::size, length)),
               script_encoding(script->script));
    return {};
}

std::string language_of(const LocalizedName& localized) {
    std::string name;
    for (const auto& part : {localized.language, localized.country}) {
        std::string code;
        for (const char c : part) {
            if (c > ' ' && c < 0x7F)
                code += c;
        }
        if (!name.empty() && !code.empty())
            name += '-';
        name += code;
    }
    return name;
}

// multiLocalizedUnicodeType.
Result<void> give_localized(std::string_view data, TextGiver& giver) {
    constexpr Failure cut{ErrorCode::CorruptStructure};
    const auto names = read_record<LocalizedNames>(data);
    if (!names || names->name_size < LocalizedName::size)
        return cut;
    for (std::uint64_t i = 0; i < names->count; ++i) {
        const std::uint64_t at = LocalizedNames::size + i * names->name_size;
        if (at > data.size())
            return cut;
        const auto name = read_record<LocalizedName>(data.substr(static_cast<std::size_t>(at)));
        if (!name)
            return cut;
        if (!giver.take(LocalizedName::size))
            return {};
        if (name->offset > data.size() || name->length > data.size() - name->offset)
            return cut;
        if (!giver.give_utf16(language_of(*name), data.substr(name->offset, name->length)))
            return {};
    }
    return {};
}

} // namespace

std::string signature_text(std::uint32_t signature) {
    if (signature == 0)
        return "(none)";
    std::string text;
    append_integer<std::uint32_t>(text, signature, ByteOrder::Big);
    text.erase(text.find_last_not_of(std::string_view(" \0", 2)) + 1);
    if (!text.empty() && std::ranges::all_of(text, [](char c) { return c >= ' ' && c < 0x7F; }))
        return text;
    std::array<char, 11> digits{};
    std::snprintf(digits.data(), digits.size(), "0x%08X", signature);
    return digits.data();
}

std::string date_text(const DateTime& date) {
    std::array<char, 40> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%04u-%02u-%02u %02u:%02u:%02u", date.year,
                  date.month, date.day, date.hours, date.minutes, date.seconds);
    return buffer.data();
}

Result<void> give_texts(std::string_view data, TextEncoding source, Allowance& allowance,
                        const TextSink& sink) {
    TextGiver giver(source, allowance, sink);
    switch (signature(data)) {
    case signature("text"):
        giver.give_ascii(value_of(data));
        return {};
    case signature("desc"):
        return give_description(data, giver);
    case signature("mluc"):
        return give_localized(data, giver);
    default:
        return Failure{ErrorCode::CorruptStructure};
    }
}

} // namespace vell::metadata::icc
