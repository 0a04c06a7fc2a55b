#include "src/params/line_endings.h"

#include "src/params/call.h"
#include "src/params/switches.h"

#include <algorithm>

namespace vell::params {
namespace {

template <typename Char>
constexpr Char cr = Char(13);
template <typename Char>
constexpr Char lf = Char(10);

enum class Side { Before, After };

// Puts `added` beside every `anchor`, filling the grown text from its end so that each character
// moves once.
template <typename Char>
void insert_beside(std::basic_string<Char>& text, Char anchor, Char added, Side side) {
    std::size_t source = text.size();
    text.resize(source + static_cast<std::size_t>(std::count(text.begin(), text.end(), anchor)));
    for (std::size_t target = text.size(); source < target;) {
        const Char c = text[--source];
        if (c == anchor && side == Side::After)
            text[--target] = added;
        text[--target] = c;
        if (c == anchor && side == Side::Before)
            text[--target] = added;
    }
}

template <typename Char>
void remove_line_feeds_after_returns(std::basic_string<Char>& text) {
    std::size_t target = 0;
    for (std::size_t source = 0; source < text.size(); ++source) {
        text[target++] = text[source];
        if (text[source] == cr<Char> && source + 1 < text.size() && text[source + 1] == lf<Char>)
            ++source;
    }
    text.resize(target);
}

} // namespace

template <typename Char>
void convert_line_endings(std::basic_string<Char>& text, LineEndings mode) {
    const bool composed = mode == LineEndings::Host || mode == LineEndings::LogFile;
    if (mode == LineEndings::CrLfToCr || composed)
        remove_line_feeds_after_returns(text);
    if (mode == LineEndings::LfToCrLf || composed)
        insert_beside(text, lf<Char>, cr<Char>, Side::Before);
    if (mode == LineEndings::CrToCrLf || mode == LineEndings::LogFile)
        insert_beside(text, cr<Char>, lf<Char>, Side::After);
}

template void convert_line_endings(std::string&, LineEndings);
template void convert_line_endings(std::u16string&, LineEndings);

LineEndings line_endings_of(const SwitchSet& switches, std::int32_t list_value) {
    switch (list_value) {
    case Call::not_given:
        if (switches.has("-CRtoCRLF"))
            return LineEndings::CrToCrLf;
        return switches.has("-CRLFtoCR") ? LineEndings::CrLfToCr : LineEndings::Keep;
    case 1:
    case 2:
        return LineEndings::CrToCrLf;
    case 3:
        return LineEndings::LfToCrLf;
    default:
        return LineEndings::Keep;
    }
}

} // namespace vell::params
