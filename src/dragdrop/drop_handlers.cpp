#include "src/dragdrop/drop_handlers.h"

#include "src/base/ascii.h"

#include <algorithm>
#include <utility>

namespace vell::dragdrop {
Effect allowed_effect(Effect wanted, std::uint32_t allowed) {
    const Effect other = wanted == Effect::Copy ? Effect::Link : Effect::Copy;
    for (const Effect effect : {wanted, other}) {
        if ((allowed & static_cast<std::uint32_t>(effect)) != 0)
            return effect;
    }
    return Effect::None;
}

bool matches(const Script& script, std::u16string_view file_name, std::u16string_view script_name) {
    if (file_name.empty())
        return true;
    return equal_ignoring_case(std::u16string_view(script.file_name), file_name) &&
           (script_name.empty() ||
            equal_ignoring_case(std::u16string_view(script.name), script_name));
}

void HandlerList::add(Handler handler) {
    handler.id = ++last_id_;
    handlers_.push_back(std::move(handler));
}

bool HandlerList::serves(Window window) const {
    return std::any_of(handlers_.begin(), handlers_.end(),
                       [window](const Handler& handler) { return handler.window == window; });
}

const Handler* HandlerList::find(std::uint32_t id) const {
    const auto found = std::find_if(handlers_.begin(), handlers_.end(),
                                    [id](const Handler& handler) { return handler.id == id; });
    return found == handlers_.end() ? nullptr : &*found;
}

bool HandlerList::any_scrolls(Window window) const {
    return std::any_of(handlers_.begin(), handlers_.end(), [window](const Handler& handler) {
        return handler.window == window && handler.zone.scrolls;
    });
}

const Handler* HandlerList::at(Window window, Point point, const Offer& offer,
                               std::int32_t scroll_position) const {
    for (const Handler& handler : handlers_) {
        if (handler.window != window || !handler.takes(offer))
            continue;
        if (handler.zone.contains(point, handler.zone.scrolls ? scroll_position : 0))
            return &handler;
    }
    return nullptr;
}

void HandlerList::remove(std::u16string_view file_name, std::u16string_view script_name) {
    std::erase_if(handlers_, [&](const Handler& handler) {
        return matches(handler.script, file_name, script_name);
    });
}

void HandlerList::remove(Window window) {
    std::erase_if(handlers_, [window](const Handler& handler) { return handler.window == window; });
}

} // namespace vell::dragdrop
