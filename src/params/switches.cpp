#include "src/params/switches.h"

#include "src/base/ascii.h"
#include "src/base/switch_words.h"

namespace vell::params {

void AskedNames::add(std::string_view name) {
    if (std::ranges::find(names_, name) == names_.end())
        names_.emplace_back(name);
}

std::vector<std::string_view> AskedNames::unknown_in(std::string_view switches) const {
    std::vector<std::string_view> words = switch_words(switches);
    std::erase_if(words, [this](std::string_view word) {
        return std::ranges::any_of(names_, [word](std::string_view name) {
            return find_ignoring_case(word, name) != std::string_view::npos;
        });
    });
    return words;
}

bool SwitchSet::has(std::string_view name) const {
    if (asked_)
        asked_->add(name);
    return find_ignoring_case(text(), name) != std::string_view::npos;
}

std::string SwitchSet::value(std::string_view name, std::size_t capacity) const {
    if (asked_)
        asked_->add(name);
    const std::size_t found = find_ignoring_case(text(), name);
    if (found == std::string_view::npos)
        return {};
    std::string_view value = text().substr(found + name.size());
    value = value.substr(0, value.find('-', 1));
    value = value.substr(0, capacity > 0 ? capacity - 1 : 0);
    return std::string(name).append(value);
}

} // namespace vell::params
