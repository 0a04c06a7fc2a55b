// Text encodings by the numbers that the host's interface gives them.
#pragma once

#include <cstdint>
#include <string_view>

namespace vell::params {

class SwitchSet;

enum class TextEncoding : std::int32_t {
    Native = 0, // the system's ANSI code page
    Utf8 = 1,
    AsciiDos = 2,
    AsciiWindows = 3,
    AsciiMac = 4, // also the encoding of the plug-in's own literals
    Iso8859_1 = 5,
    ShiftJisMac = 6,
    ShiftJisWin = 7,
    KoreanMac = 8,
    KoreanWin = 9,
    KoreanJohab = 10,
    ChineseTradMac = 11,
    ChineseTradWin = 12,
    ChineseSimpMac = 13,
    ChineseSimpWin = 14,
    CyrillicMac = 15,
    CyrillicWin = 16,
    Iso8859_5 = 17,
    CentralEuropeMac = 18,
    EasternEuropeWin = 19,
    Iso8859_2 = 20,
    TurkishMac = 21,
    TurkishWin = 22,
    Iso8859_3 = 23,
    Iso8859_9 = 24,
    BalticWin = 25,
    Iso8859_4 = 26,
    ArabicMac = 27,
    ArabicWin = 28,
    Iso8859_6 = 29,
    GreekMac = 30,
    GreekWin = 31,
    Iso8859_7 = 32,
    HebrewMac = 33,
    HebrewWin = 34,
    Iso8859_8 = 35,
    Iso8859_15 = 36,
    // No conversion: each byte is one character, U+0000 to U+00FF, and back. Not known to the host.
    BytesOnly = 4200,
};

// Where none is given.
inline constexpr TextEncoding no_encoding{-1};

// What a function says in its result before text that turned out not to be UTF-8.
inline constexpr std::string_view invalid_utf8_trying_native =
    "<INVALID UTF8; trying native encoding>";

// The encoding chosen by an "-Encoding=" switch, `otherwise` when there is none or its name is not
// known. Where several names are present, the order of the table decides, not that of the text.
// "-Encoding=BytesOnly" is not among the names: see contents_encoding_of.
TextEncoding encoding_of(const SwitchSet& switches, TextEncoding otherwise);

// The same for the functions that read or write a file's contents, which also take
// "-Encoding=BytesOnly"; it precedes every other name.
TextEncoding contents_encoding_of(const SwitchSet& switches, TextEncoding otherwise);

// The same where a script step's "Encoding" value decides, unless it is Call::not_given.
TextEncoding contents_encoding_of(const SwitchSet& switches, TextEncoding otherwise,
                                  std::int32_t list_value);

} // namespace vell::params
