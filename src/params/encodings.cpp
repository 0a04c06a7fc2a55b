#include "src/params/encodings.h"

#include "src/params/call.h"
#include "src/params/switches.h"

namespace vell::params {
namespace {

struct EncodingName {
    std::string_view switch_name;
    TextEncoding encoding;
};

// In the order of the tests: ISO_8859_15 stands before ISO_8859_1, which it contains.
constexpr EncodingName encoding_names[] = {
    {"-Encoding=Native", TextEncoding::Native},
    {"-Encoding=UTF8", TextEncoding::Utf8},
    {"-Encoding=UTF-8", TextEncoding::Utf8},
    {"-Encoding=ASCII_DOS", TextEncoding::AsciiDos},
    {"-Encoding=ASCII_Windows", TextEncoding::AsciiWindows},
    {"-Encoding=ASCII_Mac", TextEncoding::AsciiMac},
    {"-Encoding=ISO_8859_15", TextEncoding::Iso8859_15},
    {"-Encoding=ISO_8859_1", TextEncoding::Iso8859_1},
    {"-Encoding=ShiftJIS_Mac", TextEncoding::ShiftJisMac},
    {"-Encoding=ShiftJIS_Win", TextEncoding::ShiftJisWin},
    {"-Encoding=Korean_Mac", TextEncoding::KoreanMac},
    {"-Encoding=Korean_Win", TextEncoding::KoreanWin},
    {"-Encoding=Korean_Johab", TextEncoding::KoreanJohab},
    {"-Encoding=ChineseTrad_Mac", TextEncoding::ChineseTradMac},
    {"-Encoding=ChineseTrad_Win", TextEncoding::ChineseTradWin},
    {"-Encoding=ChineseSimp_Mac", TextEncoding::ChineseSimpMac},
    {"-Encoding=ChineseSimp_Win", TextEncoding::ChineseSimpWin},
    {"-Encoding=Cyrillic_Mac", TextEncoding::CyrillicMac},
    {"-Encoding=Cyrillic_Win", TextEncoding::CyrillicWin},
    {"-Encoding=ISO_8859_5", TextEncoding::Iso8859_5},
    {"-Encoding=CentralEurope_Mac", TextEncoding::CentralEuropeMac},
    {"-Encoding=EasternEurope_Win", TextEncoding::EasternEuropeWin},
    {"-Encoding=ISO_8859_2", TextEncoding::Iso8859_2},
    {"-Encoding=Turkish_Mac", TextEncoding::TurkishMac},
    {"-Encoding=Turkish_Win", TextEncoding::TurkishWin},
    {"-Encoding=ISO_8859_3", TextEncoding::Iso8859_3},
    {"-Encoding=ISO_8859_9", TextEncoding::Iso8859_9},
    {"-Encoding=Baltic_Win", TextEncoding::BalticWin},
    {"-Encoding=ISO_8859_4", TextEncoding::Iso8859_4},
    {"-Encoding=Arabic_Mac", TextEncoding::ArabicMac},
    {"-Encoding=Arabic_Win", TextEncoding::ArabicWin},
    {"-Encoding=ISO_8859_6", TextEncoding::Iso8859_6},
    {"-Encoding=Greek_Mac", TextEncoding::GreekMac},
    {"-Encoding=Greek_Win", TextEncoding::GreekWin},
    {"-Encoding=ISO_8859_7", TextEncoding::Iso8859_7},
    {"-Encoding=Hebrew_Mac", TextEncoding::HebrewMac},
    {"-Encoding=Hebrew_Win", TextEncoding::HebrewWin},
    {"-Encoding=ISO_8859_8", TextEncoding::Iso8859_8},
};

} // namespace

TextEncoding encoding_of(const SwitchSet& switches, TextEncoding otherwise) {
    if (!switches.has("-Encoding="))
        return otherwise;
    for (const EncodingName& name : encoding_names)
        if (switches.has(name.switch_name))
            return name.encoding;
    return otherwise;
}

TextEncoding contents_encoding_of(const SwitchSet& switches, TextEncoding otherwise) {
    if (switches.has("-Encoding=BytesOnly"))
        return TextEncoding::BytesOnly;
    return encoding_of(switches, otherwise);
}

TextEncoding contents_encoding_of(const SwitchSet& switches, TextEncoding otherwise,
                                  std::int32_t list_value) {
    return list_value == Call::not_given ? contents_encoding_of(switches, otherwise)
                                         : static_cast<TextEncoding>(list_value);
}

} // namespace vell::params
