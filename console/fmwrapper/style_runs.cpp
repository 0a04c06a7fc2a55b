#include "console/fmwrapper/style_runs.h"

#include <algorithm>

namespace vell::console {

void StyleRuns::push(Run run) {
    if (runs_.empty() || runs_.back().style != run.style)
        runs_.push_back(run);
}

void StyleRuns::simplify() {
    if (runs_.size() == 1 && runs_.front().style == fm::CharacterStyle())
        runs_.clear();
}

fm::CharacterStyle StyleRuns::at(std::uint32_t position) const {
    const auto after =
        std::upper_bound(runs_.begin(), runs_.end(), position,
                         [](std::uint32_t place, const Run& run) { return place < run.begin; });
    return after == runs_.begin() ? fm::CharacterStyle() : std::prev(after)->style;
}

StyleRuns StyleRuns::slice(std::uint32_t begin, std::uint32_t end) const {
    StyleRuns part;
    if (runs_.empty() || begin >= end)
        return part;
    part.push({0, at(begin)});
    for (const Run& run : runs_) {
        if (run.begin > begin && run.begin < end)
            part.push({run.begin - begin, run.style});
    }
    part.simplify();
    return part;
}

void StyleRuns::append(const StyleRuns& added, std::uint32_t length, std::uint32_t text_length) {
    if (length == 0 || (runs_.empty() && added.runs_.empty()))
        return;
    if (runs_.empty() && text_length != 0)
        push({0, {}});
    if (added.runs_.empty())
        push({text_length, {}});
    for (const Run& run : added.runs_)
        push({text_length + run.begin, run.style});
    simplify();
}

void StyleRuns::insert(const StyleRuns& added, std::uint32_t length, std::uint32_t position,
                       std::uint32_t text_length) {
    if (length == 0 || (runs_.empty() && added.runs_.empty()))
        return;
    StyleRuns whole = slice(0, position);
    whole.append(added, length, position);
    whole.append(slice(position, text_length), text_length - position, position + length);
    *this = std::move(whole);
}

void StyleRuns::erase(std::uint32_t begin, std::uint32_t end, std::uint32_t text_length) {
    if (runs_.empty() || begin >= end)
        return;
    StyleRuns whole = slice(0, begin);
    whole.append(slice(end, text_length), text_length - end, begin);
    *this = std::move(whole);
}

void StyleRuns::set(const fm::CharacterStyle& style, std::uint32_t begin, std::uint32_t end,
                    std::uint32_t text_length) {
    if (begin >= end)
        return;
    StyleRuns styled;
    styled.push({0, style});
    StyleRuns whole = slice(0, begin);
    whole.append(styled, end - begin, begin);
    whole.append(slice(end, text_length), text_length - end, end);
    *this = std::move(whole);
}

} // namespace vell::console
