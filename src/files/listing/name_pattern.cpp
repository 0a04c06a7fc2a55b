#include "src/files/listing/name_pattern.h"

#include "src/base/utf16.h"

#include <algorithm>

namespace vell::files {
namespace {

constexpr char16_t any = u'*';
constexpr char16_t one = u'?';

// Units of the character at `at`: a surrogate pair is one character.
std::size_t character_length(std::u16string_view text, std::size_t at) {
    const bool is_pair =
        is_high_surrogate(text[at]) && at + 1 < text.size() && is_low_surrogate(text[at + 1]);
    return is_pair ? 2 : 1;
}

} // namespace

NamePattern::NamePattern(std::u16string_view text, NameExtent extent) {
    const bool whole = extent == NameExtent::Whole || text.starts_with(any) || text.ends_with(any);
    if (!whole && text.find_first_of(u"*?") == std::u16string_view::npos) {
        plain_ = text;
        return;
    }
    if (!whole)
        pattern_ += any;
    for (const char16_t unit : text)
        if (unit != any || !pattern_.ends_with(any)) // several say no more than one
            pattern_ += unit;
    if (!whole && !pattern_.ends_with(any))
        pattern_ += any;
    least_ = pattern_.size() - static_cast<std::size_t>(std::ranges::count(pattern_, any));
}

bool NamePattern::matches(std::u16string_view name) const {
    if (!plain_.empty())
        return name.find(plain_) != std::u16string_view::npos;
    if (name.size() < least_)
        return false;
    constexpr std::size_t none = std::u16string_view::npos;
    std::size_t at = 0;
    std::size_t position = 0;
    std::size_t star = none; // the last one that was met, and where what it stands for ends
    std::size_t star_end = 0;
    while (at < name.size()) {
        const char16_t wanted = position < pattern_.size() ? pattern_[position] : u'\0';
        if (wanted == any) {
            star = position++;
            star_end = at;
        } else if (wanted == one) {
            at += character_length(name, at);
            ++position;
        } else if (wanted == name[at] && position < pattern_.size()) {
            ++at;
            ++position;
        } else if (star != none) {
            // Only the last one needs to take more: whatever the earlier ones could take is no
            // help.
            star_end += character_length(name, star_end);
            at = star_end;
            position = star + 1;
        } else {
            return false;
        }
    }
    return pattern_.find_first_not_of(any, position) == none;
}

} // namespace vell::files
